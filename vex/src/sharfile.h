// VEXSharedFile: one output file that several clients write to; it is opened with the first of them and closed with the
// last. Whoever makes it owns it; a client calls open, then stream, then close.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "vex/inc/statinfo.h"
#include "vex/src/vexfile.h"

class VEXSharedFile {
 public:
  explicit VEXSharedFile(std::string path) : path_(std::move(path)) {}

  VEXStatus open();   // 229001: the file cannot be created
  // Takes one client off. 229002, for the last of them: not all of it was written.
  VEXStatus close();
  VEXOutputFile& stream() { return *stream_; }  // between open and close
  std::int32_t numClients() const { return numClients_; }

 private:
  std::string path_;
  std::unique_ptr<VEXOutputFile> stream_;
  std::int32_t numClients_ = 0;
  bool isBusy_ = false;  // a call is under way; it may not be entered again
};
