// @Offset(<x>,<y>[,<z>]): moves the coordinates; the source side moves them back.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "x", .kind = VEXArgKind::Real, .onBad = 833003},
                                {.at = 1, .name = "y", .kind = VEXArgKind::Real, .onBad = 833004},
                                {.at = 2, .name = "z", .kind = VEXArgKind::Real, .onBad = 833005}};

constexpr VEXCommandRule kRule{.name = "Offset",
                               .count = between(2, 3),
                               .args = kArgs,
                               .onCount = 833001,
                               .onNoFeature = 833002,
                               .onConfigure = 833006,
                               .extract = VEXExtract::Inverse};

class VEXOffsetCmd final : public VEXRuleCommand {
 public:
  VEXOffsetCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(feature->offset(args.real(0), args.real(1), args.count() == 3 ? args.real(2) : kNoZ));
  }
  VEXStatus inverse(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    return extendStatus(feature->offset(-args.real(0), -args.real(1), args.count() == 3 ? -args.real(2) : kNoZ));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmoffset, VEXOffsetCmd)
