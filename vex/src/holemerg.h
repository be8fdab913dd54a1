// Holes of one shell that have edges in common become one: the common edges go, the others are joined to rings again.
#pragma once

#include <vector>

#include "vex/src/vexline.h"

// Merged rings take the place of the first of their holes. Holes that enclose something between them stay apart: there
// the shell is to be seen. So do those with NaN, and those that have an edge twice or overlap.
void mergeTouchingHoles(std::vector<VEXLine>& holes);
