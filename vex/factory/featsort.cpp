#include "vex/factory/featsort.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>

#include "vex/inc/numtext.h"
#include "vex/src/tmpfilmn.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kWriteFailed = 218002;
constexpr std::uint32_t kReadFailed = 218003;

constexpr std::size_t kBlock = std::size_t{1} << 20;        // bytes of one read or write
constexpr std::size_t kLeastBlock = std::size_t{64} << 10;  // of one read, when there are many runs
constexpr std::size_t kMergeBytes = std::size_t{32} << 20;  // of all blocks of a merge

// A record is two lengths, the key and the stored feature; the lengths are those of key and feature.
constexpr std::size_t kLead = 2 * sizeof(std::uint32_t);

std::uint32_t lengthAt(const char* bytes) {
  std::uint32_t length = 0;
  std::memcpy(&length, bytes, sizeof length);
  return length;
}

struct Record {
  explicit Record(const char* bytes)
      : key(bytes + kLead, lengthAt(bytes)), stored(key.data() + key.size(), lengthAt(bytes + sizeof(std::uint32_t))) {}
  std::string_view whole() const { return {key.data() - kLead, kLead + key.size() + stored.size()}; }
  std::string_view key;
  std::string_view stored;
};

void appendBigEndian(std::string& key, std::uint64_t bits) {
  for (int shift = 56; shift >= 0; shift -= 8) key += static_cast<char>(bits >> shift);
}

std::uint64_t prefixOf(std::string_view key) {
  std::uint64_t prefix = 0;
  if (key.size() >= sizeof prefix) {
    std::memcpy(&prefix, key.data(), sizeof prefix);
    return std::endian::native == std::endian::little ? __builtin_bswap64(prefix) : prefix;
  }
  for (std::size_t at = 0; at < sizeof prefix; ++at)
    prefix = prefix << 8 | (at < key.size() ? static_cast<unsigned char>(key[at]) : 0U);
  return prefix;
}

}  // namespace

// ---- keys ----

// A zero byte, which ends the text, is followed by 0xFF inside it: the end is lower than any continuation.
void appendTextKey(std::string& key, std::string_view value) {
  for (std::size_t zero = value.find('\0'); zero != std::string_view::npos; zero = value.find('\0')) {
    key.append(value.substr(0, zero + 1)).push_back('\xFF');
    value.remove_prefix(zero + 1);
  }
  key.append(value).append(2, '\0');
}

void appendNumberKey(std::string& key, double value) {
  if (std::isnan(value) || value == 0.0) value = 0.0;  // one zero, not two
  const auto bits = std::bit_cast<std::uint64_t>(value);
  constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
  appendBigEndian(key, bits & kSign ? ~bits : bits | kSign);
}

void appendIndexKey(std::string& key, std::uint64_t value) {
  appendBigEndian(key, value);
}

// ---- a run as the merge reads it ----

// A run on the file, or the entries that are still in memory.
class VEXFeatureSorter::Source {
 public:
  Source(const VEXFile& file, const Run& run, std::size_t blockBytes, std::size_t number)
      : file_(&file), position_(run.start), end_(run.end), blockBytes_(blockBytes), number_(number) {}
  Source(const std::string& records, const std::vector<Entry>& entries, std::size_t number)
      : records_(&records), entries_(&entries), number_(number) {}

  // Moves to the next record; `got` is false at the end.
  VEXStatus next(bool& got) {
    if (entries_ != nullptr) {
      got = nextEntry_ < entries_->size();
      if (!got) return nullptr;
      const Entry& entry = (*entries_)[nextEntry_++];
      record_ = records_->data() + entry.offset;
      prefix_ = entry.prefix;
      return nullptr;
    }
    got = at_ < block_.size() || position_ < end_;
    if (!got) return nullptr;
    VEX_TRY(need(kLead));
    const std::size_t length =
        kLead + std::size_t{lengthAt(block_.data() + at_)} + lengthAt(block_.data() + at_ + sizeof(std::uint32_t));
    VEX_TRY(need(length));
    record_ = block_.data() + at_;
    prefix_ = prefixOf(record().key);
    at_ += length;
    return nullptr;
  }
  Record record() const { return Record(record_); }
  std::uint64_t prefix() const { return prefix_; }
  std::size_t number() const { return number_; }

