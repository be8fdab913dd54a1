#include "vex/factory/listattr.h"

#include <charconv>

#include "vex/inc/numtext.h"

VEXStatus VEXListAttribute::parse(const VEXClauseWords& clause, std::uint32_t onTwice, std::uint32_t onName) {
  if (isSet()) return makeStatus(onTwice, {clause.keyword(), clause.lineText(), clause.clauseText()});
  std::string name = clause.word(0);
  if (name.ends_with("{}")) name.resize(name.size() - 2);
  if (name.empty() || name.find_first_of("{}") != std::string::npos)
    return makeStatus(onName, {clause.keyword(), clause.lineText(), clause.clauseText()});
  name_ = std::move(name);
  return nullptr;
}

void VEXListAttribute::addElement(VEXFeature& feature, const VEXAttributeTable& attributes, std::size_t index) {
  element_ = name_;
  element_ += '{';
  appendInteger(element_, static_cast<std::int64_t>(index));
  element_ += "}.";
  const std::size_t head = element_.size();
  attributes.forEach([&](VEXName name, std::string_view value) {
    element_.replace(head, std::string::npos, name.text());
    feature.setSequenced(element_, value);
  });
  // A long list would fill the buckets of a table that was made for a record.
  if (feature.numAttributes() > 2 * feature.table().buckets()) feature.compactAttributes();
}

void VEXListAttribute::addOwnElement(VEXFeature& feature) {
  VEXAttributeTable own;
  own.copyFrom(feature.table());
  addElement(feature, own, 0);
}

bool VEXListAttribute::matches(std::string_view name, std::size_t& index, std::string_view& rest) const {
  if (name.size() < name_.size() + 3 || !name.starts_with(name_) || name[name_.size()] != '{') return false;
  const char* first = name.data() + name_.size() + 1;
  const char* last = name.data() + name.size();
  const auto [end, error] = std::from_chars(first, last, index);
  if (error != std::errc() || end == first || end == last || *end != '}') return false;
  rest = std::string_view(end + 1, static_cast<std::size_t>(last - end - 1));
  if (rest.empty()) return true;
  if (rest[0] != '.' || rest.size() == 1) return false;
  rest.remove_prefix(1);
  return true;
}
