#include "vex/src/vexspec.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"

namespace {

// Names may hold any printable character; what is refused are control characters.
bool isAttributeName(std::string_view name) {
  return std::none_of(name.begin(), name.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; });
}

bool isSequencedName(std::string_view name) {
  return name.find('{') != std::string_view::npos || (name.size() > 6 && name.ends_with(".Class"));
}

// From the attributes that were put aside to the new ones. A value that equals the default is carried by absence.
void copyDirectly(VEXFeature& feature, const VEXTransferVariable& variable, std::uint32_t& place) {
  if (const VEXText* value = feature.findShelved(variable.source_, place)) {
    if (variable.default_.empty() || *value != variable.default_) feature.setAttribute(variable.attr_, *value);
  } else if (!variable.sourceDefault_.empty() && variable.sourceDefault_ != variable.default_) {
    feature.setAttribute(variable.attr_, variable.sourceDefault_);
  }
}

// A list as it travels in one variable: the mark, then the elements.
std::string listText(const VEXStringVector& values) {
  return kListMark + joined(values, std::string_view(&kListSeparator, 1));
}

VEXStatus spreadList(VEXFeature& feature, const std::string& attrName, std::string_view text) {
  if (text.starts_with(kListMark)) text.remove_prefix(1);
  VEXStringVector values;
  splitAt(text, kListSeparator, values);
  return extendStatus(feature.setList(attrName, values));
}

void setOneValue(VEXFeature& feature, VEXName attr, bool isSequenced, std::string_view value) {
  if (isSequenced)
    feature.setSequenced(attr, value);
  else
    feature.setAttribute(attr, value);
}

// A list attribute's name holds "{}" once; two of them are told at load.
VEXStatus checkName(const std::string& name, bool& isList) {
  isList = name.find("{}") != std::string::npos;
  VEXStringVector values;
  bool found = false;
  return isList ? extendStatus(VEXObject().getList(name, values, found)) : nullptr;
}

}  // namespace

void VEXFeatureSpec::setTransferReport(bool on) {
  transferReport_ = on;
}

VEXStatus VEXFeatureSpec::parse(const VEXStringVector& row, std::size_t firstToken, std::size_t lastToken) {
  if (lastToken == 0 && !row.empty()) lastToken = row.size() - 1;
  if (row.empty() || firstToken > lastToken)
    return makeStatus(252001, {joined(row, " "), integerText(static_cast<std::int64_t>(lastToken)),
                               integerText(static_cast<std::int64_t>(firstToken))});
  featureType_ = VEXName::intern(row[firstToken]);
  description_ = featureType();
  useFeatureType_ = !description_.starts_with('*');
  for (std::size_t at = firstToken + 1; at <= lastToken; ++at) {
    if (row[at].starts_with('@')) {
      functions_.push_back(std::make_unique<VEXCommandParm>());
      VEX_TRY(functions_.back()->parse(row[at]));
      continue;
    }
    if (at == lastToken) return makeStatus(252003, {joined(row, " "), row[at]});
    if (!isAttributeName(row[at])) return makeStatus(252002, {row[at], joined(row, " "), description_});
    VEX_TRY(addAttribute(row[at], row[at + 1]));
    ++at;
  }
  return nullptr;
}

VEXStatus VEXFeatureSpec::addAttribute(const std::string& name, const std::string& value) {
  bool isList = false;
  VEXName attr = VEXName::intern(name);
  if (value.starts_with('%') || value.starts_with('@')) VEX_TRY(checkName(name, isList));
  if (value.starts_with('%')) {
    std::size_t colon = value.find(':');
    VEXTransferVariable variable;
    variable.attrName_ = name;
    variable.attr_ = attr;
    variable.varName_ = value.substr(0, colon);
    if (colon != std::string::npos) variable.default_ = value.substr(colon + 1);
    variable.isList_ = isList;
    variable.isSequenced_ = attr.isListName();
    transferVars_.push_back(std::move(variable));
    transfers_.emplace_back();
    capturesAny_ = true;
    return nullptr;
  }
  if (value.starts_with('@')) {
    VEXAttributeFunction function{name, attr, isList, attr.isListName(), std::make_unique<VEXCommandParm>()};
    VEX_TRY(function.function_->parse(value));
    attrFunctions_.push_back(std::move(function));
    return nullptr;
  }
  attrPaths_.push_back(attr);
  attrVals_.push_back(value);
  attrIsSequenced_.push_back(isSequencedName(name));
  description_ += "+" + name + "+" + value;
  return nullptr;
}

void VEXFeatureSpec::collectVariables(VEXStringVector& names) const {
  for (const VEXTransferVariable& variable : transferVars_) names.push_back(variable.varName_);
  for (const auto& function : functions_) function->variables(names);
  for (const VEXAttributeFunction& function : attrFunctions_) function.function_->variables(names);
}

void VEXFeatureSpec::bindVariables(VEXVariableTable& variables) {
  for (VEXTransferVariable& variable : transferVars_) variable.slot_ = variables.slotOf(variable.varName_);
}

