// What tests share: features as text, and the singletons that engine code expects.
#pragma once

#include <string>
#include <string_view>

#include "vex/inc/vexfeat.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexrcycl.h"

// Builds a feature from "type {name=value, name=value} kind x y, x y z, ...": attributes and geometry may be
// missing; kind is point, line, polygon, donut, aggregate or a geometry code. A third number makes it 3D.
VEXFeaturePtr makeFeature(std::string_view text);
// The same text back, with attributes in name order, orv_geometry left out.
std::string describe(const VEXFeature& feature);

// A directory of this process alone, ending in "/"; made at the first call, gone with the process.
const std::string& scratchDirectory();

// The singletons of one engine call, without a translation. Rows go into the configuration with row("A b c").
class EngineScope {
 public:
  void row(std::string_view text);

 private:
  VEXObjectRecycler recycler_;
  VEXConfiguration configuration_;
  VEXCommandRegistry registry_;
};
