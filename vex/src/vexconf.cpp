#include "vex/src/vexconf.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/platform/platform.h"
#include "vex/src/rowtext.h"
#include "vex/src/tabrdr.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"

VEXConfiguration* VEXConfiguration::instance_ = nullptr;

namespace {

constexpr std::size_t kKeywordColumns = 40;  // of the dump
constexpr int kMostComputations = 3000;      // of one token, before it is taken to never end

// "--NAME" in front of a macro's value.
bool isMacroArgument(std::string_view argument) {
  return argument.size() > 2 && argument.starts_with("--");
}

std::string_view withoutLeading(std::string_view text, char c) {
  while (text.starts_with(c)) text.remove_prefix(1);
  return text;
}

std::string oddArgumentsText(int argc, const char* const* argv) {
  std::string text =
      "Expected an even number of command line arguments, instead got " + integerText(argc) + " for command line: >> ";
  for (int i = 0; i < argc; ++i) text += "`" + std::string(argv[i]) + "' ";
  return text + "<<";
}

// Replaces every $[@Function(...)] of a token by the function's result. One that does not close stays.
VEXStatus computeToken(std::string& token, VEXFeaturePtr& scratch) {
  std::string result;
  for (int count = 0;; ++count) {
    std::size_t start = token.find("$[");
    std::size_t end = start == std::string::npos ? start : token.find(']', start);
    if (end == std::string::npos) return nullptr;
    if (scratch == nullptr) return makeStatus(236002, {token});
    if (count == kMostComputations || token.size() > TableReader::kLongestRow)
      return makeStatus(236007, {token.substr(start, 200), integerText(count)});
    std::string call = token.substr(start + 2, end - start - 2);
    VEX_TRY(VEXFeature::performFunction(call, scratch, result));
    token.replace(start, end + 1 - start, result);
  }
}

}  // namespace

VEXConfiguration::VEXConfiguration() {
  VEX_ASSERT(instance_ == NULL);
  instance_ = this;
}

VEXConfiguration::~VEXConfiguration() {
  VEX_ASSERT(instance_ == this);
  instance_ = nullptr;
}

VEXStatus VEXConfiguration::load(const std::string& mappingFileName, int argc, const char* const* argv) {
  VEX_ASSERT(instance_ != NULL);
  VEXConfiguration& self = *instance_;
  self.cursor_ = 0;
  if (argc % 2 != 0) return makeStatus(236001, {oddArgumentsText(argc, argv)});
  VEXMacroTable macros(64);
  for (int i = 0; i + 1 < argc; i += 2)
    if (isMacroArgument(argv[i])) macros.insert_or_assign(std::string(withoutLeading(argv[i], '-')), argv[i + 1]);
  self.rows_.clear();
  self.keywordIndex_.clear();
  std::vector<std::size_t> computedRows;
  if (!mappingFileName.empty()) VEX_TRY(self.readRows(mappingFileName, macros, computedRows));
  for (int i = 0; i + 1 < argc; i += 2) {
    if (isMacroArgument(argv[i])) continue;
    std::string_view keyword = withoutLeading(withoutLeading(argv[i], '-'), '+');
    if (argv[i][0] == '+')
      addValue(keyword, argv[i + 1]);
    else
      setValue(keyword, argv[i + 1]);
  }
  if (computedRows.empty()) return nullptr;
  return extendStatus(self.computeRows(computedRows));
}

VEXStatus VEXConfiguration::readRows(const std::string& fileName, VEXMacroTable& macros,
                                     std::vector<std::size_t>& computedRows) {
  TableReader reader(fileName, macros, "#", nullptr, nullptr, "\\");
  VEX_TRY(reader.checkOpen());
  VEXStringVector row;
  for (;;) {
    VEX_TRY(reader.getRow(row));
    if (row.empty()) return nullptr;
    if (std::any_of(row.begin(), row.end(), [](const std::string& token) { return token.find("$[") != token.npos; }))
      computedRows.push_back(rows_.size());
    addRow(std::move(row));
  }
}

VEXStatus VEXConfiguration::computeRows(const std::vector<std::size_t>& computedRows) {
  bool hasFunctions = VEXCommandRegistry::exists() && VEXObjectRecycler::exists();
  VEXFeaturePtr scratch = hasFunctions ? VEXObjectRecycler::instance().getFeature() : nullptr;
  if (!hasFunctions) return extendStatus(computeTokens(computedRows, scratch));
  isComputing_ = true;
  VEXStatus failure = VEXCommandRegistry::instance().configureFrom();
  if (failure == nullptr) failure = computeTokens(computedRows, scratch);
  scratch.reset();
  VEXCommandRegistry::instance().closeDownAll();
  isComputing_ = false;
  cursor_ = 0;
  return extendStatus(std::move(failure));
}

VEXStatus VEXConfiguration::computeTokens(const std::vector<std::size_t>& computedRows, VEXFeaturePtr& scratch) {
  for (std::size_t index : computedRows) {
    VEXStringVector& row = rows_[index];
    if (row.empty()) continue;  // the command line has replaced it
    std::string keyword = row[0];
    for (std::string& token : row) VEX_TRY(computeToken(token, scratch));
    if (row[0] == keyword) continue;
    std::erase(keywordIndex_[keyword], index);
    std::vector<std::size_t>& indices = keywordIndex_[row[0]];
    indices.insert(std::lower_bound(indices.begin(), indices.end(), index), index);
  }
  return nullptr;
}

