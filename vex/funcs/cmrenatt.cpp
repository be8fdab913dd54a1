// @RenameAttributes(<new>,<old>[,<new>,<old>...]): moves values to new names. All are read before the first is written;
// an old name that is a new one, too, stays. An old attribute that is not there counts as empty.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "RenameAttributes", .count = {.step = 2}, .onCount = 844011, .onNoFeature = 844012, .onConfigure = 844013};

bool isNewName(const VEXArgs& args, const std::string& name) {
  for (std::size_t i = 0; i < args.count(); i += 2)
    if (args.text(i) == name) return true;
  return false;
}

class VEXRenameAttributesCmd final : public VEXRuleCommand {
 public:
  VEXRenameAttributesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    if (values_.size() < args.count()) values_.resize(args.count());
    for (std::size_t i = 1; i < args.count(); i += 2) {
      const std::string* value = feature->findAttribute(args.text(i));
      values_[i].assign(value == nullptr ? std::string_view() : std::string_view(*value));
    }
    for (std::size_t i = 1; i < args.count(); i += 2) feature->setAttribute(args.text(i - 1), values_[i]);
    for (std::size_t i = 1; i < args.count(); i += 2)
      if (!isNewName(args, args.text(i))) {
        feature->removeAttribute(args.text(i));
        feature->removeFromSequence(VEXName::find(args.text(i)));
      }
    return nullptr;
  }

  VEXStringVector values_;  // texts keep their buffers from call to call
};

}  // namespace

VEX_COMMAND_MAKER(cmrenatt, VEXRenameAttributesCmd)
