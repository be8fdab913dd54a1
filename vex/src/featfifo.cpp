#include "vex/src/featfifo.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/bytecur.h"
#include "vex/src/tmpfilmn.h"
#include "vex/src/vexrcycl.h"

// ---- names ----

std::uint32_t VEXNameDictionary::indexOf(VEXName name) {
  if (heads_.size() < 2 * (names_.size() + 1)) rehash();
  std::int32_t* head = &heads_[name.hash() & (heads_.size() - 1)];
  for (std::int32_t at = *head; at >= 0; at = next_[static_cast<std::size_t>(at)])
    if (names_[static_cast<std::size_t>(at)] == name) return static_cast<std::uint32_t>(at);
  next_.push_back(*head);
  *head = static_cast<std::int32_t>(names_.size());
  names_.push_back(name);
  return static_cast<std::uint32_t>(names_.size() - 1);
}

void VEXNameDictionary::rehash() {
  heads_.assign(std::bit_ceil(4 * (names_.size() + 16)), -1);
  for (std::size_t i = 0; i < names_.size(); ++i) {
    std::int32_t* head = &heads_[names_[i].hash() & (heads_.size() - 1)];
    next_[i] = *head;
    *head = static_cast<std::int32_t>(i);
  }
}

// ---- stored form ----

namespace {

static_assert(std::endian::native == std::endian::little, "another byte order needs its own writes here");

template <class Number>
char* putNumber(char* at, Number number) {
  std::memcpy(at, &number, sizeof number);
  return at + sizeof number;
}

char* putBytes(char* at, const void* bytes, std::size_t count) {
  if (count > 0) std::memcpy(at, bytes, count);
  return at + count;
}

char* putText(char* at, std::string_view text) {
  return putBytes(putNumber(at, static_cast<std::uint32_t>(text.size())), text.data(), text.size());
}

char* putDoubles(char* at, std::span<const double> values) {
  return putBytes(at, values.data(), values.size_bytes());
}

void takeDoubles(VEXByteCursor& cursor, std::size_t count, std::vector<double>& values) {
  std::string_view bytes = cursor.take(count * sizeof(double));
  values.resize(count);
  if (bytes.size() == count * sizeof(double) && count > 0) std::memcpy(values.data(), bytes.data(), bytes.size());
}

VEXStatus nameOf(std::uint32_t index, const VEXNameDictionary& names, VEXName& name) {
  if (!names.nameAt(index, name)) [[unlikely]]
    return makeStatus(879010, {integerText(index)});
  return nullptr;
}

VEXStatus takeAttributes(VEXByteCursor& cursor, const VEXNameDictionary& names, VEXFeature& feature) {
  VEXName name;
  for (std::uint32_t left = cursor.u32le(); left > 0 && !cursor.overrun(); --left) {
    const std::uint32_t index = cursor.u32le();
    const std::string_view value = cursor.take(cursor.u32le());
    if (cursor.overrun()) return nullptr;
    VEX_TRY(nameOf(index, names, name));
    feature.setAttribute(name, value);
  }
  for (std::uint32_t left = cursor.u32le(); left > 0 && !cursor.overrun(); --left) {
    const std::uint32_t index = cursor.u32le();
    if (cursor.overrun()) return nullptr;
    VEX_TRY(nameOf(index, names, name));
    feature.addToSequence(name);
  }
  feature.setFeatureType(cursor.take(cursor.u32le()));
  return nullptr;
}

VEXStatus damaged(std::size_t bytes) {
  return makeStatus(879011, {integerText(static_cast<std::int64_t>(bytes))});
}

}  // namespace

std::size_t storedBytes(const VEXFeature& feature) {
  constexpr std::size_t kCounts = 4 * 6 + 2 + 1;  // of attributes, names, coordinates, commands; type, system, code
  std::size_t bytes = kCounts + feature.featureType().size() + feature.coordSys().size();
  feature.forEachAttribute([&bytes](VEXName, std::string_view value) { bytes += 8 + value.size(); });
  bytes += 4 * feature.sequence().size();
  bytes += feature.numCoords() * sizeof(double) * static_cast<std::size_t>(feature.dimension());
  for (const std::string& command : feature.reprojectionCommands()) bytes += 4 + command.size();
  return bytes;
}

