#include "vex/funcs/ordinate.h"

#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

VEXStatus firstCoordinate(const VEXFeature& feature, VEXPoint& point, bool& found) {
  std::size_t at = 0;
  found = feature.numCoords() > 0;
  const VEXLine line = VEXLine::viewOf(feature);
  if (feature.geomType() == VEX_GEOM_AGGREGATE) {
    std::vector<VEXLineRange> ranges;
    VEX_TRY(line.leaves(ranges));
    found = false;
    for (std::size_t i = 0; i < ranges.size() && !found; ++i) {
      found = ranges[i].count > 0;
      at = ranges[i].first;
    }
  }
  if (found) point = line.point(at);
  return nullptr;
}

VEXStatus readOrdinate(const VEXFeature& feature, int axis, std::string& result) {
  VEXPoint point;
  bool found = false;
  VEX_TRY(firstCoordinate(feature, point, found));
  if (axis == 2 && feature.dimension() != 3)
    result += '0';
  else if (found)
    appendReal(result, axis == 0 ? point.x : axis == 1 ? point.y : point.z);
  return nullptr;
}

VEXStatus appendOrdinate(VEXFeature& feature, int axis, const std::string& text, std::uint32_t number) {
  double value = 0.0;
  if (text.empty()) return nullptr;
  if (!textToReal(text, value)) return makeStatus(number, {text});
  feature.appendOrdinate(axis, value);
  return nullptr;
}
