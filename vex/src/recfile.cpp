#include "vex/src/recfile.h"

#include <cstring>
#include <filesystem>
#include <unordered_set>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kNotWriting = 393357;
constexpr std::uint32_t kSeekFailed = 393358;
constexpr std::uint32_t kHeaderNotWritten = 393359;
constexpr std::uint32_t kCountNotWritten = 393360;
constexpr std::uint32_t kCannotCreate = 393361;
constexpr std::uint32_t kRecordNotWritten = 393362;
constexpr std::uint32_t kRecordTooLarge = 393363;
constexpr std::uint32_t kNamesNotWritten = 393364;
constexpr std::uint32_t kNothingToRead = 393365;
constexpr std::uint32_t kBadHeader = 393366;
constexpr std::uint32_t kBadCount = 393367;
constexpr std::uint32_t kBadDictionaryOffset = 393369;
constexpr std::uint32_t kBadPlace = 393373;
constexpr std::uint32_t kBadRecord = 393374;
constexpr std::uint32_t kNotFinished = 393376;
constexpr std::uint32_t kBadDictionary = 393377;
constexpr std::uint32_t kBeingRead = 393383;

constexpr std::uint32_t kUnknownName = 879010;

constexpr std::uint64_t kLeastRecord = 27;      // bytes of a feature without anything
constexpr std::uint64_t kLeastDictionary = 8;   // bytes of a region without names
constexpr std::size_t kMostKeptName = 1 << 16;  // bytes of a name in the file beside a store

std::string numberText(std::uint64_t value) {
  return integerText(static_cast<std::int64_t>(value));
}

template <class... Numbers>
std::string bytesOf(Numbers... numbers) {
  std::string bytes;
  auto append = [&bytes](std::uint32_t number) {
    char form[sizeof number];
    std::memcpy(form, &number, sizeof number);
    bytes.append(form, sizeof form);
  };
  (append(numbers), ...);
  return bytes;
}

// Paths of files that are open for reading: creating one of them would empty it under its reader.
std::unordered_multiset<std::string>& filesBeingRead() {
  static std::unordered_multiset<std::string>& files = *new std::unordered_multiset<std::string>;
  return files;
}

void removeIfFile(const std::string& path) {
  std::error_code ignored;
  if (std::filesystem::is_regular_file(platform::nativePath(path), ignored))
    platform::removeFile(platform::nativePath(path));
}

}  // namespace

VEXRecorderFile::~VEXRecorderFile() {
  if (!beingRead_.empty()) filesBeingRead().erase(filesBeingRead().find(beingRead_));
}

// ---- writing ----

VEXStatus VEXRecorderFile::writeFailure(std::uint32_t number) const {
  return makeStatus(number, {path_, output_.errorText()});
}

VEXStatus VEXRecorderFile::create() {
  if (filesBeingRead().contains(platform::canonicalPath(platform::nativePath(path_))))
    return makeStatus(kBeingRead, {path_});
  if (!output_.open(path_, protection())) return writeFailure(kCannotCreate);
  // The placeholder is on disk before any record is: a run that is killed leaves a file that is known for what it is.
  if (!output_.append(bytesOf(0U, placeholder(), 0U)) || !output_.flush()) {
    VEXStatus failure = writeFailure(kRecordNotWritten);
    discard();
    return failure;
  }
  std::error_code ignored;
  keepsNames_ = std::filesystem::is_regular_file(platform::nativePath(path_), ignored);
  if (keepsNames_) removeIfFile(namesPath());
  numNamesKept_ = 0;
  return nullptr;
}

