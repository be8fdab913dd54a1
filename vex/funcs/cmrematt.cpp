// @RemoveAttributes(<name>[,<name>...]): removes attributes; one that is not there is passed over.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "RemoveAttributes",
                               .count = atLeast(1),
                               .onCount = 900001,
                               .onNoFeature = 900002,
                               .onConfigure = 900003,
                               .extract = VEXExtract::Nothing};

class VEXRemoveAttributesCmd final : public VEXRuleCommand {
 public:
  VEXRemoveAttributesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    for (const std::string& text : args.texts()) {
      const VEXName name = VEXName::find(text);
      if (name.isNull()) continue;
      feature->removeAttribute(name);
      feature->removeFromSequence(name);
    }
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmrematt, VEXRemoveAttributesCmd)
