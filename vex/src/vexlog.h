// VEXLogFile: the log of one run, a singleton that the entry owns. Lines go to the file, to the console when
// LOG_STANDARDOUT asks for it, and to the callback. A log that is not open, or not there, sends its lines to
// the error stream.
#pragma once

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <string>
#include <string_view>

#include "vex/inc/orvane.h"
#include "vex/inc/statinfo.h"

class VEXFeature;

enum class VEXSeverity : std::int32_t {
  Inform = 0,
  Warn = 1,
  Error = 2,
  Fatal = 3,
  Stats = 4,
  StatRp = 5,  // progress; never goes to the file
};

class VEXLogFile {
 public:
  VEXLogFile();
  ~VEXLogFile();
  VEXLogFile(const VEXLogFile&) = delete;
  VEXLogFile& operator=(const VEXLogFile&) = delete;
  static VEXLogFile* instance() { return instance_; }

  // Opens what the configuration names. 246011: the file cannot be opened.
  VEXStatus open();
  VEXStatus reopen(const std::string& name, bool append);
  bool isOpen() const { return stream_ != nullptr; }
  void setCallback(ORV_LogCallback callback) { callback_ = callback; }
  static void setConsoleSink(std::FILE* sink);
  // False when a progress line would go nowhere.
  bool showsProgress() const { return (toConsole_ && consoleSink_ != nullptr) || callback_ != nullptr; }

  void logMessage(VEXSeverity severity, const std::string& text);
  // Writes to the console sink, without a newline, when log lines themselves do not go there.
  void consoleWrite(std::string_view text);

 private:
  friend void logFeature(const VEXFeature& feature, VEXSeverity severity, std::int64_t maxCoordinates);
  friend void logStatus(const VEXStatusInfo& failure);
  bool takesFeature();  // counts a feature to be dumped; false beyond LOG_MAX_FEATURES
  void writeLine(VEXSeverity severity, const std::string& text);
  double processSeconds() const;

  static VEXLogFile* instance_;
  static std::FILE* consoleSink_;
  static bool isTerminal_;  // somebody watches: dots are shown one by one
  std::FILE* stream_ = nullptr;
  std::chrono::steady_clock::time_point timer_;
  double lastTime_ = 0.0;
  bool toConsole_ = false;
  ORV_LogCallback callback_ = nullptr;
  bool showTrace_ = false;
  std::int32_t maxFeatures_ = 20;  // negative: no limit
  std::int32_t featuresLogged_ = 0;
  std::string heldText_;  // the last line, kept for the repeat count
  VEXSeverity heldSeverity_ = VEXSeverity::Inform;
  std::int32_t repeatCount_ = 0;
  bool timedEcho_ = false;
  std::string line_;  // being written
};

// ---- what the engine calls; all of them work without a log object, too ----
void logText(VEXSeverity severity, const std::string& text);
void logMessage(VEXSeverity severity, std::uint32_t number, std::initializer_list<std::string_view> parameters = {});
// The failure's message at ERROR (246009) and, with ORV_STACK_TRACE, its trace (246010).
void logStatus(const VEXStatusInfo& failure);
// The dump of a feature (see featout.h), as long as LOG_MAX_FEATURES allows.
void logFeature(const VEXFeature& feature, VEXSeverity severity, std::int64_t maxCoordinates);
void consoleWrite(std::string_view text);
