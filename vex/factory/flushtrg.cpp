#include "vex/factory/flushtrg.h"

#include <algorithm>

namespace {

VEXStatus parseTrigger(const VEXClauseWords& clause, std::string_view className, std::uint32_t onOperator,
                       VEXComparison& trigger) {
  static constexpr std::string_view kOperators[] = {"<", ">", "<=", ">=", "!=", "="};
  if (std::find(std::begin(kOperators), std::end(kOperators), clause.word(1)) == std::end(kOperators))
    return makeStatus(onOperator, {clause.word(1), className});
  return extendStatus(trigger.parse("&" + clause.word(0), clause.word(1), clause.word(2)));
}

VEXStatus test(VEXComparison& trigger, VEXFeaturePtr& feature, bool& isDue) {
  isDue = false;
  return trigger.isSet() ? extendStatus(trigger.evaluate(feature, 0, isDue)) : nullptr;
}

}  // namespace

VEXStatus VEXFlushTriggers::parseBefore(const VEXClauseWords& clause, std::string_view className,
                                        std::uint32_t onOperator) {
  return extendStatus(parseTrigger(clause, className, onOperator, before_));
}

VEXStatus VEXFlushTriggers::parseAfter(const VEXClauseWords& clause, std::string_view className,
                                       std::uint32_t onOperator) {
  return extendStatus(parseTrigger(clause, className, onOperator, after_));
}

VEXStatus VEXFlushTriggers::isBefore(VEXFeaturePtr& feature, bool& isDue) {
  return extendStatus(test(before_, feature, isDue));
}

VEXStatus VEXFlushTriggers::isAfter(VEXFeaturePtr& feature, bool& isDue) {
  return extendStatus(test(after_, feature, isDue));
}
