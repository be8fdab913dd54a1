// @Rotate2D(<angle>[,<x>,<y>]): turns counter-clockwise about the origin or the point named; the source side turns
// back.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "angle", .kind = VEXArgKind::Real, .onBad = 840003},
                                {.at = 1, .name = "x", .kind = VEXArgKind::Real, .onBad = 840004},
                                {.at = 2, .name = "y", .kind = VEXArgKind::Real, .onBad = 840005}};

constexpr VEXCommandRule kRule{.name = "Rotate2D",
                               .count = oneOf(1, 3),
                               .args = kArgs,
                               .onCount = 840001,
                               .onNoFeature = 840002,
                               .onConfigure = 840006,
                               .extract = VEXExtract::Inverse};

class VEXRotate2DCmd final : public VEXRuleCommand {
 public:
  VEXRotate2DCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(rotate(*feature, args, args.real(0)));
  }
  VEXStatus inverse(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(rotate(*feature, args, -args.real(0)));
  }

  // The feature's operation counts clockwise.
  static VEXStatus rotate(VEXFeature& feature, const VEXArgs& args, double angleDegrees) {
    const bool hasCentre = args.count() == 3;
    return extendStatus(
        feature.rotate2D(hasCentre ? args.real(1) : 0.0, hasCentre ? args.real(2) : 0.0, -angleDegrees));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmrotat2, VEXRotate2DCmd)
