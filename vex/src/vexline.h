// VEXLine: the working form of all geometry, three parallel arrays of doubles and a geometry code. A line owns its
// arrays, or is a view into those of another line; a view is cheap, changes nothing and ends before its parent.
// Coordinates come from outside: what does not fit together ends in a status.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"
#include "vex/inc/vexpoint.h"
#include "vex/src/plangeom.h"

// The codes that have an area.
inline bool isAreaCode(std::uint32_t code) {
  return code == VEX_GEOM_POLYGON || code == VEX_GEOM_DONUT || code == VEX_GEOM_MULTI_POLY;
}

// A run of coordinates that holds no header row.
struct VEXLineRange {
  std::size_t first = 0;
  std::size_t count = 0;
  std::uint32_t code = VEX_GEOM_UNDEFINED;
};

// One part as the part finder sees it: 1 a point, 2 a line, 4 a ring.
struct VEXLinePart {
  std::uint32_t kind = 0;
  std::size_t last = 0;  // its last coordinate
  std::size_t next = 0;  // where the next part begins
};

class VEXLine {
 public:
  // ---- making ----
  VEXLine() = default;
  VEXLine(std::vector<double> x, std::vector<double> y, std::uint32_t geomType);
  VEXLine(std::vector<double> x, std::vector<double> y, std::vector<double> z, std::uint32_t geomType);
  VEXLine(VEXLine&& other) noexcept { *this = std::move(other); }
  VEXLine& operator=(VEXLine&& other) noexcept;
  VEXLine clone() const;  // deep copy that owns; no cached box
  // Coordinates first to last of the parent, borrowed.
  static VEXLine viewOf(const VEXLine& parent, std::size_t first, std::size_t last, std::uint32_t geomType);
  static VEXLine viewOf(VEXLine&&, std::size_t, std::size_t, std::uint32_t) = delete;
  // The whole feature, borrowed.
  static VEXLine viewOf(const VEXFeature& feature);
  static VEXLine fromPoint(const VEXPoint& point);
  // Equal x and y collapse to one point; a z that only one of them has is 0 in the other.
  static VEXLine fromPoints(const VEXPoint& from, const VEXPoint& to);
  static VEXLine fromBox(const VEXBox& box);
  // One header row and the coordinates of each; z, when any has it, is 0 in lines without. Must not be empty.
  static VEXLine aggregateOf(const std::vector<VEXLine>& lines);

  std::size_t numCoords() const { return numCoords_; }
  int dimension() const { return hasZ_ ? 3 : 2; }
  bool hasZ() const { return hasZ_; }
  std::uint32_t geomType() const { return geomType_; }
  void setGeomType(std::uint32_t code) { geomType_ = code; }
  bool ownsGeometry() const { return ownedGeom_; }
  VEXOrdinates xs() const { return {xCoord_, numCoords_}; }
  VEXOrdinates ys() const { return {yCoord_, numCoords_}; }
  VEXOrdinates zs() const { return hasZ_ ? VEXOrdinates(zCoord_, numCoords_) : VEXOrdinates(); }  // empty in 2D
  VEXPoint point(std::size_t at) const { return {xCoord_[at], yCoord_[at], hasZ_ ? zCoord_[at] : kNoZ}; }
  bool isClosed() const;  // two coordinates or more, the first equal to the last in x and y
  // For work on whole arrays, such as a change of coordinate system; only in lines that own them. Drop the box.
  std::span<double> mutableXs();
  std::span<double> mutableYs();
  std::span<double> mutableZs();  // empty in 2D

  // ---- parts ----
  // The part that begins at startPos, by coordinates that come again. 244008 on an aggregate.
  VEXStatus findPart(std::size_t startPos, VEXLinePart& part) const;
  // The runs of coordinates that hold no header: those of an aggregate's parts at any depth, otherwise the whole.
  // 244023: header rows that do not fit the coordinates, or nest too deep.
  VEXStatus leaves(std::vector<VEXLineRange>& ranges) const;
  // The direct parts of an aggregate, their header rows left out; otherwise the whole. 244023.
  VEXStatus directParts(std::vector<VEXLineRange>& ranges) const;
  // Views of the parts whose code is in the mask. On an aggregate the direct parts, or with `recursive` those of
  // nested aggregates, too; otherwise the parts that the part finder sees.
  VEXStatus split(std::uint32_t mask, std::vector<VEXLine>& parts, bool recursive = false) const;
  // Classifies the line by its parts (32, 64, 128, 16 or the one part's code), takes the second coordinate of
  // each point out, and gives where each part begins.
  VEXStatus partList(std::vector<std::size_t>& starts);
  // The rings of a polygon, a donut or a list of polygons; a ring that never closes is taken as it stands.
  void rings(std::vector<VEXLineRange>& ranges) const;
  // Which of these rings are holes: all but the first of a donut; otherwise a ring that lies in an odd number of
  // larger ones.
  void findHoles(const std::vector<VEXLineRange>& ranges, std::vector<bool>& isHole) const;
  VEXStatus numHoles(std::size_t& count) const;

