// VEXFeatureSorter: features in the order of their keys, however many there are. Features come in with a key and are
// kept in their stored form; when they outgrow the limit, they are sorted and written to a temporary file as one run,
// and the runs are merged as they are read back. So all reading and writing goes from front to back, and memory
// does not grow with the number of features. Calls: add per feature, startReading, next until nothing comes, clear.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/featfifo.h"
#include "vex/src/vexfile.h"

// Keys are bytes that compare as memcmp does, a shorter one in front of a longer one that it begins. A key of several
// values is made by appending each in turn.
void appendTextKey(std::string& key, std::string_view value);  // byte by byte; a text in front of its continuations
void appendNumberKey(std::string& key, double value);          // by value; what is not a number counts as 0
void appendIndexKey(std::string& key, std::uint64_t value);

class VEXFeatureSorter {
 public:
  VEXFeatureSorter();
  ~VEXFeatureSorter();
  VEXFeatureSorter(const VEXFeatureSorter&) = delete;
  VEXFeatureSorter& operator=(const VEXFeatureSorter&) = delete;

  void setDescending(bool isDescending) { isDescending_ = isDescending; }
  // Equal keys keep the order in which they are added, in both directions. 236101, 218002: no temporary file.
  VEXStatus add(const VEXFeature& feature, std::string_view key);
  std::int64_t count() const { return count_; }
  std::size_t runs() const { return runs_.size(); }  // on the temporary file
  VEXStatus startReading();
  // The next feature; null at the end. 218003: it cannot be read back.
  VEXStatus next(VEXFeaturePtr& feature);
  std::string_view key() const { return key_; }  // of the feature that came last; valid until the next call
  void clear();                                  // as new; buffers and the direction are kept

  // Bytes of features in memory, ORV_SORT_BYTES of the mapping file.
  static constexpr std::int32_t kDefaultLimit = 32 << 20;
  static constexpr std::size_t kMostRuns = 128;  // merged at a time

 private:
  struct Entry {
    std::uint64_t prefix;  // the first eight bytes of the key, the first highest
    std::uint64_t offset;  // of the record in records_
  };
  struct Run {
    std::uint64_t start;
    std::uint64_t end;
  };
  class Source;  // a run as the merge reads it

  bool isBefore(const Entry& a, const Entry& b) const;
  void sortEntries();
  VEXStatus writeRun();
  VEXStatus mergeRuns();
  VEXStatus openSources(std::size_t first, std::size_t last, std::vector<Source>& sources, std::vector<Source*>& heap);
  static bool comesAfter(const Source& a, const Source& b, bool isDescending);
  void siftDown(std::vector<Source*>& heap) const;
  VEXStatus advance(std::vector<Source*>& heap) const;
  void removeFile();

  bool isDescending_ = false;
  std::size_t limit_ = 0;  // 0: not asked for yet
  std::int64_t count_ = 0;
  VEXNameDictionary names_;
  std::string records_;
  std::vector<Entry> entries_;
  std::vector<Run> runs_;
  VEXFile* file_ = nullptr;
  std::uint64_t written_ = 0;
  // ---- while reading ----
  std::vector<Source> sources_;
  std::vector<Source*> heap_;  // the source with the next record first
  bool isAdvanced_ = true;     // the first record of the heap has not been given yet
  std::string_view key_;
};
