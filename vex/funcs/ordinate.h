// What @XValue, @YValue and @ZValue share: reading the first coordinate, appending one ordinate.
#pragma once

#include <cstdint>
#include <string>

#include "vex/inc/vexfeat.h"

// The first coordinate, in an aggregate that of its parts; `found` is false when there is none. Fails with 244023 and
// 244024 on an aggregate that does not hold together.
VEXStatus firstCoordinate(const VEXFeature& feature, VEXPoint& point, bool& found);
// The ordinate of the first coordinate as text, appended: nothing without coordinates, "0" for z in 2D.
VEXStatus readOrdinate(const VEXFeature& feature, int axis, std::string& result);
// Appends the ordinate that the text holds; an empty text appends nothing. `number`: the text is no number.
VEXStatus appendOrdinate(VEXFeature& feature, int axis, const std::string& text, std::uint32_t number);
