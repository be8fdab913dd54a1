// The modules that add formats and factories at run time: finding them, and the engine's side of vex/inc/orvplugin.h.
#pragma once

#include <string>

#include "vex/inc/orvplugin.h"
#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"

// Loads orv_<name>.so from the directory ORV_PLUGINS of the environment, else from <home>/plugins, once a process.
// 871008: there is no such module, or it cannot be loaded, or it was built for another engine.
VEXStatus loadPlugin(const std::string& name, const ORV_Plugin*& plugin);
// What the module says of its newest failure.
std::string pluginError(const ORV_Plugin& plugin);

inline ORV_PluginFeature* pluginHandle(VEXFeature& feature) {
  return reinterpret_cast<ORV_PluginFeature*>(&feature);
}
