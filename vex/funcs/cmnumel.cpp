// @NumElements(<listAttribute>): how many elements a list attribute has. Each "{}" of the name stands for any index;
// one is added at the end when it is missing there.
#include <unordered_set>

#include "vex/funcs/listname.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "NumElements",
                               .count = exactly(1),
                               .onCount = 831001,
                               .onNoFeature = 831002,
                               .onConfigure = 831003,
                               .extract = VEXExtract::EmptyResult};

class VEXNumElementsCmd final : public VEXRuleCommand {
 public:
  VEXNumElementsCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    std::string pattern = args.text(0);
    if (!pattern.ends_with("{}")) pattern += "{}";
    std::unordered_set<std::string_view> elements;
    feature->forEachAttribute([&](VEXName name, std::string_view) {
      if (const std::size_t length = listPrefixLength(name.text(), pattern); length > 0)
        elements.insert(std::string_view(name.text()).substr(0, length));
    });
    result = std::to_string(elements.size());
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmnumel, VEXNumElementsCmd)