void putStoredFeature(char* at, const VEXFeature& feature, VEXNameDictionary& names) {
  at = putNumber(at, static_cast<std::uint32_t>(feature.numAttributes()));
  feature.forEachAttribute(
      [&](VEXName name, std::string_view value) { at = putText(putNumber(at, names.indexOf(name)), value); });
  at = putNumber(at, static_cast<std::uint32_t>(feature.sequence().size()));
  for (VEXName name : feature.sequence()) at = putNumber(at, names.indexOf(name));
  at = putText(at, feature.featureType());
  at = putText(at, feature.coordSys());
  at = putNumber(at, static_cast<std::uint16_t>(feature.geomType()));
  at = putNumber(at, static_cast<std::uint8_t>(feature.dimension()));
  at = putNumber(at, static_cast<std::uint32_t>(feature.numCoords()));
  at = putDoubles(at, feature.xs());
  at = putDoubles(at, feature.ys());
  if (feature.dimension() == 3) at = putDoubles(at, feature.zs());
  at = putNumber(at, static_cast<std::uint32_t>(feature.reprojectionCommands().size()));
  for (const std::string& command : feature.reprojectionCommands()) at = putText(at, command);
}

void appendStoredFeature(std::string& out, const VEXFeature& feature, VEXNameDictionary& names) {
  const std::size_t start = out.size();
  out.resize(start + storedBytes(feature));
  putStoredFeature(out.data() + start, feature, names);
}

VEXStatus readStoredFeature(std::string_view bytes, const VEXNameDictionary& names, VEXFeature& feature,
                            std::size_t& used, std::size_t& wanted) {
  VEXByteCursor cursor(bytes);
  used = wanted = 0;
  feature.reset(2, 0);
  VEX_TRY(takeAttributes(cursor, names, feature));
  feature.setCoordSys(cursor.take(cursor.u32le()));
  const std::uint16_t geomType = cursor.u16le();
  const std::uint8_t dimension = cursor.u8();
  const std::size_t count = cursor.u32le();
  if (!cursor.overrun()) {
    if ((dimension != 2 && dimension != 3) || !VEXFeature::isKnownGeomType(geomType)) return damaged(bytes.size());
    const std::size_t ordinateBytes = count * sizeof(double) * dimension;
    if (ordinateBytes <= cursor.left()) {
      feature.restoreGeometry(geomType, dimension);
      takeDoubles(cursor, count, feature.mutableXs());
      takeDoubles(cursor, count, feature.mutableYs());
      if (dimension == 3) takeDoubles(cursor, count, feature.mutableZs());
    } else {
      cursor.skip(ordinateBytes);
    }
  }
  if (const std::uint32_t numCommands = cursor.u32le(); numCommands > 0) {
    VEXStringVector commands;
    for (std::uint32_t left = numCommands; left > 0 && !cursor.overrun(); --left)
      commands.emplace_back(cursor.take(cursor.u32le()));
    feature.setReprojectionCommands(std::move(commands));
  }
  if (cursor.overrun())
    wanted = cursor.wanted();
  else
    used = cursor.offset();
  return nullptr;
}

VEXStatus readStoredFeature(std::string_view bytes, const VEXNameDictionary& names, VEXFeature& feature,
                            std::size_t& used) {
  std::size_t wanted = 0;
  VEX_TRY(readStoredFeature(bytes, names, feature, used, wanted));
  return wanted == 0 ? nullptr : damaged(bytes.size());
}

// ---- the queue ----

namespace {

// A record in the temporary file is led by its length, so that one read brings it in whole.
constexpr std::size_t kLead = sizeof(std::uint32_t);
constexpr std::size_t kPendingBytes = std::size_t{256} << 10;
constexpr std::size_t kLeastReadAhead = 4096;

}  // namespace