 private:
  VEXStatus need(std::size_t bytes) {
    if (block_.size() - at_ >= bytes) return nullptr;
    block_.erase(0, at_);
    at_ = 0;
    const std::size_t kept = block_.size();
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(std::max(blockBytes_, bytes - kept), end_ - position_));
    block_.resize(kept + wanted);
    if (block_.size() < bytes || !file_->readAt(position_, block_.data() + kept, wanted))
      return makeStatus(kReadFailed, {integerText(static_cast<std::int64_t>(position_))});
    position_ += wanted;
    return nullptr;
  }

  const VEXFile* file_ = nullptr;
  std::uint64_t position_ = 0;  // of the next read
  std::uint64_t end_ = 0;
  std::size_t blockBytes_ = 0;
  std::string block_;
  std::size_t at_ = 0;  // of the next record in block_
  const std::string* records_ = nullptr;
  const std::vector<Entry>* entries_ = nullptr;
  std::size_t nextEntry_ = 0;
  std::size_t number_;  // runs are numbered in the order in which they came in
  const char* record_ = nullptr;
  std::uint64_t prefix_ = 0;
};

// ---- taking in ----

VEXFeatureSorter::VEXFeatureSorter() = default;

VEXFeatureSorter::~VEXFeatureSorter() {
  removeFile();
}

void VEXFeatureSorter::removeFile() {
  if (file_ != nullptr) VEXTempFileManager::removeFile(file_);
  written_ = 0;
}

void VEXFeatureSorter::clear() {
  heap_.clear();
  sources_.clear();
  removeFile();
  runs_.clear();
  records_.clear();
  entries_.clear();
  count_ = 0;
  isAdvanced_ = true;
}

VEXStatus VEXFeatureSorter::add(const VEXFeature& feature, std::string_view key) {
  if (limit_ == 0) {
    std::int32_t bytes = kDefaultLimit;
    if (!VEXConfiguration::intValue("ORV_SORT_BYTES", bytes) || bytes < 1) bytes = kDefaultLimit;
    limit_ = static_cast<std::size_t>(bytes);
  }
  const std::size_t start = records_.size();
  records_.append(kLead, '\0').append(key);
  const std::size_t keyEnd = records_.size();
  appendStoredFeature(records_, feature, names_);
  const auto keyLength = static_cast<std::uint32_t>(key.size());
  const auto storedLength = static_cast<std::uint32_t>(records_.size() - keyEnd);
  std::memcpy(records_.data() + start, &keyLength, sizeof keyLength);
  std::memcpy(records_.data() + start + sizeof keyLength, &storedLength, sizeof storedLength);
  entries_.push_back({prefixOf(key), start});
  ++count_;
  const std::size_t used = records_.size() + entries_.size() * sizeof(Entry);
  return used < limit_ ? nullptr : extendStatus(writeRun());
}

bool VEXFeatureSorter::isBefore(const Entry& a, const Entry& b) const {
  if (a.prefix != b.prefix) return (a.prefix < b.prefix) != isDescending_;
  const int order = Record(records_.data() + a.offset).key.compare(Record(records_.data() + b.offset).key);
  if (order != 0) return (order < 0) != isDescending_;
  return a.offset < b.offset;
}

void VEXFeatureSorter::sortEntries() {
  std::sort(entries_.begin(), entries_.end(), [this](const Entry& a, const Entry& b) { return isBefore(a, b); });
}

namespace {

// Appends to `pending`, which goes to the file when it is a block.
VEXStatus writeBehind(VEXFile& file, std::uint64_t& position, std::string& pending, std::string_view bytes) {
  pending += bytes;
  if (pending.size() < kBlock && !bytes.empty()) return nullptr;
  const bool isWritten = file.writeAt(position, pending);
  if (!isWritten) return makeStatus(kWriteFailed, {file.path(), file.errorText()});
  position += pending.size();
  pending.clear();
  return nullptr;
}

}  // namespace

VEXStatus VEXFeatureSorter::writeRun() {
  if (file_ == nullptr) VEX_TRY(VEXTempFileManager::getFile(file_));
  sortEntries();
  const std::uint64_t start = written_;
  std::string pending;
  for (const Entry& entry : entries_)
    VEX_TRY(writeBehind(*file_, written_, pending, Record(records_.data() + entry.offset).whole()));
  VEX_TRY(writeBehind(*file_, written_, pending, {}));
  runs_.push_back({start, written_});
  records_.clear();
  entries_.clear();
  return nullptr;
}

