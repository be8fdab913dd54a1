// A read cursor over bytes that knows where they end. A read past the end gives 0 and sets the mark that
// overrun() tells; it never touches what lies behind.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

class VEXByteCursor {
 public:
  explicit VEXByteCursor(std::string_view bytes) : bytes_(bytes) {}

  std::size_t left() const { return bytes_.size() - at_; }
  std::size_t offset() const { return at_; }
  bool overrun() const { return overrun_; }
  std::size_t wanted() const { return wanted_; }  // bytes that the first read past the end would have needed in all
  void skip(std::size_t count) { take(count); }
  void moveTo(std::size_t offset) {
    if (offset > bytes_.size()) overrun_ = true; else at_ = offset;
  }
  std::string_view take(std::size_t count) {  // fewer than `count` when the end is near
    if (count > left()) [[unlikely]] { overrunBy(count); count = left(); }
    std::string_view taken = bytes_.substr(at_, count);
    at_ += count;
    return taken;
  }
  std::uint8_t u8() { return number<std::uint8_t>(); }
  std::uint16_t u16le() { return number<std::uint16_t>(); }
  std::uint32_t u32le() { return number<std::uint32_t>(); }
  std::int32_t i32le() { return static_cast<std::int32_t>(number<std::uint32_t>()); }
  std::int32_t i32be() { return static_cast<std::int32_t>(__builtin_bswap32(number<std::uint32_t>())); }
  double f64le() { return std::bit_cast<double>(number<std::uint64_t>()); }

 private:
  void overrunBy(std::size_t count) {
    if (!overrun_) wanted_ = at_ + count;
    overrun_ = true;
  }
  static_assert(std::endian::native == std::endian::little, "another byte order needs its own reads here");
  template <class Number>
  Number number() {
    std::string_view bytes = take(sizeof(Number));
    Number value = 0;
    if (bytes.size() == sizeof(Number)) std::memcpy(&value, bytes.data(), sizeof value);
    return value;
  }

  std::string_view bytes_;
  std::size_t at_ = 0;
  std::size_t wanted_ = 0;
  bool overrun_ = false;
};
