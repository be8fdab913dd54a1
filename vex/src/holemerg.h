// Holes of one shell that have edges, or parts of edges, in common become one: they are noded, what two of them share
// goes, and the topology forms a ring of the rest.
#pragma once

#include <vector>

#include "vex/src/vexline.h"

// A merged ring takes the place of the first of its holes and runs counter-clockwise. Holes that only touch in points
// stay apart, as do those that enclose something between them: there the shell is to be seen. So do those with NaN,
// and those that have an edge twice or overlap.
void mergeTouchingHoles(std::vector<VEXLine>& holes);
