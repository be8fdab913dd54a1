// VEXMultiReader: the reader of type MULTI_READER. It holds a reader for each of several datasets, of whatever formats,
// and reads them one behind the other; only the one that is read is open. The datasets are listed (_TYPE{0}, _TYPE{1}
// and on) or found by a wildcard (_TYPE{*}). See docs/formats/multi-reader.md.
//
// Failures: 224002 no dataset, 224004 a schema is asked for, 224006 readers within readers without an end; those of the
// readers within pass through.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "vex/inc/vexname.h"
#include "vex/src/readrimp.h"

class VEXMultiReader final : public VEXReaderImp {
 public:
  VEXMultiReader(const std::string& type, const std::string& keyword);
  ~VEXMultiReader() override;

  VEXStatus setup() override;
  VEXStatus getGlobalMetaData(VEXFeaturePtr& out) override;  // none: the readers within do not share one
  VEXStatus readFeature(VEXFeaturePtr& out) override;
  float progress() override;
  VEXStatus open(const VEXStringVector& parameters) override;
  VEXStatus close() override;
  VEXStatus readSchemaFeatures(const VEXStringVector& parameters, VEXFeatureVector& out) override;
  void abort() override;

 private:
  bool value(const std::string& name, std::string& text) const;  // behind the keyword, else behind the type
  VEXStatus expandWildcard(const std::string& type);
  VEXStatus addReader(std::size_t index, const std::string& givenType, const std::string& coordSys);
  VEXStatus openNext();
  void setAttributes(VEXFeature& feature) const;

  std::vector<std::unique_ptr<VEXReaderImp>> theReaders_;  // in reading order
  VEXReaderImp* curReader_ = nullptr;                      // the open one
  std::size_t curIndex_ = 0;                               // of the next one to open
  bool isOpen_ = false;
  std::string id_;  // of the open one
  const VEXName idName_ = VEXName::intern("multi_reader_id");
  const VEXName pathName_ = VEXName::intern("multi_reader_pathname");
  const VEXName baseName_ = VEXName::intern("multi_reader_basename");
  const VEXName fileName_ = VEXName::intern("multi_reader_filename");
  const VEXName extensionName_ = VEXName::intern("multi_reader_extension");
  // Of the files that the wildcard found, in reading order.
  VEXStringVector pathNames_;
  VEXStringVector baseNames_;
  VEXStringVector fileNames_;
  VEXStringVector extensions_;
};
