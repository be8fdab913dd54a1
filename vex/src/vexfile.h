// Files as drivers use them: one buffered reader, one buffered writer, and a plain file for the temporary
// store. Offsets are 64-bit; no locale, no per-byte calls. Errors are told by the return value and errorText().
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

// Reads a file in blocks of a mebibyte.
class VEXInputFile {
 public:
  VEXInputFile() = default;
  ~VEXInputFile();
  VEXInputFile(VEXInputFile&&) = delete;

  bool open(const std::string& path);
  void close();
  bool isOpen() const { return fd_ >= 0; }
  const std::string& path() const { return path_; }
  std::uint64_t size() const { return size_; }          // at the time of opening; 0 for what has no size
  std::uint64_t offset() const { return blockStart_ + at_; }  // of the next byte
  // What is in memory ahead of the position, valid until the next call; skipBytes() moves over what was used of it.
  std::string_view bytesAtHand() const { return {buffer_.get() + at_, end_ - at_}; }
  std::string errorText() const;

  enum class Line { Ok, End, TooLong, Error };
  // The next line without its "\n" or "\r\n"; a last line may lack them. The view is valid until the next
  // call. End: no bytes were left. TooLong: no line end within `limit` bytes; the file stays where it was.
  Line readLine(std::string_view& line, std::size_t limit = kLongestLine);
  // Exactly `count` bytes, as a view into the buffer, valid until the next call; false when fewer are left (the
  // position stays) or on an error. `count` is at most kLongestLine.
  bool readBytes(std::size_t count, std::string_view& bytes) {
    if (end_ - at_ < count && (count > kLongestLine || !fill(count))) [[unlikely]]
      return false;
    bytes = std::string_view(buffer_.get() + at_, count);
    at_ += count;
    return true;
  }
  // Behind a view that readBytes gives so many bytes more may be read; they mean nothing.
  static constexpr std::size_t kSlack = 16;
  // All that is at hand ahead of the position, at least `count` bytes unless the file ends before; the position stays
  // and the view is valid until the next call. skipBytes then moves over what was used of it.
  std::string_view peekBytes(std::size_t count);
  void skipBytes(std::size_t count) { at_ += count; }
  // Moves to an offset; cheap when it lies in the current block.
  bool seek(std::uint64_t offset);
  bool failed() const { return error_ != 0; }

  static constexpr std::size_t kLongestLine = std::size_t{16} << 20;

 private:
  bool fill(std::size_t wanted);  // makes at least `wanted` bytes available behind at_, false when there are fewer

  int fd_ = -1;
  int error_ = 0;
  std::string path_;
  std::uint64_t size_ = 0;
  std::uint64_t blockStart_ = 0;  // file offset of buffer_[0]
  std::size_t at_ = 0;
  std::size_t end_ = 0;           // valid bytes in the buffer
  std::size_t capacity_ = 0;
  std::size_t readAhead_ = 0;     // bytes that the next fill asks for at least
  std::unique_ptr<char[]> buffer_;
};

// Writes a file through a buffer of a mebibyte. The first error sticks: later calls do nothing and give false.
class VEXOutputFile {
 public:
  VEXOutputFile() = default;
  ~VEXOutputFile();  // closes, ignoring errors
  VEXOutputFile(VEXOutputFile&&) = delete;

  bool open(const std::string& path, unsigned protection = 0666);  // creates or truncates
  bool isOpen() const { return fd_ >= 0; }
  const std::string& path() const { return path_; }
  bool append(std::string_view bytes) {
    if (bytes.size() <= kCapacity - used_ && fd_ >= 0) [[likely]] {
      copyIn(bytes);
      return error_ == 0;
    }
    return appendSlowly(bytes);
  }
  // The place for `count` bytes at the end, to be filled by the caller before the next call; null on an error.
  // `count` is at most kMostSpace.
  char* appendSpace(std::size_t count) {
    if ((count > kCapacity - used_ || fd_ < 0 || error_ != 0) && !makeSpace(count)) [[unlikely]]
      return nullptr;
    char* const space = buffer_.get() + used_;
    used_ += count;
    return space;
  }
  static constexpr std::size_t kMostSpace = std::size_t{1} << 20;
  // The same for a caller who knows only how much it will be at most, and tells afterwards where it ended.
  char* openSpace(std::size_t most) {
    char* const space = appendSpace(most);
    if (space != nullptr) used_ -= most;
    return space;
  }
  void closeSpace(const char* end) { used_ = static_cast<std::size_t>(end - buffer_.get()); }
  // What appendSpace() can give without writing.
  std::size_t spaceAtHand() const { return fd_ >= 0 && error_ == 0 ? kCapacity - used_ : 0; }
  // Overwrites what was written before. A pipe has no way back: there it fails unless all is still in the buffer.
  bool patch(std::uint64_t offset, std::string_view bytes);
  std::uint64_t offset() const { return flushed_ + used_; }  // bytes written so far
  bool flush();
  bool close();                        // false when anything was not written
  bool failed() const { return error_ != 0; }
  std::string errorText() const;

 private:
  static constexpr std::size_t kCapacity = kMostSpace;
  void copyIn(std::string_view bytes) {
    std::memcpy(buffer_.get() + used_, bytes.data(), bytes.size());
    used_ += bytes.size();
  }
  bool makeSpace(std::size_t count);
  bool appendSlowly(std::string_view bytes);
  bool writeOut(const char* bytes, std::size_t count);

  int fd_ = -1;
  int error_ = 0;
  std::string path_;
  std::uint64_t flushed_ = 0;
  std::size_t used_ = 0;
  std::unique_ptr<char[]> buffer_;
};

// A file opened for reading and writing at any place; what the temporary file manager hands out.
class VEXFile {
 public:
  VEXFile(int fd, std::string path) : fd_(fd), path_(std::move(path)) {}
  ~VEXFile();
  VEXFile(const VEXFile&) = delete;
  VEXFile& operator=(const VEXFile&) = delete;

  const std::string& path() const { return path_; }
  bool readAt(std::uint64_t offset, char* bytes, std::size_t count) const;  // false when not all are there
  bool writeAt(std::uint64_t offset, std::string_view bytes);
  bool size(std::uint64_t& bytes) const;
  std::string errorText() const;

 private:
  int fd_;
  mutable int error_ = 0;
  std::string path_;
};
