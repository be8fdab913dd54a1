#include "vex/inc/statinfo.h"

#include "vex/internat/internat.h"

namespace {

struct LastFailure {
  std::string message;
  std::string trace;
  std::uint32_t number = 0;
};

LastFailure& last() {
  static LastFailure failure;
  return failure;
}

VEXFailureHook failureHook = nullptr;

void remember(const VEXStatusInfo& failure) {
  last().message = failure.message();
  last().trace = failure.trace();
}

VEXStatus announce(VEXStatus failure) {
  remember(*failure);
  if (failureHook != nullptr) failureHook("BADNEWS: " + failure->message() + " " + failure->trace());
  return failure;
}

VEXStatus makeNumbered(std::int32_t severity, std::uint32_t number, std::initializer_list<std::string_view> parameters,
                       VEXSourceLocation at) {
  std::string text;
  if (VEXStatus missing = getMessage(number, parameters, text)) {
    missing->addTrace(at.text() + " - ");
    return missing;
  }
  VEXStatus failure(new VEXStatusInfo(severity, std::move(text), number));
  failure->addTrace(at.text() + " - ");
  last().number = number;
  return announce(std::move(failure));
}

}  // namespace

std::string VEXSourceLocation::text() const {
  std::string_view file = file_;
  file = file.substr(file.find_last_of('/') + 1);  // npos + 1 is 0
  return std::string(function_) + "(" + std::string(file) + ":" + std::to_string(line_) + ")";
}

void VEXStatusInfo::addTrace(std::string_view line) {
  trace_ = trace_.empty() ? std::string(line) : std::string(line) + "\n" + trace_;
}

VEXStatus makeStatus(std::uint32_t number, std::initializer_list<std::string_view> parameters, VEXSourceLocation at) {
  return makeNumbered(kSeverityFailure, number, parameters, at);
}

VEXStatus makeRejection(std::uint32_t number, std::initializer_list<std::string_view> parameters,
                        VEXSourceLocation at) {
  return makeNumbered(kSeverityRejected, number, parameters, at);
}

VEXStatus makeTextStatus(std::int32_t severity, std::string message, VEXSourceLocation at) {
  VEXStatus failure(new VEXStatusInfo(severity, std::move(message), 0));
  failure->addTrace(at.text() + " - ");
  return announce(std::move(failure));
}

void extendFailure(VEXStatusInfo& failure, VEXSourceLocation at) {
  failure.addTrace(at.text() + " - ");
  remember(failure);
}

VEXStatus extendStatusText(VEXStatus failure, std::string_view line) {
  if (failure != nullptr) {
    failure->addTrace(line);
    remember(*failure);
  }
  return failure;
}

const std::string& lastFailureMessage() {
  return last().message;
}
const std::string& lastFailureTrace() {
  return last().trace;
}
std::uint32_t lastFailureNumber() {
  return last().number;
}

void setFailureHook(VEXFailureHook hook) {
  failureHook = hook;
}
