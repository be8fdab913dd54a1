// VEXFlushTriggers: the clauses FLUSH_BEFORE_CURRENT_WHEN and FLUSH_AFTER_CURRENT_WHEN <attribute> <operator> <value>
// of a factory that holds features: when a feature fulfils one, the factory puts out what it holds, before or after it
// takes that feature. So a sorted stream is worked on piece by piece.
#pragma once

#include <cstdint>

#include "vex/factory/factory.h"
#include "vex/factory/fctest.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"

class VEXFlushTriggers {
 public:
  // Three words; the last clause of each kind counts. An operator that is none of < > <= >= != = fails with
  // `onOperator`, whose parameters are the operator and the class.
  VEXStatus parseBefore(const VEXClauseWords& clause, std::string_view className, std::uint32_t onOperator);
  VEXStatus parseAfter(const VEXClauseWords& clause, std::string_view className, std::uint32_t onOperator);
  VEXStatus isBefore(VEXFeaturePtr& feature, bool& isDue);
  VEXStatus isAfter(VEXFeaturePtr& feature, bool& isDue);

 private:
  VEXComparison before_;
  VEXComparison after_;
};
