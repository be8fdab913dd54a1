// VEXLine: the working form of all geometry, three arrays of doubles and a geometry code.
#pragma once

#include <cstdint>
#include <vector>

#include "vex/inc/vexfeat.h"

class VEXLine {
 public:
  VEXLine() = default;
  VEXLine(std::vector<double> x, std::vector<double> y, std::uint32_t geomType)
      : xCoord_(std::move(x)), yCoord_(std::move(y)), geomType_(geomType) {}
  VEXLine(std::vector<double> x, std::vector<double> y, std::vector<double> z, std::uint32_t geomType)
      : xCoord_(std::move(x)), yCoord_(std::move(y)), zCoord_(std::move(z)), hasZ_(true), geomType_(geomType) {}
  VEXLine(VEXLine&&) = default;
  VEXLine& operator=(VEXLine&&) = default;

  std::size_t numCoords() const { return xCoord_.size(); }
  int dimension() const { return hasZ_ ? 3 : 2; }
  std::uint32_t geomType() const { return geomType_; }

 private:
  friend class VEXFeature;
  std::vector<double> xCoord_;
  std::vector<double> yCoord_;
  std::vector<double> zCoord_;
  bool hasZ_ = false;
  std::uint32_t geomType_ = VEX_GEOM_UNDEFINED;
};
