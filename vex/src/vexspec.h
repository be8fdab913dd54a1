// VEXFeatureSpec: one parsed row of a mapping file that describes features. It tests a feature, captures values
// into variables (source side) and rewrites a feature from them (destination side). Immutable after load.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/cmdparm.h"
#include "vex/src/vexvars.h"
#include "vex/src/wordscan.h"

// "%name" or "%name:default" behind an attribute name.
struct VEXTransferVariable {
  std::string attrName_;
  VEXName attr_;
  std::string varName_;       // with its percent sign
  std::size_t slot_ = 0;      // in the variable table, see bindVariables
  std::string default_;       // empty: none
  bool isList_ = false;       // attrName_ holds "{}"
  bool isSequenced_ = false;  // attrName_ holds "{"
  // See takeFrom. Destination side: the value is that of the source feature's attribute source_, or sourceDefault_.
  // Source side: nobody asks the variable table for it.
  bool isDirect_ = false;
  VEXName source_;
  std::string sourceDefault_;
  mutable std::uint32_t place_ = 0;  // where the attribute stood last, see VEXAttributeTable::find
};

// "@Function(...)" behind an attribute name.
struct VEXAttributeFunction {
  std::string attrName_;
  VEXName attr_;
  bool isList_ = false;
  bool isSequenced_ = false;
  std::unique_ptr<VEXCommandParm> function_;
};

class VEXFeatureSpec {
 public:
  // Takes the tokens firstToken to lastToken (0: the row's last). 252001, 252002, 252003, or a function's 209xxx.
  VEXStatus parse(const VEXStringVector& row, std::size_t firstToken, std::size_t lastToken = 0);

  // Source side: the constant test, then functions (last to first), attribute functions, captures. Once the
  // test has passed, `matched` is true and a failure is one of the translation.
  VEXStatus matches(VEXFeaturePtr& feature, VEXVariableTable& variables, bool& matched) const {
    matched = matchesAttributes(*feature);
    return matched ? extendStatus(take(feature, variables)) : nullptr;
  }
  // The two steps of it, for a caller who has found this row by the feature's type.
  bool matchesConstants(const VEXFeature& feature) const { return attrPaths_.empty() || hasConstants(feature); }
  VEXStatus take(VEXFeaturePtr& feature, VEXVariableTable& variables) const {
    if (!functions_.empty() || !attrFunctions_.empty()) VEX_TRY(extractAll(feature, variables));
    if (capturesAny_ || transferReport_) capture(feature.get(), variables);
    return nullptr;
  }
  // Destination side: rewrites the feature in place.
  VEXStatus apply(VEXFeaturePtr& feature, VEXVariableTable& variables) const;
  bool matchesAttributes(const VEXFeature& feature) const {
    return (!useFeatureType_ || wordscan::isSame(feature.featureType(), featureType())) && matchesConstants(feature);
  }
  // The test, then the functions, without variables.
  VEXStatus testOnly(VEXFeaturePtr& feature, bool& matched) const;
  // Constants, type when named, then functions; all other attributes stay.
  VEXStatus setAttributes(VEXFeaturePtr& feature) const;
  // Calls collector(name) for each variable: transfer variables, functions, attribute functions.
  template <class Collector>
  void listVariables(Collector&& collector) const {
    VEXStringVector names;
    collectVariables(names);
    for (const std::string& name : names) collector(name);
  }
  bool isTypeOnly() const {  // no constants, functions or variables
    return useFeatureType_ && attrPaths_.empty() && transferVars_.empty() && functions_.empty() &&
           attrFunctions_.empty();
  }
  // Gives every transfer variable its slot; called once, before the first feature.
  void bindVariables(VEXVariableTable& variables);
  // Called once for the destination row of a pair. A variable that only carries one attribute's text from row to row
  // is copied from the old attributes to the new ones; where nothing else can ask for it, it is not captured either.
  void takeFrom(VEXFeatureSpec& source);

  const std::string& featureType() const { return featureType_.text(); }
  // Type, then "+name+value" for each constant: the key of this spec in the statistics.
  const std::string& description() const { return description_; }
  bool namesType() const { return useFeatureType_; }

  // ORV_DEBUG TRANSFER_PROCESS: warnings about attributes that are missing or ignored.
  static void setTransferReport(bool on);

 private:
  VEXStatus addAttribute(const std::string& name, const std::string& value);
  void collectVariables(VEXStringVector& names) const;
  VEXStatus runFunctions(VEXFeaturePtr& feature, VEXVariableTable& variables, bool sourceSide) const;
  bool hasConstants(const VEXFeature& feature) const;
  bool hasReferences() const;  // a call's text depends on variables or attributes
  VEXStatus rewrite(VEXFeaturePtr& feature, VEXVariableTable& variables) const;
  [[gnu::noinline]] VEXStatus extractAll(VEXFeaturePtr& feature, VEXVariableTable& variables) const;
  void capture(const VEXFeature* feature, VEXVariableTable& variables) const;
  // Kept apart, so that the loop over plain transfers is a short one.
  [[gnu::noinline]] VEXStatus setFromVariables(VEXFeature& feature, const VEXVariableTable& variables) const;
  [[gnu::noinline]] VEXStatus setFromVariable(VEXFeature& feature, const VEXTransferVariable& variable,
                                              const VEXVariableTable& variables) const;
  VEXStatus setFromFunctions(VEXFeaturePtr& feature, VEXVariableTable& variables) const;
  void reportIgnored(const VEXFeature& feature) const;
  void reportMissing(const std::string& oldType, const VEXVariableTable& variables) const;

  VEXName featureType_ = VEXName::intern({});
  std::string description_;
  std::vector<VEXName> attrPaths_;
  VEXStringVector attrVals_;
  std::vector<bool> attrIsSequenced_;
  std::vector<VEXTransferVariable> transferVars_;
  mutable std::vector<VEXTransfer> transfers_;  // one a variable; filled for direct ones without a default
  std::vector<std::unique_ptr<VEXCommandParm>> functions_;
  std::vector<VEXAttributeFunction> attrFunctions_;
  bool useFeatureType_ = true;
  bool capturesAny_ = false;                   // see takeFrom
  static inline bool transferReport_ = false;  // ORV_DEBUG TRANSFER_PROCESS

  // Working space, kept so that the road of a feature allocates nothing.
  mutable VEXVariableTable unbound_;  // for factories, which have no variables
  mutable std::string result_;
};
