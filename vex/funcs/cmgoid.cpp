// @GOID([VERIFY,<goid>]): an identifier made of where the feature is, of 32 hexadecimal digits, the last two of which
// check the others; with VERIFY, 1 or 0 for whether they do. The identifier is the MD5 digest of the coordinates in
// LL-83, each one's x, y and, in a feature of dimension 3, z as the eight bytes of a double, lowest byte first.
#include <algorithm>
#include <cstring>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/md5.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{.name = "GOID",
                               .count = oneOf(0, 2),
                               .onCount = 824005,
                               .onNoFeature = 824004,
                               .onConfigure = 824007,
                               .extract = VEXExtract::Clear};
constexpr std::size_t kLength = 32;
constexpr std::size_t kChecked = 30;  // digits that the last two check
constexpr std::string_view kDigits = "0123456789ABCDEF";

// The coordinates as bytes, in the coordinate system in which identifiers are made. While no projection library is
// bound that is the feature's own.
VEXStatus identifyingBytes(const VEXFeature& feature, std::string& bytes) {
  const auto append = [&bytes](double value) {
    value += 0.0;  // minus zero is the same place as zero
    char raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.append(raw, sizeof raw);
  };
  for (std::size_t i = 0; i < feature.numCoords(); ++i) {
    append(feature.xs()[i]);
    append(feature.ys()[i]);
    if (feature.dimension() == 3) append(feature.zs()[i]);
  }
  return nullptr;
}

// False when a digit is none.
bool checkDigits(std::string_view goid, std::string& check) {
  std::string turned(goid.substr(0, kChecked));
  std::rotate(turned.begin(), turned.begin() + 1, turned.end());
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < kChecked; i += 2) {
    const std::size_t high = kDigits.find(turned[i]);
    const std::size_t low = kDigits.find(turned[i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) return false;
    sum += static_cast<std::uint32_t>(high * 16 + low);
  }
  const std::uint32_t byte = (0U - sum) & 0xFF;
  check = {kDigits[byte >> 4], kDigits[byte & 15]};
  return true;
}

class VEXGoidCmd final : public VEXRuleCommand {
 public:
  VEXGoidCmd() : VEXRuleCommand(kRule) {}

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    return extendStatus(args.count() == 0 ? make(*feature, result) : verify(args, result));
  }

  static VEXStatus make(const VEXFeature& feature, std::string& result) {
    if (feature.coordSys().empty()) {
      logFeature(feature, VEXSeverity::Error, 20);
      return makeStatus(824006, {feature.featureType()});
    }
    std::string bytes;
    VEX_TRY(identifyingBytes(feature, bytes));
    for (std::uint32_t word : md5Digest(bytes))
      for (int shift = 28; shift >= 0; shift -= 4) result += kDigits[(word >> shift) & 15];
    std::string check;
    checkDigits(result, check);
    result.replace(kChecked, 2, check);
    return nullptr;
  }

  static VEXStatus verify(const VEXArgs& args, std::string& result) {
    if (!equalsIgnoringCase(args.text(0), "VERIFY")) return makeStatus(824001, {args.text(0)});
    const std::string goid = upperCased(args.text(1));
    if (goid.size() != kLength) return makeStatus(824002, {args.text(1)});
    if (goid.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789") != std::string::npos)
      return makeStatus(824003, {args.text(1)});
    std::string check;
    result = checkDigits(goid, check) && goid.ends_with(check) ? "1" : "0";
    return nullptr;
  }
};

}  // namespace

VEX_COMMAND_MAKER(cmgoid, VEXGoidCmd)
