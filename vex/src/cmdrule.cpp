#include "vex/src/cmdrule.h"

#include "vex/inc/numtext.h"

double VEXArgs::real(std::size_t at) const {
  double value = 0.0;
  textToReal(texts_[at], value);
  return value;
}

std::int64_t VEXArgs::integer(std::size_t at) const {
  std::int64_t value = 0;
  textToInteger(texts_[at], value);
  return value;
}

namespace {

// -1: no axis word.
int axisOf(std::string_view word) {
  constexpr const char* kWords[3][2] = {{"x", "c1"}, {"y", "c2"}, {"z", "c3"}};
  for (int axis = 0; axis < 3; ++axis)
    for (const char* known : kWords[axis])
      if (equalsIgnoringCase(word, known)) return axis;
  return -1;
}

}  // namespace

int VEXArgs::axis(std::size_t at) const {
  return axisOf(texts_[at]);
}

namespace {

bool isOfKind(std::string_view text, VEXArgKind kind) {
  double real = 0.0;
  std::int64_t integer = 0;
  switch (kind) {
    case VEXArgKind::Text:
      return true;
    case VEXArgKind::Real:
      return textToReal(text, real);
    case VEXArgKind::Integer:
      return textToInteger(text, integer);
    case VEXArgKind::Axis:
      return axisOf(text) >= 0;
  }
  return false;
}

}  // namespace

VEXStatus VEXRuleCommand::test(const VEXFeaturePtr& feature, const VEXStringVector& params) const {
  if (!rule_.count.accepts(params.size())) return makeStatus(rule_.onCount, {callText(rule_.name, params)});
  if (rule_.onNoFeature != 0 && feature == nullptr)
    return makeStatus(rule_.onNoFeature, {callText(rule_.name, params)});
  for (const VEXArgRule& arg : rule_.args)
    if (arg.at < params.size() && !isOfKind(params[arg.at], arg.kind))
      return makeStatus(arg.onBad, {arg.name, params[arg.at]});
  return nullptr;
}

VEXStatus VEXRuleCommand::execute(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) {
  if (!params.empty() || !takesNothing_ || feature == nullptr) VEX_TRY(test(feature, params));
  return extendStatus(work(feature, VEXArgs(params), result));
}

VEXStatus VEXRuleCommand::extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) {
  if (rule_.extract == VEXExtract::Forward) return extendStatus(execute(feature, params, result));
  if (rule_.extract == VEXExtract::Inverse) {
    VEX_TRY(test(feature, params));
    return extendStatus(inverse(feature, VEXArgs(params), result));
  }
  if (rule_.extract == VEXExtract::Clear) result.clear();
  return nullptr;
}

VEXStatus VEXRuleCommand::inverse(VEXFeaturePtr& feature, const VEXArgs& args, std::string& result) {
  return extendStatus(work(feature, args, result));
}

VEXStatus VEXRuleCommand::configure(const VEXStringVector&) {
  return makeStatus(rule_.onConfigure, {rule_.name});
}

std::string callText(const char* name, const VEXStringVector& params) {
  return "@" + std::string(name) + "(" + joined(params, ",") + ")";
}
