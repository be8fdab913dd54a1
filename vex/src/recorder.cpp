#include "vex/src/recorder.h"

#include <algorithm>
#include <charconv>
#include <filesystem>

#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kOpenedAnnounced = 393368;
constexpr std::uint32_t kNotForWriting = 393370;
constexpr std::uint32_t kNotForReading = 393371;
constexpr std::uint32_t kNoSuchFile = 393372;
constexpr std::uint32_t kOpened = 393375;
constexpr std::uint32_t kRecovered = 393378;
constexpr std::uint32_t kWrongCount = 393379;
constexpr std::uint32_t kMemberMissing = 393380;
constexpr std::uint32_t kMemberTaken = 393381;
constexpr std::uint32_t kLeftoverRemoved = 393382;

constexpr std::uint32_t kUnknownName = 879010;
constexpr std::size_t kMostUnknown = 10000;  // names made up for a file whose own are lost

std::string numberText(std::uint64_t value) {
  return integerText(static_cast<std::int64_t>(value));
}

// Where "_2" goes: before the extension of the name, or at its end.
std::size_t placeOfNumber(const std::string& path) {
  std::size_t start = path.size();
  while (start > 0 && !platform::isSeparator(path[start - 1])) --start;
  const std::size_t point = path.rfind('.');
  return point == std::string::npos || point < start ? path.size() : point;
}

// A store, finished or not, begins with four zero bytes.
bool isStore(const std::string& path) {
  std::error_code ignored;
  VEXInputFile file;
  std::string_view bytes;
  return std::filesystem::is_regular_file(platform::nativePath(path), ignored) && file.open(path) &&
         file.readBytes(VEXRecorderFile::kHeaderBytes, bytes) && bytes.starts_with(std::string_view("\0\0\0\0", 4));
}

}  // namespace

VEXRecorder::VEXRecorder(std::string path, Mode mode, bool announces, bool isPortable)
    : basePath_(std::move(path)), mode_(mode), announces_(announces), isPortable_(isPortable) {}

VEXRecorder::~VEXRecorder() {
  if (mode_ == WRITE_RECORDING && !isClosed_) abort();
}

std::string VEXRecorder::memberPath(const std::string& basePath, std::uint32_t number) {
  if (number == 0) return basePath;
  return std::string(basePath).insert(placeOfNumber(basePath), "_" + integerText(number));
}

bool VEXRecorder::isLaterMember(const std::string& name, std::string& firstName, std::uint32_t& number) {
  const std::size_t end = placeOfNumber(name);
  const std::size_t line = name.rfind('_', end);
  if (end == 0 || line == std::string::npos || line + 1 >= end || name[line + 1] == '0') return false;
  const auto [stop, error] = std::from_chars(name.data() + line + 1, name.data() + end, number);
  if (error != std::errc() || stop != name.data() + end || number == 0) return false;
  firstName = name.substr(0, line) + name.substr(end);
  return true;
}

std::unique_ptr<VEXRecorderFile> VEXRecorder::makeFile(const std::string& path) const {
  if (isPortable_) return std::make_unique<VEXPortableRecorderFile>(path);
  return std::make_unique<VEXPlainRecorderFile>(path);
}

// ---- writing ----

VEXStatus VEXRecorder::write(const VEXFeature& feature, VEXRecordAddress& address) {
  if (mode_ != WRITE_RECORDING || isClosed_) return makeStatus(kNotForWriting, {basePath_});
  if (file_ == nullptr) VEX_TRY(openNext());
  address = {fileNumber_, static_cast<std::uint32_t>(file_->offset())};
  VEX_TRY(file_->write(feature, *dictionary_));
  ++recordCount_;
  if (file_->offset() > maxFileSize_) VEX_TRY(finishFile());
  return nullptr;
}

VEXStatus VEXRecorder::openNext() {
  std::string path = memberPath(basePath_, filesSoFar_);
  if (filesSoFar_ > 0 && taken_ != nullptr && taken_->contains(path))
    return makeStatus(kMemberTaken, {basePath_, path});
  std::unique_ptr<VEXRecorderFile> file = makeFile(path);
  VEX_TRY(file->create());
  file_ = std::move(file);
  dictionary_ = std::make_unique<VEXPersistentDictionary>();
  recordCount_ = 0;
  fileNumber_ = filesSoFar_++;
  fileNames_.push_back(std::move(path));
  return nullptr;
}

