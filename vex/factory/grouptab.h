// VEXGroupTable: the groups of a factory with GROUP_BY. Features whose GROUP_BY values are equal are one group; groups
// are numbered from 0 in the order of their first feature. Calls: setFields once, then indexOf per feature. Without
// fields every feature is in group 0.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vex/factory/factory.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"

class VEXGroupTable {
 public:
  // The words of a GROUP_BY clause. A second clause fails with `onTwice` (keyword, line, clause).
  VEXStatus parse(const VEXClauseWords& clause, std::uint32_t onTwice);
  void setFields(const VEXStringVector& names);
  const VEXStringVector& fields() const { return fields_; }
  bool hasFields() const { return !fields_.empty(); }

  // The group of a feature; a new one takes the next number. An absent attribute counts as an empty value.
  std::size_t indexOf(const VEXFeature& feature);
  std::size_t entries() const { return keys_.size(); }
  void clear();  // forgets the groups, keeps the fields
  // The values of a group, in the order of the fields.
  VEXStringVector values(std::size_t index) const;
  // Gives a feature the group's values under the names of the fields.
  void setValues(std::size_t index, VEXFeature& feature) const;
  // A feature for what is made of a whole group: type and coordinate system of a member, the group's values, no more.
  VEXFeaturePtr makeModel(std::size_t index, const VEXFeature& member) const;
  // "`kind' is `road', and `lanes' is `2'"; empty without fields.
  std::string where(std::size_t index) const;
  // " in submodel where " and the above, to stand behind a count; empty without fields.
  std::string submodelText(std::size_t index) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  VEXStringVector fields_;
  std::vector<VEXName> names_;  // of fields_
  std::string key_;             // kept for its buffer
  std::unordered_map<std::string, std::size_t, Hash, std::equal_to<>> indices_;
  std::vector<const std::string*> keys_;  // into indices_, by number
};
