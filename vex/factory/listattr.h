// VEXListAttribute: the list attribute that a LIST_NAME clause names. Element i of the list `part' is the attributes
// `part{i}.<name>'; a name that has an index of its own keeps it: `part{0}.corner{3}.x'.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "vex/factory/factory.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"

class VEXListAttribute {
 public:
  // The one word of the clause; "{}" at its end may be left out. A second clause fails with `onTwice`, a name that
  // holds other braces with `onName`; both have keyword, line and clause as parameters.
  VEXStatus parse(const VEXClauseWords& clause, std::uint32_t onTwice, std::uint32_t onName);
  bool isSet() const { return !name_.empty(); }
  const std::string& name() const { return name_; }
  // Gives `feature` all attributes of the table as element `index` of the list.
  void addElement(VEXFeature& feature, const VEXAttributeTable& attributes, std::size_t index);
  // Its own, as element 0.
  void addOwnElement(VEXFeature& feature);
  // True when `name` belongs to element `index` of this list; `rest` is what stands behind "{<index>}.", and empty for
  // the element itself.
  bool matches(std::string_view name, std::size_t& index, std::string_view& rest) const;

 private:
  std::string name_;
  std::string element_;  // kept for its buffer
};
