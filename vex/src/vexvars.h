// The transfer variables of one pair of specifications: names (with their percent sign) get slots at load,
// values come and go with each feature. A value is a copy or a view; a view must outlive its use.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class VEXVariableTable {
 public:
  // The slot of a name, added when new. `name` begins with "%".
  std::size_t slotOf(std::string_view name);
  void clear();                                             // all values become undefined; names stay
  void set(std::size_t slot, std::string_view value);       // copies
  void setView(std::size_t slot, std::string_view value) {  // borrows
    slots_[slot]->value = value;
    slots_[slot]->generation = generation_;
  }
  // False, and `value` stays, when it is undefined: what an earlier feature left there may be gone.
  bool get(std::size_t slot, std::string_view& value) const {
    if (slots_[slot]->generation != generation_) return false;
    value = slots_[slot]->value;
    return true;
  }
  void set(std::string_view name, std::string_view value) { set(slotOf(name), value); }
  bool find(std::string_view name, std::string_view& value) const;  // false when undefined
  void copyViews();                                                 // turns views into copies

 private:
  struct Slot {
    std::string_view value;
    std::string owned;
    std::uint64_t generation = 0;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::unordered_map<std::string, std::size_t, Hash, std::equal_to<>> index_;
  std::vector<std::unique_ptr<Slot>> slots_;  // a view may point into a slot: slots never move
  std::uint64_t generation_ = 1;
};
