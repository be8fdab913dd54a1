#include "vex/inc/vexfeat.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include "vex/inc/vexassert.h"
#include "vex/src/cmdparm.h"
#include "vex/src/vexline.h"
#include "vex/src/vexrcycl.h"

namespace {

const VEXName kGeometry = VEXName::intern("orv_geometry");

struct GeometryName {
  std::uint32_t code;
  std::string_view name;
};
// The code of each row but the first is 1 << (row - 1).
constexpr GeometryName kGeometryNames[] = {
    {VEX_GEOM_UNDEFINED, "orv_undefined"},
    {VEX_GEOM_POINT, "orv_point"},
    {VEX_GEOM_LINE, "orv_line"},
    {VEX_GEOM_POLYGON, "orv_polygon"},
    {VEX_GEOM_DONUT, "orv_donut"},
    {VEX_GEOM_MULTI, "orv_multi"},
    {VEX_GEOM_MULTI_POINT, "orv_multi_point"},
    {VEX_GEOM_MULTI_LINE, "orv_multi_line"},
    {VEX_GEOM_MULTI_POLY, "orv_multi_poly"},
    {VEX_GEOM_PIP, "orv_pip"},
    {VEX_GEOM_AGGREGATE, "orv_aggregate"},
};

const GeometryName* findGeometry(std::uint32_t code) {
  if (code == VEX_GEOM_UNDEFINED) return &kGeometryNames[0];
  if ((code & (code - 1)) != 0 || code > VEX_GEOM_AGGREGATE) return nullptr;  // has_single_bit is a call
  return &kGeometryNames[std::countr_zero(code) + 1];
}

// Cuts a capacity that is far above its use. A capacity within a small factor stays: a recycled feature grows
// into it again without allocating.
void trim(std::vector<double>& coords, std::size_t kept) {
  if (coords.capacity() <= kept) return;
  if (coords.capacity() / 4 > coords.size()) coords.shrink_to_fit();
}

}  // namespace

void VEXRecycle::operator()(VEXFeature* feature) const noexcept {
  if (VEXObjectRecycler::exists())
    VEXObjectRecycler::instance().releaseFeature(feature);
  else
    delete feature;
}

VEXFeature::VEXFeature(int dimension, std::size_t numCoords) : dimension_(dimension == 2 ? 2 : 3) {
  reserveCoords(numCoords);
}

void VEXFeature::setGeomType(std::uint32_t code) {
  const GeometryName* known = findGeometry(code);
  const GeometryName& row = known != nullptr ? *known : kGeometryNames[0];
  geomType_ = known != nullptr ? code : static_cast<std::uint32_t>(VEX_GEOM_UNDEFINED);
  setAttribute(kGeometry, row.name);
}

void VEXFeature::restoreGeometry(std::uint32_t code, int dimension) {
  geomType_ = code;
  dimension_ = static_cast<std::uint8_t>(dimension);
}

bool VEXFeature::isKnownGeomType(std::uint32_t code) {
  return findGeometry(code) != nullptr;
}

const char* VEXFeature::geomTypeName(std::uint32_t code) {
  const GeometryName* row = findGeometry(code);
  return (row != nullptr ? row->name : kGeometryNames[0].name).data();
}

void VEXFeature::setDimension(int dimension) {
  dimension_ = dimension == 2 ? 2 : 3;
  if (dimension_ == 2)
    zCoord_.clear();
  else
    zCoord_.assign(xCoord_.size(), 0.0);
}

void VEXFeature::addCoord(double x, double y, double z) {
  xCoord_.push_back(x);
  yCoord_.push_back(y);
  if (dimension_ == 3) zCoord_.push_back(z);
}

void VEXFeature::reserveCoords(std::size_t count) {
  xCoord_.reserve(count);
  yCoord_.reserve(count);
  if (dimension_ == 3) zCoord_.reserve(count);
}

