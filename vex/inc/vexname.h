// An interned attribute name: a handle to one immutable entry in a pool that lives as long as the process.
// Two names are equal when their handles are. Drivers intern their columns once, mapping-file rows their
// names at load; only texts met at run time are looked up.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class VEXName {
 public:
  VEXName() = default;                                  // no name; equal to no interned one
  static VEXName intern(std::string_view text);         // finds or adds
  static VEXName find(std::string_view text);           // the null name when never interned

  bool isNull() const { return entry_ == nullptr; }
  const std::string& text() const { return entry_->text; }
  std::uint32_t hash() const { return entry_->hash; }   // byte for byte, the same on every machine and run
  bool isListName() const { return entry_->isList; }    // holds "{"
  bool operator==(const VEXName& other) const = default;

 private:
  struct Entry {
    std::string text;
    std::uint32_t hash;
    bool isList;
  };
  friend class VEXNamePool;
  explicit VEXName(const Entry* entry) : entry_(entry) {}
  const Entry* entry_ = nullptr;
};
