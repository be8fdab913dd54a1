// VEXSpecSet: the pairs of source and destination specifications, found by source feature type.
// VEXCorrelator: takes one source feature to its destination form, and counts.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/src/typemap.h"
#include "vex/src/vexspec.h"
#include "vex/src/vexstats.h"
#include "vex/src/vexvars.h"

// A pair of a mapping file.
struct VEXTranslationSpec {
  VEXTranslationSpec(std::unique_ptr<VEXFeatureSpec> source, std::unique_ptr<VEXFeatureSpec> dest);

  std::unique_ptr<VEXFeatureSpec> sourceSpec_;
  std::unique_ptr<VEXFeatureSpec> destSpec_;
  VEXVariableTable variables_;             // slots given at load, values per feature
  std::int32_t* converted_ = nullptr;      // this pair's counters once it has matched
  std::int32_t* output_ = nullptr;
};

class VEXSpecSet {
 public:
  // Reads all rows of the configuration; may be called once. 253001 to 253008.
  VEXStatus load(const std::string& sourceKeyword, const std::string& destKeyword);
  bool hasSpecs() const { return hasSpecs_; }

 protected:
  using SpecList = std::vector<std::unique_ptr<VEXTranslationSpec>>;
  VEXStatus addPair(std::unique_ptr<VEXFeatureSpec> source, std::unique_ptr<VEXFeatureSpec> dest,
                    const VEXStringVector& row);

  std::unique_ptr<VEXTypeMap<SpecList>> specDict_;
  bool hasSpecs_ = false;
};

class VEXCorrelator : public VEXSpecSet {
 public:
  // The first pair that matches wins: those of the feature's type in row order, then those of "*". The
  // feature is changed in place; a function may delete it.
  VEXStatus correlate(VEXFeaturePtr& feature, bool& matched);
  VEXStatus correlateByType(std::string_view typeName, VEXFeaturePtr& feature, bool& matched);
  // Prints the three tables; only the first carries the heading.
  VEXStatus outputStats(const std::string& heading);

 private:
  VEXStatistics converted_;
  VEXStatistics output_;
  VEXStatistics notConverted_;
};