VEXFeatureFIFO::~VEXFeatureFIFO() {
  if (file_ != nullptr) VEXTempFileManager::removeFile(file_);
}

VEXStatus VEXFeatureFIFO::open() {
  VEX_TRY(VEXTempFileManager::getFile(file_));
  attrMap_ = std::make_unique<VEXNameDictionary>();
  return nullptr;
}

VEXStatus VEXFeatureFIFO::write(const VEXFeature& feature) {
  VEX_ASSERT(file_ != NULL);
  VEX_ASSERT(attrMap_ != NULL);
  std::size_t start = pending_.size();
  pending_.append(kLead, '\0');
  appendStoredFeature(pending_, feature, *attrMap_);
  auto length = static_cast<std::uint32_t>(pending_.size() - start - kLead);
  std::memcpy(pending_.data() + start, &length, kLead);
  writePosition_ += kLead + length;
  ++count_;
  if (pending_.size() >= kPendingBytes) VEX_TRY(flush());
  return nullptr;
}

VEXStatus VEXFeatureFIFO::flush() {
  if (pending_.empty()) return nullptr;
  bool written = file_->writeAt(writePosition_ - pending_.size(), pending_);
  pending_.clear();
  if (!written) return makeStatus(218002, {file_->path(), file_->errorText()});
  return nullptr;
}

VEXStatus VEXFeatureFIFO::read(VEXFeature& feature, bool& got) {
  VEX_ASSERT(file_ != NULL);
  VEX_ASSERT(attrMap_ != NULL);
  got = false;
  if (readPosition_ >= writePosition_) return nullptr;
  VEX_TRY(flush());
  // Reads ahead a block at a time; a record that is longer than what is left of the block begins a new one.
  auto have = [this](std::size_t bytes) {
    return readPosition_ >= blockStart_ && readPosition_ + bytes <= blockStart_ + block_.size();
  };
  auto load = [this](std::size_t bytes) {
    std::size_t count =
        static_cast<std::size_t>(std::min<std::uint64_t>(std::max(bytes, readAhead_), writePosition_ - readPosition_));
    block_.resize(count);
    blockStart_ = readPosition_;
    return count >= bytes && file_->readAt(blockStart_, block_.data(), count);
  };
  if (!have(kLead) && !load(kLead)) return nullptr;
  std::uint32_t length = 0;
  std::memcpy(&length, block_.data() + (readPosition_ - blockStart_), kLead);
  if (!have(kLead + length) && (length > writePosition_ - readPosition_ || !load(kLead + length))) return nullptr;
  std::size_t used = 0;
  std::string_view record =
      std::string_view(block_).substr(static_cast<std::size_t>(readPosition_ - blockStart_) + kLead, length);
  VEX_TRY(readStoredFeature(record, *attrMap_, feature, used));
  readPosition_ += kLead + length;
  got = true;
  return nullptr;
}

// ---- the store ----

VEXStatus VEXFeatureStore::store(VEXFeaturePtr& feature, std::uint64_t& id) {
  if (!isOpen_) VEX_TRY(open());
  isOpen_ = true;
  id = writePosition_;
  VEX_TRY(write(*feature));
  feature.reset();
  return nullptr;
}

VEXStatus VEXFeatureStore::fetch(VEXFeaturePtr& feature, std::uint64_t id) {
  if (!isOpen_) VEX_TRY(open());
  isOpen_ = true;
  // The features of many groups lie between each other: a jump reads little, a walk more and more.
  readAhead_ = id == readPosition_ ? std::min(2 * readAhead_, kPendingBytes) : kLeastReadAhead;
  readPosition_ = id;
  feature = VEXObjectRecycler::instance().getFeature(2, 1);
  bool got = false;
  VEXStatus failure = read(*feature, got);
  if (failure == nullptr && got) return nullptr;
  feature.reset();
  if (failure != nullptr) return extendStatus(std::move(failure));
  return makeStatus(218003, {integerText(static_cast<std::int64_t>(id))});
}
