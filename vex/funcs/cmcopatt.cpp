// @CopyAttributes(<dest>,<src>[,<dest>,<src>...]): copies values. All are read before the first is written, so that
// @CopyAttributes(a,b,b,a) swaps. A source that is not there counts as empty.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "CopyAttributes", .count = {.step = 2}, .onCount = 844011, .onNoFeature = 844012, .onConfigure = 844013};

class VEXCopyAttributesCmd final : public VEXRuleCommand {
 public:
  VEXCopyAttributesCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    if (values_.size() < args.count()) values_.resize(args.count());
    for (std::size_t i = 1; i < args.count(); i += 2) {
      const std::string* value = feature->findAttribute(args.text(i));
      values_[i].assign(value == nullptr ? std::string_view() : std::string_view(*value));
    }
    for (std::size_t i = 1; i < args.count(); i += 2) feature->setAttribute(args.text(i - 1), values_[i]);
    return nullptr;
  }

  VEXStringVector values_;  // texts keep their buffers from call to call
};

}  // namespace

VEX_COMMAND_MAKER(cmcopatt, VEXCopyAttributesCmd)
