#include "vex/shape/shpfile.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>

#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::size_t kEntriesAtOnce = std::size_t{64} << 10;      // bytes of index read together
constexpr std::size_t kLargestInPlace = std::size_t{1} << 22;      // larger contents are put together apart
constexpr std::size_t kLargestSpace = (std::size_t{1} << 20) - 1;  // what an output buffer gives at once
constexpr std::size_t kPiece = std::size_t{1} << 20;

std::string numberText(std::uint64_t value) {
  return integerText(static_cast<std::int64_t>(value));
}

}  // namespace

// ---- reading ----

VEXStatus ShapeFileReader::open(const std::string& shpPath, const std::string& shxPath) {
  if (!shp_.open(shpPath)) return makeStatus(203002, {shpPath, shp_.errorText()});
  VEX_TRY(readHeader(shp_, header_));
  // A wrong length in the header is not believed; what lies behind a right one is not looked at.
  end_ = header_.fileBytes >= shp::kHeaderBytes ? std::min(header_.fileBytes, shp_.size()) : shp_.size();
  hasIndex_ = !shxPath.empty();
  numEntries_ = recordNumber_ = bytesGiven_ = numOtherLengths_ = 0;
  recordOffset_ = 0;
  lastEnd_ = shp::kHeaderBytes;
  entries_ = {};
  if (!hasIndex_) return nullptr;
  if (!shx_.open(shxPath)) return makeStatus(203003, {shxPath, shpPath, shx_.errorText()});
  shp::Header index;
  VEX_TRY(readHeader(shx_, index));
  if (index.type != header_.type)
    logMessage(VEXSeverity::Warn, 203011, {shxPath, integerText(index.type), shpPath, integerText(header_.type)});
  const std::uint64_t bytes =
      index.fileBytes >= shp::kHeaderBytes ? std::min(index.fileBytes, shx_.size()) : shx_.size();
  numEntries_ = (bytes - shp::kHeaderBytes + shp::kEntryBytes - 1) / shp::kEntryBytes;  // a piece of one counts
  return nullptr;
}

VEXStatus ShapeFileReader::readHeader(VEXInputFile& file, shp::Header& header) const {
  std::string_view bytes;
  const bool isThere = file.readBytes(shp::kHeaderBytes, bytes);
  if (!isThere) return makeStatus(203005, {file.path(), numberText(file.size())});
  if (shp::decodeHeader(bytes, header) != shp::HeaderFault::None) return makeStatus(203025, {file.path()});
  return nullptr;
}

VEXStatus ShapeFileReader::close() {
  if (!shp_.isOpen()) return nullptr;
  if (numOtherLengths_ > 0)
    logMessage(VEXSeverity::Warn, 203024, {shx_.path(), shp_.path(), numberText(numOtherLengths_)});
  if (hasIndex_ && recordNumber_ >= numEntries_ && end_ > shp::kHeaderBytes + bytesGiven_)
    logMessage(VEXSeverity::Inform, 203020, {shp_.path(), numberText(end_ - shp::kHeaderBytes - bytesGiven_)});
  const bool failed = shp_.failed() || shx_.failed();
  const std::string reason = shp_.failed() ? shp_.errorText() : shx_.errorText();
  shp_.close();
  shx_.close();
  large_ = std::string();
  if (failed) return makeStatus(203001, {shp_.path(), reason});
  return nullptr;
}

VEXStatus ShapeFileReader::refuseIndex() const {
  const std::string number = numberText(recordNumber_);
  return makeRejection(203012, {"Read operation failed while reading shape " + number + " index record 1.", number,
                                shx_.path(), numberText(shp::kHeaderBytes + shp::kEntryBytes * (recordNumber_ - 1))});
}

VEXStatus ShapeFileReader::refuseContent(std::uint64_t offset) const {
  const std::string number = numberText(recordNumber_);
  return makeRejection(203012, {"Read operation failed while reading shape " + number + " record content.", number,
                                shp_.path(), numberText(offset)});
}

