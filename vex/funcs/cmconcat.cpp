// @Concatenate(<value>,...): all arguments in order, nothing between them.
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Concatenate",
                               .count = atLeast(1),
                               .onCount = 812001,
                               .onConfigure = 812002,
                               .extract = VEXExtract::EmptyResult};

class VEXConcatenateCmd final : public VEXRuleCommand {
 public:
  VEXConcatenateCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    for (const std::string& text : args.texts()) result += text;
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmconcat, VEXConcatenateCmd)
