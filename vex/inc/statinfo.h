// Failures. A call that can fail returns a VEXStatus: null is success, otherwise the caller owns a
// VEXStatusInfo and either hands it up through VEX_TRY, which adds its place to the trace, or is done
// with it: logStatus() or ignoreStatus().
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <string_view>

#include "vex/inc/srcloc.h"

inline constexpr std::int32_t kSeverityFailure = 16;   // an ordinary failure: the run ends
inline constexpr std::int32_t kSeverityRejected = 30;  // this one feature is refused, the run goes on

class VEXStatusInfo {
 public:
  VEXStatusInfo(std::int32_t severity, std::string message, std::uint32_t messageNumber)
      : severity_(severity), message_(std::move(message)), messageNumber_(messageNumber) {}
  virtual ~VEXStatusInfo() = default;

  std::int32_t severity() const { return severity_; }
  void setSeverity(std::int32_t severity) { severity_ = severity; }
  const std::string& message() const { return message_; }        // the formatted text a user sees
  const std::string& trace() const { return trace_; }            // a line per level, outermost first
  std::uint32_t messageNumber() const { return messageNumber_; }  // 0 when made from free text
  void addTrace(std::string_view line);                          // puts a line in front of the trace

 private:
  std::int32_t severity_;
  std::string message_;
  std::string trace_;
  std::uint32_t messageNumber_;
};

class [[nodiscard]] VEXStatus : public std::unique_ptr<VEXStatusInfo> {
 public:
  using std::unique_ptr<VEXStatusInfo>::unique_ptr;
};

// Makes a failure of severity 16 from a message number; the caller's place is the first line of its trace.
// Parameters fill %0, %1 and on. When the number has no text, the failure says so in its place.
VEXStatus makeStatus(std::uint32_t number, std::initializer_list<std::string_view> parameters = {},
                     VEXSourceLocation at = VEXSourceLocation::current());
// The same with a severity of the caller's choice: kSeverityRejected refuses one feature only.
VEXStatus makeRejection(std::uint32_t number, std::initializer_list<std::string_view> parameters = {},
                        VEXSourceLocation at = VEXSourceLocation::current());
// Makes a failure from free text; its number is 0.
VEXStatus makeTextStatus(std::int32_t severity, std::string message,
                         VEXSourceLocation at = VEXSourceLocation::current());
// Adds the caller's place to the trace. Null stays null.
void extendFailure(VEXStatusInfo& failure, VEXSourceLocation at);
inline VEXStatus extendStatus(VEXStatus failure, VEXSourceLocation at = VEXSourceLocation::current()) {
  if (failure != nullptr) [[unlikely]]
    extendFailure(*failure, at);
  return failure;
}
// Adds a line of the caller's words to the trace. Null stays null.
VEXStatus extendStatusText(VEXStatus failure, std::string_view line);
// Drops a status whose failure makes no difference; say why at the call.
inline void ignoreStatus(VEXStatus) {}

// The newest failure of the process, kept for callers that ask after the fact.
const std::string& lastFailureMessage();
const std::string& lastFailureTrace();
std::uint32_t lastFailureNumber();

// Called with "BADNEWS: <message> <trace>" for every new failure while set; null switches it off.
using VEXFailureHook = void (*)(const std::string& text);
void setFailureHook(VEXFailureHook hook);

#define VEX_TRY(...)                                       \
  do {                                                     \
    if (VEXStatus vexFailure = (__VA_ARGS__)) [[unlikely]] \
      return extendStatus(std::move(vexFailure));          \
  } while (false)
