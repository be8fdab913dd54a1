// @MergeLists(<dstList>,<srcList1>[,<srcList2>...]): appends the elements of the source lists, with all that belongs to
// each, to the destination list, in the order of their indices. The result is the new number of elements.
#include <algorithm>

#include "vex/funcs/listname.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "MergeLists",
                               .count = atLeast(2),
                               .onCount = 829001,
                               .onNoFeature = 829003,
                               .onConfigure = 829004,
                               .extract = VEXExtract::EmptyResult};

// "parts{}" and "parts" are the same list.
std::string listPattern(std::string name) {
  return name.ends_with("{}") ? name : name + "{}";
}

// The elements are to be numbered at the end of the name, and nowhere else.
bool isOpenList(std::string_view pattern) {
  const std::string_view head = pattern.substr(0, pattern.size() - 2);
  for (std::size_t at = head.find('{'); at != std::string_view::npos; at = head.find('{', at + 1))
    if (head.substr(at).starts_with("{}") || listPrefixLength(head.substr(at), "{}") > 0) return false;
  return true;
}

// One attribute of a list's element.
struct Entry {
  std::string element;  // the name up to the index and with it
  std::string tail;
  std::string value;
  bool operator<(const Entry& other) const {
    if (element.size() != other.element.size()) return element.size() < other.element.size();
    return element != other.element ? element < other.element : tail < other.tail;
  }
};

std::vector<Entry> entriesOf(const VEXFeature& feature, const std::string& pattern) {
  std::vector<Entry> entries;
  feature.forEachAttribute([&](VEXName name, std::string_view value) {
    const std::string& text = name.text();
    if (const std::size_t length = listPrefixLength(text, pattern); length > 0)
      entries.push_back({text.substr(0, length), text.substr(length), std::string(value)});
  });
  std::sort(entries.begin(), entries.end());
  return entries;
}

class VEXMergeListsCmd final : public VEXRuleCommand {
 public:
  VEXMergeListsCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    const std::string target = listPattern(args.text(0));
    if (!isOpenList(target)) return makeStatus(829002, {args.text(0)});
    const std::vector<Entry> present = entriesOf(*feature, target);
    std::int64_t count = 0;
    for (std::size_t i = 0; i < present.size(); ++i)
      if (i == 0 || present[i].element != present[i - 1].element) ++count;
    std::string name;
    for (std::size_t source = 1; source < args.count(); ++source) {
      const std::vector<Entry> entries = entriesOf(*feature, listPattern(args.text(source)));
      for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i == 0 || entries[i].element != entries[i - 1].element) ++count;
        name.assign(target, 0, target.size() - 1);
        appendInteger(name, count - 1);
        feature->setAttribute(name + "}" + entries[i].tail, entries[i].value);
      }
    }
    appendInteger(result, count);
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmmrglst, VEXMergeListsCmd)
