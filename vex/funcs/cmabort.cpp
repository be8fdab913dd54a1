// @Abort([<message>]): logs the feature and stops the translation.
#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Abort", .count = between(0, 1), .onCount = 798001, .onConfigure = 798005};

class VEXAbortCmd final : public VEXRuleCommand {
 public:
  VEXAbortCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    if (feature != nullptr) {
      logMessage(VEXSeverity::Fatal, 798002);
      logFeature(*feature, VEXSeverity::Fatal, 20);
    } else {
      logMessage(VEXSeverity::Fatal, 798003);
    }
    std::string text = "Aborting Translation as directed by control file. ";
    if (args.count() == 1) text += "Message is '" + args.text(0) + "'";
    return makeTextStatus(kSeverityFailure, std::move(text));
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmabort, VEXAbortCmd)
