/* A plug-in of the tests: reads "type x y" lines from its dataset, writes "type|name=value..." lines, and as a factory
   drops features without an attribute "keep" and stamps the others with the words of its clause. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vex/inc/orvplugin.h"

static const ORV_PluginHost* host;
static char stamp[100];

static const char* lastError(void) {
  return "the test plug-in did not like it";
}

static void* openReader(const char* type, const char* keyword, const char* dataset) {
  host->log(0, type);
  host->log(0, host->keyword(keyword) == NULL ? "no keyword" : host->keyword(keyword));
  return fopen(dataset, "r");
}

static int32_t readFeature(void* reader, ORV_PluginFeature* feature) {
  char type[50];
  double x = 0.0;
  double y = 0.0;
  if (fscanf(reader, "%49s", type) != 1) return 0;
  if (fscanf(reader, "%lf %lf", &x, &y) != 2) return -1;
  host->setType(feature, type);
  host->setGeometry(feature, 1, 2);
  host->addPoint(feature, x, y, 0.0);
  host->setAttribute(feature, "from", "plug-in");
  return 1;
}

static void closeReader(void* reader) {
  fclose(reader);
}

struct Writer {
  FILE* file;
  char path[1000];
};

static void* openWriter(const char* type, const char* keyword, const char* dataset) {
  struct Writer* writer = calloc(1, sizeof *writer);
  (void)type;
  (void)keyword;
  snprintf(writer->path, sizeof writer->path, "%s", dataset);
  writer->file = fopen(dataset, "w");
  if (writer->file != NULL) return writer;
  free(writer);
  return NULL;
}

static int32_t writeFeature(void* handle, ORV_PluginFeature* feature) {
  struct Writer* writer = handle;
  const char* name;
  const char* value;
  double xyz[3];
  if (host->attribute(feature, "refuse") != NULL) return 1;
  if (host->attribute(feature, "fail") != NULL) return -1;
  fprintf(writer->file, "%s", host->type(feature));
  for (int32_t i = 0; (name = host->attributeAt(feature, i, &value)) != NULL; ++i)
    fprintf(writer->file, "|%s=%s", name, value);
  for (int64_t i = 0; host->point(feature, i, xyz) != 0; ++i) fprintf(writer->file, " %g %g", xyz[0], xyz[1]);
  fprintf(writer->file, "\n");
  return 0;
}

static int32_t closeWriter(void* handle, int32_t isAborted) {
  struct Writer* writer = handle;
  fclose(writer->file);
  if (isAborted) remove(writer->path);
  free(writer);
  return 0;
}

static void* openFactory(const char* className) {
  return strcmp(className, "TestPlug") == 0 ? stamp : NULL;
}

static int32_t configureFactory(void* factory, int32_t numWords, const char* const* words) {
  (void)factory;
  if (numWords != 2 || strcmp(words[0], "STAMP") != 0) return -1;
  snprintf(stamp, sizeof stamp, "%s", words[1]);
  return 0;
}

static int32_t processFeature(void* factory, ORV_PluginFeature* feature) {
  if (host->attribute(feature, "keep") == NULL) return 1;
  host->setAttribute(feature, "stamp", factory);
  return 0;
}

static void closeFactory(void* factory) {
  (void)factory;
}

static const ORV_Plugin plugin = {ORV_PLUGIN_VERSION, lastError,        openReader,     readFeature,
                                  closeReader,        openWriter,       writeFeature,   closeWriter,
                                  openFactory,        configureFactory, processFeature, closeFactory};

const ORV_Plugin* orv_plugin(const ORV_PluginHost* engine) {
  host = engine;
  return engine->version == ORV_PLUGIN_VERSION ? &plugin : NULL;
}
