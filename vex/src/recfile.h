// VEXRecorderFile: one file of a feature store: a header, records without gaps, a dictionary region. It knows bytes and
// places; VEXRecorder owns it and knows series. Written: create, write..., finish. Read: open, readHeader, read or seek
// and read, close. A file that was not finished has a placeholder where the dictionary's offset belongs.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "vex/inc/statinfo.h"
#include "vex/inc/vexfeat.h"
#include "vex/src/perandct.h"
#include "vex/src/vexfile.h"

class VEXRecorderFile {
 public:
  explicit VEXRecorderFile(std::string path) : path_(std::move(path)) {}
  virtual ~VEXRecorderFile();
  VEXRecorderFile(const VEXRecorderFile&) = delete;
  VEXRecorderFile& operator=(const VEXRecorderFile&) = delete;

  // ---- writing ----
  VEXStatus create();  // 393361; 393383: this process is reading it
  // 393362: it cannot be written. Severity 30, 393363: the record would end behind what an offset can tell.
  VEXStatus write(const VEXFeature& feature, VEXPersistentDictionary& names);
  VEXStatus finish(const VEXPersistentDictionary& names, std::uint32_t count);  // 393357, 393359, 393360, 393364
  void discard();                                                               // takes the file away

  // ---- reading ----
  VEXStatus open();  // 393365
  // 393358, 393366, 393367, 393369; 393376 not finished, 393377 no dictionary. With `recovers` whatever the header and
  // the dictionary fail to tell is taken from the file itself: `count` is then the most there can be.
  VEXStatus readHeader(VEXPersistentDictionary& names, std::uint32_t& count, bool recovers);
  VEXStatus seek(std::uint64_t offset);                                       // 393373
  VEXStatus read(VEXFeature& feature, const VEXPersistentDictionary& names);  // 393374, 879010
  bool isRecovered() const { return isRecovered_; }  // the last readHeader found less than a whole file
  std::uint64_t recordsEnd() const { return recordsEnd_; }

  std::uint64_t offset() const { return output_.isOpen() ? output_.offset() : input_.offset(); }
  const std::string& path() const { return path_; }

  static constexpr std::uint64_t kHeaderBytes = 12;
  static constexpr std::uint64_t kMostBytes = 0xFFFFFFFE;  // of an offset that is no placeholder

 protected:
  virtual std::uint32_t placeholder() const = 0;
  virtual unsigned protection() const = 0;

 private:
  VEXStatus writeFailure(std::uint32_t number) const;
  VEXStatus keepNames(const VEXPersistentDictionary& names);
  void recover(std::uint32_t offset, VEXPersistentDictionary& names);
  std::string namesPath() const { return path_ + ".names"; }

  std::string path_;
  VEXOutputFile output_;
  VEXInputFile input_;
  std::uint64_t recordsEnd_ = 0;
  bool isRecovered_ = false;
  std::string beingRead_;  // the file's one path while it is open for reading
  std::string record_;     // one too large for the buffer

  // While a file is written its names stand in a file beside it, so that a run that is killed does not lose them.
  std::unique_ptr<VEXOutputFile> namesFile_;
  std::size_t numNamesKept_ = 0;
  bool keepsNames_ = false;
};

class VEXPlainRecorderFile final : public VEXRecorderFile {
 public:
  using VEXRecorderFile::VEXRecorderFile;

 private:
  std::uint32_t placeholder() const override { return 0xFFFFFFFF; }
  unsigned protection() const override { return 0666; }
};

// The same fields of the same widths: each form reads the files of the other.
class VEXPortableRecorderFile final : public VEXRecorderFile {
 public:
  using VEXRecorderFile::VEXRecorderFile;

 private:
  std::uint32_t placeholder() const override { return 0; }
  unsigned protection() const override { return 0644; }
};
