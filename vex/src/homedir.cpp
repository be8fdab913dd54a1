#include "vex/src/homedir.h"

#include "vex/src/platform/platform.h"

namespace {

std::string findHome() {
  std::vector<std::string> candidates;
  std::string named;
  if (platform::environment("ORV_HOME", named) && !named.empty()) {
    named = platform::nativePath(named);
    while (named.size() > 1 && named.back() == '/') named.pop_back();
    candidates.push_back(named == "/" ? named : named + "/");
  }
  for (const std::string& base : {platform::executableDirectory(), platform::engineDirectory()}) {
    if (base.empty()) continue;
    for (const char* relative : {"", "../share/orvane/", "../../../home/"})
      candidates.push_back(platform::canonicalPath(base + relative) + "/");
  }
  candidates.push_back(ORV_BUILD_HOME "/");
  for (const std::string& candidate : candidates)
    if (platform::isDirectory(candidate + "messages")) return candidate;
  return {};
}

}  // namespace

const std::string& getHomeDirectory() {
  static const std::string home = findHome();
  return home;
}
