#include "vex/src/writer.h"

#include <algorithm>

#include "vex/inc/vexassert.h"
#include "vex/src/vexgrper.h"

VEXWriter::VEXWriter(std::unique_ptr<VEXWriterImp> imp) : imp_(std::move(imp)) {}

VEXWriter::~VEXWriter() = default;

std::unique_ptr<VEXGrouper> VEXWriter::createGrouper() {
  return imp_->createGrouper(*this);
}

VEXStatus VEXWriter::attachGroup(std::unique_ptr<VEXGroup> group) {
  group->setQueued();
  if (attached_.size() >= static_cast<std::size_t>(std::max(imp_->maxChannels(), 0))) {
    waiting_.push_back(std::move(group));
    return nullptr;
  }
  VEXChannel* chan = nullptr;
  VEX_TRY(imp_->getChannel(*group, chan));
  VEX_ASSERT(chan != NULL);
  attached_.push_back(std::move(group));
  return extendStatus(attached_.back()->attach(chan));
}

VEXStatus VEXWriter::flushGroups() {
  for (std::unique_ptr<VEXGroup>& group : attached_) {
    VEXChannel* channel = nullptr;
    VEX_TRY(group->detach(channel));
    VEX_TRY(imp_->closeChannel(channel));
    group.reset();
  }
  attached_.clear();
  for (std::unique_ptr<VEXGroup>& group : waiting_) {
    VEXChannel* channel = nullptr;
    VEX_TRY(imp_->getChannel(*group, channel));
    VEX_TRY(channel->writeGroup(*group));
    VEX_TRY(imp_->closeChannel(channel));
    group.reset();
  }
  waiting_.clear();
  return nullptr;
}

void VEXWriter::abort() {
  attached_.clear();
  waiting_.clear();
  imp_->abort();
}
