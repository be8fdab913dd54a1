// VEXText: the text of one attribute. Short ones lie in the object itself, so that setting, growing and copying them
// takes a few moves and no call; longer ones lie in a buffer that is kept for the next long one. It reads as a
// std::string_view, which is valid until the text is set, moved or dropped.
#pragma once

#include <cstring>
#include <memory>
#include <string>
#include <string_view>

#include "vex/src/wordscan.h"

class VEXText {
 public:
  static constexpr std::size_t kShort = 31;  // bytes that are held without a buffer

  VEXText() = default;
  explicit VEXText(std::string_view value) { assign(value); }
  VEXText(VEXText&& other) noexcept : size_(other.size_), long_(std::move(other.long_)) {
    std::memcpy(short_, other.short_, sizeof short_);
    other.clear();
  }
  VEXText& operator=(VEXText&& other) noexcept {
    std::memcpy(short_, other.short_, sizeof short_);
    size_ = other.size_;
    long_ = std::move(other.long_);
    other.clear();
    return *this;
  }
  VEXText& operator=(std::string_view value) {
    assign(value);
    return *this;
  }

  std::size_t size() const { return size_; }
  bool empty() const { return size_ == 0; }
  const char* c_str() const { return data(); }  // a zero byte follows the text
  const char* data() const { return size_ <= kShort ? short_ : long_->data(); }
  std::string_view view() const { return {data(), size_}; }
  operator std::string_view() const { return view(); }

  // `value` may be a part of this text.
  void assign(std::string_view value) {
    if (value.size() <= kShort) [[likely]]
      setShort(value);
    else
      setLong(value);
  }
  void assign(const VEXText& other) {
    if (other.size_ <= kShort) [[likely]] {
      char bytes[sizeof short_];  // all of them: a number known here is copied in two moves
      std::memcpy(bytes, other.short_, sizeof bytes);
      std::memcpy(short_, bytes, sizeof bytes);
      size_ = other.size_;
    } else {
      setLong(other);
    }
  }
  void clear() {
    size_ = 0;
    short_[0] = '\0';
  }
  // Lets a buffer go that is far above what the text needs. True when one of more than kLongKept bytes stays.
  bool trim();
  bool hasLargeBuffer() const { return long_ != nullptr && long_->capacity() > kLongKept; }

  friend bool operator==(const VEXText& a, std::string_view b) { return a.view() == b; }
  friend bool operator==(const VEXText& a, const VEXText& b) { return a.view() == b.view(); }

 private:
  static constexpr std::size_t kLongKept = 4096;  // a buffer up to this size always stays
  void setShort(std::string_view value) {
    wordscan::copyShort(short_, value.data(), value.size());
    size_ = value.size();
    short_[size_] = '\0';
  }
  [[gnu::noinline]] void setLong(std::string_view value);  // inlined, it would make the short way slow

  std::size_t size_ = 0;
  std::unique_ptr<std::string> long_;  // holds the text when it is longer than kShort
  char short_[kShort + 1] = {};        // holds it otherwise
};
