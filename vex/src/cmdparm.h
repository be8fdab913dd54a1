// VEXCommandParm: one at-sign call of a mapping file, parsed once and evaluated per feature. Arguments may hold
// %variables, &attributes and nested calls, substituted as text, in that order, at each evaluation.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/vexvars.h"

class VEXCommand;

class VEXCommandParm {
 public:
  // 209001: no function head. 209002: no function of that name.
  VEXStatus parse(std::string_view text);

  // One value in, one result out. `feature` must not be null; the function may delete it.
  VEXStatus execute(VEXFeaturePtr& feature, VEXVariableTable& table, std::string& result);
  // The first argument that begins with % holds several values; one call per value.
  VEXStatus executeList(VEXFeaturePtr& feature, VEXVariableTable& table, VEXStringVector& results);
  // Stores the result under the first variable.
  VEXStatus extract(VEXFeaturePtr& feature, VEXVariableTable& table, std::string& result);
  // The same with `value` in place of the first variable's argument.
  VEXStatus extractValue(VEXFeaturePtr& feature, std::string_view value, VEXVariableTable& table, std::string& result);
  // One extract per value; the results, joined, are stored under the first variable.
  VEXStatus extractList(VEXFeaturePtr& feature, const VEXStringVector& values, VEXVariableTable& table);
  // An argument holds a %variable, an &attribute or a call: its text is made anew for each feature.
  bool needsExpansion() const { return !variables_.empty() || !expressions_.empty(); }
  // Appends every %name found in the arguments, in order, each once.
  void variables(VEXStringVector& names) const;

  const VEXStringVector& params() const { return params_; }
  const VEXCommand* command() const { return command_; }

 private:
  // One argument cut at its references: a literal, then a variable's or an attribute's value, or neither.
  struct Piece {
    std::string literal;
    std::string variable;
    VEXName attribute;
  };
  struct Plan {
    bool isSimple = false;  // holds no nested call
    std::vector<Piece> pieces;
  };

  static Plan planOf(const std::string& argument);
  static bool expandSimply(const Plan& plan, const VEXFeature* feature, const VEXVariableTable& table,
                           std::string& out);
  VEXStatus expandAll(VEXFeaturePtr& feature, const VEXVariableTable& table);
  // 209006: a nested call deleted the feature. 209008: the substitution does not end.
  VEXStatus expand(std::string& argument, VEXFeaturePtr& feature, const VEXVariableTable& table);

  VEXCommand* command_ = nullptr;
  VEXStringVector params_;                // as written
  std::vector<std::size_t> variables_;    // arguments that are one %name or &name and nothing else
  std::vector<std::size_t> expressions_;  // arguments that hold a %name, &name or @name( somewhere
  std::vector<Plan> plans_;               // one an argument
  VEXStringVector expanded_;              // working copy; its texts keep their buffers from feature to feature
  std::string name_;
};
