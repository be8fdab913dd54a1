// VEXTempFileManager: hands out temporary files and removes every one of them in the end, whatever happens. A
// singleton that the entry owns for one run. A file is claimed by the process that made it as long as it is open; what a
// run that was killed has left is claimed by nobody, and goes when the next one starts.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

#include "vex/inc/statinfo.h"
#include "vex/src/vexfile.h"

class VEXTempFileManager {
 public:
  VEXTempFileManager();
  ~VEXTempFileManager();  // removes what is still open
  VEXTempFileManager(const VEXTempFileManager&) = delete;
  VEXTempFileManager& operator=(const VEXTempFileManager&) = delete;
  static VEXTempFileManager& instance();
  static bool exists() { return instance_ != nullptr; }

  // Opens a new file for reading and writing; the manager owns it. 236101: it cannot be opened.
  static VEXStatus getFile(VEXFile*& file);
  // Closes and deletes the file; nulls the pointer.
  static void removeFile(VEXFile*& file);

  // ORV_TEMP, TEMP, "/temp" or "/tmp": the first that is a directory.
  static std::string folder();
  // Makes and opens a new file of the form <folder>/<template><extension>; the Xs of the template are replaced,
  // and its first two characters run through the letters when names are taken. Its path is in the object. Whoever needs
  // the file keeps the object: other runs may remove what is not open.
  static std::unique_ptr<VEXFile> createFile(std::string folder, std::string_view nameTemplate = "ORV_XXXXXX",
                                             std::string_view extension = kExtension);

  static constexpr std::string_view kExtension = ".orvtmp";

 private:
  static VEXTempFileManager* instance_;
  std::unordered_map<VEXFile*, std::unique_ptr<VEXFile>> files_;
};
