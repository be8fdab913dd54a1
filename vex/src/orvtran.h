// ORVTranslator: the front door of the engine. It decides what a command line asks for, brings the singletons up in
// a fixed order, runs the work, reports a failure and takes all down in reverse. Calls: initialize, translate,
// shutdown; or runCommandLine, which does all of it as the program does.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vex/inc/orvane.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"

class VEXCreator;
class VEXObjectRecycler;

inline constexpr const char* kVersionText = "Orvane Version 2.3a (19991110 - Build 381)";

class ORVTranslator {
 public:
  explicit ORVTranslator(std::string programName);
  ~ORVTranslator();
  ORVTranslator(const ORVTranslator&) = delete;
  ORVTranslator& operator=(const ORVTranslator&) = delete;

  // What ORV_Translate does: 0 when the run ended without failure, otherwise -1.
  static std::int32_t runCommandLine(ORV_Int32 argc, const char* const* argv, ORV_Int32 showBanner,
                                     ORV_LogCallback logCallback, ORV_ErrorCallback errorCallback);

  // Messages, recycler, registries; gives the home directory.
  VEXStatus initialize(std::string& homeOut);
  // Runs one command line, the program's name first. `printVerdict` tells whether a closing line is wanted. A
  // failure of a mapping-file run has been reported when it comes back, while its log was open; wasReported()
  // tells. 875003 parameter and command files without end; 875004 not in this build.
  VEXStatus translate(const VEXStringVector& arguments, bool& printVerdict);
  VEXStatus shutdown();
  // Takes the register of formats, factories and functions down and builds it anew.
  VEXStatus resetRegistry();

  void setCallbacks(ORV_LogCallback logCallback, ORV_ErrorCallback errorCallback);
  // With false a failure that the log shows is not written to the console.
  void showOnConsole(bool shows) { showOnConsole_ = shows; }
  // Tells the user of a failure: console, log if it is open, callback.
  void reportFailure(const VEXStatusInfo& failure);
  bool wasReported() const { return wasReported_; }
  static VEXStatus getUsage(const std::string& programName, std::string& text);

  std::int32_t featuresOutput() const { return featuresOutput_; }
  std::int32_t coordinatesOutput() const { return coordinatesOutput_; }

 private:
  VEXStatus usageFailure() const;
  VEXStatus notBuilt(const VEXStringVector& arguments, std::size_t least, std::size_t most) const;
  VEXStatus enterFile(const std::string& name);  // of parameters or commands
  VEXStatus runParameterFile(const VEXStringVector& arguments, bool& printVerdict);
  VEXStatus runCommandFile(const VEXStringVector& arguments, bool& printVerdict);
  VEXStatus runWork(const VEXStringVector& arguments);
  VEXStatus runMappingFile(const VEXStringVector& arguments);

  std::string programName_;
  std::string homeDirectory_;
  std::unique_ptr<VEXObjectRecycler> objectRecycler_;
  std::unique_ptr<VEXCreator> creators_;
  std::int32_t featuresOutput_ = 0;
  std::int32_t coordinatesOutput_ = 0;
  ORV_LogCallback logCallback_ = nullptr;
  ORV_ErrorCallback errorCallback_ = nullptr;
  bool showOnConsole_ = true;
  bool wasReported_ = false;
  bool inCommandFile_ = false;      // a failed run is told in one line, and the next row is taken
  VEXStringVector filesBeingRead_;  // of parameters and commands, outermost first
};
