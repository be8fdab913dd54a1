// VEXRecorder: features in a feature store, one file or a numbered series of files. It writes or reads, never both.
// Writing: write per feature, close. Reading: read until it gives none, or readAt; close. Who gives up calls abort; a
// recorder that was writing and is destroyed before its close takes its files away.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <unordered_set>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/recfile.h"

// Where a record begins.
struct VEXRecordAddress {
  std::uint32_t fileNumber = 0;
  std::uint32_t offset = 0;
  bool operator==(const VEXRecordAddress&) const = default;
};

class VEXRecorder {
 public:
  enum Mode { READ_RECORDING = 1, WRITE_RECORDING = 2 };

  // `announces`: a file that is opened for reading is told as 393368, else as 393375.
  VEXRecorder(std::string path, Mode mode, bool announces, bool isPortable);
  ~VEXRecorder();
  VEXRecorder(const VEXRecorder&) = delete;
  VEXRecorder& operator=(const VEXRecorder&) = delete;

  // ---- writing ----
  VEXStatus write(const VEXFeature& feature, VEXRecordAddress& address);  // 393370
  // A file that passes this many bytes is the last but one.
  void setMaxFileSize(std::uint32_t bytes) { maxFileSize_ = bytes; }
  // Names of the series that belong to others: they are neither written (393381) nor taken for leftovers of this one.
  void setTaken(const std::unordered_set<std::string>* paths) { taken_ = paths; }
  // Finishes the file that is open. With `deleteFiles` all files of the series go; without, members that an earlier and
  // longer series of this name has left go (393382).
  VEXStatus close(bool deleteFiles = false);
  void abort();

  // ---- reading ----
  VEXStatus read(VEXFeaturePtr& feature);  // 393371; null at the end of the last file
  VEXStatus readAt(const VEXRecordAddress& address, VEXFeaturePtr& feature);  // 393372
  // Reads what can be read of files that are not whole, up to their first broken record, and tells how many (393378).
  // Members of a series that are missing, or are no feature files, are passed over with a warning.
  void setRecovers(bool recovers) { recovers_ = recovers; }
  // A gap in the numbers of a series is its end, with a warning, and not a failure (393380).
  void setAllowsGap(bool allows) { allowsGap_ = allows; }
  // The end of the record read last, and that of the records in the file that is open.
  std::uint64_t offset() const { return file_->offset(); }
  std::uint64_t recordsEnd() const { return file_->recordsEnd(); }
  // Counts the records of every file, by their headers. `ends` is where the records of each file end.
  VEXStatus countRecords(std::uint64_t& count, std::vector<std::uint32_t>& ends);

  const std::string& path() const { return basePath_; }
  std::uint32_t numFiles() const { return filesSoFar_; }

  // "roads.qds" and 2 give "roads_2.qds"; 0 gives the path itself.
  static std::string memberPath(const std::string& basePath, std::uint32_t number);
  // True when the name is that of a member with a number above 0 of a series whose first member is `firstName`.
  static bool isLaterMember(const std::string& name, std::string& firstName, std::uint32_t& number);
  static constexpr std::uint32_t kMaxFileSize = 0x3FFFFFFF;

 private:
  std::unique_ptr<VEXRecorderFile> makeFile(const std::string& path) const;
  VEXStatus openNext();
  VEXStatus finishFile();
  void removeLeftovers();
  VEXStatus openForReading(std::uint32_t number);
  VEXStatus readNext(VEXFeature& feature);
  VEXStatus endFile(bool& isAtEnd);
  VEXStatus findNextMember(std::uint32_t& number) const;
  void reportRecovered(std::string_view reason) const;

  std::uint32_t recordCount_ = 0;   // written to or read from the file that is open
  std::uint32_t recordsThere_ = 0;  // in the file that is read, by its header
  std::unique_ptr<VEXPersistentDictionary> dictionary_;
  std::unique_ptr<VEXRecorderFile> file_;
  VEXStringVector fileNames_;
  std::uint32_t filesSoFar_ = 0;
  std::uint32_t maxFileSize_ = kMaxFileSize;
  std::string basePath_;
  std::uint32_t fileNumber_ = 0;
  Mode mode_;
  std::int64_t randomFile_ = -1;  // open for reading at addresses
  bool announces_;
  bool isPortable_;
  bool recovers_ = false;
  bool allowsGap_ = false;
  bool isAtEnd_ = false;
  bool isClosed_ = false;
  const std::unordered_set<std::string>* taken_ = nullptr;
};
