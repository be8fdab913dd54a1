// One road for every change of a feature's geometry: the arrays are moved into a line and back, nothing is copied.
#pragma once

#include "vex/inc/vexfeat.h"
#include "vex/src/vexline.h"

// Change: VEXStatus(VEXLine&). When it fails it must leave coordinates and dimension as they were, as the operations
// of VEXLine do; the feature is then untouched.
template <class Change>
VEXStatus changeGeometry(VEXFeature& feature, Change&& change) {
  VEXLine line = feature.takeLine();
  VEXStatus failure = change(line);
  if (failure != nullptr) {
    feature.restoreLine(std::move(line));
    return extendStatus(std::move(failure));
  }
  feature.loadFromLine(std::move(line));
  return nullptr;
}