VEXStatus VEXRecorderFile::write(const VEXFeature& feature, VEXPersistentDictionary& names) {
  const std::size_t bytes = storedBytes(feature);
  if (bytes > kMostBytes - output_.offset())
    return makeRejection(kRecordTooLarge, {path_, numberText(bytes), numberText(output_.offset())});
  if (bytes <= VEXOutputFile::kMostSpace) [[likely]] {
    char* place = output_.appendSpace(bytes);
    if (place == nullptr) return writeFailure(kRecordNotWritten);
    putStoredFeature(place, feature, names);
    return names.entries() == numNamesKept_ ? nullptr : extendStatus(keepNames(names));
  }
  record_.clear();
  appendStoredFeature(record_, feature, names);
  if (names.entries() != numNamesKept_) VEX_TRY(keepNames(names));
  if (!output_.append(record_)) return writeFailure(kRecordNotWritten);
  return nullptr;
}

// Before the records that use them leave the buffer. That this file cannot be written is no reason to stop.
VEXStatus VEXRecorderFile::keepNames(const VEXPersistentDictionary& names) {
  std::string bytes;
  VEXName name;
  for (; names.nameAt(static_cast<std::uint32_t>(numNamesKept_), name); ++numNamesKept_) {
    bytes += bytesOf(static_cast<std::uint32_t>(name.text().size()));
    bytes += name.text();
  }
  if (!keepsNames_) return nullptr;
  if (namesFile_ == nullptr) {
    namesFile_ = std::make_unique<VEXOutputFile>();
    keepsNames_ = namesFile_->open(namesPath(), protection());
  }
  keepsNames_ = keepsNames_ && namesFile_->append(bytes) && namesFile_->flush();
  return nullptr;
}

VEXStatus VEXRecorderFile::finish(const VEXPersistentDictionary& names, std::uint32_t count) {
  if (!output_.isOpen()) return makeStatus(kNotWriting, {path_});
  const std::uint64_t dictionaryOffset = output_.offset();
  std::string region;
  names.save(region);
  if (!output_.append(region) || !output_.flush()) return writeFailure(kNamesNotWritten);
  if (!output_.patch(8, bytesOf(count))) return writeFailure(kCountNotWritten);
  // The offset comes last: it is what makes the file a finished one.
  if (!output_.patch(0, bytesOf(0U, static_cast<std::uint32_t>(dictionaryOffset))))
    return writeFailure(kHeaderNotWritten);
  if (!output_.close()) return writeFailure(kRecordNotWritten);
  if (namesFile_ != nullptr) {
    namesFile_->close();
    removeIfFile(namesPath());
  }
  return nullptr;
}

void VEXRecorderFile::discard() {
  output_.close();
  removeIfFile(path_);
  if (namesFile_ == nullptr) return;
  namesFile_->close();
  removeIfFile(namesPath());
}

// ---- reading ----

VEXStatus VEXRecorderFile::open() {
  if (!input_.open(path_)) return makeStatus(kNothingToRead, {path_, input_.errorText()});
  if (input_.size() == 0) return makeStatus(kNothingToRead, {path_, "it is empty"});
  recordsEnd_ = input_.size();
  if (beingRead_.empty()) {
    beingRead_ = platform::canonicalPath(platform::nativePath(path_));
    filesBeingRead().insert(beingRead_);
  }
  return nullptr;
}

