// @FeatureType([<type>]): sets the feature type; without an argument, and on the source side, gives it.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "FeatureType",
                               .count = between(0, 1),
                               .onCount = 819003,
                               .onNoFeature = 819004,
                               .onConfigure = 819005,
                               .extract = VEXExtract::Own};

class VEXFeatureTypeCmd final : public VEXRuleCommand {
 public:
  VEXFeatureTypeCmd() : VEXRuleCommand(kRule) {}

  // The source side has numbers of its own, and only reads.
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    if (params.size() > 1) return makeStatus(819001, {callText(kRule.name, params)});
    if (feature == nullptr) return makeStatus(819002, {callText(kRule.name, params)});
    result = feature->featureType();
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (args.count() == 1)
      feature->setFeatureType(args.text(0));
    else
      result = feature->featureType();
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmfeattp, VEXFeatureTypeCmd)
