// @Scale(<xFactor>[,<yFactor>[,<zFactor>]]): scales about the origin; one factor serves x and y. The source side takes
// the reciprocals.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXArgRule kArgs[] = {{.at = 0, .name = "xFactor", .kind = VEXArgKind::Real, .onBad = 842004},
                                {.at = 1, .name = "yFactor", .kind = VEXArgKind::Real, .onBad = 842005},
                                {.at = 2, .name = "zFactor", .kind = VEXArgKind::Real, .onBad = 842006}};

constexpr VEXCommandRule kRule{.name = "Scale",
                               .count = between(1, 3),
                               .args = kArgs,
                               .onCount = 842002,
                               .onNoFeature = 842003,
                               .onConfigure = 842007,
                               .extract = VEXExtract::Inverse};

class VEXScaleCmd final : public VEXRuleCommand {
 public:
  VEXScaleCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    double factors[3] = {};
    VEX_TRY(readFactors(args, factors));
    return extendStatus(feature->scale(factors[0], factors[1], factors[2]));
  }

  VEXStatus inverse(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    double factors[3] = {};
    VEX_TRY(readFactors(args, factors));
    return extendStatus(feature->scale(1.0 / factors[0], 1.0 / factors[1], 1.0 / factors[2]));
  }

  static VEXStatus readFactors(const VEXArgs& args, double (&factors)[3]) {
    factors[0] = args.real(0);
    factors[1] = args.count() > 1 ? args.real(1) : factors[0];
    factors[2] = args.count() > 2 ? args.real(2) : 1.0;
    for (std::size_t i = 0; i < args.count(); ++i)
      if (factors[i] == 0.0) return makeStatus(842001, {kArgs[i].name});
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmscale, VEXScaleCmd)