void VEXConfiguration::rewind() {
  VEX_ASSERT(instance_ != NULL);
  instance_->cursor_ = 0;
}

bool VEXConfiguration::nextRow(VEXStringVector& row) {
  VEX_ASSERT(instance_ != NULL);
  row.clear();
  while (row.empty() && instance_->cursor_ < instance_->rows_.size()) row = instance_->rows_[instance_->cursor_++];
  return !row.empty();
}

bool VEXConfiguration::values(std::string_view keyword, VEXStringVector& list) {
  VEX_ASSERT(instance_ != NULL);
  list.clear();
  auto found = instance_->keywordIndex_.find(keyword);
  if (found == instance_->keywordIndex_.end()) return false;
  for (std::size_t index : found->second) {
    const VEXStringVector& row = instance_->rows_[index];
    if (!row.empty()) list.insert(list.end(), row.begin() + 1, row.end());
  }
  return !list.empty();
}

bool VEXConfiguration::value(std::string_view keyword, std::string& text) {
  VEXStringVector list;
  if (!values(keyword, list) || list.back().empty()) return false;
  text = list.back();
  return true;
}

bool VEXConfiguration::joinedValue(std::string_view keyword, std::string& text, std::string_view separator) {
  VEXStringVector list;
  if (!values(keyword, list)) return false;
  text = joined(list, separator);
  return true;
}

bool VEXConfiguration::flag(std::string_view keyword) {
  std::string text;
  return value(keyword, text) && (equalsIgnoringCase(text, "yes") || equalsIgnoringCase(text, "true"));
}

bool VEXConfiguration::intValue(std::string_view keyword, std::int32_t& number) {
  std::string text;
  if (!value(keyword, text)) return false;
  std::int32_t read = 0;
  if (textToInteger(text, read)) {
    number = read;
    return true;
  }
  logMessage(VEXSeverity::Warn, 236005, {keyword, text});
  return false;
}

bool VEXConfiguration::doubleValue(std::string_view keyword, double& number) {
  std::string text;
  if (!value(keyword, text)) return false;
  if (textToReal(text, number)) return true;
  logMessage(VEXSeverity::Warn, 236006, {keyword, text});
  return false;
}

bool VEXConfiguration::contains(std::string_view keyword) {
  VEX_ASSERT(instance_ != NULL);
  auto found = instance_->keywordIndex_.find(keyword);
  return found != instance_->keywordIndex_.end() && !found->second.empty();
}

bool VEXConfiguration::debugWord(std::string_view word) {
  VEXStringVector words;
  return instance_ != nullptr && values("ORV_DEBUG", words) &&
         std::find(words.begin(), words.end(), word) != words.end();
}

void VEXConfiguration::setValue(std::string_view keyword, std::string_view value) {
  VEX_ASSERT(instance_ != NULL);
  std::vector<std::size_t>& index = instance_->keywordIndex_[std::string(keyword)];
  for (std::size_t row : index) instance_->rows_[row].clear();
  index.clear();
  addValue(keyword, value);
}

void VEXConfiguration::addValue(std::string_view keyword, std::string_view value) {
  addRow(VEXStringVector{std::string(keyword), std::string(value)});
}

void VEXConfiguration::insertFront(VEXStringVector row) {
  VEX_ASSERT(instance_ != NULL);
  if (row.empty()) return;
  std::vector<std::size_t>& index = instance_->keywordIndex_[row[0]];
  index.insert(index.begin(), instance_->rows_.size());
  instance_->rows_.push_back(std::move(row));
}

void VEXConfiguration::addRow(VEXStringVector row) {
  VEX_ASSERT(instance_ != NULL);
  if (row.empty()) return;
  instance_->keywordIndex_[row[0]].push_back(instance_->rows_.size());
  instance_->rows_.push_back(std::move(row));
}

std::string VEXConfiguration::normalisePath(std::string_view path) {
  // A URL-style scheme keeps its separators.
  if (path.size() > 5 && (path.substr(3, 3) == "://" || path.substr(4, 3) == "://")) return std::string(path);
  std::string native = platform::nativePath(path);
  std::string squeezed;
  for (char c : native)
    if (c != '/' || squeezed.size() <= 1 || squeezed.back() != '/') squeezed += c;
  return squeezed;
}

void VEXConfiguration::dump() {
  VEX_ASSERT(instance_ != NULL);
  for (std::size_t i = 0; i < instance_->rows_.size(); ++i)
    logMessage(VEXSeverity::Inform, 236003,
               {integerText(static_cast<std::int64_t>(i + 1)), rowText(instance_->rows_[i])});
  VEXStringVector keywords;
  for (const auto& [keyword, indices] : instance_->keywordIndex_)
    if (!indices.empty()) keywords.push_back(keyword);
  std::sort(keywords.begin(), keywords.end());
  for (const std::string& keyword : keywords) {
    std::string shown = "`" + keyword + "'";
    if (shown.size() < kKeywordColumns) shown.resize(kKeywordColumns, ' ');
    std::size_t count = instance_->keywordIndex_.find(keyword)->second.size();
    logMessage(VEXSeverity::Inform, 236004, {shown, integerText(static_cast<std::int64_t>(count))});
  }
}
