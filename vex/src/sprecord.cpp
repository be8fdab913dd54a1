#include "vex/src/sprecord.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <unordered_map>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/plangeom.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexline.h"

namespace {

constexpr std::uint32_t kMissing = 395301;
constexpr std::uint32_t kDamaged = 395303;
constexpr std::uint32_t kCannotCreate = 395305;
constexpr std::uint32_t kCannotWrite = 395306;
constexpr std::uint32_t kOtherStore = 395307;

constexpr std::size_t kMoreAddresses = 50000;
constexpr std::size_t kAddressBytes = 8;
constexpr std::size_t kReadBlock = std::size_t{1} << 20;

void appendU32(std::string& bytes, std::uint32_t value) {
  char form[sizeof value];
  std::memcpy(form, &value, sizeof value);
  bytes.append(form, sizeof form);
}

// To the segments of a line or of the rings of an area, or to its one point.
VEXStatus distanceTo(const VEXFeature& feature, double x, double y, double& distance) {
  const VEXLine line = VEXLine::viewOf(feature);
  distance = std::numeric_limits<double>::infinity();
  std::vector<VEXLineRange> ranges;
  VEX_TRY(line.leaves(ranges));
  auto take = [&](std::size_t first, std::size_t count) {
    const auto xs = line.xs().subspan(first, count);
    const auto ys = line.ys().subspan(first, count);
    if (count == 1) distance = std::min(distance, distanceToSegment(x, y, xs[0], ys[0], xs[0], ys[0]));
    for (std::size_t at = 1; at < count; ++at)
      distance = std::min(distance, distanceToSegment(x, y, xs[at - 1], ys[at - 1], xs[at], ys[at]));
  };
  for (const VEXLineRange& range : ranges) {
    if (range.count == 0) continue;
    const bool isPoints = range.code == VEX_GEOM_MULTI_POINT;
    const bool isArea =
        range.code == VEX_GEOM_POLYGON || range.code == VEX_GEOM_DONUT || range.code == VEX_GEOM_MULTI_POLY;
    if (isPoints) {
      for (std::size_t at = 0; at < range.count; ++at) take(range.first + at, 1);
    } else if (isArea) {
      const VEXLine area = VEXLine::viewOf(line, range.first, range.first + range.count - 1, range.code);
      std::vector<VEXLineRange> rings;
      area.rings(rings);
      for (const VEXLineRange& ring : rings) take(range.first + ring.first, ring.count);
    } else {
      take(range.first, range.count);
    }
  }
  return nullptr;
}

// What tells that a file is no longer the one that was read.
struct FileState {
  std::uintmax_t bytes = 0;
  std::filesystem::file_time_type time;
  bool operator==(const FileState&) const = default;
};

FileState stateOf(const std::string& path) {
  std::error_code ignored;
  FileState state;
  const std::string native = platform::nativePath(path);
  state.bytes = std::filesystem::file_size(native, ignored);
  state.time = std::filesystem::last_write_time(native, ignored);
  return state;
}

struct SharedRecorder {
  std::shared_ptr<VEXSpatialRecorder> recorder;
  FileState store;
  FileState index;
};

}  // namespace

VEXSpatialRecorder::VEXSpatialRecorder(const std::string& path, VEXRecorder::Mode mode)
    : recorder_(path, mode, false, false), recordingMode_(mode), indexPath_(indexPath(path)) {}

std::shared_ptr<VEXSpatialRecorder> VEXSpatialRecorder::shared(const std::string& path) {
  static std::unordered_map<std::string, SharedRecorder> recorders;
  SharedRecorder& entry = recorders[platform::canonicalPath(platform::nativePath(path))];
  const FileState store = stateOf(path);
  const FileState index = stateOf(indexPath(path));
  if (entry.recorder == nullptr || store != entry.store || index != entry.index)
    entry = {std::make_shared<VEXSpatialRecorder>(path, VEXRecorder::READ_RECORDING), store, index};
  return entry.recorder;
}

