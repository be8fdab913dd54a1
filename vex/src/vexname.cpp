#include "vex/inc/vexname.h"

#include <deque>
#include <vector>

namespace {

std::uint32_t hashOf(std::string_view text) {  // FNV-1a
  std::uint32_t hash = 2166136261U;
  for (char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619U;
  return hash;
}

}  // namespace

// Open addressing over entries that never move.
class VEXNamePool {
 public:
  VEXNamePool() : table_(1024, nullptr) {}

  static VEXNamePool& instance() {
    static VEXNamePool pool;
    return pool;
  }

  const VEXName::Entry* find(std::string_view text, std::uint32_t hash) const { return table_[placeOf(text, hash)]; }

  const VEXName::Entry* intern(std::string_view text) {
    std::uint32_t hash = hashOf(text);
    std::size_t place = placeOf(text, hash);
    if (table_[place] != nullptr) return table_[place];
    entries_.push_back(VEXName::Entry{std::string(text), hash, text.find('{') != std::string_view::npos});
    table_[place] = &entries_.back();
    if (entries_.size() * 2 > table_.size()) grow();
    return &entries_.back();
  }

 private:
  // Where the text stands, or the free place where it belongs.
  std::size_t placeOf(std::string_view text, std::uint32_t hash) const {
    std::size_t place = hash & (table_.size() - 1);
    while (table_[place] != nullptr && (table_[place]->hash != hash || table_[place]->text != text))
      place = (place + 1) & (table_.size() - 1);
    return place;
  }

  void grow() {
    table_.assign(table_.size() * 2, nullptr);
    for (const VEXName::Entry& entry : entries_) table_[placeOf(entry.text, entry.hash)] = &entry;
  }

  std::deque<VEXName::Entry> entries_;
  std::vector<const VEXName::Entry*> table_;
};

VEXName VEXName::intern(std::string_view text) {
  return VEXName(VEXNamePool::instance().intern(text));
}

VEXName VEXName::find(std::string_view text) {
  return VEXName(VEXNamePool::instance().find(text, hashOf(text)));
}
