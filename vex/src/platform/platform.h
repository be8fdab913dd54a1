// Everything that knows the operating system. Another system means another platform.cpp and nothing else.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

std::string executableDirectory();                       // ends in "/"; empty when unknown
std::string engineDirectory();                           // of the library's own file, same form
bool environment(const char* name, std::string& value);  // false when undefined
double processSeconds();                                 // user plus kernel CPU time so far; negative if unknown
bool isDirectory(const std::string& path);
bool fileExists(const std::string& path);                // of any kind
bool makeDirectories(const std::string& path);           // with its parents; true when it is there afterwards
bool removeFile(const std::string& path);
bool renameFile(const std::string& from, const std::string& to);
bool changeDirectory(const std::string& path);
std::string currentDirectory();
// True for a stream that a person reads.
bool isTerminal(std::FILE* stream);
// Names in a directory, without "." and "..", sorted byte by byte; false when it cannot be read.
bool listDirectory(const std::string& path, std::vector<std::string>& names);
// True when a file name fits a pattern of the shell: "*", "?", "[a-z]". A leading point has to stand in the pattern.
bool matchesWildcard(const std::string& name, const std::string& pattern);
// Creates a file that did not exist (never follows a link, readable by its owner only) and opens it for
// reading and writing. -1 on failure, with errno of the system in `error`.
int createExclusive(const std::string& path, int& error);
// Claims an open file for this process until it is closed, or the process is gone. False when another has claimed it, or
// has taken it away; true as well where the file system knows no claims.
bool claimFile(int fd);
// Removes the files of a directory whose names begin and end so, and that this user owns and no process claims.
void removeUnclaimedFiles(const std::string& directory, std::string_view begin, std::string_view end);
// write(2) without the signal that a pipe without readers sends, which would end the process: then it only fails.
std::ptrdiff_t writeQuietly(int fd, const char* bytes, std::size_t count);
std::string errorText(int error);
// A path as the system takes it: "\" turned into "/". "NUL:" becomes the null device.
std::string nativePath(std::string_view path);
bool isAbsolutePath(std::string_view path);              // a leading separator or a drive letter
bool isSeparator(char c);
// The one path of a file, whatever links and detours name it; `path` itself when the file is not there.
std::string canonicalPath(const std::string& path);

// A library bound at run time. open() tries the names in order.
class DynamicLibrary {
 public:
  bool open(const std::vector<std::string>& names);      // stays loaded until the process ends
  void* symbol(const char* name) const;                  // null when absent
 private:
  void* handle_ = nullptr;
};

// Puts the processor's floating-point environment back when it goes out of scope.
class FloatingPointGuard {
 public:
  FloatingPointGuard();
  ~FloatingPointGuard();
  FloatingPointGuard(const FloatingPointGuard&) = delete;
  FloatingPointGuard& operator=(const FloatingPointGuard&) = delete;
 private:
  void* saved_;
};

}  // namespace platform
