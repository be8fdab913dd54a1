// @GlobalVariable(<name>[,<value>]): sets or gives a text that all features of a translation share.
#include <map>

#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "GlobalVariable", .count = between(1, 2), .onCount = 823002, .onConfigure = 823003};

class VEXGlobalVariableCmd final : public VEXRuleCommand {
 public:
  VEXGlobalVariableCmd() : VEXRuleCommand(kRule) {}

  VEXStatus closeDown() override {
    for (const auto& [name, value] : values_) logMessage(VEXSeverity::Inform, 823004, {name, value});
    values_.clear();
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    auto found = values_.find(args.text(0));
    if (args.count() == 2) {
      if (found == values_.end()) found = values_.try_emplace(args.text(0)).first;
      found->second = args.text(1);
    }
    if (found != values_.end()) result = found->second;
    return nullptr;
  }

  std::map<std::string, std::string> values_;
};

}  // namespace

VEX_COMMAND_MAKER(cmglobal, VEXGlobalVariableCmd)
