#include "vex/src/tclfeat.h"

#include <array>
#include <span>
#include <utility>

#include "vex/inc/numtext.h"
#include "vex/internat/internat.h"
#include "vex/src/vexlog.h"

namespace {

constexpr const char* kAttributes = "ORV_Attributes";
constexpr const char* kFeatureType = "ORV_FeatureType";
constexpr const char* kCoordSys = "ORV_CoordSys";
constexpr std::size_t kMostParameters = 10;  // %0 to %9

// Variables get their values when they are read, and these two commands change them without reading: they are made to
// look first, or they would find nothing, or what an earlier feature has left.
constexpr const char* kReadFirst = R"(
rename unset ::tcl::ORV_Unset
rename append ::tcl::ORV_Append
proc unset args {
  foreach name $args {uplevel 1 [list ::info exists $name]}
  uplevel 1 [linsert $args 0 ::tcl::ORV_Unset]
}
proc append {name args} {
  uplevel 1 [list ::info exists $name]
  uplevel 1 [linsert $args 0 ::tcl::ORV_Append $name]
})";

constexpr std::pair<std::string_view, VEXSeverity> kSeverities[] = {
    {"orv_inform", VEXSeverity::Inform},   {"orv_warn", VEXSeverity::Warn},
    {"orv_error", VEXSeverity::Error},     {"orv_fatal", VEXSeverity::Fatal},
    {"orv_statistic", VEXSeverity::Stats}, {"orv_statusreport", VEXSeverity::StatRp}};

// ---- the subcommands of ORV_Coordinates: words[0] is the subcommand's name; false for words that make no sense ----

bool numCoords(VEXFeature& feature, const VEXStringVector&, std::string& result) {
  appendInteger(result, static_cast<std::int64_t>(feature.numCoords()));
  return true;
}

bool geomType(VEXFeature& feature, const VEXStringVector& words, std::string& result) {
  if (words.size() == 1) {
    result = VEXFeature::geomTypeName(feature.geomType());
    return true;
  }
  for (std::uint32_t code = 0; code <= VEX_GEOM_AGGREGATE; code = code == 0 ? 1 : code * 2)
    if (words[1] == VEXFeature::geomTypeName(code) || words[1] == integerText(code)) {
      feature.setGeomType(code);
      return true;
    }
  return false;
}

bool dimension(VEXFeature& feature, const VEXStringVector& words, std::string& result) {
  if (words.size() == 1) {
    appendInteger(result, feature.dimension());
    return true;
  }
  if (words[1] != "2" && words[1] != "3") return false;
  feature.setDimension(words[1] == "2" ? 2 : 3);
  return true;
}

bool resetCoords(VEXFeature& feature, const VEXStringVector&, std::string&) {
  feature.resetCoords();
  return true;
}

bool addCoord(VEXFeature& feature, const VEXStringVector& words, std::string&) {
  std::array<double, 3> values{};
  for (std::size_t i = 1; i < words.size(); ++i)
    if (!textToReal(words[i], values[i - 1])) return false;
  feature.addCoord(values[0], values[1], values[2]);
  return true;
}

bool getCoord(VEXFeature& feature, const VEXStringVector& words, std::string& result) {
  const std::string& axis = words[2];
  if (axis != "x" && axis != "y" && axis != "z") {
    result = "Invalid axis for getCoord -- `" + axis + "' must be one of x, y, or z";
    return false;
  }
  std::int64_t index = 0;
  if (!textToInteger(words[1], index) || index < 0 || index >= static_cast<std::int64_t>(feature.numCoords())) {
    result = formatMessage(818056, {words[1], integerText(static_cast<std::int64_t>(feature.numCoords()))});
    return false;
  }
  const std::span<const double> values = axis == "x" ? feature.xs() : axis == "y" ? feature.ys() : feature.zs();
  appendReal(result, values.empty() ? 0.0 : values[static_cast<std::size_t>(index)]);
  return true;
}

}  // namespace

struct VEXTclFeature::Subcommand {
  std::string_view name;
  std::size_t least, most;  // words behind the name
  bool (*run)(VEXFeature& feature, const VEXStringVector& words, std::string& result);
};

VEXTclFeature::VEXTclFeature() {
  if (!isReady()) return;
  interp_.eval(std::string("array set ") + kAttributes + " {}");
  interp_.traceVar(kAttributes, [this](Access access, const std::string& element) { onAttributes(access, element); });
  interp_.traceVar(kFeatureType, [this](Access access, const std::string&) {
    onText(access, kFeatureType, &VEXFeature::featureType,
           [](VEXFeature& feature, std::string_view text) { feature.setFeatureType(text); });
  });
  interp_.traceVar(kCoordSys, [this](Access access, const std::string&) {
    onText(access, kCoordSys, &VEXFeature::coordSys,
           [](VEXFeature& feature, std::string_view text) { feature.setCoordSys(text); });
  });
  interp_.createCommand("ORV_Execute",
                        [this](const VEXStringVector& words, std::string& result) { return execute(words, result); });
  interp_.createCommand("ORV_Coordinates", [this](const VEXStringVector& words, std::string& result) {
    return coordinates(words, result);
  });
  interp_.createCommand("ORV_LogMessage", logMessageCommand);
  interp_.eval(kReadFirst);
}

bool VEXTclFeature::eval(std::string_view script, VEXFeaturePtr& feature, std::string& result) {
  VEXFeaturePtr* const outer = feature_;
  feature_ = &feature;
  ++depth_;
  if (arrayIsGone_) {
    interp_.eval(std::string("array set ") + kAttributes + " {}");
    arrayIsGone_ = false;
  }
  const bool done = interp_.evalKept(script);
  result = interp_.result();
  --depth_;
  feature_ = outer;
  return done;
}

