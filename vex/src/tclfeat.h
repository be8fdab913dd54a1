// VEXTclFeature: a Tcl interpreter whose scripts see a feature. Variables, each read and written through:
//   ORV_Attributes(name)   an attribute; unset removes it; "array names" and its like see all attributes
//   ORV_FeatureType        unset empties it
//   ORV_CoordSys           the name of the coordinate system; unset empties it
// Commands: ORV_Execute runs a function on the feature, ORV_Coordinates reads and changes its geometry, ORV_LogMessage
// writes a message to the log.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>

#include "vex/inc/vexfeat.h"
#include "vex/src/tclbind.h"

class VEXTclFeature {
 public:
  VEXTclFeature();
  bool isReady() const { return interp_.isReady(); }  // false without the Tcl library

  // Runs a script on a feature, which it may delete; `feature` may hold none. False when the script fails: `result` is
  // its error then. A script may run others through ORV_Execute; the caller keeps depth() below kDeepest.
  bool eval(std::string_view script, VEXFeaturePtr& feature, std::string& result);
  int depth() const { return depth_; }
  static constexpr int kDeepest = 100;
  // Without a feature.
  bool evalFile(const std::string& path, std::string& error);
  bool setVar(const std::string& name, const std::string& value, std::string& error);

 private:
  using Access = VEXTclInterp::Access;
  struct Subcommand;

  VEXFeature* feature() const { return feature_ == nullptr ? nullptr : feature_->get(); }
  void onAttributes(Access access, const std::string& element);
  void showAllAttributes();
  void onText(Access access, const char* variable, const std::string& (VEXFeature::*get)() const,
              void (*set)(VEXFeature&, std::string_view));
  bool execute(const VEXStringVector& words, std::string& result);
  bool coordinates(const VEXStringVector& words, std::string& result);
  static bool logMessageCommand(const VEXStringVector& words, std::string& result);

  VEXFeaturePtr* feature_ = nullptr;  // of the running script
  int depth_ = 0;
  bool isSyncing_ = false;                    // elements of the array change without meaning the feature
  bool arrayIsGone_ = false;                  // a script has unset the whole array
  std::unordered_set<std::string> elements_;  // of the array ORV_Attributes
  VEXTclInterp interp_;                       // taken down first: nothing is called afterwards
};
