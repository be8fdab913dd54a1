#include "vex/src/vexfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "vex/src/platform/platform.h"

namespace {

constexpr std::size_t kBlock = std::size_t{1} << 20;
constexpr std::size_t kFirstPiece = std::size_t{16} << 10;

// read(2) until `count` bytes are there, the end is met or an error stands in `error`.
std::size_t readFully(int fd, char* bytes, std::size_t count, int& error) {
  std::size_t done = 0;
  while (done < count) {
    ssize_t got = ::read(fd, bytes + done, count - done);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) error = errno;
    if (got <= 0) break;
    done += static_cast<std::size_t>(got);
  }
  return done;
}

}  // namespace

VEXInputFile::~VEXInputFile() {
  close();
}

bool VEXInputFile::open(const std::string& path) {
  close();
  path_ = path;
  fd_ = ::open(platform::nativePath(path).c_str(), O_RDONLY | O_CLOEXEC);
  error_ = fd_ < 0 ? errno : 0;
  if (fd_ < 0) return false;
  struct stat status;
  if (fstat(fd_, &status) != 0 || S_ISDIR(status.st_mode)) {
    error_ = EISDIR;
    ::close(fd_);
    fd_ = -1;
    return false;
  }
  size_ = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
  if (buffer_ == nullptr) {
    buffer_.reset(new char[kBlock + kSlack]);
    capacity_ = kBlock;
  }
  blockStart_ = 0;
  at_ = end_ = 0;
  readAhead_ = kBlock;
  return true;
}

void VEXInputFile::close() {
  if (fd_ >= 0) ::close(fd_);
  fd_ = -1;
}

std::string VEXInputFile::errorText() const {
  return platform::errorText(error_);
}

bool VEXInputFile::fill(std::size_t wanted) {
  if (end_ - at_ >= wanted) return true;
  if (fd_ < 0) return false;
  if (at_ > 0) {
    std::memmove(buffer_.get(), buffer_.get() + at_, end_ - at_);
    blockStart_ += at_;
    end_ -= at_;
    at_ = 0;
  }
  if (wanted > capacity_) {
    std::size_t larger = std::max(wanted, capacity_ * 2);
    std::unique_ptr<char[]> moved(new char[larger + kSlack]);
    std::memcpy(moved.get(), buffer_.get(), end_);
    buffer_ = std::move(moved);
    capacity_ = larger;
  }
  const std::size_t piece = std::min(capacity_ - end_, std::max(readAhead_, wanted - end_));
  readAhead_ = std::min(readAhead_ * 2, kBlock);
  end_ += readFully(fd_, buffer_.get() + end_, piece, error_);
  return end_ >= wanted;
}

VEXInputFile::Line VEXInputFile::readLine(std::string_view& line, std::size_t limit) {
  line = {};
  std::size_t searched = 0;
  for (;;) {
    const char* start = buffer_.get() + at_;
    const void* newline = end_ > at_ + searched ? std::memchr(start + searched, '\n', end_ - at_ - searched) : nullptr;
    std::size_t length =
        newline != nullptr ? static_cast<std::size_t>(static_cast<const char*>(newline) - start) : end_ - at_;
    if (newline == nullptr && length <= limit) {
      searched = length;
      if (fill(searched + 1)) continue;
      if (error_ != 0) return Line::Error;
      if (searched == 0) return Line::End;
      start = buffer_.get() + at_;
    }
    if (length > limit) return Line::TooLong;
    at_ += length + (newline != nullptr ? 1 : 0);
    if (length > 0 && start[length - 1] == '\r') --length;
    line = std::string_view(start, length);
    return Line::Ok;
  }
}

std::string_view VEXInputFile::peekBytes(std::size_t count) {
  fill(count);
  return std::string_view(buffer_.get() + at_, end_ - at_);
}

bool VEXInputFile::seek(std::uint64_t offset) {
  if (offset >= blockStart_ && offset <= blockStart_ + end_) {
    at_ = static_cast<std::size_t>(offset - blockStart_);
    return true;
  }
  if (fd_ < 0 || offset > INT64_MAX || lseek(fd_, static_cast<off_t>(offset), SEEK_SET) < 0) {
    error_ = fd_ < 0 ? EBADF : errno;
    return false;
  }
  blockStart_ = offset;
  at_ = end_ = 0;
  readAhead_ = kFirstPiece;  // who jumps may jump again; reading on gets back to whole blocks soon
  return true;
}