std::string VEXSpatialRecorder::indexPath(const std::string& path) {
  const std::size_t point = path.rfind('.');
  const bool hasExtension = point != std::string::npos && path.find_first_of("/\\", point) == std::string::npos;
  return (hasExtension ? path.substr(0, point) : path) + ".fsi";
}

// ---- writing ----

VEXStatus VEXSpatialRecorder::write(const VEXFeature& feature, VEXRecordAddress& address) {
  VEX_TRY(recorder_.write(feature, address));
  if (addresses_.size() == addresses_.capacity())
    addresses_.reserve(addresses_.size() + std::max(kMoreAddresses, addresses_.size() / 2));
  const auto id = static_cast<std::uint32_t>(addresses_.size());
  addresses_.push_back(address);
  if (feature.numCoords() == 0) return nullptr;
  VEXBox box;
  // A geometry that has no box, for all that its coordinates say, lies nowhere: no query finds it.
  ignoreStatus(feature.boundingBox(box));
  if (!box.isEmpty() && box.minY <= box.maxY) entries_.push_back({RpBox::of(box), id});
  return nullptr;
}

VEXStatus VEXSpatialRecorder::close() {
  VEX_TRY(recorder_.close());
  if (recordingMode_ == VEXRecorder::READ_RECORDING || addresses_.empty()) return nullptr;
  const std::string store = platform::nativePath(recorder_.path());
  std::error_code ignored;
  if (!platform::fileExists(store)) return makeStatus(kMissing, {recorder_.path()});
  if (!std::filesystem::is_regular_file(store, ignored)) return nullptr;  // a device has nothing beside it
  tree_.bulkLoad(std::move(entries_));
  entries_.clear();
  std::string bytes;
  tree_.save(bytes);
  appendU32(bytes, static_cast<std::uint32_t>(addresses_.size()));
  for (const VEXRecordAddress& address : addresses_) {
    appendU32(bytes, address.fileNumber);
    appendU32(bytes, address.offset);
  }
  VEXOutputFile file;
  if (!file.open(indexPath_)) return makeStatus(kCannotCreate, {indexPath_, file.errorText()});
  if (!file.append(bytes) || !file.close()) return makeStatus(kCannotWrite, {indexPath_, file.errorText()});
  return nullptr;
}

void VEXSpatialRecorder::abort() {
  recorder_.abort();
  if (recordingMode_ == VEXRecorder::READ_RECORDING || addresses_.empty()) return;
  std::error_code ignored;
  const std::string index = platform::nativePath(indexPath_);
  if (std::filesystem::is_regular_file(index, ignored)) platform::removeFile(index);
}

// ---- the index ----

VEXStatus VEXSpatialRecorder::notOfThisStore() const {
  return makeStatus(kOtherStore, {indexPath_, recorder_.path()});
}

VEXStatus VEXSpatialRecorder::loadIndex() {
  VEX_ASSERT(recordingMode_ == VEXRecorder::READ_RECORDING);
  if (isLoaded_) return nullptr;
  if (!platform::fileExists(platform::nativePath(recorder_.path()))) return makeStatus(kMissing, {recorder_.path()});
  VEXInputFile file;
  if (!file.open(indexPath_)) return makeStatus(kMissing, {indexPath_});
  std::string content;
  content.reserve(file.size());
  for (std::string_view piece; content.size() < file.size(); content += piece)
    if (!file.readBytes(std::min(kReadBlock, static_cast<std::size_t>(file.size()) - content.size()), piece))
      return makeStatus(kDamaged, {indexPath_, file.errorText()});
  VEXByteCursor bytes(content);
  if (!tree_.restore(bytes)) return makeStatus(kDamaged, {indexPath_, "its tree"});
  VEX_TRY(takeAddresses(bytes));
  VEX_TRY(checkAddresses());
  isLoaded_ = true;
  return nullptr;
}

