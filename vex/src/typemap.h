// VEXTypeMap: values by feature type. Features of one type mostly come behind each other, so the last one found is
// tried before the hash.
#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "vex/src/wordscan.h"

template <class Value>
class VEXTypeMap {
 public:
  Value& operator[](const std::string& type) { return values_[type]; }
  // The value, null when there is none. Values never move.
  Value* find(std::string_view type) {
    if (last_ != nullptr && wordscan::isSame(last_->first, type)) [[likely]]
      return &last_->second;
    return findAnew(type);
  }

 private:
  [[gnu::noinline]] Value* findAnew(std::string_view type) {
    auto found = values_.find(type);
    if (found == values_.end()) return nullptr;
    last_ = &*found;
    return &last_->second;
  }
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::unordered_map<std::string, Value, Hash, std::equal_to<>> values_;
  std::pair<const std::string, Value>* last_ = nullptr;
};
