// @RenameAttributes(<new>,<old>[,<new>,<old>...]): moves values to new names. All are read before the first is written;
// an old name that is a new one, too, stays. An old attribute that is not there counts as empty.
#include "vex/funcs/copypair.h"

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
    copier_.copy(*feature, args);
    for (std::size_t i = 1; i < args.count(); i += 2)
      if (!isNewName(args, args.text(i))) {
        feature->removeAttribute(args.text(i));
        feature->removeFromSequence(VEXName::find(args.text(i)));
      }
    return nullptr;
  }

  VEXPairCopier copier_;
};

}  // namespace

VEX_COMMAND_MAKER(cmrenatt, VEXRenameAttributesCmd)