bool VEXTclFeature::evalFile(const std::string& path, std::string& error) {
  if (interp_.evalFile(path)) return true;
  error = interp_.result();
  return false;
}

bool VEXTclFeature::setVar(const std::string& name, const std::string& value, std::string& error) {
  if (interp_.setVar(name, value)) return true;
  error = interp_.result();
  return false;
}

// Elements are brought up to date when they are read, so nothing is copied that a script does not ask for.
void VEXTclFeature::onAttributes(Access access, const std::string& element) {
  if (isSyncing_) return;
  VEXFeature* const current = feature();
  if (access == Access::Unset && element.empty()) {
    elements_.clear();
    arrayIsGone_ = true;
    if (current != nullptr) current->clearAttributes();
    return;
  }
  isSyncing_ = true;
  if (access == Access::Array) {
    showAllAttributes();
  } else if (access == Access::Read) {
    const VEXText* value = current == nullptr ? nullptr : current->findAttribute(element);
    if (value != nullptr) {
      elements_.insert(element);
      interp_.setVar(kAttributes, *value, element);
    } else if (elements_.erase(element) > 0) {
      interp_.unsetVar(kAttributes, element);
    }
  } else if (access == Access::Write) {
    std::string value;
    elements_.insert(element);
    if (current != nullptr && interp_.getVar(kAttributes, value, element)) current->setAttribute(element, value);
  } else {
    elements_.erase(element);
    if (current != nullptr) {
      const VEXName name = VEXName::find(element);
      if (!name.isNull()) current->removeAttribute(name);
      if (!name.isNull()) current->removeFromSequence(name);
    }
  }
  isSyncing_ = false;
}

void VEXTclFeature::showAllAttributes() {
  const VEXFeature* const current = feature();
  std::erase_if(elements_, [&](const std::string& element) {
    if (current != nullptr && current->attributeExists(element)) return false;
    interp_.unsetVar(kAttributes, element);
    return true;
  });
  if (current == nullptr) return;
  current->forEachAttribute([this](VEXName name, std::string_view value) {
    elements_.insert(name.text());
    interp_.setVar(kAttributes, value, name.text());
  });
}

void VEXTclFeature::onText(Access access, const char* variable, const std::string& (VEXFeature::*get)() const,
                           void (*set)(VEXFeature&, std::string_view)) {
  VEXFeature* const current = feature();
  if (current == nullptr) return;
  std::string text;
  if (access == Access::Read)
    interp_.setVar(variable, (current->*get)());
  else if (access == Access::Unset)
    set(*current, {});
  else if (access == Access::Write && interp_.getVar(variable, text))
    set(*current, text);
}

bool VEXTclFeature::execute(const VEXStringVector& words, std::string& result) {
  if (words.empty()) {
    result = "ORV_Execute procedure requires at least one parameter";
    return false;
  }
  const std::string call = joined(words, " ");
  if (feature() == nullptr) {
    result = formatMessage(818057, {call});
    return false;
  }
  if (VEXStatus failure = VEXFeature::performFunction(call, *feature_, result)) {
    result = failure->message();
    return false;
  }
  if (feature() != nullptr) return true;
  result = "ORV_Execute: executing `" + call + "' caused the feature to be deleted";
  return false;
}

bool VEXTclFeature::coordinates(const VEXStringVector& words, std::string& result) {
  static constexpr Subcommand kSubcommands[] = {{"numCoords", 0, 0, numCoords}, {"geomType", 0, 1, geomType},
                                                {"dimension", 0, 1, dimension}, {"resetCoords", 0, 0, resetCoords},
                                                {"addCoord", 2, 3, addCoord},   {"getCoord", 2, 2, getCoord}};
  if (words.empty()) {
    result = "ORV_Coordinates procedure requires at least one parameter";
    return false;
  }
  if (feature() == nullptr) {
    result = formatMessage(818057, {joined(words, " ")});
    return false;
  }
  for (const Subcommand& subcommand : kSubcommands)
    if (words[0] == subcommand.name && words.size() > subcommand.least && words.size() - 1 <= subcommand.most &&
        subcommand.run(*feature(), words, result))
      return true;
  if (result.empty())
    result =
        "Invalid subcommand `" + words[0] + "' or incorrect number of arguments given for ORV_Coordinates procedure";
  return false;
}

bool VEXTclFeature::logMessageCommand(const VEXStringVector& words, std::string& result) {
  if (words.size() < 2) {
    result = "ORV_LogMessage procedure requires at least a severity and a message number";
    return false;
  }
  const VEXSeverity* severity = nullptr;
  for (const auto& [word, meaning] : kSeverities)
    if (words[0] == word) severity = &meaning;
  if (severity == nullptr) {
    result = "ORV_LogMessage -- severity parameter `" + words[0] +
             "' is invalid --  must be one of orv_inform, orv_warn, orv_error, orv_fatal, orv_statistic, "
             "orv_statusreport";
    return false;
  }
  std::int64_t number = 0;
  if (!textToInteger(words[1], number) || number < 0 || number > 0xFFFFFFFF) {
    result = formatMessage(818058, {words[1]});
    return false;
  }
  std::array<std::string_view, kMostParameters> p;
  for (std::size_t i = 0; i < kMostParameters && i + 2 < words.size(); ++i) p[i] = words[i + 2];
  logMessage(*severity, static_cast<std::uint32_t>(number),
             {p[0], p[1], p[2], p[3], p[4], p[5], p[6], p[7], p[8], p[9]});
  return true;
}
