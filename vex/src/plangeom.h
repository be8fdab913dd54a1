// Plane geometry on plain coordinates: no feature and no line in sight. A ring is closed: its first point stands
// again at its end.
#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "vex/inc/vexpoint.h"

using VEXOrdinates = std::span<const double>;

// Minimum and maximum of each ordinate; NaN where there is none.
struct VEXBox {
  double minX = kNoZ, minY = kNoZ, minZ = kNoZ;
  double maxX = kNoZ, maxY = kNoZ, maxZ = kNoZ;

  bool isEmpty() const { return !(minX <= maxX); }
  bool encloses(const VEXBox& other) const {  // equal edges allowed
    return minX <= other.minX && minY <= other.minY && maxX >= other.maxX && maxY >= other.maxY;
  }
  bool meets(const VEXBox& other) const {
    return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
  }
  void add(const VEXBox& other);
};

VEXBox boxOf(VEXOrdinates xs, VEXOrdinates ys);
// The signed area of a ring, positive when it runs counter-clockwise; 0 for fewer than 3 coordinates. Taken
// relative to its first y, which keeps the rounding error small far from the origin.
double signedRingArea(VEXOrdinates xs, VEXOrdinates ys);
// The same for coordinates that may be several rings. False: the first point may stand elsewhere than at the end.
bool singleRingArea(VEXOrdinates xs, VEXOrdinates ys, double& area);
double ringArea(VEXOrdinates xs, VEXOrdinates ys);
bool isRingClockwise(VEXOrdinates xs, VEXOrdinates ys);
// Half-open rule: a point on an edge belongs to one side only; a point equal to a vertex is inside.
bool isPointInRing(VEXOrdinates xs, VEXOrdinates ys, double px, double py);
// Every vertex of the inner ring lies in the outer one and no edges cross properly. Equal rings pass.
bool isRingInRing(VEXOrdinates outerXs, VEXOrdinates outerYs, VEXOrdinates innerXs, VEXOrdinates innerYs);
// True when a pair of edges crosses in a point that is no end of either.
bool ringsCross(VEXOrdinates xs1, VEXOrdinates ys1, VEXOrdinates xs2, VEXOrdinates ys2);
// Sine and cosine of an angle in radians; those of right angles are exact: 0, 1 and -1.
void exactSinCos(double radians, double& sine, double& cosine);
double distanceToSegment(double px, double py, double x1, double y1, double x2, double y2);
double lengthOf(VEXOrdinates xs, VEXOrdinates ys);
double lengthOf3D(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs);
// `count` points of an ellipse arc, all angles in radians: at start + i * sweep / (count - 1), equal successive
// points dropped, turned counter-clockwise by the rotation and moved to the centre. Points at right angles are exact,
// so that a full turn ends on its first point.
void ellipseArc(double centreX, double centreY, double semiPrimary, double semiSecondary, double rotation, double start,
                double sweep, std::size_t count, std::vector<double>& xs, std::vector<double>& ys);
