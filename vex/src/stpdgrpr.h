// VEXStupidGrouper: one group for everything, attached at once; for formats with a single output stream. Looks at
// no _DEF row.
#pragma once

#include "vex/src/vexgrper.h"

class VEXStupidGrouper : public VEXGrouper {
 public:
  explicit VEXStupidGrouper(VEXWriter& writer) : VEXGrouper(writer) {}
  using VEXGrouper::initialize;
  VEXStatus initialize(const std::string& defKeyword, const std::string& memberKeyword,
                       const std::string& memberFilter) override;
  VEXStatus findGroup(VEXFeaturePtr& feature, VEXGroup*& group) override;
  bool usesGroups() const override { return false; }

 private:
  VEXGroup* theGroup_ = nullptr;
};
