#include "vex/src/vexvalue.h"

#include "vex/inc/vexassert.h"
#include "vex/src/cmdparm.h"

namespace {

class VEXLiteralValue final : public VEXValue {
 public:
  explicit VEXLiteralValue(std::string_view text) : text_(text) {}
  VEXStatus evaluate(VEXFeaturePtr&, std::string& out) const override {
    out = text_;
    return nullptr;
  }

 private:
  std::string text_;
};

class VEXAttributeValue final : public VEXValue {
 public:
  explicit VEXAttributeValue(std::string_view name) : name_(VEXName::intern(name)) {}
  VEXStatus evaluate(VEXFeaturePtr& feature, std::string& out) const override {
    const VEXText* value = feature == nullptr ? nullptr : feature->findAttribute(name_);
    if (value != nullptr) out = *value;
    return nullptr;
  }

 private:
  VEXName name_;
};

class VEXFunctionValue final : public VEXValue {
 public:
  VEXStatus parse(std::string_view text) { return extendStatus(call_->parse(text)); }
  VEXStatus evaluate(VEXFeaturePtr& feature, std::string& out) const override {
    return extendStatus(call_->execute(feature, noVariables_, out));
  }

 private:
  std::unique_ptr<VEXCommandParm> call_ = std::make_unique<VEXCommandParm>();
  mutable VEXVariableTable noVariables_;
};

}  // namespace

VEXStatus VEXValue::create(std::string_view text, std::unique_ptr<VEXValue>& createdValue) {
  VEX_ASSERT(createdValue == NULL);
  if (text.starts_with('@')) {
    auto function = std::make_unique<VEXFunctionValue>();
    VEX_TRY(function->parse(text));
    createdValue = std::move(function);
  } else if (text.starts_with('&')) {
    createdValue = std::make_unique<VEXAttributeValue>(text.substr(1));
  } else {
    createdValue = std::make_unique<VEXLiteralValue>(text);
  }
  return nullptr;
}
