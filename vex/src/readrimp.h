// VEXReaderImp: base of every reader driver, a source of features. Calls come in the order setup, open, then
// getGlobalMetaData once and read until it gives none, or readSchema; then close, or abort after a failure.
// The keyword look-ups and _DEF lines that all drivers share are here.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/inc/vexfeat.h"

using VEXLineVector = std::vector<VEXStringVector>;

// What reader and writer drivers ask the configuration: a short name such as "_DATASET" is looked up as it
// stands, then behind the keyword, then behind the type. The first that has a value wins.
class VEXDriverKeywords {
 public:
  VEXDriverKeywords(std::string type, std::string keyword) : type_(std::move(type)), keyword_(std::move(keyword)) {}

  const std::string& type() const { return type_; }
  const std::string& keyword() const { return keyword_; }
  bool keywordExists(std::string_view name) const;
  bool getString(std::string_view name, std::string& value) const;
  void getString(std::string_view name, std::string& value, std::string_view defaultValue) const;
  bool getDouble(std::string_view name, double& value) const;
  bool getInteger(std::string_view name, std::int32_t& value) const;
  bool getStringList(std::string_view name, VEXStringVector& values) const;
  // "<keyword>_DEF" when the mapping file has such a row, else "<type>_DEF".
  std::string getDefKeyword(std::string_view suffix = "_DEF") const;
  // <keyword>_DATASET, else <type>_DATASET, normalised, without trailing separators. Fails with `missing`.
  VEXStatus getDataset(std::string& dataset, std::uint32_t missing) const;

 private:
  std::string type_;
  std::string keyword_;
};

class VEXReaderImp {
 public:
  VEXReaderImp(const std::string& type, const std::string& keyword);
  virtual ~VEXReaderImp();
  VEXReaderImp(const VEXReaderImp&) = delete;
  VEXReaderImp& operator=(const VEXReaderImp&) = delete;

  virtual VEXStatus setup();                                             // keywords, _IDs, _DEF lines
  virtual VEXStatus getGlobalMetaData(VEXFeaturePtr& out) = 0;           // stays null without one
  // The public read: readFeature, then compaction and the reader's coordinate system. Null at the end of data.
  VEXStatus read(VEXFeaturePtr& out);
  virtual VEXStatus readFeature(VEXFeaturePtr& out) = 0;                 // the driver's own
  virtual float progress() { return 50.0F; }
  virtual VEXStatus open(const VEXStringVector& parameters) = 0;
  virtual VEXStatus close() = 0;
  // The public schema read: one schema feature per feature type, each with the reader's coordinate system.
  VEXStatus readSchema(const VEXStringVector& parameters, VEXFeatureVector& out);
  virtual VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) = 0;
  virtual void abort() {}                                                // in place of close; works after a failed open
  virtual bool handlesConstraints() { return false; }

  const std::string& readerType() const { return keywords_.type(); }
  const std::string& givenType() const { return givenType_; }
  void setGivenType(std::string type) { givenType_ = std::move(type); }
  const std::string& keyword() const { return keywords_.keyword(); }
  const std::string& coordSys() const { return coordSys_; }
  VEXStatus takeStatus() { return std::move(status_); }                  // what the constructor left
  // The dataset, or a reader around this one, declares a coordinate system; the mapping file's own wins, with a
  // warning.
  void setCoordSys(const std::string& name);

 protected:
  const VEXDriverKeywords& keywords() const { return keywords_; }
  VEXStatus getDataset(std::string& dataset) const;                      // 883001
  void getIDs(VEXStringVector& ids) const;                               // empty: all are wanted
  // All _DEF rows of this driver in file order; element 1 of each is the feature type. 883002: a type twice.
  VEXStatus getDefLines(VEXLineVector& lines) const;
  // Drops the names whose file base name does not occur under the keyword ID, when there is such a row.
  void keepListedIDs(VEXStringVector& names) const;

  VEXStatus status_;

 private:
  VEXDriverKeywords keywords_;
  std::string givenType_;
  std::string coordSys_;
  bool coordSysFromMapping_;
};
