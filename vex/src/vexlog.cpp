#include "vex/src/vexlog.h"

#include <array>
#include <cmath>
#include <ctime>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/internat/internat.h"
#include "vex/src/featout.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"

VEXLogFile* VEXLogFile::instance_ = nullptr;
std::FILE* VEXLogFile::consoleSink_ = nullptr;
bool VEXLogFile::isTerminal_ = false;

namespace {

const char* tagOf(VEXSeverity severity) {
  constexpr std::array<const char*, 6> kTags = {"INFORM", "WARN  ", "ERROR ", "FATAL ", "STATS ", "STATRP"};
  auto index = static_cast<std::size_t>(severity);
  return index < kTags.size() ? kTags[index] : "UNKNWN";
}

// One decimal, right-aligned.
void appendAligned(std::string& line, double value, std::size_t width) {
  std::size_t start = line.size();
  appendFixed(line, value, 1);
  std::size_t length = line.size() - start;
  if (length < width) line.insert(start, width - length, ' ');
}

void appendLocalTime(std::string& line) {
  // Many lines fall into one second.
  static std::time_t shown = 0;
  static std::array<char, 32> buffer;
  static std::size_t length = 0;
  const std::time_t now = std::time(nullptr);
  if (now != shown || length == 0) {
    shown = now;
    std::tm parts;
    if (localtime_r(&now, &parts) == nullptr) parts = {};
    length = std::strftime(buffer.data(), buffer.size(), "%Y-%m-%d %H:%M:%S", &parts);
  }
  line.append(buffer.data(), length);
}

// The hook of the word BADNEWS. A failure met on the way, such as a missing message, is not reported again.
void reportNewFailure(const std::string& text) {
  static bool isReporting = false;
  if (isReporting) return;
  isReporting = true;
  ::logMessage(VEXSeverity::Inform, 246012, {text});
  isReporting = false;
}

}  // namespace

VEXLogFile::VEXLogFile() : timer_(std::chrono::steady_clock::now()) {
  VEX_ASSERT(instance_ == NULL);
  instance_ = this;
}

VEXLogFile::~VEXLogFile() {
  VEX_ASSERT(instance_ == this);
  if (isOpen()) {
    if (maxFeatures_ > 0 && featuresLogged_ > maxFeatures_)
      ::logMessage(VEXSeverity::Warn, 246007, {integerText(featuresLogged_ - maxFeatures_)});
    double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - timer_).count();
    std::string duration = "ORV Session Duration: ";
    appendAligned(duration, seconds, 0);
    ::logMessage(VEXSeverity::Inform, 246008, {duration + " seconds"});
  }
  setFailureHook(nullptr);
  instance_ = nullptr;
  if (consoleSink_ != nullptr) std::fflush(consoleSink_);
  if (isOpen()) std::fclose(stream_);
}

VEXStatus VEXLogFile::open() {
  std::string name = "NUL:";
  VEXConfiguration::value("LOG_FILENAME", name);
  std::string append;
  bool truncates = VEXConfiguration::value("LOG_APPEND", append) && !VEXConfiguration::flag("LOG_APPEND");
  VEX_TRY(reopen(name, !truncates));
  toConsole_ = VEXConfiguration::flag("LOG_STANDARDOUT");
  timedEcho_ = VEXConfiguration::flag("LOG_TIMINGS");
  volatile double notANumber = std::nan("");
  volatile double three = 3.0;
  if (notANumber == notANumber) ::logMessage(VEXSeverity::Warn, 246005);
  if (three * three != 9.0) ::logMessage(VEXSeverity::Warn, 246006);
  std::string value;
  showTrace_ = VEXConfiguration::debugWord("ORV_STACK_TRACE") || platform::environment("ORV_STACK_TRACE", value);
  if (VEXConfiguration::debugWord("BADNEWS")) setFailureHook(reportNewFailure);
  VEXConfiguration::intValue("LOG_MAX_FEATURES", maxFeatures_);
  return nullptr;
}

VEXStatus VEXLogFile::reopen(const std::string& name, bool append) {
  std::FILE* stream = std::fopen(platform::nativePath(name).c_str(), append ? "ate" : "wte");
  if (stream == nullptr) return makeStatus(246011, {name});
  if (isOpen()) std::fclose(stream_);
  stream_ = stream;
  return nullptr;
}

