#include "vex/src/featout.h"

#include <algorithm>

#include "vex/inc/numtext.h"

namespace {

const char* kindOf(std::uint32_t geomType) {
  switch (geomType) {
    case VEX_GEOM_POINT:
      return "Point";
    case VEX_GEOM_LINE:
      return "Line";
    case VEX_GEOM_POLYGON:
      return "Polygon";
    case VEX_GEOM_DONUT:
      return "Donut";
    case VEX_GEOM_MULTI:
      return "Multi";
    case VEX_GEOM_MULTI_POINT:
      return "Multipoint";
    case VEX_GEOM_MULTI_LINE:
      return "Multiline";
    case VEX_GEOM_MULTI_POLY:
      return "Multipoly";
    case VEX_GEOM_PIP:
      return "Pip";
    case VEX_GEOM_AGGREGATE:
      return "Aggregate";
    default:
      return "Unknown";
  }
}

void dumpAttributes(const VEXFeature& feature, VEXSeverity severity) {
  logMessage(severity, 219007, {feature.featureType()});
  VEXStringVector names;
  feature.allAttributeNames(names);
  std::sort(names.begin(), names.end());
  for (const std::string& name : names) logMessage(severity, 219008, {name, *feature.findAttribute(name)});
}

void dumpCoordinates(const VEXFeature& feature, VEXSeverity severity, std::int64_t maxCoordinates) {
  auto count = static_cast<std::int64_t>(feature.numCoords());
  logText(severity, "Number of Coordinates: " + integerText(count) + (count == 0 ? " -- No Coordinates! " : ""));
  if (maxCoordinates <= 0 || count == 0) return;
  for (std::size_t i = 0; static_cast<std::int64_t>(i) < std::min(count, maxCoordinates); ++i) {
    std::string values = realText(feature.xs()[i]) + ", " + realText(feature.ys()[i]);
    if (feature.dimension() == 3) values += ", " + realText(feature.zs()[i]);
    logMessage(severity, 219006, {values});
  }
  if (count == maxCoordinates + 1)
    logMessage(severity, 219002);
  else if (count > maxCoordinates)
    logMessage(severity, 219003, {integerText(count - maxCoordinates)});
  logMessage(severity, 219004);
}

}  // namespace

void dumpFeature(const VEXFeature& feature, VEXSeverity severity, std::int64_t maxCoordinates) {
  logMessage(severity, 219012);
  dumpAttributes(feature, severity);
  logMessage(severity, 219005, {kindOf(feature.geomType())});
  dumpCoordinates(feature, severity, maxCoordinates);
  logMessage(severity, 219013);
}

void dropRefused(std::uint32_t number, const VEXStatusInfo& reason, VEXFeaturePtr& feature) {
  constexpr std::int64_t kDumpedLines = 20;
  logMessage(VEXSeverity::Warn, number, {reason.message()});
  if (feature != nullptr) logFeature(*feature, VEXSeverity::Inform, kDumpedLines);
  feature.reset();
}
