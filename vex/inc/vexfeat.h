// VEXFeature: the one record that flows through the engine. Attributes (see VEXObject), a coordinate system
// name and one flat list of coordinates with a geometry code. Features come from the recycler and go back to
// it when their VEXFeaturePtr lets go.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/vexobjct.h"
#include "vex/inc/vexpoint.h"

// Geometry codes: bit flags, so that a mask can select kinds of part.
enum VEXGeometry : std::uint32_t {
  VEX_GEOM_UNDEFINED = 0,     // coordinates hold nothing meaningful
  VEX_GEOM_POINT = 1,         // one point
  VEX_GEOM_LINE = 2,          // a polyline
  VEX_GEOM_POLYGON = 4,       // one closed ring, first point equal to last
  VEX_GEOM_DONUT = 8,         // outer ring followed by hole rings, each ring closed
  VEX_GEOM_MULTI = 16,        // a flattened mixture of points and lines
  VEX_GEOM_MULTI_POINT = 32,  // several points, each written twice in succession
  VEX_GEOM_MULTI_LINE = 64,   // several lines, split at a repeated coordinate
  VEX_GEOM_MULTI_POLY = 128,  // several closed rings in sequence
  VEX_GEOM_PIP = 256,         // a point-in-polygon marker
  VEX_GEOM_AGGREGATE = 512,   // parts, each led by a header row (x code, y coordinate count, z 0)
};
inline constexpr std::uint32_t kEveryPartMask = 767;  // every kind of part but VEX_GEOM_PIP

class VEXFeature;
class VEXLine;
struct VEXBox;

// An arc of an ellipse; angles in degrees, counter-clockwise from the X axis.
struct VEXArc {
  double centreX = 0.0;
  double centreY = 0.0;
  double semiPrimary = 0.0;
  double semiSecondary = 0.0;
  double rotation = 0.0;
  double start = 0.0;
  double sweep = 360.0;
};

struct VEXRecycle {
  void operator()(VEXFeature* feature) const noexcept;  // hands it to VEXObjectRecycler, or deletes it without one
};
// Owns a feature. A VEXFeaturePtr& is a holder: the callee may take or delete the feature.
using VEXFeaturePtr = std::unique_ptr<VEXFeature, VEXRecycle>;
using VEXFeatureVector = std::vector<VEXFeaturePtr>;

class VEXFeature : public VEXObject {
 public:
  explicit VEXFeature(int dimension = 2, std::size_t numCoords = 0);

  const std::string& coordSys() const { return coordSys_; }  // empty: unknown
  const std::string& getCoordSys() const { return coordSys_; }
  void setCoordSys(std::string_view name) { coordSys_.assign(name); }
  const VEXStringVector& reprojectionCommands() const { return reprojectionCommands_; }
  void setReprojectionCommands(VEXStringVector commands) { reprojectionCommands_ = std::move(commands); }

  // ---- geometry code, mirrored in the attribute orv_geometry ----
  std::uint32_t geomType() const { return geomType_; }
  void setGeomType(std::uint32_t code);  // a code not in the table is stored as 0
  // Sets code and dimension as a stored feature has them: orv_geometry is not refreshed, z is left to the caller.
  void restoreGeometry(std::uint32_t code, int dimension);
  static bool isKnownGeomType(std::uint32_t code);
  static const char* geomTypeName(std::uint32_t code);  // "orv_line"; unknown codes "orv_undefined"

  // ---- coordinates ----
  int dimension() const { return dimension_; }  // 2 or 3
  void setDimension(int dimension);             // 2 drops z; anything else gives every coordinate z 0.0
  std::size_t numCoords() const { return xCoord_.size(); }
  void addCoord(double x, double y, double z = 0.0);  // z is kept only in a feature of dimension 3
  void reserveCoords(std::size_t count);
  // Cuts the coordinates at the end, or adds some at zero.
  void setNumCoords(std::size_t count) {
    resize(xCoord_, count);
    resize(yCoord_, count);
    if (dimension_ == 3) resize(zCoord_, count);
  }
  // Appends one ordinate (axis 0 x, 1 y, 2 z) to its sequence. Ordinates of the other axes that have not been given
  // yet are 0, and take the next ones that are; a z makes the feature 3D.
  void appendOrdinate(int axis, double value);
  void resetCoords();  // empties coordinates, keeps everything else
  // One coordinate; z is 0 in dimension 2. 395701, and -999999.9999999 three times: there is none at this index.
  VEXStatus coordAt(std::size_t index, double& x, double& y, double& z) const;
  std::span<const double> xs() const { return xCoord_; }
  std::span<const double> ys() const { return yCoord_; }
  std::span<const double> zs() const { return zCoord_; }  // empty in a feature of dimension 2
  // For readers that fill in place and for operations that move the arrays out and in. All three must be of
  // one length afterwards; z is empty in dimension 2.
  std::vector<double>& mutableXs() { return xCoord_; }
  std::vector<double>& mutableYs() { return yCoord_; }
  std::vector<double>& mutableZs() { return zCoord_; }
  void trimCoords() {  // capacity cut to what is used when far above it
    if (xCoord_.capacity() > kKeptCapacity || yCoord_.capacity() > kKeptCapacity || zCoord_.capacity() > kKeptCapacity)
      cutCapacity();
  }

