// @Orient(<rule>): RIGHT_HAND_RULE makes shells clockwise and holes counter-clockwise, LEFT_HAND_RULE the other way
// round; REVERSE turns the order of coordinates. The source side swaps the two rules.
#include "vex/src/cmdrule.h"
#include "vex/src/geomwork.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNoRing = 244010;

constexpr VEXCommandRule kRule{.name = "Orient",
                               .count = exactly(1),
                               .onCount = 834001,
                               .onNoFeature = 834003,
                               .onConfigure = 834005,
                               .extract = VEXExtract::Inverse};

class VEXOrientCmd final : public VEXRuleCommand {
 public:
  VEXOrientCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(orient(*feature, args.text(0), "LEFT_HAND_RULE", "RIGHT_HAND_RULE"));
  }
  VEXStatus inverse(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(orient(*feature, args.text(0), "RIGHT_HAND_RULE", "LEFT_HAND_RULE"));
  }

  static VEXStatus orient(VEXFeature& feature, std::string_view rule, std::string_view counterClockwise,
                          std::string_view clockwise) {
    if (rule == "REVERSE")
      return extendStatus(changeGeometry(feature, [](VEXLine& line) { return line.reverseParts(); }));
    if (rule != counterClockwise && rule != clockwise) return makeStatus(834002, {rule});
    VEXStatus failure = feature.setOrientation(rule == counterClockwise);
    if (failure == nullptr || failure->messageNumber() != kNoRing) return extendStatus(std::move(failure));
    logMessage(VEXSeverity::Warn, 834004, {feature.featureType(), VEXFeature::geomTypeName(feature.geomType())});
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmorient, VEXOrientCmd)
