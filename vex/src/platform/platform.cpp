#include "vex/src/platform/platform.h"

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cfenv>
#include <cstdlib>
#include <cstring>

namespace platform {

namespace {

std::string directoryOf(const std::string& path) {
  std::size_t cut = path.rfind('/');
  return cut == std::string::npos ? std::string() : path.substr(0, cut + 1);
}

}  // namespace

std::string executableDirectory() {
  std::array<char, 4096> buffer;
  ssize_t length = readlink("/proc/self/exe", buffer.data(), buffer.size());
  if (length <= 0) return {};
  return directoryOf(std::string(buffer.data(), static_cast<std::size_t>(length)));
}

std::string engineDirectory() {
  Dl_info info;
  if (dladdr(reinterpret_cast<void*>(&engineDirectory), &info) == 0 || info.dli_fname == nullptr) return {};
  char* real = realpath(info.dli_fname, nullptr);
  if (real == nullptr) return {};
  std::string directory = directoryOf(real);
  std::free(real);
  return directory;
}

bool environment(const char* name, std::string& value) {
  const char* text = std::getenv(name);
  if (text == nullptr) return false;
  value = text;
  return true;
}

double processSeconds() {
  struct rusage usage;
  if (getrusage(RUSAGE_SELF, &usage) != 0) return -1.0;
  auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

bool isDirectory(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

bool fileExists(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0;
}

bool makeDirectories(const std::string& path) {
  for (std::size_t at = 1; at <= path.size(); ++at) {
    if (at != path.size() && path[at] != '/') continue;
    std::string part = path.substr(0, at);
    if (!isDirectory(part) && mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) return false;
  }
  return isDirectory(path);
}

bool removeFile(const std::string& path) {
  return unlink(path.c_str()) == 0;
}

bool renameFile(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

bool changeDirectory(const std::string& path) {
  return chdir(path.c_str()) == 0;
}

bool isTerminal(std::FILE* stream) {
  return isatty(fileno(stream)) == 1;
}

std::string currentDirectory() {
  std::array<char, 4096> buffer;
  return getcwd(buffer.data(), buffer.size()) == nullptr ? std::string() : std::string(buffer.data());
}

bool listDirectory(const std::string& path, std::vector<std::string>& names) {
  names.clear();
  DIR* directory = opendir(path.c_str());
  if (directory == nullptr) return false;
  while (const dirent* entry = readdir(directory)) {
    std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(std::move(name));
  }
  closedir(directory);
  std::sort(names.begin(), names.end());
  return true;
}

bool matchesWildcard(const std::string& name, const std::string& pattern) {
  return fnmatch(pattern.c_str(), name.c_str(), FNM_PERIOD | FNM_NOESCAPE) == 0;
}

int createExclusive(const std::string& path, int& error) {
  int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
  error = fd < 0 ? errno : 0;
  return fd;
}

bool claimFile(int fd) {
  if (flock(fd, LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
  struct stat status;
  return fstat(fd, &status) != 0 || status.st_nlink > 0;
}

// A claim is a lock, which the system lets go when its process ends, however it ends. Only who holds it removes the file,
// so one that was just made and is not claimed yet is at worst taken away, which its maker then sees.
void removeUnclaimedFiles(const std::string& directory, std::string_view begin, std::string_view end) {
  DIR* listing = opendir(directory.c_str());
  if (listing == nullptr) return;
  while (const dirent* entry = readdir(listing)) {
    const std::string_view name = entry->d_name;
    if (name.size() < begin.size() + end.size() || !name.starts_with(begin) || !name.ends_with(end)) continue;
    const int fd = openat(dirfd(listing), entry->d_name, O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (fd < 0) continue;
    struct stat status;
    if (fstat(fd, &status) == 0 && S_ISREG(status.st_mode) && status.st_uid == geteuid() &&
        flock(fd, LOCK_EX | LOCK_NB) == 0)
      unlinkat(dirfd(listing), entry->d_name, 0);
    ::close(fd);
  }
  closedir(listing);
}

std::ptrdiff_t writeQuietly(int fd, const char* bytes, std::size_t count) {
  sigset_t pipeSignal, before, waiting;
  sigemptyset(&pipeSignal);
  sigaddset(&pipeSignal, SIGPIPE);
  sigpending(&waiting);
  pthread_sigmask(SIG_BLOCK, &pipeSignal, &before);
  const ssize_t put = ::write(fd, bytes, count);
  const int error = errno;
  const timespec atOnce{};
  // It comes with an error, or with less written than was given. One that waited before stays: it is not ours.
  if (put < static_cast<ssize_t>(count) && sigismember(&waiting, SIGPIPE) == 0)
    sigtimedwait(&pipeSignal, nullptr, &atOnce);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  errno = error;
  return put;
}

std::string errorText(int error) {
  std::array<char, 256> buffer;
  return strerror_r(error, buffer.data(), buffer.size());
}

std::string nativePath(std::string_view path) {
  if (path == "NUL:" || path == "nul:") return "/dev/null";
  std::string native(path);
  std::replace(native.begin(), native.end(), '\\', '/');
  return native;
}

bool isSeparator(char c) {
  return c == '/' || c == '\\';
}

bool isAbsolutePath(std::string_view path) {
  return !path.empty() && (isSeparator(path[0]) || (path.size() > 1 && path[1] == ':'));
}

std::string canonicalPath(const std::string& path) {
  char* real = realpath(path.c_str(), nullptr);
  if (real == nullptr) return path;
  std::string canonical = real;
  std::free(real);
  return canonical;
}

bool DynamicLibrary::open(const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    handle_ = dlopen(name.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle_ != nullptr) return true;
  }
  return false;
}

void* DynamicLibrary::symbol(const char* name) const {
  return handle_ == nullptr ? nullptr : dlsym(handle_, name);
}

FloatingPointGuard::FloatingPointGuard() : saved_(new fenv_t) {
  feholdexcept(static_cast<fenv_t*>(saved_));
}

FloatingPointGuard::~FloatingPointGuard() {
  fesetenv(static_cast<fenv_t*>(saved_));
  delete static_cast<fenv_t*>(saved_);
}

}  // namespace platform
