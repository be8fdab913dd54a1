// @ConvertBase(<value>,<originalBase>,<destBase>[,<outputWidth>]): rewrites a whole number in another base, from 2 to
// 36, with leading zeros up to the width. The source side exchanges the bases. An empty value stays empty.
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"

namespace {

constexpr VEXArgRule kArgs[] = {
    {.at = 1, .name = "originalBase", .kind = VEXArgKind::Integer, .onBad = 804002},
    {.at = 2, .name = "destBase", .kind = VEXArgKind::Integer, .onBad = 804002},
    {.at = 3, .name = "outputWidth", .kind = VEXArgKind::Integer, .onBad = 804002},
};
constexpr VEXCommandRule kRule{.name = "ConvertBase",
                               .count = between(3, 4),
                               .args = kArgs,
                               .onCount = 804001,
                               .onConfigure = 804003,
                               .extract = VEXExtract::Own};
constexpr std::size_t kMostDigits = 1000;  // of value and width: the conversion takes their square

int digitOf(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'z') return c - 'a' + 10;
  if (c >= 'A' && c <= 'Z') return c - 'A' + 10;
  return 99;
}

// Divides the number by `divisor`, drops leading zeros, gives the remainder.
int divide(std::vector<int>& digits, int base, int divisor) {
  int remainder = 0;
  for (int& digit : digits) {
    remainder = remainder * base + digit;
    digit = remainder / divisor;
    remainder %= divisor;
  }
  digits.erase(digits.begin(), std::find_if(digits.begin(), digits.end(), [](int digit) { return digit != 0; }));
  return remainder;
}

class VEXConvertBaseCmd final : public VEXRuleCommand {
 public:
  VEXConvertBaseCmd() : VEXRuleCommand(kRule) {}

  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    VEX_TRY(test(feature, params));
    VEXStringVector inverse = params;
    std::swap(inverse[1], inverse[2]);
    return extendStatus(execute(feature, inverse, result));
  }

 private:
  VEXStatus work(VEXFeaturePtr&, const VEXArgs& args, std::string& result) override {
    for (std::size_t at : {1, 2})
      if (args.integer(at) < 2 || args.integer(at) > 36)
        return makeStatus(804002, {at == 1 ? "originalBase" : "destBase", args.text(at)});
    const std::int64_t width = args.count() > 3 ? args.integer(3) : 0;
    if (width < 0 || width > std::int64_t{kMostDigits}) return makeStatus(804002, {"outputWidth", args.text(3)});
    std::string_view value = trimmed(args.text(0));
    const bool isNegative = value.starts_with('-');
    if (isNegative) value.remove_prefix(1);
    if (value.empty() && !isNegative) return nullptr;
    const int base = static_cast<int>(args.integer(1));
    const int newBase = static_cast<int>(args.integer(2));
    std::vector<int> digits;
    for (char c : value) digits.push_back(digitOf(c));
    if (value.empty() || value.size() > kMostDigits ||
        std::any_of(digits.begin(), digits.end(), [base](int digit) { return digit >= base; }))
      return makeStatus(804002, {"value", args.text(0)});
    std::string text;  // last digit first
    do text += "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ"[divide(digits, base, newBase)];
    while (!digits.empty());
    if (text.size() < static_cast<std::size_t>(width)) text.resize(static_cast<std::size_t>(width), '0');
    if (isNegative) text += '-';
    result.assign(text.rbegin(), text.rend());
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmbase, VEXConvertBaseCmd)
