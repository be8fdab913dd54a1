// VEXCommand: base of every at-sign function, one object each, shared by all parsed calls. Arguments are
// tested before the feature is touched: a failed call leaves it unchanged.
#pragma once

#include <string>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"

class VEXCommand {
 public:
  VEXCommand() = default;
  virtual ~VEXCommand() = default;
  VEXCommand(const VEXCommand&) = delete;
  VEXCommand& operator=(const VEXCommand&) = delete;

  virtual const char* name() const = 0;  // without the at-sign
  // The destination direction: computes `result`, may change or delete the feature. `result` comes in empty.
  virtual VEXStatus execute(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) = 0;
  // The source direction.
  virtual VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) = 0;
  // One mapping-file row whose first token, params[0], is this function's name.
  virtual VEXStatus configure(const VEXStringVector& params) = 0;
  virtual VEXStatus closeDown() { return nullptr; }  // end of a translation: tables are emptied
  virtual void logStatistics() {}
};
