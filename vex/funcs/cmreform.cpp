// @Reformat(<direction>,<struct>,<attribute>): packs attributes into one text of fixed fields, or unpacks such a text,
// which it takes from the attribute. DestEncodeSrcDecode packs on the destination side, DestDecodeSrcEncode on the
// source side; the other side does the other. Structures are rows
// "Reformat STRUCT_DEF <name> <attribute> <format> [<attribute> <format>...]" with the formats String(<width>),
// Integer(<width>), Real(<width>,<decimals>), and Filler(<width>) for blanks that belong to nobody.
#include <unordered_map>

#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/rowtext.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Reformat",
                               .count = exactly(3),
                               .onCount = 351002,
                               .onConfigure = 351004,  // of a row that holds too little
                               .extract = VEXExtract::Own};
constexpr std::int32_t kWidest = 65535;

enum class Format { String, Integer, Real, Filler };

struct Field {
  VEXName attribute;
  Format format = Format::String;
  std::size_t width = 0;
  int decimals = 0;

  // "Real(10,2)"; false when it is nothing of the kind.
  bool parse(std::string_view text) {
    const std::size_t open = text.find('(');
    if (open == std::string_view::npos || !text.ends_with(')')) return false;
    const std::string_view word = text.substr(0, open);
    std::string_view numbers = text.substr(open + 1, text.size() - open - 2);
    if (equalsIgnoringCase(word, "String"))
      format = Format::String;
    else if (equalsIgnoringCase(word, "Integer"))
      format = Format::Integer;
    else if (equalsIgnoringCase(word, "Real"))
      format = Format::Real;
    else if (equalsIgnoringCase(word, "Filler"))
      format = Format::Filler;
    else
      return false;
    std::int32_t number = 0;
    if (format == Format::Real) {
      const std::size_t comma = numbers.find(',');
      if (comma == std::string_view::npos || !textToInteger(numbers.substr(comma + 1), number) || number < 0)
        return false;
      decimals = number;
      numbers = numbers.substr(0, comma);
    }
    if (!textToInteger(numbers, number) || number < 1 || number > kWidest || decimals >= number) return false;
    width = static_cast<std::size_t>(number);
    return true;
  }

  // Appends the value in its width; false when it does not fit, or is no number where it should be one.
  bool encode(std::string_view value, std::string& out) const {
    std::string text;
    double real = 0.0;
    std::int64_t integer = 0;
    const std::string_view plain = trimmed(value);
    if (format == Format::String) {
      text = cutToBytes(value, width);
    } else if (format == Format::Integer && !plain.empty()) {
      if (!textToInteger(plain, integer)) return false;
      appendInteger(text, integer);
    } else if (format == Format::Real && !plain.empty()) {
      if (!textToReal(plain, real)) return false;
      appendFixed(text, real, decimals);
    }
    if (text.size() > width) return false;
    const std::size_t blanks = width - text.size();
    if (format != Format::String) out.append(blanks, ' ');
    out += text;
    if (format == Format::String) out.append(blanks, ' ');
    return true;
  }
};

class VEXReformatCmd final : public VEXRuleCommand {
 public:
  VEXReformatCmd() : VEXRuleCommand(kRule) {}

  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    VEX_TRY(test(feature, params));
    return extendStatus(reformat(feature, VEXArgs(params), true, result));
  }

  VEXStatus configure(const VEXStringVector& params) override {
    if (params.size() < 2) return makeStatus(351004, {rowText(params)});
    if (params[1] != "STRUCT_DEF") return makeStatus(351005, {params[1]});
    if (params.size() < 5 || params.size() % 2 == 0) return makeStatus(351006, {rowText(params)});
    if (structures_.contains(params[2])) return makeStatus(351007, {params[2]});
    std::vector<Field> fields;
    for (std::size_t i = 3; i < params.size(); i += 2) {
      Field& field = fields.emplace_back();
      field.attribute = VEXName::intern(params[i]);
      if (params[i].empty() || !field.parse(params[i + 1])) return makeStatus(351010, {params[i + 1], params[2]});
    }
    structures_.emplace(params[2], std::move(fields));
    return nullptr;
  }

  VEXStatus closeDown() override {
    structures_.clear();
    return nullptr;
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) override {
    return extendStatus(reformat(feature, args, false, result));
  }

  VEXStatus reformat(VEXFeaturePtr& feature, const VEXArgs& args, bool isSource, std::string& result) const {
    const bool encodesOnDestination = args.text(0) == "DestEncodeSrcDecode";
    if (!encodesOnDestination && args.text(0) != "DestDecodeSrcEncode") return makeStatus(351003, {args.text(0)});
    const auto structure = structures_.find(args.text(1));
    if (structure == structures_.end()) return makeStatus(351008, {args.text(1)});
    if (feature == nullptr) return makeStatus(351011, {callText(kRule.name, args.texts())});
    if (encodesOnDestination != isSource) return extendStatus(encode(*feature, structure->second, result));
    const VEXText* text = feature->findAttribute(args.text(2));
    if (text == nullptr) return makeStatus(351009, {args.text(2), feature->featureType()});
    result = *text;
    decode(result, structure->second, *feature);
    return nullptr;
  }

  static VEXStatus encode(const VEXFeature& feature, const std::vector<Field>& fields, std::string& result) {
    for (const Field& field : fields) {
      const VEXText* value = feature.findAttribute(field.attribute);
      if (!field.encode(value == nullptr ? std::string_view() : *value, result))
        return makeStatus(351012,
                          {field.attribute.text(), *value, integerText(static_cast<std::int64_t>(field.width))});
    }
    return nullptr;
  }

  // A text that is too short leaves the last fields empty.
  static void decode(std::string_view text, const std::vector<Field>& fields, VEXFeature& feature) {
    for (const Field& field : fields) {
      std::string_view piece = text.substr(0, field.width);
      text.remove_prefix(piece.size());
      if (field.format == Format::Filler) continue;
      if (field.format != Format::String) piece = trimmed(piece, " ");
      piece = piece.substr(0, piece.find_last_not_of(' ') + 1);
      feature.setAttribute(field.attribute, piece);
    }
  }

  std::unordered_map<std::string, std::vector<Field>> structures_;
};

}  // namespace

VEX_COMMAND_MAKER(cmreform, VEXReformatCmd)
