#include "vex/factory/fctest.h"

#include <compare>
#include <string_view>

#include "vex/inc/numtext.h"

namespace {

// False when the word is no operator. An order that does not exist (not a number) only passes "!=".
bool decide(std::string_view word, std::partial_ordering order, bool& passed) {
  if (word == "=")
    passed = std::is_eq(order);
  else if (word == "!=")
    passed = std::is_neq(order);
  else if (word == "<")
    passed = std::is_lt(order);
  else if (word == ">")
    passed = std::is_gt(order);
  else if (word == "<=")
    passed = std::is_lteq(order);
  else if (word == ">=")
    passed = std::is_gteq(order);
  else
    return false;
  return true;
}

std::partial_ordering compare(std::string_view left, std::string_view right) {
  double leftNumber = 0.0;
  double rightNumber = 0.0;
  if (textToReal(left, leftNumber) && textToReal(right, rightNumber)) return leftNumber <=> rightNumber;
  return left <=> right;
}

VEXStatus compute(const VEXValue& value, VEXFeaturePtr& feature, std::string& text) {
  text.clear();
  return feature == nullptr ? nullptr : extendStatus(value.evaluate(feature, text));
}

}  // namespace

VEXStatus VEXComparison::parse(const std::string& left, const std::string& comparison, const std::string& right) {
  left_.reset();
  operator_.reset();
  right_.reset();
  VEX_TRY(VEXValue::create(right, right_));
  VEX_TRY(VEXValue::create(comparison, operator_));
  return extendStatus(VEXValue::create(left, left_));
}

VEXStatus VEXComparison::evaluate(VEXFeaturePtr& feature, std::uint32_t onOperator, bool& passed) {
  passed = false;
  VEX_TRY(compute(*left_, feature, leftText_));
  VEX_TRY(compute(*operator_, feature, operatorText_));
  VEX_TRY(compute(*right_, feature, rightText_));
  if (feature == nullptr) return nullptr;
  if (!decide(operatorText_, compare(leftText_, rightText_), passed)) return makeStatus(onOperator, {operatorText_});
  return nullptr;
}
