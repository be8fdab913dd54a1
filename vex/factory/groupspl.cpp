#include "vex/factory/groupspl.h"

#include "vex/inc/numtext.h"

VEXStatus VEXGroupSpool::add(VEXFeaturePtr& feature, std::size_t group) {
  key_.clear();
  appendIndexKey(key_, group);
  VEX_TRY(sorter_.add(*feature, key_));
  feature.reset();
  ++numAdded_;
  return nullptr;
}

VEXStatus VEXGroupSpool::startReading() {
  VEX_TRY(sorter_.startReading());
  return extendStatus(lookAhead());
}

VEXStatus VEXGroupSpool::lookAhead() {
  VEX_TRY(sorter_.next(ahead_));
  if (ahead_ == nullptr) return nullptr;
  aheadGroup_ = 0;
  for (char byte : sorter_.key()) aheadGroup_ = aheadGroup_ << 8 | static_cast<unsigned char>(byte);
  return nullptr;
}

bool VEXGroupSpool::nextGroup(std::size_t& index) {
  if (ahead_ == nullptr) return false;
  index = group_ = aheadGroup_;
  isAtFirst_ = true;
  ++numGroups_;
  return true;
}

VEXStatus VEXGroupSpool::nextMember(VEXFeaturePtr& feature) {
  feature.reset();
  if (!hasMember()) return nullptr;
  feature = std::move(ahead_);
  VEX_TRY(lookAhead());
  if (isAtFirst_ && !hasMember()) ++numSingletons_;
  isAtFirst_ = false;
  return nullptr;
}

std::string VEXGroupSpool::combinedText() const {
  return "Combined " + countText(numAdded_, "input feature") + " into " + countText(numGroups_, "output feature") +
         " (including " + countText(numSingletons_, "singleton") + ")";
}

void VEXGroupSpool::clear() {
  ahead_.reset();
  groups_.clear();
  sorter_.clear();
}