VEXStatus VEXRecorder::finishFile() {
  VEX_TRY(file_->finish(*dictionary_, recordCount_));
  file_.reset();
  dictionary_.reset();
  recordCount_ = 0;
  return nullptr;
}

VEXStatus VEXRecorder::close(bool deleteFiles) {
  if (mode_ == READ_RECORDING) {
    file_.reset();
    randomFile_ = -1;
    return nullptr;
  }
  if (isClosed_) return nullptr;
  if (deleteFiles) {
    abort();
    return nullptr;
  }
  if (file_ != nullptr) VEX_TRY(finishFile());
  isClosed_ = true;
  if (filesSoFar_ > 0) removeLeftovers();
  return nullptr;
}

// A series that was longer before would otherwise go on with records of the earlier run.
void VEXRecorder::removeLeftovers() {
  for (std::uint32_t number = filesSoFar_;; ++number) {
    const std::string path = memberPath(basePath_, number);
    if ((taken_ != nullptr && taken_->contains(path)) || !isStore(path)) return;
    if (!platform::removeFile(platform::nativePath(path))) return;
    logMessage(VEXSeverity::Inform, kLeftoverRemoved, {path, basePath_});
  }
}

void VEXRecorder::abort() {
  if (mode_ == READ_RECORDING) {
    file_.reset();
    return;
  }
  if (file_ != nullptr) {
    file_->discard();
    fileNames_.pop_back();
    file_.reset();
  }
  for (const std::string& name : fileNames_) makeFile(name)->discard();
  fileNames_.clear();
  isClosed_ = true;
}

// ---- reading ----

VEXStatus VEXRecorder::openForReading(std::uint32_t number) {
  const std::string path = memberPath(basePath_, number);
  file_ = makeFile(path);
  dictionary_ = std::make_unique<VEXPersistentDictionary>();
  recordCount_ = recordsThere_ = 0;
  fileNumber_ = number;
  VEXStatus failure = file_->open();
  if (failure == nullptr) failure = file_->readHeader(*dictionary_, recordsThere_, recovers_);
  if (failure != nullptr) {
    file_.reset();
    return extendStatus(std::move(failure));
  }
  logMessage(VEXSeverity::Inform, announces_ ? kOpenedAnnounced : kOpened, {path});
  return nullptr;
}

VEXStatus VEXRecorder::read(VEXFeaturePtr& feature) {
  feature.reset();
  if (mode_ != READ_RECORDING) return makeStatus(kNotForReading, {basePath_});
  while (!isAtEnd_) {
    if (file_ == nullptr || randomFile_ >= 0) VEX_TRY(openForReading(fileNumber_));
    randomFile_ = -1;
    const bool isThere = file_->isRecovered() ? file_->offset() < file_->recordsEnd() : recordCount_ < recordsThere_;
    if (isThere) [[likely]] {
      feature = VEXObjectRecycler::instance().getFeature(2, 0);
      VEXStatus failure = readNext(*feature);
      if (failure == nullptr) return nullptr;
      feature.reset();
      if (!recovers_) return extendStatus(std::move(failure));
      reportRecovered(failure->message());
    } else if (file_->isRecovered()) {
      reportRecovered("the records end there");
    } else if (file_->offset() != file_->recordsEnd()) {
      if (!recovers_)
        return makeStatus(kWrongCount, {file_->path(), numberText(recordsThere_), numberText(file_->offset()),
                                        numberText(file_->recordsEnd())});
      reportRecovered("the header counts no more");
    }
    VEX_TRY(endFile(isAtEnd_));
  }
  return nullptr;
}

// Names that a recovered file does not tell get names by their index; a record takes the next index for a new name.
VEXStatus VEXRecorder::readNext(VEXFeature& feature) {
  const std::uint64_t start = file_->offset();
  VEXStatus failure = file_->read(feature, *dictionary_);
  while (failure != nullptr && file_->isRecovered() && failure->messageNumber() == kUnknownName &&
         dictionary_->lastUnknown() == dictionary_->entries() && dictionary_->entries() < kMostUnknown) {
    dictionary_->addUnknown();
    VEX_TRY(file_->seek(start));
    failure = file_->read(feature, *dictionary_);
  }
  if (failure == nullptr) ++recordCount_;
  return extendStatus(std::move(failure));
}