  // ---- measures ----
  VEXStatus boundingBox(VEXBox& box) const;  // z left NaN; cached
  VEXStatus boundingCube(VEXBox& box) const;
  // Polygons by the signed sum of their rings, donuts less their holes, aggregates by their parts; else 0.
  VEXStatus area(double& area) const;
  // The jump from one part to the next is no edge. The 3D form is the plan length where there is no z.
  VEXStatus length2D(double& length) const;
  VEXStatus length3D(double& length) const;
  std::size_t lowestPoint() const;  // smallest y, then largest x, then the last. Not for an empty line

  // ---- comparing ----
  // Rings may begin anywhere and run either way, lines run either way.
  bool equals(const VEXLine& other, bool compareZ) const;
  // The first coordinate in which the two differ, or the shorter one's count; a tolerance lets vertices be left
  // out that lie within it of the other line.
  std::size_t comparePrefix(const VEXLine& other, int dimensions, double tolerance) const;
  VEXStatus containsPoint(double x, double y, bool& contained) const;
  VEXStatus containsLine(const VEXLine& other, bool& contained) const;  // 244002, 244003
  // A point inside a polygon, donut, or the first part of a list of them. 244001, 244020 to 244022.
  VEXStatus insidePoint(bool careful, VEXPoint& point) const;

  // ---- transforming; only for lines that own their arrays. Header rows are left alone ----
  VEXStatus scale(double x, double y, double z);                            // a NaN z leaves z alone
  VEXStatus offset(double x, double y, double z);                           // the same
  VEXStatus rotate2D(double centreX, double centreY, double angleDegrees);  // a positive angle turns clockwise
  // Row by row; z is touched only when it is there and the third row holds no NaN.
  VEXStatus transform(const double (&matrix)[3][3]);
  VEXStatus affine(double a, double b, double c, double d, double e, double f);
  VEXStatus inverseAffine(double a, double b, double c, double d, double e, double f);
  // One axis (0 x, 1 y, 2 z) to a number of decimals, half away from zero; then duplicates are removed.
  VEXStatus roundAxis(int axis, int decimals);
  VEXStatus toIntegers();        // truncation of value + 0.5; z truncated
  VEXStatus removeDuplicates();  // drops coordinates equal to their predecessor in x and y
  void reverse(std::size_t first, std::size_t last);
  // Every part the other way round, each in its place: rings, the lines of a list, the parts of an aggregate.
  VEXStatus reverseParts();
  // Outer rings counter-clockwise (true) or clockwise, holes the other way. 244010: no ring.
  VEXStatus orientRings(bool counterClockwise);
  VEXStatus addHole(const VEXLine& hole);  // 244012, 244013
  VEXStatus collapseToCentre();
  // A polygon of its own: the convex hull of a donut's outer ring, of an aggregate's parts, of all else; with fewer
  // than three coordinates a clone. 244031: no coordinate is a number.
  VEXStatus convexHull(VEXLine& hull) const;
  VEXStatus dropHoles();       // 244004: the outer ring never closes
  VEXStatus convertToMulti();  // 244009: a part of a code that it cannot hold
  // Sub-rings of a closed polygon, from each coordinate to its next equal one; code 0 below three edges.
  void splitAtRepeated(std::vector<VEXLine>& parts) const;
  VEXStatus simplifyDouglas(double tolerance);
  // The walk of VEXDeveau over each part; a fan of 1 is the band ("Poiker"), which moves vertices.
  VEXStatus simplifyDeveau(double tolerance, double sharpAngleDegrees, int fanSize);
  // New vertices on the segments, z between those of the ends. 244025: more than kMostNewCoords would come.
  VEXStatus addVerticesByCount(std::size_t perSegment);
  VEXStatus addVerticesByInterval(double longest);   // equal pieces, none longer
  VEXStatus addVerticesByDistance(double distance);  // at its multiples along each part, counted from the part's start
  // A polygon or a donut becomes the line along its middle: thinned by the tolerance, cut at its vertices and at
  // points no more than `spacing` apart on its edges. Code 0 when nothing remains; other codes stay. 244025.
  VEXStatus middleLine(double tolerance, double spacing);
  // Three coordinates to the arc through them. Angles in degrees. 244018, 244019.
  VEXStatus arcThrough(VEXPoint& centre, double& radius, double& startDegrees, double& sweepDegrees) const;
  // Pieces of n vertices that share their ends; views of this line.
  void chop(std::size_t n, std::vector<VEXLine>& pieces) const;
  void close();                               // repeats the first coordinate unless it stands at the end
  void closeParts();                          // the same for each part of a polyline; a polygon comes of it
  void append(double x, double y, double z);  // z only where the line has one
  // Four words that tell this geometry, in degrees, from others: two that place it on the earth, the time, and a
  // serial number with a random byte, whose lowest byte is left 0. 244014: no coordinates.
  VEXStatus gridKey(std::array<std::uint32_t, 4>& words) const;

