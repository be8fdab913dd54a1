#include "vex/src/stpdgrpr.h"

#include "vex/src/writer.h"

VEXStatus VEXStupidGrouper::initialize(const std::string&, const std::string&, const std::string&) {
  auto group = std::make_unique<VEXGroup>(std::string_view(), std::string(), std::string());
  theGroup_ = group.get();
  return extendStatusText(writer().attachGroup(std::move(group)), "VEXStupidGrouper::initialize");
}

VEXStatus VEXStupidGrouper::findGroup(VEXFeaturePtr&, VEXGroup*& group) {
  group = theGroup_;
  return nullptr;
}
