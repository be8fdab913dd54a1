// VEXGroupSpool: the features of a factory, held by group until the end of input; on a temporary file when there are
// many. Groups come back in the order of their first feature, and the features of each in the order of arrival. Calls:
// add per feature, startReading, then nextGroup and nextMember until nothing comes, clear.
#pragma once

#include <cstddef>

#include "vex/factory/featsort.h"
#include "vex/factory/grouptab.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"

class VEXGroupSpool {
 public:
  VEXGroupTable& groups() { return groups_; }
  const VEXGroupTable& groups() const { return groups_; }
  // Takes the feature. Fails as VEXFeatureSorter does.
  VEXStatus add(VEXFeaturePtr& feature) { return extendStatus(add(feature, groups_.indexOf(*feature))); }
  // The same for a caller who numbers the groups, such as one that holds features of two kinds by the same groups.
  VEXStatus add(VEXFeaturePtr& feature, std::size_t group);
  VEXStatus startReading();
  // Moves to the next group, whose members that have not been fetched are still in front; false at the end.
  bool nextGroup(std::size_t& index);
  // In place of nextGroup: groups by rising number, those without features, too.
  void enterGroup(std::size_t index) { group_ = index; }
  VEXStatus nextMember(VEXFeaturePtr& feature);  // null at the end of the group
  bool hasMember() const { return ahead_ != nullptr && aheadGroup_ == group_; }
  void clear();

 private:
  VEXStatus lookAhead();

  VEXGroupTable groups_;
  VEXFeatureSorter sorter_;  // by number of group
  std::string key_;
  VEXFeaturePtr ahead_;  // the next feature; null at the end
  std::size_t aheadGroup_ = 0;
  std::size_t group_ = 0;
};