  static constexpr std::size_t kMostNewCoords = 10'000'000;

 private:
  friend class VEXFeature;
  void adopt();  // points the pointers at the owned arrays
  VEXLine view(const VEXLineRange& range) const;
  VEXStatus headerAt(std::size_t spot, std::size_t end, VEXLineRange& part) const;
  VEXStatus collectLeaves(std::size_t first, std::size_t count, int depth, std::vector<VEXLineRange>& ranges) const;
  template <class Visit>
  VEXStatus forEachLeaf(Visit&& visit) const;  // visit(range), after all header rows have been proved sound
  template <class Change>
  VEXStatus changeEach(Change&& change);  // change(x, y, z*) on every coordinate but header rows
  // Runs on the line itself, or on each part of an aggregate that is none itself; parts without
  // coordinates go, header rows follow. On a failure the line is as it was, as far as the work leaves it so.
  using Work = std::function<VEXStatus(VEXLine&)>;
  VEXStatus workOnParts(const Work& work);
  VEXStatus rebuild(std::size_t first, std::size_t count, const Work& work, VEXLine& out) const;
  // The part that begins at startPos as the code has it: ends of rings are no ends in a polyline.
  void partAt(std::size_t startPos, VEXLinePart& part) const;
  void runAt(std::size_t startPos, VEXLinePart& part) const;  // the same, a ring of an area as rings() has it
  void findBreak(std::size_t startPos, VEXLinePart& part) const;
  void findPartOrRing(std::size_t startPos, VEXLinePart& part) const;
  std::size_t ringEnd(std::size_t start, std::size_t end) const;
  VEXLineRange ringAt(std::size_t start, std::size_t end) const;
  double areaOf(const VEXLineRange& range) const;
  double lengthIn(const VEXLineRange& range, bool in3D) const;
  void dropRepeated();
  void keepOnly(const std::vector<bool>& kept);
  void keepFirst(std::size_t count);
  void thinRun(std::size_t first, std::size_t last, double tolerance, std::vector<bool>& kept) const;
  void thin(double tolerance);
  void thinByWalk(double tolerance, double sharpAngleDegrees, int fanSize);
  void keepFour(std::size_t first, std::size_t last, std::vector<bool>& kept) const;
  void roundRun(int axis, int decimals);
  template <class Divide>
  VEXStatus divideSegments(Divide&& divide);
  VEXStatus insideByScan(VEXPoint& point) const;
  bool insideByAxes(const VEXBox& box, VEXPoint& point) const;

  std::vector<double> ownedX_;
  std::vector<double> ownedY_;
  std::vector<double> ownedZ_;
  const double* xCoord_ = nullptr;
  const double* yCoord_ = nullptr;
  const double* zCoord_ = nullptr;
  bool hasZ_ = false;
  std::size_t numCoords_ = 0;
  mutable std::optional<VEXBox> boundingBox_;
  std::uint32_t geomType_ = VEX_GEOM_UNDEFINED;
  bool ownedGeom_ = STK_TRUE;
};

// The convex hull's points, counter-clockwise from the leftmost (and lowest), which stands again at the end; those on
// an edge are left out. One distinct point comes twice. Coordinates that are no finite numbers are passed over.
std::vector<std::size_t> hullIndices(VEXOrdinates xs, VEXOrdinates ys);

template <class Visit>
VEXStatus VEXLine::forEachLeaf(Visit&& visit) const {
  if (geomType_ != VEX_GEOM_AGGREGATE) {
    visit(VEXLineRange{0, numCoords_, geomType_});
    return nullptr;
  }
  std::vector<VEXLineRange> ranges;
  VEX_TRY(leaves(ranges));
  for (const VEXLineRange& range : ranges) visit(range);
  return nullptr;
}
