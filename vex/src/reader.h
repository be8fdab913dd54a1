// VEXReader: the front of a reader driver, which it owns.
#pragma once

#include <memory>

#include "vex/src/readrimp.h"

class VEXReader {
 public:
  explicit VEXReader(std::unique_ptr<VEXReaderImp> imp) : imp_(std::move(imp)) {}

  VEXStatus setup() { return extendStatus(imp_->setup()); }
  VEXStatus open(const VEXStringVector& parameters) { return extendStatus(imp_->open(parameters)); }
  VEXStatus getGlobalMetaData(VEXFeaturePtr& out) { return extendStatus(imp_->getGlobalMetaData(out)); }
  VEXStatus read(VEXFeaturePtr& out) { return extendStatus(imp_->read(out)); }
  VEXStatus readSchema(const VEXStringVector& parameters, VEXFeatureVector& out) {
    return extendStatus(imp_->readSchema(parameters, out));
  }
  VEXStatus close() { return extendStatus(imp_->close()); }
  void abort() { imp_->abort(); }

  const std::string& keyword() const { return imp_->keyword(); }
  const std::string& type() const { return imp_->readerType(); }
  VEXReaderImp& imp() { return *imp_; }

 private:
  std::unique_ptr<VEXReaderImp> imp_;
};
