// @Split(<value>,<separator>,<field1>,...,<fieldN>): cuts a text into attributes, at a character or into runs of fixed
// widths. Fields that are lists ("name{}") take one element of a list value each.
#include "vex/funcs/onechar.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdrule.h"
#include "vex/src/vexlog.h"

namespace {

constexpr VEXCommandRule kRule{.name = "Split",
                               .count = atLeast(3),
                               .onCount = 843003,
                               .onNoFeature = 843009,
                               .onConfigure = 843010,
                               .extract = VEXExtract::Own};
constexpr char kListSeparator = '\x01';
constexpr std::size_t kFirstField = 2;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

void cutAt(std::string_view text, std::string_view separator, std::vector<std::string_view>& pieces) {
  pieces.clear();
  for (;;) {
    const std::size_t cut = text.find(separator);
    pieces.push_back(text.substr(0, cut));
    if (cut == std::string_view::npos) return;
    text.remove_prefix(cut + separator.size());
  }
}

class VEXSplitCmd final : public VEXRuleCommand {
 public:
  VEXSplitCmd() : VEXRuleCommand(kRule) {}

  // The source side does the same, with a number of its own for a feature that is not there.
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    if (kRule.count.accepts(params.size()) && feature == nullptr)
      return makeStatus(843007, {callText(kRule.name, params)});
    return extendStatus(execute(feature, params, result));
  }

 private:
  VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string&) override {
    bool isList = false;
    VEX_TRY(testFields(args, isList));
    VEX_TRY(takeSeparator(args));
    const std::string& value = args.text(0);
    if (!isList) {
      assign(*feature, args, value, -1);
      return nullptr;
    }
    const bool hasOwnSeparator = args.count() == kFirstField + 1 && !separator_.empty();
    cutAt(value, hasOwnSeparator ? std::string_view(separator_) : std::string_view(&kListSeparator, 1), elements_);
    for (std::size_t i = 0; i < elements_.size(); ++i)
      assign(*feature, args, elements_[i], static_cast<std::int64_t>(i));
    return nullptr;
  }

  static VEXStatus testFields(const VEXArgs& args, bool& isList) {
    if (args.text(1).empty()) return makeStatus(843004, {args.text(1)});
    std::size_t numLists = 0;
    for (std::size_t i = kFirstField; i < args.count(); ++i) {
      const std::size_t mark = args.text(i).find("{}");
      if (mark == std::string::npos) continue;
      ++numLists;
      if (args.text(i).find("{}", mark + 2) != std::string::npos) return makeStatus(843005, {args.text(i)});
    }
    isList = numLists > 0;
    if (isList && numLists != args.count() - kFirstField)
      return makeStatus(843006, {callText(kRule.name, args.texts())});
    return nullptr;
  }

  // Fills separator_, or leaves it empty and fills widths_.
  VEXStatus takeSeparator(const VEXArgs& args) {
    const std::string& text = args.text(1);
    separator_.clear();
    if (isOneCharacter(text)) {
      separator_ = text;
      return nullptr;
    }
    if (text[0] == '\\') {
      if (!decodeBackslash(text, separator_)) return makeStatus(843011, {text});
      return nullptr;
    }
    widths_.clear();
    for (std::size_t at = 0; at < text.size();) {
      std::size_t end = at;
      while (end < text.size() && isDigit(text[end])) ++end;
      if (end > at) {
        std::int32_t width = 0;
        if (!textToInteger(std::string_view(text).substr(at, end - at), width)) return makeStatus(843001, {text});
        widths_.push_back(static_cast<std::size_t>(width));
      }
      at = end + 1;
    }
    if (widths_.empty()) return makeStatus(843001, {text});
    const std::size_t numFields = args.count() - kFirstField;
    if (widths_.size() != numFields)
      return makeStatus(843002, {integerText(static_cast<std::int64_t>(widths_.size())),
                                 integerText(static_cast<std::int64_t>(numFields)), text});
    return nullptr;
  }

  void cutIntoWidths(std::string_view value) {
    pieces_.clear();
    for (std::size_t width : widths_) {
      const std::string_view piece = value.substr(0, width);
      pieces_.push_back(trimmed(piece, " "));
      value.remove_prefix(piece.size());
    }
  }

  // `index` is put into the names of list fields.
  void assign(VEXFeature& feature, const VEXArgs& args, std::string_view value, std::int64_t index) {
    const std::size_t numFields = args.count() - kFirstField;
    if (separator_.empty())
      cutIntoWidths(value);
    else
      cutAt(value, separator_, pieces_);
    if (pieces_.size() != numFields) warn(args, value);
    for (std::size_t i = 0; i < std::min(pieces_.size(), numFields); ++i) {
      const std::string& field = args.text(kFirstField + i);
      if (index < 0) {
        feature.setAttribute(field, pieces_[i]);
        continue;
      }
      const std::size_t mark = field.find("{}") + 1;
      name_.assign(field, 0, mark);
      appendInteger(name_, index);
      name_.append(field, mark);
      feature.setAttribute(name_, pieces_[i]);
    }
  }

  static void warn(const VEXArgs& args, std::string_view value) {
    const VEXStringVector fields(args.texts().begin() + kFirstField, args.texts().end());
    logText(VEXSeverity::Warn, "Split: Warning: Mismatch between # of pieces in `" + std::string(value) +
                                   "' when separated with `" + args.text(1) +
                                   "' and the number of attribute names in the list `" + joined(fields, ",") + "'");
  }

  // Work space that keeps its buffers from call to call.
  std::string separator_;
  std::string name_;
  std::vector<std::size_t> widths_;
  std::vector<std::string_view> elements_;
  std::vector<std::string_view> pieces_;
};

}  // namespace

VEX_COMMAND_MAKER(cmsplit, VEXSplitCmd)
