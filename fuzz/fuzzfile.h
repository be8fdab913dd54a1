// What fuzz targets of file readers share: a file in memory that has a path, and a log that goes nowhere.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"

class FuzzFile {
 public:
  FuzzFile(const std::uint8_t* bytes, std::size_t count) : fd_(memfd_create("fuzz", 0)) {
    if (fd_ < 0 || ::write(fd_, bytes, count) != static_cast<ssize_t>(count)) std::abort();
    path_ = "/proc/self/fd/" + std::to_string(fd_);
  }
  ~FuzzFile() { ::close(fd_); }
  FuzzFile(const FuzzFile&) = delete;
  FuzzFile& operator=(const FuzzFile&) = delete;
  const std::string& path() const { return path_; }

 private:
  int fd_;
  std::string path_;
};

// Made once, at the first input, and never taken down: what its end would log needs objects that are gone by then.
class FuzzEngine {
 public:
  static void start() { [[maybe_unused]] static FuzzEngine* const engine = new FuzzEngine; }

 private:
  FuzzEngine() {
    VEXConfiguration::addRow({"LOG_FILENAME", "NUL:"});
    ignoreStatus(log_.open());  // without it the lines go to the error stream
  }
  VEXConfiguration configuration_;
  VEXLogFile log_;
};
