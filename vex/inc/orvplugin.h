/* What a plug-in module and the engine know of each other, C only. A module is a shared object
   orv_<name>.so, in the directory that ORV_PLUGINS of the environment names or in <home>/plugins, that exports one
   function, orv_plugin. It is asked for when a mapping file names a reader type, a writer type or a factory class
   that the engine does not have; <name> is that word.

   All texts are UTF-8 or whatever the data holds, ended by a zero byte. A text that one side hands to the other is
   valid until the next call in either direction. Features belong to the engine and are valid during the call. */
#ifndef ORV_PLUGIN_H
#define ORV_PLUGIN_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define ORV_PLUGIN_VERSION 1

typedef struct ORV_PluginFeature ORV_PluginFeature;

/* What the engine offers. */
typedef struct ORV_PluginHost {
  uint32_t version; /* ORV_PLUGIN_VERSION of the engine */
  void (*log)(int32_t severity, const char* text); /* 0 inform, 1 warn, 2 error */
  const char* (*keyword)(const char* name);        /* last value of a keyword of the mapping file, or null */
  const char* (*type)(ORV_PluginFeature*);
  void (*setType)(ORV_PluginFeature*, const char* type);
  const char* (*attribute)(ORV_PluginFeature*, const char* name); /* null: there is none of that name */
  /* Name of attribute `index` from 0, its value in *value; null behind the last one. */
  const char* (*attributeAt)(ORV_PluginFeature*, int32_t index, const char** value);
  void (*setAttribute)(ORV_PluginFeature*, const char* name, const char* value);
  int32_t (*geometry)(ORV_PluginFeature*); /* 1 point, 2 line, 4 polygon, 8 donut, 512 aggregate; 0 none */
  void (*setGeometry)(ORV_PluginFeature*, int32_t geometry, int32_t dimension); /* dimension 2 or 3; before addPoint */
  int64_t (*numPoints)(ORV_PluginFeature*);
  int32_t (*point)(ORV_PluginFeature*, int64_t index, double xyz[3]); /* 0: there is no such point */
  void (*addPoint)(ORV_PluginFeature*, double x, double y, double z);
} ORV_PluginHost;

/* What the module offers. A null function: the module does not serve as that. Reader, writer and factory are handles
   of the module's own making. A null handle, or a result below 0, is a failure that lastError tells. */
typedef struct ORV_Plugin {
  uint32_t version; /* ORV_PLUGIN_VERSION of the module */
  const char* (*lastError)(void);

  void* (*openReader)(const char* type, const char* keyword, const char* dataset);
  int32_t (*readFeature)(void* reader, ORV_PluginFeature* empty); /* 1: filled, 0: the end */
  void (*closeReader)(void* reader);

  void* (*openWriter)(const char* type, const char* keyword, const char* dataset);
  int32_t (*writeFeature)(void* writer, ORV_PluginFeature*); /* 0: written, 1: refused, the run goes on */
  int32_t (*closeWriter)(void* writer, int32_t isAborted);   /* aborted: remove what was written; the handle is gone */

  void* (*openFactory)(const char* className);
  int32_t (*configureFactory)(void* factory, int32_t numWords, const char* const* words); /* words of one clause */
  int32_t (*processFeature)(void* factory, ORV_PluginFeature*); /* 0: goes on, 1: is dropped */
  void (*closeFactory)(void* factory);
} ORV_Plugin;

/* The one exported function. Both tables live as long as the process; null refuses this engine. */
const ORV_Plugin* orv_plugin(const ORV_PluginHost* host);

#ifdef __cplusplus
}
#endif

#endif
