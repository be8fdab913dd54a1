// VEXSimpleGrouper: one group per feature type. A _DEF row names the type, then columns and their types, which
// become the group's schema in order.
#pragma once

#include "vex/src/vexgrper.h"

class VEXSimpleGrouper : public VEXGrouper {
 public:
  explicit VEXSimpleGrouper(VEXWriter& writer) : VEXGrouper(writer) {}
  VEXStatus parseDefLine(const VEXStringVector& row) override;  // 230001: the type has a group already
  std::size_t minDefFields() const override { return 1; }
};
