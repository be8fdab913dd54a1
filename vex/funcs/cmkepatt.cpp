// @KeepAttributes(<name>[,<name>...]): removes every attribute but these and orv_geometry.
#include <algorithm>

#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "KeepAttributes",
                               .count = atLeast(1),
                               .onCount = 825001,
                               .onNoFeature = 825002,
                               .onConfigure = 825003,
                               .extract = VEXExtract::Nothing};

class VEXKeepAttributesCmd final : public VEXRuleCommand {
 public:
  VEXKeepAttributesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    kept_.assign(1, geometry_);
    for (const std::string& text : args.texts())
      if (VEXName name = VEXName::find(text); !name.isNull()) kept_.push_back(name);
    doomed_.clear();
    feature->forEachAttribute([this](VEXName name, std::string_view) {
      if (std::find(kept_.begin(), kept_.end(), name) == kept_.end()) doomed_.push_back(name);
    });
    for (VEXName name : doomed_) feature->removeAttribute(name);
    if (feature->sequence().empty()) return nullptr;
    std::vector<VEXName> sequence = feature->sequence();
    std::erase_if(sequence, [&](VEXName name) { return !feature->attributeExists(name); });
    feature->setSequence(std::move(sequence));
    return nullptr;
  }

  const VEXName geometry_ = VEXName::intern("orv_geometry");
  std::vector<VEXName> kept_;
  std::vector<VEXName> doomed_;
};

}  // namespace

VEX_COMMAND_MAKER(cmkepatt, VEXKeepAttributesCmd)
