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
  void resetCoords();  // empties coordinates, keeps everything else
  std::span<const double> xs() const { return xCoord_; }
  std::span<const double> ys() const { return yCoord_; }
  std::span<const double> zs() const { return zCoord_; }  // empty in a feature of dimension 2
  // For readers that fill in place and for operations that move the arrays out and in. All three must be of
  // one length afterwards; z is empty in dimension 2.
  std::vector<double>& mutableXs() { return xCoord_; }
  std::vector<double>& mutableYs() { return yCoord_; }
  std::vector<double>& mutableZs() { return zCoord_; }
  void trimCoords();  // capacity cut to what is used when far above it

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

  // ---- whole ----
  void reset(int dimension, std::size_t numCoords);  // as new; buffers are kept
  void cloneFrom(const VEXFeature& source);          // everything
  VEXFeaturePtr clone() const;
  // Parses one function text, runs it on the feature in the destination direction and gives its result.
  static VEXStatus performFunction(std::string_view text, VEXFeaturePtr& feature, std::string& result);

 private:
  std::vector<double> xCoord_;
  std::vector<double> yCoord_;
  std::vector<double> zCoord_;
  std::uint8_t dimension_;
  std::uint32_t geomType_ = VEX_GEOM_UNDEFINED;
  std::string coordSys_;
  VEXStringVector reprojectionCommands_;
};
