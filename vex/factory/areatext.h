// The counts of a summary that tells features by their geometry: "1 point-in-polygon feature, 2 donut polygons, ...".
#pragma once

#include <cstdint>
#include <string>

#include "vex/inc/vexfeat.h"

struct VEXGeometryCounts {
  std::int64_t pips = 0, donuts = 0, polygons = 0, lines = 0, points = 0, aggregates = 0;

  std::string text(bool withAggregates) const;
};

// An aggregate of one point and one polygon or donut.
bool isPointInPolygon(const VEXFeature& feature);
