// @SupplyAttributes(<name>,<value>,...): creates or overwrites attributes. With one argument, that is a list
// "name 0x01 value 0x01 ..."; with none, the result is such a list of all attributes in name order.
#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "SupplyAttributes", .count = anyCount(), .onCount = 844001, .onNoFeature = 844002, .onConfigure = 844003};

class VEXSupplyAttributesCmd final : public VEXRuleCommand {
 public:
  VEXSupplyAttributesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    if (args.count() == 0) {
      listAll(*feature, result);
      return nullptr;
    }
    if (args.count() > 1) return extendStatus(supply(*feature, args.texts(), args));
    if (args.text(0).empty()) return nullptr;  // the list of a feature without attributes
    VEXStringVector pieces;
    splitAt(args.text(0), kListSeparator, pieces);
    return extendStatus(supply(*feature, pieces, args));
  }

  static VEXStatus supply(VEXFeature& feature, const VEXStringVector& pieces, const VEXArgs& args) {
    if (pieces.size() % 2 != 0) return makeStatus(844001, {callText(kRule.name, args.texts())});
    for (std::size_t i = 0; i < pieces.size(); i += 2) feature.setAttribute(pieces[i], pieces[i + 1]);
    return nullptr;
  }

  static void listAll(const VEXFeature& feature, std::string& result) {
    VEXStringVector names;
    feature.allAttributeNames(names);
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) {
      if (!result.empty()) result += kListSeparator;
      ((result += name) += kListSeparator) += *feature.findAttribute(name);
    }
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmsupatt, VEXSupplyAttributesCmd)
