// The home of an installation: the directory that holds messages, Reproject and metafile.
#pragma once

#include <string>

// Found at the first call: ORV_HOME of the environment; the directory of the executable, of the library; an
// installation's share/orvane; the source tree of a build; the directory configured at build time. The first
// that holds a directory "messages" wins. Ends in one separator; empty when there is none.
const std::string& getHomeDirectory();