// ---- giving back ----

bool VEXFeatureSorter::comesAfter(const Source& a, const Source& b, bool isDescending) {
  if (a.prefix() != b.prefix()) return (a.prefix() > b.prefix()) != isDescending;
  const int order = a.record().key.compare(b.record().key);
  if (order != 0) return (order > 0) != isDescending;
  return a.number() > b.number();
}

// Sources for the runs first to last (not included), and for what is in memory when they are the last ones.
VEXStatus VEXFeatureSorter::openSources(std::size_t first, std::size_t last, std::vector<Source>& sources,
                                        std::vector<Source*>& heap) {
  sources.clear();
  heap.clear();
  const std::size_t blockBytes = std::clamp(kMergeBytes / std::max<std::size_t>(last - first, 1), kLeastBlock, kBlock);
  for (std::size_t at = first; at < last; ++at) sources.emplace_back(*file_, runs_[at], blockBytes, at);
  if (last == runs_.size() && !entries_.empty()) sources.emplace_back(records_, entries_, last);
  for (Source& source : sources) {
    bool got = false;
    VEX_TRY(source.next(got));
    if (got) heap.push_back(&source);
  }
  const bool isDescending = isDescending_;
  std::make_heap(heap.begin(), heap.end(),
                 [isDescending](const Source* a, const Source* b) { return comesAfter(*a, *b, isDescending); });
  return nullptr;
}

// Puts the first source, which has moved on, where it belongs.
void VEXFeatureSorter::siftDown(std::vector<Source*>& heap) const {
  const std::size_t count = heap.size();
  Source* moved = heap[0];
  std::size_t at = 0;
  for (std::size_t child = 1; child < count; child = 2 * at + 1) {
    if (child + 1 < count && comesAfter(*heap[child], *heap[child + 1], isDescending_)) ++child;
    if (!comesAfter(*moved, *heap[child], isDescending_)) break;
    heap[at] = heap[child];
    at = child;
  }
  heap[at] = moved;
}

VEXStatus VEXFeatureSorter::advance(std::vector<Source*>& heap) const {
  bool got = false;
  VEX_TRY(heap[0]->next(got));
  if (!got) {
    heap[0] = heap.back();
    heap.pop_back();
  }
  if (heap.size() > 1) siftDown(heap);
  return nullptr;
}

// Merges runs that stand next to each other, until there are few enough for one merge. The order of the runs stays,
// and with it the order of equal keys.
VEXStatus VEXFeatureSorter::mergeRuns() {
  while (runs_.size() > kMostRuns) {
    VEXFile* merged = nullptr;
    VEX_TRY(VEXTempFileManager::getFile(merged));
    std::vector<Run> mergedRuns;
    std::uint64_t position = 0;
    std::string pending;
    for (std::size_t first = 0; first < runs_.size(); first += kMostRuns) {
      const std::uint64_t start = position;
      std::vector<Source> sources;
      std::vector<Source*> heap;
      VEX_TRY(openSources(first, std::min(first + kMostRuns, runs_.size()), sources, heap));
      while (!heap.empty()) {
        VEX_TRY(writeBehind(*merged, position, pending, heap[0]->record().whole()));
        VEX_TRY(advance(heap));
      }
      VEX_TRY(writeBehind(*merged, position, pending, {}));
      mergedRuns.push_back({start, position});
    }
    removeFile();
    file_ = merged;
    written_ = position;
    runs_ = std::move(mergedRuns);
  }
  return nullptr;
}

VEXStatus VEXFeatureSorter::startReading() {
  if (runs_.size() > kMostRuns) {
    if (!entries_.empty()) VEX_TRY(writeRun());
    VEX_TRY(mergeRuns());
  }
  sortEntries();
  VEX_TRY(openSources(0, runs_.size(), sources_, heap_));
  isAdvanced_ = true;
  return nullptr;
}

VEXStatus VEXFeatureSorter::next(VEXFeaturePtr& feature) {
  feature.reset();
  if (!isAdvanced_) VEX_TRY(advance(heap_));
  if (heap_.empty()) {
    isAdvanced_ = true;
    return nullptr;
  }
  isAdvanced_ = false;
  const Record record = heap_[0]->record();
  key_ = record.key;
  feature = VEXObjectRecycler::instance().getFeature(2, 0);
  std::size_t used = 0;
  return extendStatus(readStoredFeature(record.stored, names_, *feature, used));
}
