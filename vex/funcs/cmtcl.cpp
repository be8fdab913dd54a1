// @TCL(<script>): runs a Tcl script that sees the feature (see tclfeat.h). Rows "TCL source <file>" and
// "TCL set <variable> <value>" prepare the interpreter, which lasts until the end of the translation.
#include "vex/src/cmdrule.h"
#include "vex/src/rowtext.h"
#include "vex/src/tclfeat.h"
#include "vex/src/vexconf.h"

namespace {

constexpr VEXCommandRule kRule{.name = "TCL",
                               .count = exactly(1),
                               .onCount = 818052,
                               .onConfigure = 818054,  // of a row that is neither source nor set
                               .extract = VEXExtract::EmptyResult};

class VEXTclCmd final : public VEXRuleCommand {
 public:
  VEXTclCmd() : VEXRuleCommand(kRule) {}

  VEXStatus configure(const VEXStringVector& params) override {
    const bool isSource = params.size() == 3 && params[1] == "source";
    const bool isSet = params.size() == 4 && params[1] == "set";
    if (!isSource && !isSet) return makeStatus(818054, {rowText(params)});
    VEX_TRY(prepare(params[1]));
    std::string error;
    const bool done = isSource ? tcl_->evalFile(VEXConfiguration::normalisePath(params[2]), error)
                               : tcl_->setVar(params[2], params[3], error);
    if (!done) return makeStatus(818053, {rowText(params), error});
    return nullptr;
  }

  VEXStatus closeDown() override {
    tcl_.reset();
    return nullptr;
  }

 private:
  VEXStatus prepare(const std::string& script) {
    if (tcl_ == nullptr) tcl_ = std::make_unique<VEXTclFeature>();
    if (tcl_->isReady()) return nullptr;
    tcl_.reset();
    return makeStatus(818051, {script});
  }

  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    VEX_TRY(prepare(args.text(0)));
    if (tcl_->depth() >= VEXTclFeature::kDeepest) return makeStatus(818055, {args.text(0)});
    if (!tcl_->eval(args.text(0), feature, result)) return makeStatus(818053, {args.text(0), result});
    return nullptr;
  }

  std::unique_ptr<VEXTclFeature> tcl_;
};

}  // namespace

VEX_COMMAND_MAKER(cmtcl, VEXTclCmd)