VEXStatus VEXRecorderFile::readHeader(VEXPersistentDictionary& names, std::uint32_t& count, bool recovers) {
  isRecovered_ = false;
  names.clear();
  std::string_view bytes;
  std::uint32_t marker = 0;
  std::uint32_t dictionaryOffset = 0;
  if (!input_.seek(0)) return makeStatus(kSeekFailed, {path_});
  if (!input_.readBytes(8, bytes)) return makeStatus(kBadHeader, {path_, "the header is cut short"});
  std::memcpy(&marker, bytes.data(), 4);
  std::memcpy(&dictionaryOffset, bytes.data() + 4, 4);
  if (marker != 0) return makeStatus(kBadHeader, {path_, "it does not begin with four zero bytes"});
  if (!input_.readBytes(4, bytes)) return makeStatus(kBadCount, {path_, "the header is cut short"});
  std::memcpy(&count, bytes.data(), 4);

  const std::uint64_t size = input_.size();
  VEXStatus failure;
  std::string fault;
  if (dictionaryOffset == 0 || dictionaryOffset == 0xFFFFFFFF)
    failure = makeStatus(kNotFinished, {path_, numberText(size)});
  else if (dictionaryOffset < kHeaderBytes || dictionaryOffset + kLeastDictionary > size)
    failure = makeStatus(kBadDictionaryOffset, {numberText(dictionaryOffset), path_, numberText(size)});
  else if (count > (dictionaryOffset - kHeaderBytes) / kLeastRecord)
    failure = makeStatus(kBadCount, {path_, numberText(count) + " records do not fit"});
  else if (!input_.seek(dictionaryOffset))
    failure = makeStatus(kBadDictionaryOffset, {numberText(dictionaryOffset), path_, numberText(size)});
  else if (!names.restore(input_, size, fault))
    failure = makeStatus(kBadDictionary, {path_, fault});
  recordsEnd_ = dictionaryOffset;
  if (failure != nullptr) {
    if (!recovers) return failure;
    count = 0xFFFFFFFF;
    isRecovered_ = true;
    recover(dictionaryOffset, names);
  }
  if (!input_.seek(kHeaderBytes)) return makeStatus(kSeekFailed, {path_});
  return nullptr;
}

// Where the records end as far as can be told, and the names that the dictionary still tells, or those that the run has
// left beside the file.
void VEXRecorderFile::recover(std::uint32_t dictionaryOffset, VEXPersistentDictionary& names) {
  const std::uint64_t size = input_.size();
  const bool isTold = dictionaryOffset >= kHeaderBytes && dictionaryOffset <= size;
  recordsEnd_ = isTold ? dictionaryOffset : size;
  if (isTold) {
    std::string fault;
    if (input_.seek(dictionaryOffset)) names.restore(input_, size, fault);
    return;
  }
  VEXInputFile kept;
  if (!kept.open(namesPath())) return;
  for (std::string_view bytes; kept.readBytes(4, bytes);) {
    std::uint32_t length = 0;
    std::memcpy(&length, bytes.data(), 4);
    if (length == 0 || length > kMostKeptName || !kept.readBytes(length, bytes)) break;
    if (names.indexOf(VEXName::intern(bytes)) + 1 != names.entries()) break;
  }
}

VEXStatus VEXRecorderFile::seek(std::uint64_t offset) {
  if (offset < kHeaderBytes || offset >= recordsEnd_ || !input_.seek(offset))
    return makeStatus(kBadPlace, {numberText(offset), path_});
  return nullptr;
}

VEXStatus VEXRecorderFile::read(VEXFeature& feature, const VEXPersistentDictionary& names) {
  const std::uint64_t start = input_.offset();
  const std::uint64_t left = recordsEnd_ > start ? recordsEnd_ - start : 0;
  std::size_t used = 0;
  std::size_t wanted = 1;
  VEXStatus failure;
  // A record does not tell its length: what is in the buffer is tried first, then as much as it turns out to want.
  while (wanted > 0 && wanted <= left && failure == nullptr) {
    std::string_view bytes = input_.peekBytes(wanted);
    if (bytes.size() < wanted) break;
    if (bytes.size() > left) bytes = bytes.substr(0, static_cast<std::size_t>(left));
    failure = readStoredFeature(bytes, names, feature, used, wanted);
  }
  if (failure == nullptr && used > 0) [[likely]] {
    input_.skipBytes(used);
    return nullptr;
  }
  if (failure == nullptr && input_.failed())
    return makeStatus(kBadRecord, {path_, numberText(start), input_.errorText()});
  if (failure == nullptr) return makeStatus(kBadRecord, {path_, numberText(start), "it is cut short"});
  if (failure->messageNumber() == kUnknownName) {
    failure->addTrace(path_ + ", byte " + numberText(start));
    return failure;
  }
  return makeStatus(kBadRecord, {path_, numberText(start), failure->message()});
}
