// The .shp and .shx of one dataset as files: records in, records out. ShapeFileReader gives the content of one record
// after the other, in the order of the index, or without one in the order of the .shp. It trusts no number: an entry or
// a record that cannot be right is refused alone, and the bytes given out never come to more than the file has.
//
// Failures of reading: 203001 close, 203002 and 203003 open, 203005 a header, 203023 the system. One record refused:
// 203012 it lies outside the file, 203016 it overlaps another. Failures of writing: 204002 and 204003 create, 204004
// and 204005 header, 204006 close, 204015 to 204017 write, 204021 the file is full.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "vex/inc/statinfo.h"
#include "vex/shape/shpcodec.h"
#include "vex/src/vexfile.h"

class ShapeFileReader {
 public:
  // Without an index path the records are read one behind the other. Both headers are read.
  VEXStatus open(const std::string& shpPath, const std::string& shxPath);
  VEXStatus close();
  bool isOpen() const { return shp_.isOpen(); }

  // The next record's content, valid until the next call; empty at the end, with `end` true. A status of
  // kSeverityRejected is about one record: the next call goes on behind it.
  VEXStatus next(std::string_view& content, bool& end);

  const shp::Header& header() const { return header_; }
  const std::string& path() const { return shp_.path(); }
  std::uint64_t recordNumber() const { return recordNumber_; }  // of the last next(), from 1
  std::uint64_t recordOffset() const { return recordOffset_; }  // of its header in the .shp
  std::uint64_t numEntries() const { return numEntries_; }      // of the index; 0 without one

 private:
  struct Entry {
    std::uint64_t offset = 0;
    std::uint64_t bytes = 0;  // of the content
  };
  VEXStatus readHeader(VEXInputFile& file, shp::Header& header) const;
  bool nextUsual(std::string_view& content);
  VEXStatus nextEntry(Entry& entry, bool& end);
  VEXStatus nextInSequence(Entry& entry, bool& end);
  VEXStatus checkOverlap(const Entry& entry);
  VEXStatus readRecord(Entry entry, std::string_view& content);
  bool readContent(std::uint64_t bytes, std::string_view& content);
  VEXStatus refuseContent(std::uint64_t offset) const;
  VEXStatus refuseIndex() const;

  VEXInputFile shp_;
  VEXInputFile shx_;
  shp::Header header_;
  bool hasIndex_ = false;
  std::uint64_t end_ = 0;  // of the records in the .shp
  std::uint64_t numEntries_ = 0;
  std::string_view entries_;  // those of the index that are in memory
  std::uint64_t recordNumber_ = 0;
  std::uint64_t recordOffset_ = 0;
  std::uint64_t lastEnd_ = 0;     // of the last record
  std::uint64_t bytesGiven_ = 0;  // records with their headers
  std::uint64_t numOtherLengths_ = 0;
  std::string large_;  // a content that is too large for the file's buffer
};

class ShapeFileWriter {
 public:
  // A file never grows beyond `longestFile` bytes.
  explicit ShapeFileWriter(std::uint64_t longestFile = shp::kLongestFile) : longestFile_(longestFile) {}

  VEXStatus open(const std::string& basePath, std::int32_t type);  // creates both with headers of an empty set
  // The place for a record's content, to be filled before the next call. 204021, with nothing written: no room.
  VEXStatus startRecord(std::uint64_t contentBytes, char*& content) {
    content = startUsual(contentBytes);
    if (content != nullptr) [[likely]]
      return nullptr;
    return startAny(contentBytes, content);
  }
  VEXStatus endRecord() {
    if (!isLarge_) [[likely]]
      return nullptr;
    return writeLarge();
  }
  VEXStatus close(const std::array<double, 8>& box);  // headers with lengths and box
  void abort();                                       // removes what is not closed
  bool isOpen() const { return shp_.isOpen(); }
  std::uint64_t numRecords() const { return numRecords_; }
  const std::string& path() const { return shp_.path(); }

 private:
  char* startUsual(std::uint64_t contentBytes);
  VEXStatus startAny(std::uint64_t contentBytes, char*& content);
  char* putHeads(char* record, char* entry, std::uint64_t offset, std::uint64_t contentBytes);
  VEXStatus writeLarge();
  void drop(VEXOutputFile& file, bool& isUnfinished);

  VEXOutputFile shp_;
  VEXOutputFile shx_;
  bool isShpUnfinished_ = false;
  bool isShxUnfinished_ = false;
  shp::Header header_;
  std::uint64_t longestFile_;
  std::uint64_t numRecords_ = 0;
  bool isLarge_ = false;
  std::string large_;  // a record that is too large for the file's buffer
};
