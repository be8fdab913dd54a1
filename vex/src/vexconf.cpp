#include "vex/src/vexconf.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"

VEXConfiguration* VEXConfiguration::instance_ = nullptr;

VEXConfiguration::VEXConfiguration() {
  VEX_ASSERT(instance_ == NULL);
  instance_ = this;
}

VEXConfiguration::~VEXConfiguration() {
  VEX_ASSERT(instance_ == this);
  instance_ = nullptr;
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
  auto found = instance_->keywordIndex_.find(std::string(keyword));
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
  auto found = instance_->keywordIndex_.find(std::string(keyword));
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
