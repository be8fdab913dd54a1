// @Log([<message>[,<coordinates>[,<times>]]]): writes a message and the feature to the log, at most <times>
// times for one message.
#include <map>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{
    .name = "Log", .count = between(0, 3), .onCount = 827001, .onNoFeature = 827002, .onConfigure = 827005};

class VEXLogCmd final : public VEXRuleCommand {
 public:
  VEXLogCmd() : VEXRuleCommand(kRule) {}

  VEXStatus closeDown() override {
    limits_.clear();
    return nullptr;
  }

 private:
  struct Limit {
    std::int32_t most = 0;
    std::int32_t count = 0;
    bool warned = false;
  };

  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    std::int32_t coordinates = 20;
    std::int32_t times = 20;
    if (args.count() > 1 && !textToInteger(args.text(1), coordinates)) return makeStatus(827004, {args.text(1)});
    if (args.count() > 2 && !textToInteger(args.text(2), times)) return makeStatus(827006, {args.text(2)});
    if (args.count() == 3 && !isWithinLimit(args.text(0), times)) return nullptr;
    if (args.count() > 0) logMessage(VEXSeverity::Inform, 827003, {args.text(0)});
    logFeature(*feature, VEXSeverity::Inform, coordinates);
    return nullptr;
  }

  bool isWithinLimit(const std::string& message, std::int32_t times) {
    auto [entry, isNew] = limits_.try_emplace(message, Limit{times, 0, false});
    Limit& limit = entry->second;
    if (limit.most != times && !limit.warned) {
      logMessage(VEXSeverity::Warn, 827007, {integerText(limit.most), integerText(times)});
      limit.warned = true;
    }
    return limit.count++ < limit.most;
  }

  std::map<std::string, Limit> limits_;
};

}  // namespace

VEX_COMMAND_MAKER(cmlog, VEXLogCmd)