void VEXFeature::resetCoords() {
  xCoord_.clear();
  yCoord_.clear();
  zCoord_.clear();
  std::fill(std::begin(missing_), std::end(missing_), 0);
}

void VEXFeature::cutCapacity() {
  trim(xCoord_, kKeptCapacity);
  trim(yCoord_, kKeptCapacity);
  trim(zCoord_, kKeptCapacity);
}

VEXLine VEXFeature::buildLine() const {
  VEX_ASSERT(xCoord_.size() == yCoord_.size());
  if (dimension_ == 2) return VEXLine(xCoord_, yCoord_, geomType_);
  VEX_ASSERT(xCoord_.size() == zCoord_.size());
  return VEXLine(xCoord_, yCoord_, zCoord_, geomType_);
}

VEXLine VEXFeature::takeLine() {
  VEX_ASSERT(xCoord_.size() == yCoord_.size());
  if (dimension_ == 2) return VEXLine(std::move(xCoord_), std::move(yCoord_), geomType_);
  VEX_ASSERT(xCoord_.size() == zCoord_.size());
  return VEXLine(std::move(xCoord_), std::move(yCoord_), std::move(zCoord_), geomType_);
}

void VEXFeature::loadFromLine(VEXLine&& line) {
  if (!line.ownsGeometry()) line = line.clone();
  dimension_ = static_cast<std::uint8_t>(line.dimension());
  setGeomType(line.geomType());
  std::fill(std::begin(missing_), std::end(missing_), 0);
  restoreLine(std::move(line));
}

void VEXFeature::restoreLine(VEXLine&& line) {
  xCoord_ = std::move(line.ownedX_);
  yCoord_ = std::move(line.ownedY_);
  zCoord_ = std::move(line.ownedZ_);
  line = VEXLine();
}

VEXStatus VEXFeature::getLine(VEXLine& line) const {
  line = buildLine();
  return nullptr;
}

VEXStatus VEXFeature::setLine(VEXLine&& line) {
  loadFromLine(std::move(line));
  return nullptr;
}

void VEXFeature::reset(int dimension, std::size_t numCoords) {
  resetAllButCoords(dimension);
  resetCoords();
  if (numCoords > 0) reserveCoords(numCoords);
}

void VEXFeature::resetForFilling(int dimension) {
  resetAllButCoords(dimension);
  std::fill(std::begin(missing_), std::end(missing_), 0);
  if (dimension_ == 2) zCoord_.clear();
}

void VEXFeature::resetAllButCoords(int dimension) {
  resetAttributes();
  coordSys_.clear();
  if (!reprojectionCommands_.empty()) reprojectionCommands_.clear();
  geomType_ = VEX_GEOM_UNDEFINED;
  dimension_ = dimension == 2 ? 2 : 3;
}

void VEXFeature::cloneFrom(const VEXFeature& source) {
  coordSys_ = source.coordSys_;
  dimension_ = source.dimension_;
  xCoord_ = source.xCoord_;
  yCoord_ = source.yCoord_;
  zCoord_ = source.zCoord_;
  std::copy(std::begin(source.missing_), std::end(source.missing_), missing_);
  geomType_ = source.geomType_;
  cloneAttributes(source);
  reprojectionCommands_ = source.reprojectionCommands_;
}

VEXFeaturePtr VEXFeature::clone() const {
  VEXFeaturePtr copy = VEXObjectRecycler::exists() ? VEXObjectRecycler::instance().getFeature(dimension_, numCoords())
                                                   : VEXFeaturePtr(new VEXFeature(dimension_, numCoords()));
  copy->cloneFrom(*this);
  return copy;
}

VEXStatus VEXFeature::performFunction(std::string_view text, VEXFeaturePtr& feature, std::string& result) {
  VEXCommandParm call;
  VEXVariableTable noVariables;
  VEX_TRY(call.parse(text));
  return extendStatus(call.execute(feature, noVariables, result));
}
