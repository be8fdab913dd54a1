#include "vex/src/vexgroup.h"

#include "vex/inc/vexassert.h"
#include "vex/src/featfifo.h"
#include "vex/src/vexchan.h"

namespace {

// The one store of all features that wait for a channel; it lives while any group has features in it.
struct Spool {
  VEXFeatureStore store;
  std::int32_t useCount = 0;
};
std::unique_ptr<Spool> sharedSpool;

VEXFeatureStore& acquireSpool() {
  if (sharedSpool == nullptr) sharedSpool = std::make_unique<Spool>();
  ++sharedSpool->useCount;
  return sharedSpool->store;
}

void releaseSpool() {
  if (--sharedSpool->useCount == 0) sharedSpool.reset();
}

}  // namespace

VEXGroup::VEXGroup(std::string_view featureType, std::string groupType, std::string groupName)
    : groupType_(std::move(groupType)), groupName_(std::move(groupName)) {
  setFeatureType(featureType);
}

VEXGroup::~VEXGroup() {
  if (!spooled_.empty()) releaseSpool();
}

VEXStatus VEXGroup::addFeature(VEXFeaturePtr& feature) {
  VEX_ASSERT(feature != NULL);
  VEXFeaturePtr taken = std::move(feature);
  if (channel_ != nullptr && subGroup_ == nullptr) return extendStatus(channel_->writeFeature(*taken));
  const bool isFirst = spooled_.empty();
  VEXFeatureStore& store = isFirst ? acquireSpool() : sharedSpool->store;
  std::uint64_t id = 0;
  if (VEXStatus failure = store.store(taken, id)) {
    if (isFirst) releaseSpool();
    return extendStatus(std::move(failure));
  }
  spooled_.push_back(id);
  return nullptr;
}

VEXStatus VEXGroup::addChild(std::unique_ptr<VEXGroup> child) {
  if (channel_ != nullptr && subGroup_ == nullptr) {
    subGroup_ = std::move(child);
    return extendStatus(subGroup_->attach(channel_));
  }
  children_.push_back(std::move(child));
  return nullptr;
}

VEXStatus VEXGroup::attach(VEXChannel* channel) {
  VEXGroup* group = this;
  for (;;) {
    group->channel_ = channel;
    VEX_TRY(channel->startGroup(*group));
    if (group->children_.empty()) break;
    group->subGroup_ = std::move(group->children_.front());
    group->children_.erase(group->children_.begin());
    group = group->subGroup_.get();
  }
  return extendStatus(group->flushSpool(*channel));
}

VEXStatus VEXGroup::detach(VEXChannel*& out) {
  out = nullptr;
  VEX_ASSERT(channel_ != NULL);
  if (subGroup_ != nullptr) VEX_TRY(subGroup_->detach(out));
  for (const std::unique_ptr<VEXGroup>& child : children_) VEX_TRY(channel_->writeGroup(*child));
  VEX_TRY(flushSpool(*channel_));
  children_.clear();
  subGroup_.reset();
  VEX_TRY(channel_->endGroup(*this));
  out = channel_;
  channel_ = nullptr;
  return nullptr;
}

VEXStatus VEXGroup::flushSpool(VEXChannel& channel) {
  if (spooled_.empty()) return nullptr;
  for (std::uint64_t id : spooled_) {
    VEXFeaturePtr feature;
    VEX_TRY(sharedSpool->store.fetch(feature, id));
    VEX_TRY(channel.writeFeature(*feature));
  }
  spooled_.clear();
  releaseSpool();
  return nullptr;
}
