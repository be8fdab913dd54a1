// @SAIFAngle(<degrees>): turns an angle counter-clockwise from east into one clockwise from north, and back.
#include <cmath>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "degrees", .kind = VEXArgKind::Real, .onBad = 801003}};

constexpr VEXCommandRule kRule{.name = "SAIFAngle",
                               .count = exactly(1),
                               .args = kArgs,
                               .onCount = 801001,
                               .onNoFeature = 801002,
                               .onConfigure = 801004};

class VEXSAIFAngleCmd final : public VEXRuleCommand {
 public:
  VEXSAIFAngleCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    double angle = std::fmod(450.0 - args.real(0), 360.0);
    if (angle < 0.0) angle += 360.0;
    appendReal(result, angle);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmangle, VEXSAIFAngleCmd)