void VEXLogFile::logMessage(VEXSeverity severity, const std::string& text) {
  if (!isOpen()) {
    std::fputs((text + "\n").c_str(), stderr);
    return;
  }
  if (severity == VEXSeverity::StatRp) {
    if (!showsProgress()) return;
  } else {
    if (text == heldText_) {
      ++repeatCount_;
      return;
    }
    if (repeatCount_ == 1) writeLine(heldSeverity_, heldText_);
    if (repeatCount_ > 1)
      writeLine(heldSeverity_, "... Last line repeated " + std::to_string(repeatCount_) + " times ...");
    heldText_ = text;
    heldSeverity_ = severity;
    repeatCount_ = 0;
  }
  writeLine(severity, text);
}

double VEXLogFile::processSeconds() const {
  double seconds = platform::processSeconds();
  if (seconds >= 0.0) return seconds;
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - timer_).count();
}

void VEXLogFile::writeLine(VEXSeverity severity, const std::string& text) {
  double now = processSeconds();
  line_.clear();
  appendLocalTime(line_);
  line_ += '|';
  appendAligned(line_, now, 6);
  line_ += '|';
  appendAligned(line_, now - lastTime_, 5);
  std::size_t untimed = line_.size();  // from here on it is what the console shows
  line_.append("|").append(tagOf(severity)).append("|").append(text).append("\n");
  if (severity != VEXSeverity::StatRp) {
    std::fwrite(line_.data(), 1, line_.size(), stream_);
    std::fflush(stream_);
    lastTime_ = now;
  }
  if (toConsole_ && consoleSink_ != nullptr) {
    std::size_t from = timedEcho_ ? 0 : untimed;
    std::fwrite(line_.data() + from, 1, line_.size() - from, consoleSink_);
    std::fflush(consoleSink_);
  }
  if (callback_ != nullptr) {
    auto code = static_cast<std::int32_t>(severity);
    callback_(code >= 0 && code <= 5 ? code : 0, text.c_str());
  }
}

bool VEXLogFile::takesFeature() {
  ++featuresLogged_;
  return maxFeatures_ < 0 || featuresLogged_ <= maxFeatures_;
}

void VEXLogFile::setConsoleSink(std::FILE* sink) {
  consoleSink_ = sink;
  isTerminal_ = sink != nullptr && platform::isTerminal(sink);
}

void VEXLogFile::consoleWrite(std::string_view text) {
  if (toConsole_ || consoleSink_ == nullptr) return;
  std::fwrite(text.data(), 1, text.size(), consoleSink_);
  if (isTerminal_) std::fflush(consoleSink_);
}

void logText(VEXSeverity severity, const std::string& text) {
  if (VEXLogFile::instance() != nullptr)
    VEXLogFile::instance()->logMessage(severity, text);
  else
    std::fputs((text + "\n").c_str(), stderr);
}

void logMessage(VEXSeverity severity, std::uint32_t number, std::initializer_list<std::string_view> parameters) {
  const VEXLogFile* log = VEXLogFile::instance();
  if (severity == VEXSeverity::StatRp && log != nullptr && log->isOpen() && !log->showsProgress()) return;
  // Progress is logged as features pass: the buffer is kept. A message logged on the way takes a new one.
  static std::string kept;
  std::string text = std::move(kept);
  if (VEXStatus failure = getMessage(number, parameters, text)) text = failure->message();
  logText(severity, text);
  kept = std::move(text);
}

void logStatus(const VEXStatusInfo& failure) {
  logMessage(VEXSeverity::Error, 246009, {failure.message()});
  if (VEXLogFile::instance() != nullptr && VEXLogFile::instance()->showTrace_)
    logMessage(VEXSeverity::Error, 246010, {failure.trace()});
}

void logFeature(const VEXFeature& feature, VEXSeverity severity, std::int64_t maxCoordinates) {
  if (VEXLogFile::instance() == nullptr || VEXLogFile::instance()->takesFeature())
    dumpFeature(feature, severity, maxCoordinates);
}

void consoleWrite(std::string_view text) {
  if (VEXLogFile::instance() != nullptr) VEXLogFile::instance()->consoleWrite(text);
}