VEXStatus ShapeFileReader::next(std::string_view& content, bool& end) {
  end = false;
  if (nextUsual(content)) [[likely]]
    return nullptr;
  content = {};
  Entry entry;
  VEX_TRY(hasIndex_ ? nextEntry(entry, end) : nextInSequence(entry, end));
  if (end) return nullptr;
  return extendStatus(readRecord(entry, content));
}

// The record that nearly every one is: its index entry is in memory, it stands right behind the one before, the two
// lengths agree, and all of it is in memory, too. False, and nothing has changed: anything else.
bool ShapeFileReader::nextUsual(std::string_view& content) {
  const std::string_view atHand = shp_.bytesAtHand();
  if (entries_.size() < shp::kEntryBytes || recordNumber_ >= numEntries_ || atHand.size() < shp::kRecordHeaderBytes)
    return false;
  const std::uint32_t words = shp::getBig(entries_.data() + shp::kEntryWords.offset);
  if (words != shp::getBig(atHand.data() + shp::kRecordWords.offset)) return false;
  const std::uint64_t offset = 2 * static_cast<std::uint64_t>(shp::getBig(entries_.data() + shp::kEntryOffset.offset));
  const std::uint64_t total = shp::kRecordHeaderBytes + 2 * static_cast<std::uint64_t>(words);
  if (offset != lastEnd_ || offset != shp_.offset() || total > atHand.size() || total > kLargestInPlace) return false;
  if (total > shp_.size() - shp::kHeaderBytes - bytesGiven_ || offset + total > shp_.size()) return false;
  shp_.skipBytes(static_cast<std::size_t>(total));
  entries_.remove_prefix(shp::kEntryBytes);
  ++recordNumber_;
  bytesGiven_ += total;
  recordOffset_ = offset;
  lastEnd_ = offset + total;
  content = std::string_view(atHand.data() + shp::kRecordHeaderBytes,
                             static_cast<std::size_t>(total) - shp::kRecordHeaderBytes);
  return true;
}

VEXStatus ShapeFileReader::nextEntry(Entry& entry, bool& end) {
  end = recordNumber_ >= numEntries_;
  if (end) return nullptr;
  ++recordNumber_;
  if (entries_.empty()) {
    const std::uint64_t left = shx_.size() - shx_.offset();
    const std::size_t whole = std::min<std::uint64_t>(left, kEntriesAtOnce) / shp::kEntryBytes * shp::kEntryBytes;
    if (!shx_.readBytes(whole, entries_) && shx_.failed())
      return makeStatus(203023, {shx_.path(), numberText(shx_.offset()), shx_.errorText()});
  }
  if (entries_.size() < shp::kEntryBytes) return refuseIndex();
  entry.offset = 2 * static_cast<std::uint64_t>(shp::getBig(entries_.data() + shp::kEntryOffset.offset));
  entry.bytes = 2 * static_cast<std::uint64_t>(shp::getBig(entries_.data() + shp::kEntryWords.offset));
  entries_.remove_prefix(shp::kEntryBytes);
  return nullptr;
}

// Without an index a record that cannot be right is the last: nobody knows where the next one begins.
VEXStatus ShapeFileReader::nextInSequence(Entry& entry, bool& end) {
  entry.offset = lastEnd_;
  end = lastEnd_ + shp::kRecordHeaderBytes > end_;
  if (end) return nullptr;
  ++recordNumber_;
  recordOffset_ = entry.offset;
  std::string_view head;
  if (!shp_.seek(entry.offset) || !shp_.readBytes(shp::kRecordHeaderBytes, head)) [[unlikely]]
    return makeStatus(203023, {shp_.path(), numberText(entry.offset), shp_.errorText()});
  entry.bytes = 2 * static_cast<std::uint64_t>(shp::getBig(head.data() + shp::kRecordWords.offset));
  if (entry.bytes <= end_ - entry.offset - shp::kRecordHeaderBytes) return nullptr;
  lastEnd_ = end_;
  return refuseContent(entry.offset);
}

