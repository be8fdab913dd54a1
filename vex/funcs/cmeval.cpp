// @Evaluate(<expression>): the value of a Tcl expression; of a Tcl script when it stands in brackets. The interpreter
// knows nothing of features; it lasts until the end of the translation.
#include "vex/src/cmdrule.h"
#include "vex/src/tclbind.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Evaluate",
                               .count = exactly(1),
                               .onCount = 818001,
                               .onConfigure = 818003,
                               .extract = VEXExtract::EmptyResult};

class VEXEvaluateCmd final : public VEXRuleCommand {
 public:
  VEXEvaluateCmd() : VEXRuleCommand(kRule) {}

  VEXStatus closeDown() override {
    interp_.reset();
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    const std::string& text = args.text(0);
    if (text.empty()) return makeStatus(818002);
    if (interp_ == nullptr) interp_ = std::make_unique<VEXTclInterp>();
    if (!interp_->isReady()) return makeStatus(818004, {text});
    if (text[0] == '[') {
      script_.assign(text, 1, text.size() < 2 ? 0 : text.size() - 2);
    } else {
      script_ = "expr ";
      script_ += text;
    }
    if (!interp_->evalKept(script_)) return makeStatus(818005, {text, interp_->result()});
    result = interp_->result();
    return nullptr;
  }

  std::unique_ptr<VEXTclInterp> interp_;
  std::string script_;
};

}  // namespace

VEX_COMMAND_MAKER(cmeval, VEXEvaluateCmd)
