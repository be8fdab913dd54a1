// @Count([<domain>[,<start>[,<modulus>]]]): counts the calls of a domain, from its start upward.
#include <map>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexstats.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Count", .count = between(0, 3), .onCount = 814001, .onConfigure = 814004};

class VEXCountCmd final : public VEXRuleCommand {
 public:
  VEXCountCmd() : VEXRuleCommand(kRule) {}

  VEXStatus closeDown() override {
    VEXStatistics summary;
    for (const auto& [name, domain] : domains_) {
      auto calls = static_cast<std::int32_t>(domain.current - domain.start);
      std::string line = "`" + name + "'";
      if (calls > 0)
        line += " (range was " + integerText(domain.start) + " to " + integerText(domain.current - 1) + ")";
      summary.add(line, calls);
    }
    if (!summary.empty()) summary.write({}, "`Count' Domain Summary", "Total `@Count' Invocations:", 6, 78);
    domains_.clear();
    return nullptr;
  }

 private:
  struct Domain {
    std::int32_t start = 0;
    std::int64_t current = 0;
  };

  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    std::int32_t modulus = 0;
    if (args.count() > 2 && (!textToInteger(args.text(2), modulus) || modulus <= 0))
      return makeStatus(814003, {args.text(2)});
    std::string_view name = args.count() > 0 ? std::string_view(args.text(0)) : std::string_view();
    if (name.empty()) name = "VEX_DEFAULT_DOMAIN";
    auto found = domains_.find(name);
    if (found == domains_.end()) {
      Domain domain;
      if (args.count() > 1 && !textToInteger(args.text(1), domain.start)) return makeStatus(814002, {args.text(1)});
      domain.current = domain.start;
      found = domains_.emplace(std::string(name), domain).first;
    }
    std::int64_t& current = found->second.current;
    appendInteger(result, modulus > 0 ? current % modulus : current);
    ++current;
    return nullptr;
  }

  std::map<std::string, Domain, std::less<>> domains_;
};

}  // namespace

VEX_COMMAND_MAKER(cmcount, VEXCountCmd)
