// @Timestamp(<format>): the local time, by the conversions of strftime, written with "^" in place of the percent sign.
#include <array>
#include <ctime>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Timestamp",
                               .count = exactly(1),
                               .onCount = 845001,
                               .onConfigure = 845002,
                               .extract = VEXExtract::EmptyResult};

class VEXTimestampCmd final : public VEXRuleCommand {
 public:
  VEXTimestampCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    const std::string format = replacedAll(replacedAll(args.text(0), "%", "%%"), "^", "%");
    const std::time_t now = std::time(nullptr);
    std::array<char, 1024> text;
    if (const std::tm* local = std::localtime(&now))
      result.append(text.data(), std::strftime(text.data(), text.size(), format.c_str(), local));
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmtmstmp, VEXTimestampCmd)