void VEXRecorder::reportRecovered(std::string_view reason) const {
  logMessage(VEXSeverity::Warn, kRecovered,
             {file_->path(), numberText(recordCount_), numberText(file_->offset()), reason});
}

// The next member of the series, if there is one, is open afterwards. Who recovers gets over members that tell nothing.
VEXStatus VEXRecorder::endFile(bool& isAtEnd) {
  file_.reset();
  for (std::uint32_t number = fileNumber_;;) {
    VEX_TRY(findNextMember(number));
    isAtEnd = number == 0;
    if (isAtEnd) return nullptr;
    VEXStatus failure = openForReading(number);
    if (failure == nullptr) return nullptr;
    if (!recovers_) return extendStatus(std::move(failure));
    logMessage(VEXSeverity::Warn, kRecovered, {memberPath(basePath_, number), "0", "0", failure->message()});
  }
}

// From a member's number to that of the next one, or 0. Where recovery meets a gap it goes on behind it. More members
// missing than there are, as between roads.qds and roads_2020.qds, are no gap but most likely no series: a warning.
VEXStatus VEXRecorder::findNextMember(std::uint32_t& number) const {
  const std::uint32_t wanted = number + 1;
  const std::string missing = memberPath(basePath_, wanted);
  if (platform::fileExists(platform::nativePath(missing))) {
    number = wanted;
    return nullptr;
  }
  number = 0;
  const std::filesystem::path path(platform::nativePath(basePath_));
  const std::string directory = path.has_parent_path() ? path.parent_path().string() : ".";
  std::vector<std::string> names;
  if (!platform::listDirectory(directory, names)) return nullptr;
  std::string firstName;
  std::uint32_t found = 0;
  std::uint32_t next = 0;
  std::uint32_t numThere = 1;
  for (const std::string& name : names) {
    if (!isLaterMember(name, firstName, found) || firstName != path.filename()) continue;
    ++numThere;
    if (found > wanted && (next == 0 || found < next)) next = found;
  }
  if (next == 0) return nullptr;
  const bool endsHere = allowsGap_ || next - wanted > numThere;
  if (!endsHere && !recovers_) return makeStatus(kMemberMissing, {missing, memberPath(basePath_, next)});
  logMessage(VEXSeverity::Warn, kMemberMissing, {missing, memberPath(basePath_, next)});
  if (!endsHere) number = next;
  return nullptr;
}

VEXStatus VEXRecorder::readAt(const VEXRecordAddress& address, VEXFeaturePtr& feature) {
  feature.reset();
  if (mode_ != READ_RECORDING) return makeStatus(kNotForReading, {basePath_});
  if (randomFile_ != address.fileNumber || file_ == nullptr) {
    randomFile_ = -1;
    if (!platform::fileExists(platform::nativePath(memberPath(basePath_, address.fileNumber))))
      return makeStatus(kNoSuchFile, {integerText(address.fileNumber), basePath_});
    VEX_TRY(openForReading(address.fileNumber));
    randomFile_ = address.fileNumber;
  }
  VEX_TRY(file_->seek(address.offset));
  VEXFeaturePtr found = VEXObjectRecycler::instance().getFeature(2, 0);
  VEX_TRY(file_->read(*found, *dictionary_));
  feature = std::move(found);
  return nullptr;
}

VEXStatus VEXRecorder::countRecords(std::uint64_t& count, std::vector<std::uint32_t>& ends) {
  count = 0;
  ends.clear();
  for (std::uint32_t number = 0;; ++number) {
    if (number > 0 && !platform::fileExists(platform::nativePath(memberPath(basePath_, number)))) break;
    std::unique_ptr<VEXRecorderFile> file = makeFile(memberPath(basePath_, number));
    VEXPersistentDictionary names;
    std::uint32_t there = 0;
    VEX_TRY(file->open());
    VEX_TRY(file->readHeader(names, there, false));
    count += there;
    ends.push_back(static_cast<std::uint32_t>(file->recordsEnd()));
  }
  return nullptr;
}
