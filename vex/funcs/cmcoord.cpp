// @Coordinate(<axis>,<index>): one ordinate of the coordinate at an index from 0, or END. z is 0 in two dimensions.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "axis", .kind = VEXArgKind::Axis, .onBad = 813005}};

constexpr VEXCommandRule kRule{.name = "Coordinate",
                               .count = exactly(2),
                               .args = kArgs,
                               .onCount = 813001,
                               .onNoFeature = 813002,
                               .onConfigure = 813006};

class VEXCoordinateCmd final : public VEXRuleCommand {
 public:
  VEXCoordinateCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    const auto count = static_cast<std::int64_t>(feature->numCoords());
    std::int64_t index = count - 1;
    if (args.text(1) != "END" && !textToInteger(args.text(1), index)) return makeStatus(813003, {args.text(1)});
    if (index < 0 || index >= count) {
      logFeature(*feature, VEXSeverity::Error, 20);
      return makeStatus(813004, {args.text(1), integerText(count)});
    }
    const auto at = static_cast<std::size_t>(index);
    const int axis = args.axis(0);
    if (axis == 2 && feature->dimension() != 3)
      result += '0';
    else
      appendReal(result, axis == 0 ? feature->xs()[at] : axis == 1 ? feature->ys()[at] : feature->zs()[at]);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmcoord, VEXCoordinateCmd)