bool VEXFeatureSpec::hasReferences() const {
  auto isMadeAnew = [](const VEXCommandParm& call) { return call.needsExpansion(); };
  return std::any_of(functions_.begin(), functions_.end(), [&](const auto& call) { return isMadeAnew(*call); }) ||
         std::any_of(attrFunctions_.begin(), attrFunctions_.end(),
                     [&](const auto& function) { return isMadeAnew(*function.function_); });
}

// A call with references can set a variable (source row), or read it under a name that comes out of a value.
void VEXFeatureSpec::takeFrom(VEXFeatureSpec& source) {
  auto named = [](const std::string& name) {
    return [&name](const VEXTransferVariable& variable) { return variable.varName_ == name; };
  };
  if (!useFeatureType_ || source.hasReferences()) return;
  for (VEXTransferVariable& variable : transferVars_) {
    auto& all = source.transferVars_;
    auto only = std::find_if(all.begin(), all.end(), named(variable.varName_));
    if (only == all.end() || std::count_if(only, all.end(), named(variable.varName_)) != 1) continue;
    variable.isDirect_ = !variable.isList_ && !variable.isSequenced_ && !only->isList_;
    variable.source_ = only->attr_;
    variable.sourceDefault_ = only->default_;
    if (variable.isDirect_ && variable.default_.empty())
      transfers_[static_cast<std::size_t>(&variable - transferVars_.data())] = {variable.source_, variable.attr_, 0};
  }
  if (hasReferences()) return;
  source.capturesAny_ = false;
  for (VEXTransferVariable& variable : source.transferVars_) {
    variable.isDirect_ = std::none_of(transferVars_.begin(), transferVars_.end(), [&](const VEXTransferVariable& use) {
      return use.varName_ == variable.varName_ && !use.isDirect_;
    });
    source.capturesAny_ |= !variable.isDirect_;
  }
}

bool VEXFeatureSpec::hasConstants(const VEXFeature& feature) const {
  for (std::size_t i = 0; i < attrPaths_.size(); ++i) {
    const VEXText* value = feature.findAttribute(attrPaths_[i]);
    if (value == nullptr || *value != attrVals_[i]) return false;
  }
  return true;
}

// ---- source side ----

VEXStatus VEXFeatureSpec::extractAll(VEXFeaturePtr& feature, VEXVariableTable& variables) const {
  VEX_TRY(runFunctions(feature, variables, true));
  std::string result;
  for (auto function = attrFunctions_.begin(); function != attrFunctions_.end() && feature != nullptr; ++function) {
    if (function->isList_) {
      VEXStringVector values;
      bool found = false;
      VEX_TRY(feature->getList(function->attrName_, values, found));
      VEX_TRY(function->function_->extractList(feature, values, variables));
    } else {
      const VEXText* found = feature->findAttribute(function->attr_);
      const std::string value(found == nullptr ? std::string_view() : *found);
      VEX_TRY(function->function_->extractValue(feature, value, variables, result));
    }
  }
  return nullptr;
}

// Source functions run last to first: a source row is a destination row read backwards.
VEXStatus VEXFeatureSpec::runFunctions(VEXFeaturePtr& feature, VEXVariableTable& variables, bool sourceSide) const {
  std::string result;
  for (std::size_t i = 0; i < functions_.size() && feature != nullptr; ++i) {
    VEXCommandParm& call = *functions_[sourceSide ? functions_.size() - 1 - i : i];
    VEX_TRY(sourceSide ? call.extract(feature, variables, result) : call.execute(feature, variables, result));
  }
  return nullptr;
}

void VEXFeatureSpec::capture(const VEXFeature* feature, VEXVariableTable& variables) const {
  if (feature == nullptr) return;
  std::string missing;
  for (const VEXTransferVariable& variable : transferVars_) {
    if (variable.isDirect_ && !transferReport_) continue;
    if (variable.isList_) {
      VEXStringVector values;
      bool found = false;
      ignoreStatus(feature->getList(variable.attrName_, values, found));  // the name was checked at load
      if (found) {
        variables.set(variable.slot_, listText(values));
        continue;
      }
    } else if (const VEXText* value = feature->findAttribute(variable.attr_, variable.place_)) {
      variables.setView(variable.slot_, *value);
      continue;
    }
    if (!variable.default_.empty())
      variables.setView(variable.slot_, variable.default_);
    else if (transferReport_)
      missing += variable.attrName_ + "(" + variable.varName_ + ") ";
  }
  if (!missing.empty())
    logMessage(VEXSeverity::Warn, 252005,
               {"Attributes not available for transfer from instance of `" + feature->featureType() + "': " + missing});
  if (transferReport_) reportIgnored(*feature);
}

