// @Length([2 or 3[,<multiplier>]]): the length in the plan, which is the default, or in three dimensions. Jumps between
// parts do not count.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 1, .name = "VEXLengthCmd::execute", .kind = VEXArgKind::Real, .onBad = 826005}};

constexpr VEXCommandRule kRule{.name = "Length",
                               .count = between(0, 2),
                               .args = kArgs,
                               .onCount = 826002,
                               .onNoFeature = 826001,
                               .onConfigure = 826004};

class VEXLengthCmd final : public VEXRuleCommand {
 public:
  VEXLengthCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    const bool in3D = args.count() > 0 && args.text(0) == "3";
    if (args.count() > 0 && !in3D && args.text(0) != "2") return makeStatus(826003, {args.text(0)});
    double length = 0.0;
    const VEXLine line = VEXLine::viewOf(*feature);
    VEX_TRY(in3D ? line.length3D(length) : line.length2D(length));
    appendReal(result, args.count() == 2 ? length * args.real(1) : length);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmlength, VEXLengthCmd)
