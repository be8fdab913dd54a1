#include "vex/src/tmpfilmn.h"

#include <cerrno>
#include <random>

#include "vex/inc/vexassert.h"
#include "vex/src/platform/platform.h"

VEXTempFileManager* VEXTempFileManager::instance_ = nullptr;

namespace {

constexpr std::string_view kBegin = "ORV_";  // of the default template

// Fills the Xs of a template with random letters and digits.
std::string filledIn(std::string_view nameTemplate) {
  static constexpr std::string_view kLetters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789";
  static std::random_device device;
  std::string name(nameTemplate);
  for (std::size_t at = name.size(); at > 0 && name[at - 1] == 'X'; --at)
    name[at - 1] = kLetters[device() % kLetters.size()];
  return name;
}

}  // namespace

VEXTempFileManager::VEXTempFileManager() {
  VEX_ASSERT(instance_ == NULL);
  instance_ = this;
  platform::removeUnclaimedFiles(folder(), kBegin, kExtension);
}

VEXTempFileManager::~VEXTempFileManager() {
  VEX_ASSERT(instance_ == this);
  while (!files_.empty()) {
    VEXFile* file = files_.begin()->first;
    removeFile(file);
  }
  instance_ = nullptr;
}

VEXTempFileManager& VEXTempFileManager::instance() {
  VEX_ASSERT(instance_ != NULL);
  return *instance_;
}

std::string VEXTempFileManager::folder() {
  std::string path;
  for (const char* name : {"ORV_TEMP", "TEMP"})
    if (platform::environment(name, path) && platform::isDirectory(platform::nativePath(path)))
      return platform::nativePath(path);
  return platform::isDirectory("/temp") ? "/temp" : "/tmp";
}

std::unique_ptr<VEXFile> VEXTempFileManager::createFile(std::string folder, std::string_view nameTemplate,
                                                        std::string_view extension) {
  if (folder.empty() || folder.back() != '/') folder += '/';
  for (int first = 0; first <= 26; ++first) {
    for (int second = 0; second <= 26; ++second) {
      std::string name = filledIn(nameTemplate);
      if (first > 0 && !name.empty()) name[0] = static_cast<char>('a' + first - 1);
      if (second > 0 && name.size() > 1) name[1] = static_cast<char>('a' + second - 1);
      std::string path = folder + name;
      path += extension;
      int error = 0;
      const int fd = platform::createExclusive(path, error);
      if (fd < 0 && error != EEXIST) return nullptr;
      if (fd < 0) continue;
      auto file = std::make_unique<VEXFile>(fd, std::move(path));
      if (platform::claimFile(fd)) return file;
    }
  }
  return nullptr;
}

VEXStatus VEXTempFileManager::getFile(VEXFile*& file) {
  VEX_ASSERT(instance_ != NULL);
  std::string directory = folder();
  std::unique_ptr<VEXFile> made = createFile(directory);
  if (made == nullptr) return makeStatus(236101, {directory + "/ORV_XXXXXX"});
  file = made.get();
  instance_->files_.emplace(file, std::move(made));
  return nullptr;
}

void VEXTempFileManager::removeFile(VEXFile*& file) {
  VEX_ASSERT(instance_ != NULL);
  auto found = instance_->files_.find(file);
  bool wasIn = found != instance_->files_.end();
  VEX_ASSERT(wasIn);
  std::string path = file->path();
  instance_->files_.erase(found);
  platform::removeFile(path);
  file = nullptr;
}
