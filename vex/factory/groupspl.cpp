#include "vex/factory/groupspl.h"

VEXStatus VEXGroupSpool::add(VEXFeaturePtr& feature, std::size_t group) {
  key_.clear();
  appendIndexKey(key_, group);
  VEX_TRY(sorter_.add(*feature, key_));
  feature.reset();
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
  return true;
}

VEXStatus VEXGroupSpool::nextMember(VEXFeaturePtr& feature) {
  feature.reset();
  if (!hasMember()) return nullptr;
  feature = std::move(ahead_);
  return extendStatus(lookAhead());
}

void VEXGroupSpool::clear() {
  ahead_.reset();
  groups_.clear();
  sorter_.clear();
}
