// VEXRuleCommand: a function told by a rule. The base tests count, feature and each argument in the rule's
// order, and only then calls work(); it refuses configuration and supplies the standard source directions.
#pragma once

#include <cstdint>
#include <limits>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "vex/src/vexcomnd.h"

// Which argument counts are right.
struct VEXArgCount {
  bool accepts(std::size_t count) const {
    return count >= least && count <= most && (step == 0 || (count - least) % step == 0) &&
           ((mask == 0) || ((mask >> count) & 1U));
  }
  std::size_t least = 0;
  std::size_t most = std::numeric_limits<std::size_t>::max();
  std::size_t step = 0;
  std::uint64_t mask = 0;  // bit n: n arguments are right; 0: not looked at
};
constexpr VEXArgCount exactly(std::size_t n) {
  return {n, n, 0, 0};
}
constexpr VEXArgCount atLeast(std::size_t n) {
  return {n, std::numeric_limits<std::size_t>::max(), 0, 0};
}
constexpr VEXArgCount between(std::size_t least, std::size_t most) {
  return {least, most, 0, 0};
}
constexpr VEXArgCount anyCount() {
  return {};
}
// An even number, at least two.
constexpr VEXArgCount pairs() {
  return {2, std::numeric_limits<std::size_t>::max(), 2, 0};
}
template <class... Counts>
constexpr VEXArgCount oneOf(Counts... counts) {
  return {0, 63, 0, ((std::uint64_t{1} << counts) | ...)};
}

enum class VEXArgKind {
  Text,     // anything
  Real,     // a real number; params.real(i)
  Integer,  // an integer; params.integer(i)
  Axis,     // x, y, z or c1, c2, c3 in either case; params.axis(i)
};

struct VEXArgRule {
  std::size_t at;    // index of the argument; not tested when the call has fewer
  const char* name;  // %0 of the failure; %1 is the argument's text
  VEXArgKind kind;
  std::uint32_t onBad;
};

enum class VEXExtract {
  Forward,      // calls execute
  EmptyResult,  // succeeds, the result stays as it was
  Nothing,      // succeeds, touches nothing
  Clear,        // succeeds, the result becomes empty
  Inverse,      // the same tests, then inverse()
  Own,          // the class overrides extract
};

struct VEXCommandRule {
  const char* name;
  VEXArgCount count;
  std::span<const VEXArgRule> args = {};
  std::uint32_t onCount = 0;      // wrong count: %0 the call as written
  std::uint32_t onNoFeature = 0;  // 0: the function needs no feature
  std::uint32_t onConfigure = 0;  // %0 the function's name
  VEXExtract extract = VEXExtract::Forward;
};

// The arguments of one call, tested and converted.
class VEXArgs {
 public:
  explicit VEXArgs(const VEXStringVector& texts) : texts_(texts) {}
  std::size_t count() const { return texts_.size(); }
  const std::string& text(std::size_t at) const { return texts_[at]; }
  const VEXStringVector& texts() const { return texts_; }
  double real(std::size_t at) const;           // of an argument ruled Real
  std::int64_t integer(std::size_t at) const;  // of an argument ruled Integer
  int axis(std::size_t at) const;              // 0, 1, 2 for x, y, z, of an argument ruled Axis

 private:
  const VEXStringVector& texts_;
};

class VEXRuleCommand : public VEXCommand {
 public:
  explicit VEXRuleCommand(const VEXCommandRule& rule) : rule_(rule), takesNothing_(rule.count.accepts(0)) {}
  const char* name() const override { return rule_.name; }
  VEXStatus execute(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override;
  VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override;
  VEXStatus configure(const VEXStringVector& params) override;
  const VEXCommandRule& rule() const { return rule_; }

 protected:
  // Tests count, feature and arguments by the rule; for functions whose two directions differ.
  [[gnu::noinline]] VEXStatus test(const VEXFeaturePtr& feature, const VEXStringVector& params) const;
  virtual VEXStatus work(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) = 0;
  // The source direction of a function ruled Inverse: undoes what work does.
  virtual VEXStatus inverse(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result);

 private:
  const VEXCommandRule& rule_;
  const bool takesNothing_;  // a call without arguments is right, and has none to be tested
};

// "@Name(a,b,c)", as messages show a call.
std::string callText(const char* name, const VEXStringVector& params);

// Ends a cm file: the maker that the list of functions calls.
#define VEX_COMMAND_MAKER(file, Class)        \
  std::unique_ptr<VEXCommand> make_##file();  \
  std::unique_ptr<VEXCommand> make_##file() { \
    return std::make_unique<Class>();         \
  }
