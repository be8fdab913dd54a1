#include "vex/dynamic/plugmod.h"

#include <algorithm>
#include <unordered_map>

#include "vex/inc/numtext.h"
#include "vex/src/homedir.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNoModule = 871008;

VEXFeature& featureOf(ORV_PluginFeature* handle) {
  return *reinterpret_cast<VEXFeature*>(handle);
}

std::string_view viewOf(const char* text) {
  return text == nullptr ? std::string_view() : std::string_view(text);
}

// Texts lent to a module until its next call.
std::string lentText;
VEXStringVector lentNames;
VEXStringVector lentValues;

void hostLog(std::int32_t severity, const char* text) {
  logText(static_cast<VEXSeverity>(std::clamp(severity, 0, 2)), std::string(viewOf(text)));
}

const char* hostKeyword(const char* name) {
  return VEXConfiguration::value(viewOf(name), lentText) ? lentText.c_str() : nullptr;
}

const char* hostType(ORV_PluginFeature* feature) {
  return featureOf(feature).featureType().c_str();
}

void hostSetType(ORV_PluginFeature* feature, const char* type) {
  featureOf(feature).setFeatureType(viewOf(type));
}

const char* hostAttribute(ORV_PluginFeature* feature, const char* name) {
  const VEXText* value = featureOf(feature).findAttribute(viewOf(name));
  return value == nullptr ? nullptr : value->c_str();
}

const char* hostAttributeAt(ORV_PluginFeature* feature, std::int32_t index, const char** value) {
  if (index == 0) featureOf(feature).orderedAttributes(lentNames, lentValues);
  if (index < 0 || static_cast<std::size_t>(index) >= lentNames.size()) return nullptr;
  if (value != nullptr) *value = lentValues[static_cast<std::size_t>(index)].c_str();
  return lentNames[static_cast<std::size_t>(index)].c_str();
}

void hostSetAttribute(ORV_PluginFeature* feature, const char* name, const char* value) {
  featureOf(feature).setAttribute(viewOf(name), viewOf(value));
}

std::int32_t hostGeometry(ORV_PluginFeature* feature) {
  return static_cast<std::int32_t>(featureOf(feature).geomType());
}

void hostSetGeometry(ORV_PluginFeature* feature, std::int32_t geometry, std::int32_t dimension) {
  featureOf(feature).setDimension(dimension == 3 ? 3 : 2);
  featureOf(feature).setGeomType(static_cast<std::uint32_t>(geometry));
}

std::int64_t hostNumPoints(ORV_PluginFeature* feature) {
  return static_cast<std::int64_t>(featureOf(feature).numCoords());
}

std::int32_t hostPoint(ORV_PluginFeature* handle, std::int64_t index, double* xyz) {
  const VEXFeature& feature = featureOf(handle);
  if (index < 0 || static_cast<std::size_t>(index) >= feature.numCoords()) return 0;
  const auto at = static_cast<std::size_t>(index);
  xyz[0] = feature.xs()[at];
  xyz[1] = feature.ys()[at];
  xyz[2] = feature.dimension() == 3 ? feature.zs()[at] : kNoZ;
  return 1;
}

void hostAddPoint(ORV_PluginFeature* feature, double x, double y, double z) {
  featureOf(feature).addCoord(x, y, z);
}

constexpr ORV_PluginHost kHost{ORV_PLUGIN_VERSION, hostLog,         hostKeyword,      hostType,     hostSetType,
                               hostAttribute,      hostAttributeAt, hostSetAttribute, hostGeometry, hostSetGeometry,
                               hostNumPoints,      hostPoint,       hostAddPoint};

// A word of a mapping file becomes a part of a file name only when it cannot lead out of the directory.
bool isModuleName(const std::string& name) {
  return !name.empty() && std::all_of(name.begin(), name.end(), [](char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '-';
  });
}

}  // namespace

VEXStatus loadPlugin(const std::string& name, const ORV_Plugin*& plugin) {
  static std::unordered_map<std::string, const ORV_Plugin*> loaded;
  std::string directory;
  if (!platform::environment("ORV_PLUGINS", directory)) directory = getHomeDirectory() + "plugins";
  const std::string path = directory + "/orv_" + name + ".so";
  auto found = loaded.find(path);
  if (found != loaded.end()) {
    plugin = found->second;
    return nullptr;
  }
  platform::DynamicLibrary library;
  if (!isModuleName(name) || !platform::fileExists(path) || !library.open({path}))
    return makeStatus(kNoModule, {name, path});
  using EntryPoint = const ORV_Plugin* (*)(const ORV_PluginHost*);
  auto entry = reinterpret_cast<EntryPoint>(library.symbol("orv_plugin"));
  const ORV_Plugin* table = entry == nullptr ? nullptr : entry(&kHost);
  if (table == nullptr || table->version != ORV_PLUGIN_VERSION) return makeStatus(kNoModule, {name, path});
  plugin = loaded.emplace(path, table).first->second;
  return nullptr;
}

std::string pluginError(const ORV_Plugin& plugin) {
  return std::string(plugin.lastError == nullptr ? std::string_view() : viewOf(plugin.lastError()));
}