void VEXFeatureSpec::reportIgnored(const VEXFeature& feature) const {
  auto isUsed = [this](VEXName name) {
    auto names = [name](const auto& used) { return used.attr_ == name; };
    return std::find(attrPaths_.begin(), attrPaths_.end(), name) != attrPaths_.end() ||
           std::any_of(transferVars_.begin(), transferVars_.end(), names) ||
           std::any_of(attrFunctions_.begin(), attrFunctions_.end(), names);
  };
  std::string ignored;
  feature.forEachAttribute([&](VEXName name, std::string_view) {
    if (!isUsed(name)) ignored += name.text() + " ";
  });
  if (!ignored.empty())
    logMessage(VEXSeverity::Warn, 252006, {"Attributes IGNORED for featuretype `" + featureType() + "': " + ignored});
}

// ---- destination side ----

VEXStatus VEXFeatureSpec::apply(VEXFeaturePtr& feature, VEXVariableTable& variables) const {
  if (!transferReport_) return extendStatus(rewrite(feature, variables));
  const std::string oldType = feature->featureType();
  VEX_TRY(rewrite(feature, variables));
  reportMissing(oldType, variables);
  return nullptr;
}

VEXStatus VEXFeatureSpec::rewrite(VEXFeaturePtr& feature, VEXVariableTable& variables) const {
  // Variables may look into the attribute values they were captured from. Those stay readable while the feature
  // is filled anew; where the attributes stay on the feature the values are copied first, for functions that ask for
  // them too.
  if (useFeatureType_) {
    feature->shelveAttributes();
  } else {
    variables.copyViews();
  }
  for (std::size_t i = 0; i < attrPaths_.size(); ++i)
    setOneValue(*feature, attrPaths_[i], attrIsSequenced_[i], attrVals_[i]);
  if (useFeatureType_) feature->setFeatureType(featureType_);
  VEX_TRY(setFromVariables(*feature, variables));
  if (!attrFunctions_.empty()) VEX_TRY(setFromFunctions(feature, variables));
  if (!functions_.empty()) VEX_TRY(runFunctions(feature, variables, false));
  return nullptr;
}

void VEXFeatureSpec::reportMissing(const std::string& oldType, const VEXVariableTable& variables) const {
  std::string missing;
  std::string_view value;
  for (const VEXTransferVariable& variable : transferVars_)
    if (!variables.get(variable.slot_, value)) missing += variable.attrName_ + "(" + variable.varName_ + ") ";
  if (!missing.empty())
    logMessage(VEXSeverity::Warn, 252004,
               {"Attributes requested for `" + featureType() + "' but not found in instance of `" + oldType +
                "': " + missing});
}

VEXStatus VEXFeatureSpec::setFromVariables(VEXFeature& feature, const VEXVariableTable& variables) const {
  for (std::size_t at = 0; at < transferVars_.size(); ++at) {
    if (!transferReport_) at += feature.takeShelved(std::span(transfers_).subspan(at));
    if (at == transferVars_.size()) break;
    const VEXTransferVariable& variable = transferVars_[at];
    if (variable.isDirect_ && !transferReport_)
      copyDirectly(feature, variable, transfers_[at].place);
    else
      VEX_TRY(setFromVariable(feature, variable, variables));
  }
  return nullptr;
}

VEXStatus VEXFeatureSpec::setFromVariable(VEXFeature& feature, const VEXTransferVariable& variable,
                                          const VEXVariableTable& variables) const {
  std::string_view value;
  if (!variables.get(variable.slot_, value)) return nullptr;
  // A value that equals the default is carried by absence.
  if (!variable.default_.empty() && value == variable.default_) return nullptr;
  if (variable.isList_ && !value.empty()) return extendStatus(spreadList(feature, variable.attrName_, value));
  setOneValue(feature, variable.attr_, variable.isSequenced_, value);
  return nullptr;
}

VEXStatus VEXFeatureSpec::setFromFunctions(VEXFeaturePtr& feature, VEXVariableTable& variables) const {
  for (auto function = attrFunctions_.begin(); function != attrFunctions_.end() && feature != nullptr; ++function) {
    if (function->isList_) {
      VEXStringVector results;
      VEX_TRY(function->function_->executeList(feature, variables, results));
      if (feature != nullptr) VEX_TRY(feature->setList(function->attrName_, results));
    } else {
      VEX_TRY(function->function_->execute(feature, variables, result_));
      if (feature != nullptr) setOneValue(*feature, function->attr_, function->isSequenced_, result_);
    }
  }
  return nullptr;
}

// ---- for factories ----

VEXStatus VEXFeatureSpec::testOnly(VEXFeaturePtr& feature, bool& matched) const {
  matched = matchesAttributes(*feature);
  if (!matched) return nullptr;
  unbound_.clear();
  return extendStatus(runFunctions(feature, unbound_, true));
}

VEXStatus VEXFeatureSpec::setAttributes(VEXFeaturePtr& feature) const {
  for (std::size_t i = 0; i < attrPaths_.size(); ++i)
    setOneValue(*feature, attrPaths_[i], attrIsSequenced_[i], attrVals_[i]);
  if (useFeatureType_) feature->setFeatureType(featureType_);
  unbound_.clear();
  VEX_TRY(setFromFunctions(feature, unbound_));
  return extendStatus(runFunctions(feature, unbound_, false));
}
