// @RoundOffCoords(<axis>,<precision>): rounds one axis to so many decimals, to tens and hundreds when negative, and
// drops coordinates that became equal. Rings are rounded one by one and stay closed.
#include <algorithm>

#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 1, .name = "precision", .kind = VEXArgKind::Integer, .onBad = 841003},
                                {.at = 0, .name = "axis", .kind = VEXArgKind::Axis, .onBad = 841004}};

constexpr VEXCommandRule kRule{.name = "RoundOffCoords",
                               .count = exactly(2),
                               .args = kArgs,
                               .onCount = 841001,
                               .onNoFeature = 841002,
                               .onConfigure = 841005};

class VEXRoundOffCoordsCmd final : public VEXRuleCommand {
 public:
  VEXRoundOffCoordsCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    result.clear();
    const auto decimals = static_cast<int>(std::clamp<std::int64_t>(args.integer(1), -400, 400));
    return extendStatus(
        changeGeometry(*feature, [&](VEXLine& line) { return line.roundAxis(args.axis(0), decimals); }));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmround, VEXRoundOffCoordsCmd)
