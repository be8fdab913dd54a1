#include "vex/factory/areatext.h"

#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

std::string VEXGeometryCounts::text(bool withAggregates) const {
  std::string text = countText(pips, "point-in-polygon feature") + ", " + countText(donuts, "donut polygon") + ", " +
                     countText(polygons, "polygon") + ", " + countText(lines, "line") +
                     (withAggregates ? ", " : ", and ") + countText(points, "point");
  if (withAggregates) text += ", and " + countText(aggregates, "aggregate");
  return text;
}

bool isPointInPolygon(const VEXFeature& feature) {
  if (feature.geomType() != VEX_GEOM_AGGREGATE) return false;
  std::vector<VEXLineRange> parts;
  if (VEXStatus failure = VEXLine::viewOf(feature).leaves(parts)) return false;  // damaged: no such thing
  if (parts.size() != 2) return false;
  if (parts[0].code != VEX_GEOM_POINT) std::swap(parts[0], parts[1]);
  return parts[0].code == VEX_GEOM_POINT && parts[0].count == 1 &&
         (parts[1].code == VEX_GEOM_POLYGON || parts[1].code == VEX_GEOM_DONUT);
}
