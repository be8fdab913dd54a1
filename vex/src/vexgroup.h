// VEXGroup: one place in the destination (a table, a layer, a file). A feature of its own, so that it has a
// name and attributes. Its schema is its sequenced attributes: column name to type text. Features come in through
// addFeature: a group with a channel writes them at once, any other spools them until the flush.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vex/inc/vexfeat.h"

class VEXChannel;

class VEXGroup : public VEXFeature {
 public:
  VEXGroup(std::string_view featureType, std::string groupType, std::string groupName);
  ~VEXGroup() override;

  const std::string& groupType() const { return groupType_; }
  const std::string& groupName() const { return groupName_; }
  VEXChannel* channel() const { return channel_; }
  bool isQueued() const { return isQueued_; }
  void setQueued() { isQueued_ = true; }

  VEXStatus addFeature(VEXFeaturePtr& feature);  // takes it
  VEXStatus addChild(std::unique_ptr<VEXGroup> child);
  // Gives the group its channel: startGroup on it, then downward into its first children.
  VEXStatus attach(VEXChannel* channel);
  // Ends an attached group: open children first, later children, spooled features, endGroup.
  VEXStatus detach(VEXChannel*& out);
  // Writes what was spooled here to the channel, in order.
  VEXStatus flushSpool(VEXChannel& channel);
  const std::vector<std::unique_ptr<VEXGroup>>& children() const { return children_; }

 private:
  VEXChannel* channel_ = nullptr;
  std::unique_ptr<VEXGroup> subGroup_;                // the child that is attached now
  std::vector<std::unique_ptr<VEXGroup>> children_;   // waiting
  std::vector<std::uint64_t> spooled_;                // identifiers in the shared spool
  std::string groupType_;
  std::string groupName_;
  bool isQueued_ = false;
};
