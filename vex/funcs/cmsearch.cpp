// @SearchList(<listAttribute>,<value>): the index of the first element that has exactly this value, -1 when none has.
// "{}" in the name is the place of the index. Ten missing indices, wherever they are, end the search.
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "SearchList", .count = exactly(2), .onCount = 830051, .onNoFeature = 830052, .onConfigure = 830053};
constexpr int kMostMissing = 10;

class VEXSearchListCmd final : public VEXRuleCommand {
 public:
  VEXSearchListCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    const std::size_t mark = args.text(0).find("{}");
    if (mark == std::string::npos) return makeStatus(830054, {args.text(0)});
    const std::string head = args.text(0).substr(0, mark + 1);
    const std::string tail = args.text(0).substr(mark + 1);
    std::string name;
    for (std::int64_t index = 0, missing = 0; missing < kMostMissing; ++index) {
      name = head;
      appendInteger(name, index);
      name += tail;
      const VEXText* value = feature->findAttribute(name);
      if (value == nullptr) {
        ++missing;
      } else if (*value == args.text(1)) {
        appendInteger(result, index);
        return nullptr;
      }
    }
    result = "-1";
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmsearch, VEXSearchListCmd)