  // ---- to a line and back ----
  // A copy of the coordinates with this feature's geometry code.
  VEXLine buildLine() const;
  // Moves the coordinates out: the caller gives them back through loadFromLine, on a failure, too.
  VEXLine takeLine();
  // The two as steps of a function.
  VEXStatus getLine(VEXLine& line) const;
  VEXStatus setLine(VEXLine&& line);
  // Takes the line's arrays; dimension and geometry code follow the line.
  void loadFromLine(VEXLine&& line);
  // Gives back what takeLine took: dimension, code and attributes stay.
  void restoreLine(VEXLine&& line);

  // ---- geometry operations (vexfeatgeom.cpp); on a failure the feature is as it was ----
  VEXStatus scale(double x, double y, double z);                            // a NaN z leaves z alone
  VEXStatus offset(double x, double y, double z);                           // the same
  VEXStatus rotate2D(double centreX, double centreY, double angleDegrees);  // a positive angle turns clockwise
  VEXStatus boundingBox(VEXBox& box) const;                                 // NaN without coordinates
  VEXStatus boundingCube(VEXBox& box) const;
  VEXStatus insidePoint(bool careful, VEXPoint& point) const;
  VEXStatus setOrientation(bool counterClockwise);           // of the outer rings
  VEXStatus getOrientation(bool& isCounterClockwise) const;  // of the first ring; 244010: there is none
  // Parts above the limit become lines of that many vertices that share their ends; all parts, the last first, become
  // an aggregate. Nothing happens to a feature within the limit. 878004: a limit of 0.
  VEXStatus chop(std::size_t maxVertices, bool& wasCut);
  // This feature's geometry becomes the aggregate of theirs; they go back to the recycler.
  VEXStatus buildAggregate(VEXFeatureVector& parts);
  // A feature for each part, with this one's attributes; nested aggregates are opened when `recursive` says so.
  // 878001: this is no aggregate.
  VEXStatus splitAggregate(bool recursive, VEXFeatureVector& featureVector) const;
  // The arc as a line, or a polygon when it closes; the first z is kept. 0 edges: as many as
  // ORV_ARC_DEGREES_PER_EDGE says. 878002: that keyword is not above 0. 878003: too many edges.
  VEXStatus arcToPoints(const VEXArc& arc, std::int64_t numEdges);
  // Three coordinates become the centre of the circle through them; radius (twice), start and sweep angle become
  // attributes. 244018, 244019.
  VEXStatus pointsToArc(std::string_view primaryName, std::string_view secondaryName, std::string_view startName,
                        std::string_view sweepName);
  // A smooth line through the points, each segment in `perSegment` pieces. The two outermost points at each end only
  // shape it, unless `extrapolate` has them made. 878005: too few points. 878006: 0 or too many pieces.
  VEXStatus interpolateSpline(std::size_t perSegment, bool extrapolate);

  // ---- whole ----
  void reset(int dimension, std::size_t numCoords);  // as new; buffers are kept
  // As reset(), but coordinates are there, any number with any values and each axis for itself: for a reader that
  // overwrites them and sets their number. It spares filling them with zeros first.
  void resetForFilling(int dimension);
  void cloneFrom(const VEXFeature& source);          // everything
  VEXFeaturePtr clone() const;
  // Parses one function text, runs it on the feature in the destination direction and gives its result.
  static VEXStatus performFunction(std::string_view text, VEXFeaturePtr& feature, std::string& result);

 private:
  static constexpr std::size_t kKeptCapacity = 65536;
  static void resize(std::vector<double>& coords, std::size_t count) {
    if (count > coords.size())
      coords.resize(count);
    else
      coords.erase(coords.begin() + static_cast<std::ptrdiff_t>(count), coords.end());
  }
  void resetAllButCoords(int dimension);
  void cutCapacity();

  std::vector<double> xCoord_;
  std::vector<double> yCoord_;
  std::vector<double> zCoord_;
  std::uint8_t dimension_;
  std::uint32_t geomType_ = VEX_GEOM_UNDEFINED;
  std::size_t missing_[3] = {0, 0, 0};  // of each axis: the last so many ordinates have not been given yet
  std::string coordSys_;
  VEXStringVector reprojectionCommands_;
};
