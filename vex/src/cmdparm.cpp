#include "vex/src/cmdparm.h"

#include <algorithm>
#include <array>

#include "vex/inc/vexassert.h"
#include "vex/src/cmdrgstr.h"

namespace {

constexpr int kMostSteps = 3000;      // substitutions in one argument; an attribute may hold its own name
constexpr int kDeepestNesting = 200;  // calls within calls

// Characters that end the name of a variable or an attribute.
constexpr std::array<bool, 256> kDelimiters = [] {
  std::array<bool, 256> set{};
  for (char c : std::string_view("-+()*/%<>=!&^|?:~\"' \t,[]")) set[static_cast<unsigned char>(c)] = true;
  return set;
}();

bool isDelimiter(char c) {
  return kDelimiters[static_cast<unsigned char>(c)];
}

bool isNameOfFunction(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

struct Span {
  std::size_t begin = std::string_view::npos;
  std::size_t end = 0;
  bool found() const { return begin != std::string_view::npos; }
};

// The first `lead` that is followed by at least one character of a name, with that name.
Span findReference(std::string_view text, char lead) {
  for (std::size_t at = text.find(lead); at != std::string_view::npos; at = text.find(lead, at + 1)) {
    std::size_t end = at + 1;
    while (end < text.size() && !isDelimiter(text[end])) ++end;
    if (end > at + 1) return {at, end};
  }
  return {};
}

// The first "@name(" with all up to its closing parenthesis, or to the end when there is none.
Span findNestedCall(std::string_view text) {
  for (std::size_t at = text.find('@'); at != std::string_view::npos; at = text.find('@', at + 1)) {
    std::size_t end = at + 1;
    while (end < text.size() && isNameOfFunction(text[end])) ++end;
    if (end == at + 1 || end >= text.size() || text[end] != '(') continue;
    int depth = 0;
    for (; end < text.size(); ++end) {
      if (text[end] == '(') ++depth;
      if (text[end] == ')' && --depth == 0) return {at, end + 1};
    }
    return {at, text.size()};
  }
  return {};
}

bool isWholeReference(std::string_view text) {
  if (text.size() < 2 || (text[0] != '%' && text[0] != '&')) return false;
  return std::none_of(text.begin() + 1, text.end(), isDelimiter);
}

bool holdsReference(std::string_view text) {
  return findReference(text, '%').found() || findReference(text, '&').found() || findNestedCall(text).found();
}

// Hides the commas inside of a pair of brackets.
void protectCommas(std::string& text, char open, char close) {
  int depth = 0;
  for (char& c : text) {
    if (c == open) ++depth;
    if (c == close && depth > 0) --depth;
    if (c == ',' && depth > 0) c = '\x01';
  }
}

// "['text']" of more than three characters stands for the text within.
bool isVerbatim(std::string_view text) {
  return text.size() > 3 && text.starts_with("['") && text.ends_with("']");
}

struct NestingGuard {
  static inline int depth = 0;
  NestingGuard() { ++depth; }
  ~NestingGuard() { --depth; }
};

}  // namespace

VEXStatus VEXCommandParm::parse(std::string_view text) {
  std::size_t open = text.find('(');
  if (open == std::string_view::npos || open == 0) return makeStatus(209001, {text});
  name_ = text.substr(1, open - 1);
  command_ = VEXCommandRegistry::instance().find(name_);
  if (command_ == nullptr) return makeStatus(209002, {text});
  std::string rest(text.substr(open + 1));
  if (!rest.empty()) rest.pop_back();
  protectCommas(rest, '(', ')');
  protectCommas(rest, '[', ']');

  params_.clear();
  variables_.clear();
  expressions_.clear();
  plans_.clear();
  while (!rest.empty() || !params_.empty()) {
    std::size_t comma = rest.find(',');
    std::string argument = rest.substr(0, comma);
    std::replace(argument.begin(), argument.end(), '\x01', ',');
    if (isVerbatim(argument)) argument = argument.substr(2, argument.size() - 4);
    if (isWholeReference(argument))
      variables_.push_back(params_.size());
    else if (holdsReference(argument))
      expressions_.push_back(params_.size());
    params_.push_back(std::move(argument));
    if (comma == std::string::npos) break;
    rest.erase(0, comma + 1);
  }
  for (const std::string& argument : params_) plans_.push_back(planOf(argument));
  return nullptr;
}

VEXCommandParm::Plan VEXCommandParm::planOf(const std::string& argument) {
  Plan plan;
  plan.isSimple = !findNestedCall(argument).found();
  std::string_view text = argument;
  while (plan.isSimple) {
    Span variable = findReference(text, '%');
    Span attribute = findReference(text, '&');
    Span first = variable.begin < attribute.begin ? variable : attribute;
    plan.pieces.push_back(Piece{std::string(text.substr(0, first.begin)), {}, {}});
    if (!first.found()) break;
    std::string_view name = text.substr(first.begin, first.end - first.begin);
    if (name[0] == '%')
      plan.pieces.back().variable = name;
    else
      plan.pieces.back().attribute = VEXName::intern(name.substr(1));
    text.remove_prefix(first.end);
  }
  return plan;
}

// Puts the values in with one pass. False when a value could itself hold a reference: then the text is to be
// worked out step by step.
bool VEXCommandParm::expandSimply(const Plan& plan, const VEXFeature* feature, const VEXVariableTable& table,
                                  std::string& out) {
  if (!plan.isSimple) return false;
  out.clear();
  for (const Piece& piece : plan.pieces) {
    out += piece.literal;
    std::string_view value;
    if (!piece.variable.empty()) {
      table.find(piece.variable, value);
    } else if (!piece.attribute.isNull() && feature != nullptr) {
      const VEXText* found = feature->findAttribute(piece.attribute);
      if (found != nullptr) value = *found;
    }
    if (value.find_first_of("%&@") != std::string_view::npos) return false;
    out += value;
  }
  return true;
}

VEXStatus VEXCommandParm::expandAll(VEXFeaturePtr& feature, const VEXVariableTable& table) {
  expanded_.resize(params_.size());
  for (std::size_t i = 0; i < params_.size(); ++i) {
    if (expandSimply(plans_[i], feature.get(), table, expanded_[i])) continue;
    expanded_[i] = params_[i];
    VEX_TRY(expand(expanded_[i], feature, table));
  }
  return nullptr;
}

VEXStatus VEXCommandParm::expand(std::string& argument, VEXFeaturePtr& feature, const VEXVariableTable& table) {
  const std::string original = argument;
  int steps = 0;
  for (Span at = findReference(argument, '%'); at.found(); at = findReference(argument, '%')) {
    if (++steps > kMostSteps) return makeStatus(209008, {original});
    std::string_view value;
    table.find(std::string_view(argument).substr(at.begin, at.end - at.begin), value);
    argument.replace(at.begin, at.end - at.begin, std::string(value));
  }
  for (Span at = findReference(argument, '&'); at.found(); at = findReference(argument, '&')) {
    if (++steps > kMostSteps) return makeStatus(209008, {original});
    std::string_view name = std::string_view(argument).substr(at.begin + 1, at.end - at.begin - 1);
    const VEXText* value = feature == nullptr ? nullptr : feature->findAttribute(name);
    argument.replace(at.begin, at.end - at.begin, value == nullptr ? std::string_view() : *value);
  }
  for (Span at = findNestedCall(argument); at.found(); at = findNestedCall(argument)) {
    if (++steps > kMostSteps || NestingGuard::depth >= kDeepestNesting) return makeStatus(209008, {original});
    std::string text = argument.substr(at.begin, at.end - at.begin);
    std::string value;
    VEX_TRY(VEXFeature::performFunction(text, feature, value));
    if (feature == nullptr) return makeStatus(209006, {text});
    argument.replace(at.begin, at.end - at.begin, value);
  }
  return nullptr;
}

VEXStatus VEXCommandParm::execute(VEXFeaturePtr& feature, VEXVariableTable& table, std::string& result) {
  VEX_ASSERT(feature != NULL);
  NestingGuard guard;
  result.clear();
  if (needsExpansion()) VEX_TRY(expandAll(feature, table));
  return extendStatus(command_->execute(feature, needsExpansion() ? expanded_ : params_, result));
}

VEXStatus VEXCommandParm::executeList(VEXFeaturePtr& feature, VEXVariableTable& table, VEXStringVector& results) {
  VEX_ASSERT(feature != NULL);
  NestingGuard guard;
  results.clear();
  if (variables_.empty()) return makeStatus(209003, {name_});
  auto listed = std::find_if(params_.begin(), params_.end(), [](const std::string& p) { return p.starts_with('%'); });
  if (listed == params_.end()) return makeStatus(209004, {name_});
  auto index = static_cast<std::size_t>(listed - params_.begin());
  VEX_TRY(expandAll(feature, table));
  std::string_view value;
  if (!table.find(*listed, value)) return makeStatus(209005, {*listed, name_});
  if (value.starts_with(kListMark)) value.remove_prefix(1);
  while (feature != nullptr) {
    std::size_t cut = value.find(kListSeparator);
    expanded_[index].assign(value.substr(0, cut));
    results.emplace_back();
    VEX_TRY(command_->execute(feature, expanded_, results.back()));
    if (cut == std::string_view::npos) break;
    value.remove_prefix(cut + 1);
  }
  return nullptr;
}

VEXStatus VEXCommandParm::extract(VEXFeaturePtr& feature, VEXVariableTable& table, std::string& result) {
  NestingGuard guard;
  result.clear();
  if (!expressions_.empty()) {
    VEX_TRY(expandAll(feature, table));
    VEX_TRY(command_->extract(feature, expanded_, result));
  } else {
    VEX_TRY(command_->extract(feature, params_, result));
  }
  if (!variables_.empty()) table.set(params_[variables_[0]], result);
  return nullptr;
}

VEXStatus VEXCommandParm::extractValue(VEXFeaturePtr& feature, std::string_view value, VEXVariableTable& table,
                                       std::string& result) {
  NestingGuard guard;
  result.clear();
  if (!expressions_.empty())
    VEX_TRY(expandAll(feature, table));
  else
    expanded_ = params_;
  if (!variables_.empty()) expanded_[variables_[0]].assign(value);
  VEX_TRY(command_->extract(feature, expanded_, result));
  if (!variables_.empty()) table.set(params_[variables_[0]], result);
  return nullptr;
}

VEXStatus VEXCommandParm::extractList(VEXFeaturePtr& feature, const VEXStringVector& values, VEXVariableTable& table) {
  NestingGuard guard;
  if (variables_.empty()) return makeStatus(209007, {name_});
  std::string all;
  std::string result;
  for (std::size_t i = 0; i < values.size() && feature != nullptr; ++i) {
    if (!expressions_.empty())
      VEX_TRY(expandAll(feature, table));
    else
      expanded_ = params_;
    expanded_[variables_[0]] = values[i];
    result.clear();
    VEX_TRY(command_->extract(feature, expanded_, result));
    if (i > 0) all += kListSeparator;
    all += result;
  }
  table.set(params_[variables_[0]], all);
  return nullptr;
}

void VEXCommandParm::variables(VEXStringVector& names) const {
  VEXStringVector own;
  for (const std::string& argument : params_) {
    std::string_view text = argument;
    for (Span at = findReference(text, '%'); at.found(); at = findReference(text, '%')) {
      std::string name(text.substr(at.begin, at.end - at.begin));
      if (std::find(own.begin(), own.end(), name) == own.end()) own.push_back(std::move(name));
      text.remove_prefix(at.end);
    }
  }
  names.insert(names.end(), own.begin(), own.end());
}
