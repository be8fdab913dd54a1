// ShapeParts: a feature's coordinates as the parts of a record, found in one walk that also gives their box. Rings
// without three edges go; coordinates that stand twice in a ring go; rings are turned so that shells run clockwise.
// The parts look into the feature and end before it changes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string_view>
#include <vector>

#include "vex/inc/vexfeat.h"
#include "vex/shape/shprings.h"
#include "vex/src/vexline.h"

struct ShapePart {
  std::size_t first = 0;
  std::size_t count = 0;  // coordinates of the source
  double area = 0.0;      // of a ring: positive when it runs counter-clockwise
  bool closes = false;    // the first one is written again behind the last
  bool isReversed = false;

  std::size_t numPoints() const { return count + (closes ? 1 : 0); }
};

// A box that grows coordinate by coordinate; not a number in a coordinate is passed over.
struct ShapeExtent {
  double minX = std::numeric_limits<double>::infinity();
  double minY = std::numeric_limits<double>::infinity();
  double maxX = -std::numeric_limits<double>::infinity();
  double maxY = -std::numeric_limits<double>::infinity();

  void add(double x, double y) {
    minX = x < minX ? x : minX;
    minY = y < minY ? y : minY;
    maxX = x > maxX ? x : maxX;
    maxY = y > maxY ? y : maxY;
  }
  void add(const ShapeExtent& other) {
    minX = other.minX < minX ? other.minX : minX;
    minY = other.minY < minY ? other.minY : minY;
    maxX = other.maxX > maxX ? other.maxX : maxX;
    maxY = other.maxY > maxY ? other.maxY : maxY;
  }
  bool isEmpty() const { return !(minX <= maxX); }
};

struct PlainRing {
  ShapeExtent box;
  double area = 0.0;  // its sign is right, its last bits are not those that adding in order gives
};

// Measures four coordinates or more, the last equal to the first, that are one ring in which nothing stands twice: what
// nearly every feature brings. False: they are not, or not all are numbers, or the area may well be zero.
bool measurePlainRing(const double* xs, const double* ys, std::size_t count, PlainRing& ring);

class ShapeParts {
 public:
  // Begins anew with a feature's coordinates.
  void start(const VEXFeature& feature);
  // A number for each coordinate, blanks between, "-" for none. False when there are not as many as coordinates.
  bool loadMeasures(std::string_view text);
  // The measures are the third ordinates.
  void takeMeasuresFromZ() { m_ = z_; }

  // Coordinates of a polyline: parts end at one that stands twice.
  void addLines(std::size_t first, std::size_t count);
  // Coordinates of rings one behind the other: a ring ends where its first coordinate comes again.
  void addRings(std::size_t first, std::size_t count);
  // Points that stand twice in succession count once.
  void addPoints(std::size_t first, std::size_t count, bool standTwice);
  // Puts rings in order. False when there are too many to tell shells from holes: their direction stays then.
  bool settleRings();

  bool isFinite() const { return isFinite_; }  // of all coordinates looked at
  const std::vector<ShapePart>& parts() const { return parts_; }
  std::size_t numPoints() const { return numPoints_; }
  const ShapeExtent& extent() const { return extent_; }
  const double* xs() const { return x_; }
  const double* ys() const { return y_; }
  const double* zs() const { return z_; }  // null: the feature has none
  const double* ms() const { return m_; }  // null: there are none

  // Makes a second part that would begin at this index begin one later, by a point in the middle of the first edge.
  // False when it begins elsewhere.
  bool insertMidpointBefore(std::size_t secondPartIndex);

 private:
  void addExtent(std::size_t first, std::size_t count);
  bool addPlainRing(std::size_t first, std::size_t count);  // false: not as plain as that
  std::size_t addAnyRing(std::size_t start, std::size_t end);
  void settleAreas();
  void push(const ShapePart& part) {
    parts_.push_back(part);
    numPoints_ += part.numPoints();
  }
  void copyCoordinates(std::size_t extra);
  void dropRepeats();

  const double* x_ = nullptr;
  const double* y_ = nullptr;
  const double* z_ = nullptr;
  const double* m_ = nullptr;
  std::size_t numCoords_ = 0;
  ShapeExtent extent_;
  bool isFinite_ = true;
  std::size_t numPoints_ = 0;
  bool hasRepeats_ = false;     // in a ring
  bool hasDropped_ = false;     // a ring: the box may be too large
  bool hasRoughAreas_ = false;  // those of plain rings
  std::vector<ShapePart> parts_;
  std::vector<ShapeRing> rings_;
  ShapeRingOrder ringOrder_;
  std::vector<double> measures_;
  std::vector<double> copyX_, copyY_, copyZ_, copyM_;
};
