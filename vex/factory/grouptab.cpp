#include "vex/factory/grouptab.h"

#include <cstring>

#include "vex/src/vexrcycl.h"

namespace {

// Each value stands in a key behind its length: whatever bytes values hold, `a' with `bc' and `ab' with `c' differ.
void appendValue(std::string& key, std::string_view value) {
  const std::uint64_t length = value.size();
  char bytes[sizeof length];
  std::memcpy(bytes, &length, sizeof length);
  key.append(bytes, sizeof bytes).append(value);
}

std::string_view takeValue(std::string_view& key) {
  std::uint64_t length = 0;
  std::memcpy(&length, key.data(), sizeof length);
  const std::string_view value = key.substr(sizeof length, static_cast<std::size_t>(length));
  key.remove_prefix(sizeof length + value.size());
  return value;
}

}  // namespace

VEXStatus VEXGroupTable::parse(const VEXClauseWords& clause, std::uint32_t onTwice) {
  if (hasFields()) return makeStatus(onTwice, {clause.keyword(), clause.lineText(), clause.clauseText()});
  VEXStringVector names;
  for (std::size_t at = 0; at < clause.count(); ++at) names.push_back(clause.word(at));
  setFields(names);
  return nullptr;
}

void VEXGroupTable::setFields(const VEXStringVector& names) {
  clear();
  fields_ = names;
  names_.clear();
  for (const std::string& name : fields_) names_.push_back(VEXName::intern(name));
}

std::size_t VEXGroupTable::indexOf(const VEXFeature& feature) {
  key_.clear();
  for (VEXName name : names_) {
    const VEXText* value = feature.findAttribute(name);
    appendValue(key_, value == nullptr ? std::string_view() : *value);
  }
  if (auto found = indices_.find(key_); found != indices_.end()) return found->second;
  const auto added = indices_.emplace(key_, keys_.size()).first;
  keys_.push_back(&added->first);
  return added->second;
}

void VEXGroupTable::clear() {
  keys_.clear();
  indices_.clear();
}

VEXStringVector VEXGroupTable::values(std::size_t index) const {
  VEXStringVector values;
  for (std::string_view key = *keys_[index]; !key.empty();) values.emplace_back(takeValue(key));
  return values;
}

void VEXGroupTable::setValues(std::size_t index, VEXFeature& feature) const {
  std::string_view key = *keys_[index];
  for (VEXName name : names_) feature.setAttribute(name, takeValue(key));
}

VEXFeaturePtr VEXGroupTable::makeModel(std::size_t index, const VEXFeature& member) const {
  VEXFeaturePtr model = VEXObjectRecycler::instance().getFeature(2, 0);
  model->setFeatureType(member.featureType());
  model->setCoordSys(member.coordSys());
  setValues(index, *model);
  return model;
}

std::string VEXGroupTable::where(std::size_t index) const {
  std::string text;
  std::string_view key = *keys_[index];
  for (const std::string& name : fields_) {
    if (!text.empty()) text += ", and ";
    text.append("`").append(name).append("' is `").append(takeValue(key)).append("'");
  }
  return text;
}

std::string VEXGroupTable::submodelText(std::size_t index) const {
  return hasFields() ? " in submodel where " + where(index) : std::string();
}