VEXStatus VEXSpatialRecorder::takeAddresses(VEXByteCursor& bytes) {
  const std::uint32_t count = bytes.u32le();
  if (bytes.overrun() || bytes.left() != std::size_t{count} * kAddressBytes)
    return makeStatus(kDamaged, {indexPath_, "its list of addresses"});
  addresses_.resize(count);
  for (VEXRecordAddress& address : addresses_) {
    address.fileNumber = bytes.u32le();
    address.offset = bytes.u32le();
  }
  return nullptr;
}

// The addresses are those of this store: as many as it has records, rising, from the first record of each file.
VEXStatus VEXSpatialRecorder::checkAddresses() {
  std::uint64_t count = 0;
  std::vector<std::uint32_t> ends;
  VEX_TRY(recorder_.countRecords(count, ends));
  if (count != addresses_.size()) return notOfThisStore();
  for (std::size_t at = 0; at < addresses_.size(); ++at) {
    const VEXRecordAddress& address = addresses_[at];
    const bool isFirst = at == 0 || addresses_[at - 1].fileNumber != address.fileNumber;
    const bool isInOrder = isFirst ? address.offset == VEXRecorderFile::kHeaderBytes &&
                                         address.fileNumber == (at == 0 ? 0 : addresses_[at - 1].fileNumber + 1)
                                   : address.offset > addresses_[at - 1].offset;
    if (!isInOrder || address.fileNumber >= ends.size() || address.offset >= ends[address.fileNumber])
      return notOfThisStore();
  }
  return nullptr;
}

// ---- searching ----

VEXStatus VEXSpatialRecorder::search(const VEXBox& box, VEXSpatialQuery& query) {
  VEX_TRY(loadIndex());
  query.next = 0;
  query.box = RpBox::of(box);
  tree_.searchIntersecting(query.box, query.hits);
  if (!query.hits.empty() && query.hits.back() >= addresses_.size())
    return makeStatus(kDamaged, {indexPath_, "identifier " + integerText(query.hits.back())});
  return nullptr;
}

VEXStatus VEXSpatialRecorder::searchClosest(double x, double y, double distance, VEXSpatialQuery& query) {
  VEXBox box;
  box.minX = x - distance;
  box.maxX = x + distance;
  box.minY = y - distance;
  box.maxY = y + distance;
  VEX_TRY(search(box, query));
  double best = 2 * distance;
  std::vector<std::uint32_t> nearest;
  VEXFeaturePtr feature;
  for (const std::uint32_t hit : query.hits) {
    VEX_TRY(readHit(hit, feature));
    double found = 0;
    VEX_TRY(distanceTo(*feature, x, y, found));
    if (found < best) {
      best = found;
      nearest.assign(1, hit);
    }
  }
  if (best < distance)
    query.hits = std::move(nearest);
  else
    query.hits.clear();
  return nullptr;
}

VEXStatus VEXSpatialRecorder::read(VEXSpatialQuery& query, VEXFeaturePtr& feature) {
  feature.reset();
  if (query.next >= query.hits.size()) return extendStatus(recorder_.close());
  VEXFeaturePtr found;
  VEX_TRY(readHit(query.hits[query.next++], found));
  VEXBox box;
  VEX_TRY(found->boundingBox(box));
  if (!RpBox::of(box).meets(query.box)) return notOfThisStore();
  feature = std::move(found);
  return nullptr;
}

// A record that does not end where the next one begins shows that the index knows another store.
VEXStatus VEXSpatialRecorder::readHit(std::uint32_t hit, VEXFeaturePtr& feature) {
  const VEXRecordAddress& address = addresses_[hit];
  VEX_TRY(recorder_.readAt(address, feature));
  const bool isLast = hit + 1 == addresses_.size() || addresses_[hit + 1].fileNumber != address.fileNumber;
  const std::uint64_t end = isLast ? recorder_.recordsEnd() : addresses_[hit + 1].offset;
  return recorder_.offset() == end ? nullptr : notOfThisStore();
}
