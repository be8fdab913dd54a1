// A point record as it stands at interfaces. A z of quiet NaN means that there is none.
#pragma once

#include <limits>

inline constexpr double kNoZ = std::numeric_limits<double>::quiet_NaN();

struct VEXPoint {
  double x = 0.0;
  double y = 0.0;
  double z = kNoZ;
};
