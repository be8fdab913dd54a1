// VEXComparison: the test of two values of a feature, as the clause TEST <left> <operator> <right> writes it. Each of
// the three is a literal, "&attribute" or "@Function(...)", worked out per feature.
#pragma once

#include <memory>
#include <string>

#include "vex/src/vexvalue.h"

class VEXComparison {
 public:
  // Replaces what was set before. A function that does not parse fails.
  VEXStatus parse(const std::string& left, const std::string& comparison, const std::string& right);
  bool isSet() const { return left_ != nullptr; }
  // Numbers when both sides are, else texts byte by byte. A function may delete the feature; `passed` is false then.
  // Fails with `onOperator` (parameter: the word) when the operator is none of = != < > <= >=.
  VEXStatus evaluate(VEXFeaturePtr& feature, std::uint32_t onOperator, bool& passed);

 private:
  std::unique_ptr<VEXValue> left_;
  std::unique_ptr<VEXValue> operator_;
  std::unique_ptr<VEXValue> right_;
  std::string leftText_;  // kept for their buffers
  std::string operatorText_;
  std::string rightText_;
};
