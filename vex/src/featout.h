// The dump of a feature in the log: type, attributes in name order, geometry kind, coordinates.
#pragma once

#include <cstdint>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/vexlog.h"

// Logs at `severity`, at most `maxCoordinates` coordinates. LOG_MAX_FEATURES is looked at by logFeature, not here.
void dumpFeature(const VEXFeature& feature, VEXSeverity severity, std::int64_t maxCoordinates);
// Lets go of a refused feature, so that the run can go on: the reason under this number at WARN, then the feature.
void dropRefused(std::uint32_t number, const VEXStatusInfo& reason, VEXFeaturePtr& feature);
