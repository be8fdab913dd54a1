// VEXValue: a value of a mapping file that is worked out per feature: a literal, "&attribute" or "@Function(...)".
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"

class VEXValue {
 public:
  virtual ~VEXValue() = default;
  // Writes the value to `out`; an absent attribute leaves it unchanged. A function may delete the feature.
  virtual VEXStatus evaluate(VEXFeaturePtr& feature, std::string& out) const = 0;

  // Makes the value that a text stands for; `createdValue` must be null. A function that does not parse fails.
  static VEXStatus create(std::string_view text, std::unique_ptr<VEXValue>& createdValue);
};