// A record that begins within the one before it, or one more when the records before it have filled the file.
VEXStatus ShapeFileReader::checkOverlap(const Entry& entry) {
  const bool startsInside = entry.offset < lastEnd_ && entry.offset >= recordOffset_ && recordOffset_ > 0;
  const std::uint64_t bytes = shp::kRecordHeaderBytes + entry.bytes;
  if (!startsInside && bytes <= shp_.size() - shp::kHeaderBytes - bytesGiven_) [[likely]] {
    bytesGiven_ += bytes;
    return nullptr;
  }
  return makeRejection(203016, {numberText(recordNumber_), shp_.path(), numberText(entry.offset)});
}

VEXStatus ShapeFileReader::readRecord(Entry entry, std::string_view& content) {
  const std::uint64_t size = shp_.size();
  const auto fits = [&](std::uint64_t bytes) { return bytes <= size - entry.offset - shp::kRecordHeaderBytes; };
  if (entry.offset < shp::kHeaderBytes || entry.offset > size || size - entry.offset < shp::kRecordHeaderBytes)
    return refuseContent(entry.offset);
  std::string_view head;
  const bool isInPlace = entry.bytes <= kLargestInPlace && fits(entry.bytes);
  const std::size_t wanted = shp::kRecordHeaderBytes + (isInPlace ? static_cast<std::size_t>(entry.bytes) : 0);
  if ((shp_.offset() != entry.offset && !shp_.seek(entry.offset)) || !shp_.readBytes(wanted, head)) [[unlikely]]
    return makeStatus(203023, {shp_.path(), numberText(entry.offset), shp_.errorText()});
  // The record's own length is the better one; the index often has another.
  const std::uint64_t own = 2 * static_cast<std::uint64_t>(shp::getBig(head.data() + shp::kRecordWords.offset));
  const bool isOther = own != entry.bytes;
  if (isOther) {
    ++numOtherLengths_;
    if (fits(own)) entry.bytes = own;
  }
  if (!fits(entry.bytes)) return refuseContent(entry.offset);
  VEX_TRY(checkOverlap(entry));
  recordOffset_ = entry.offset;
  lastEnd_ = entry.offset + shp::kRecordHeaderBytes + entry.bytes;
  if (isInPlace && !isOther) [[likely]] {
    content = head.substr(shp::kRecordHeaderBytes);
    return nullptr;
  }
  if (!shp_.seek(entry.offset + shp::kRecordHeaderBytes) || !readContent(entry.bytes, content))
    return makeStatus(203023, {shp_.path(), numberText(entry.offset), shp_.errorText()});
  return nullptr;
}

bool ShapeFileReader::readContent(std::uint64_t bytes, std::string_view& content) {
  if (bytes <= kLargestInPlace) return shp_.readBytes(static_cast<std::size_t>(bytes), content);
  large_.clear();
  large_.reserve(static_cast<std::size_t>(bytes));
  for (std::uint64_t left = bytes; left > 0;) {
    std::string_view piece;
    if (!shp_.readBytes(static_cast<std::size_t>(std::min<std::uint64_t>(left, kPiece)), piece)) return false;
    large_ += piece;
    left -= piece.size();
  }
  content = large_;
  return true;
}

// ---- writing ----

VEXStatus ShapeFileWriter::open(const std::string& basePath, std::int32_t type) {
  header_ = shp::Header();
  header_.type = type;
  numRecords_ = 0;
  std::array<char, shp::kHeaderBytes> bytes;
  shp::encodeHeader(header_, bytes);
  const std::string_view view(bytes.data(), bytes.size());
  isShpUnfinished_ = shp_.open(basePath + ".shp");
  if (!isShpUnfinished_) return makeStatus(204002, {shp_.path(), shp_.errorText()});
  isShxUnfinished_ = shx_.open(basePath + ".shx");
  if (!isShxUnfinished_) return makeStatus(204003, {shx_.path(), shx_.errorText()});
  if (!shp_.append(view) || !shp_.flush()) return makeStatus(204004, {shp_.path(), shp_.errorText()});
  if (!shx_.append(view) || !shx_.flush()) return makeStatus(204005, {shx_.path(), shx_.errorText()});
  return nullptr;
}