VEXOutputFile::~VEXOutputFile() {
  close();
}

bool VEXOutputFile::open(const std::string& path, unsigned protection) {
  close();
  path_ = path;
  flushed_ = 0;
  used_ = 0;
  // Not for reading too: a pipe would have this process as a reader, and writing to it never end.
  fd_ = ::open(platform::nativePath(path).c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, protection);
  error_ = fd_ < 0 ? errno : 0;
  if (fd_ >= 0 && buffer_ == nullptr) buffer_.reset(new char[kCapacity]);
  return fd_ >= 0;
}

bool VEXOutputFile::writeOut(const char* bytes, std::size_t count) {
  while (count > 0 && error_ == 0) {
    const ssize_t put = platform::writeQuietly(fd_, bytes, count);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) {
      error_ = errno;
      break;
    }
    bytes += put;
    count -= static_cast<std::size_t>(put);
    flushed_ += static_cast<std::uint64_t>(put);
  }
  return error_ == 0;
}

bool VEXOutputFile::flush() {
  if (fd_ < 0 || error_ != 0) return false;
  std::size_t count = used_;
  used_ = 0;
  return writeOut(buffer_.get(), count);
}

bool VEXOutputFile::appendSlowly(std::string_view bytes) {
  if (!flush()) return false;
  if (bytes.size() >= kCapacity) return writeOut(bytes.data(), bytes.size());
  copyIn(bytes);
  return true;
}

bool VEXOutputFile::makeSpace(std::size_t count) {
  return count <= kCapacity && flush();
}

bool VEXOutputFile::patch(std::uint64_t offset, std::string_view bytes) {
  if (fd_ < 0 || error_ != 0) return false;
  const bool isInBuffer = offset >= flushed_ && offset + bytes.size() <= this->offset();
  if (isInBuffer && lseek(fd_, 0, SEEK_CUR) < 0) {
    std::memcpy(buffer_.get() + (offset - flushed_), bytes.data(), bytes.size());
    return true;
  }
  if (!flush()) return false;
  while (!bytes.empty()) {
    ssize_t put = ::pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      error_ = put < 0 ? errno : EIO;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(put));
    offset += static_cast<std::uint64_t>(put);
  }
  return true;
}

bool VEXOutputFile::close() {
  if (fd_ < 0) return error_ == 0;
  bool complete = flush();
  if (::close(fd_) != 0 && error_ == 0) {
    error_ = errno;
    complete = false;
  }
  fd_ = -1;
  return complete;
}

std::string VEXOutputFile::errorText() const {
  return platform::errorText(error_);
}

VEXFile::~VEXFile() {
  if (fd_ >= 0) ::close(fd_);
}

bool VEXFile::readAt(std::uint64_t offset, char* bytes, std::size_t count) const {
  while (count > 0) {
    ssize_t got = ::pread(fd_, bytes, count, static_cast<off_t>(offset));
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) error_ = errno;
    if (got <= 0) return false;
    bytes += got;
    offset += static_cast<std::uint64_t>(got);
    count -= static_cast<std::size_t>(got);
  }
  return true;
}

bool VEXFile::writeAt(std::uint64_t offset, std::string_view bytes) {
  while (!bytes.empty()) {
    ssize_t put = ::pwrite(fd_, bytes.data(), bytes.size(), static_cast<off_t>(offset));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      error_ = put < 0 ? errno : EIO;
      return false;
    }
    bytes.remove_prefix(static_cast<std::size_t>(put));
    offset += static_cast<std::uint64_t>(put);
  }
  return true;
}

bool VEXFile::size(std::uint64_t& bytes) const {
  struct stat status;
  if (fstat(fd_, &status) != 0) {
    error_ = errno;
    return false;
  }
  bytes = static_cast<std::uint64_t>(status.st_size);
  return true;
}

std::string VEXFile::errorText() const {
  return platform::errorText(error_);
}
