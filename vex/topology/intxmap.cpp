#include "vex/topology/intxmap.h"

namespace {

VEXStatus intersect(VEXLineIntersector& intersector, const VEXLine& first, const VEXLine& second) {
  VEX_TRY(intersector.addLine(first, 0));
  VEX_TRY(intersector.addLine(second, 0));
  return extendStatus(intersector.computeIntersections());
}

}  // namespace

VEXIntersectionMap::VEXIntersectionMap(const VEXLine& first, const VEXLine& second, const VEXIntersectorParms& parms)
    : intersector_(parms), status_(intersect(intersector_, first, second)) {}
