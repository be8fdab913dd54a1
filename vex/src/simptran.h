// VEXSimpleTranslator: the translation that a mapping file describes. The constructor reads the configuration and
// logs the settings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "vex/src/vextrans.h"

class VEXSimpleTranslator final : public VEXTranslator {
 public:
  VEXSimpleTranslator();

  VEXStatus createReader(std::unique_ptr<VEXReaderImp>& reader) override;  // 231039: READER_TYPE is missing
  VEXStatus createWriter(std::unique_ptr<VEXWriterImp>& writer) override;  // 231038: WRITER_TYPE is missing
  VEXStatus processFeature(VEXCorrelator& correlator, VEXGrouper& grouper, VEXFeaturePtr& feature) override;
  VEXStatus run() override;
  std::unique_ptr<VEXGrouper> createGrouper() override;

  std::int32_t featuresRead() const { return featuresRead_; }
  std::int32_t featuresOutput() const { return featuresOutput_; }
  std::int32_t coordinatesOutput() const { return coordinatesOutput_; }

 private:
  void logSettings();
  void enterWorkingDirectory();
  void noteDebugWords();
  VEXStatus checkMinimumBuild() const;
  VEXStatus translateAll();
  VEXStatus readAll(class VEXPipeline& pipeline);
  VEXStatus matchCoordSys(VEXFeature& feature);
  VEXStatus routeFeature(VEXCorrelator& correlator, VEXGrouper& grouper, VEXFeaturePtr& feature);
  void dropUnrouted(VEXFeature& feature, bool matched);
  void countFeature(std::string_view label, std::int32_t& count);

  std::string readerType_;  // as given
  std::string writerType_;
  std::string readerKeyword_;
  std::string writerKeyword_;
  std::string coordSys_;  // of the output; empty until known
  std::string defLineKey_;
  std::string statsHeading_;
  std::int32_t featuresRead_ = 0;
  bool logUngrouped_ = false;
  bool logUncorrelated_ = false;
  bool isEmptying_ = false;  // the reader is done, the pipeline gives what it held
  std::int32_t featuresThroughPipeline_ = 0;
  std::unordered_set<std::string> unroutedTypes_;
  std::int32_t featuresOutput_ = 0;
  std::int32_t coordinatesOutput_ = 0;
};
