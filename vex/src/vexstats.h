// VEXStatistics: counts by key text, printed as one table of the log.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>

class VEXStatistics {
 public:
  // The counter of a key, made with 0 when new; the address holds as long as the table.
  std::int32_t* counter(std::string_view key);
  void add(std::string_view key, std::int32_t count = 1) { *counter(key) += count; }
  std::int32_t count(std::string_view key) const;
  bool empty() const { return counts_.empty(); }
  // Logs the table at STATS, a line a message (254001): rules, heading and title centred in lineLength, keys in
  // ascending order with their counts right-aligned in `width` columns, the total.
  void write(std::string_view heading, std::string_view title, std::string_view totalLabel, std::size_t width,
             std::size_t lineLength) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::unordered_map<std::string, std::int32_t, Hash, std::equal_to<>> counts_;
};