// The record that nearly every one is: both files have room for it in memory. Null: look closer.
char* ShapeFileWriter::startUsual(std::uint64_t contentBytes) {
  const std::uint64_t offset = shp_.offset();
  const std::uint64_t total = shp::kRecordHeaderBytes + contentBytes;
  if (contentBytes > kLargestSpace || total > shp_.spaceAtHand() || shx_.spaceAtHand() < shp::kEntryBytes ||
      offset + total > longestFile_)
    return nullptr;
  isLarge_ = false;
  char* const record = shp_.appendSpace(static_cast<std::size_t>(total));
  return putHeads(record, shx_.appendSpace(shp::kEntryBytes), offset, contentBytes);
}

VEXStatus ShapeFileWriter::startAny(std::uint64_t contentBytes, char*& content) {
  const std::uint64_t offset = shp_.offset();
  if (contentBytes > longestFile_ || offset + shp::kRecordHeaderBytes + contentBytes > longestFile_)
    return makeStatus(204021, {shp_.path(), numberText(numRecords_), numberText(longestFile_)});
  const std::size_t total = shp::kRecordHeaderBytes + static_cast<std::size_t>(contentBytes);
  isLarge_ = total > kLargestSpace;
  if (isLarge_) large_.resize(total);
  char* const record = isLarge_ ? large_.data() : shp_.appendSpace(total);
  if (record == nullptr) return makeStatus(204015, {shp_.path(), shp_.errorText()});
  char* const entry = shx_.appendSpace(shp::kEntryBytes);
  if (entry == nullptr) return makeStatus(204017, {shx_.path(), shx_.errorText()});
  content = putHeads(record, entry, offset, contentBytes);
  return nullptr;
}

// Gives the place behind the record's head.
char* ShapeFileWriter::putHeads(char* record, char* entry, std::uint64_t offset, std::uint64_t contentBytes) {
  const auto words = static_cast<std::uint32_t>(contentBytes / 2);
  shp::putBig(entry + shp::kEntryOffset.offset, static_cast<std::uint32_t>(offset / 2));
  shp::putBig(entry + shp::kEntryWords.offset, words);
  ++numRecords_;
  shp::putBig(record + shp::kRecordNumber.offset, static_cast<std::uint32_t>(numRecords_));
  shp::putBig(record + shp::kRecordWords.offset, words);
  return record + shp::kRecordHeaderBytes;
}

VEXStatus ShapeFileWriter::writeLarge() {
  const bool isWritten = shp_.append(large_);
  large_ = std::string();
  if (!isWritten) return makeStatus(204016, {shp_.path(), shp_.errorText()});
  return nullptr;
}

VEXStatus ShapeFileWriter::close(const std::array<double, 8>& box) {
  if (!shp_.isOpen()) return nullptr;
  header_.box = box;
  std::array<char, shp::kHeaderBytes> bytes;
  const auto finish = [&](VEXOutputFile& file, std::uint32_t number) -> VEXStatus {
    header_.fileBytes = file.offset();
    shp::encodeHeader(header_, bytes);
    if (!file.patch(0, std::string_view(bytes.data(), bytes.size())))
      return makeStatus(number, {file.path(), file.errorText()});
    return nullptr;
  };
  VEXStatus failure = finish(shp_, 204004);
  if (failure == nullptr) failure = finish(shx_, 204005);
  if (failure == nullptr && !(shp_.close() && shx_.close()))
    failure = makeStatus(204006, {shp_.path(), shp_.failed() ? shp_.errorText() : shx_.errorText()});
  if (failure == nullptr) isShpUnfinished_ = isShxUnfinished_ = false;
  abort();
  return failure;
}

void ShapeFileWriter::abort() {
  drop(shp_, isShpUnfinished_);
  drop(shx_, isShxUnfinished_);
}

void ShapeFileWriter::drop(VEXOutputFile& file, bool& isUnfinished) {
  if (!isUnfinished) return;
  isUnfinished = false;
  file.close();
  std::error_code ignored;
  if (std::filesystem::is_regular_file(file.path(), ignored)) platform::removeFile(file.path());
}
