// @CopyAttributes(<dest>,<src>[,<dest>,<src>...]): copies values. All are read before the first is written, so that
// @CopyAttributes(a,b,b,a) swaps. A source that is not there counts as empty.
#include "vex/funcs/copypair.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "CopyAttributes", .count = {.step = 2}, .onCount = 844011, .onNoFeature = 844012, .onConfigure = 844013};

class VEXCopyAttributesCmd final : public VEXRuleCommand {
 public:
  VEXCopyAttributesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    copier_.copy(*feature, args);
    return nullptr;
  }

  VEXPairCopier copier_;
};

}  // namespace

VEX_COMMAND_MAKER(cmcopatt, VEXCopyAttributesCmd)
