// VEXSimpleTranslator: the translation that a mapping file describes. The constructor reads the configuration and
// logs the settings.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>

#include "vex/src/vextrans.h"

class VEXPipeline;

class VEXSimpleTranslator final : public VEXTranslator {
 public:
  VEXSimpleTranslator();

  VEXStatus createReader(std::unique_ptr<VEXReaderImp>& reader) override;  // 231039: READER_TYPE is missing
  VEXStatus createWriter(std::unique_ptr<VEXWriterImp>& writer) override;  // 231038: WRITER_TYPE is missing
  VEXStatus processFeature(VEXCorrelator& correlator, VEXGrouper& grouper, VEXFeaturePtr& feature) override;
  VEXStatus run() override;
  std::unique_ptr<VEXGrouper> createGrouper() override;

  std::int64_t featuresRead() const { return featuresRead_; }
  std::int64_t featuresOutput() const { return featuresOutput_; }
  std::int64_t coordinatesOutput() const { return coordinatesOutput_; }

 private:
  void readSettings();
  void logSettings() const;
  void enterWorkingDirectory() const;
  void noteDebugWords();
  VEXStatus translateAll();
  VEXStatus checkMinimumBuild() const;
  VEXStatus moveFeatures(VEXCorrelator& correlator, VEXGrouper& grouper);
  VEXStatus readAll(VEXPipeline& pipeline);
  VEXStatus matchCoordSys(VEXFeature& feature);
  void dropUnrouted(VEXFeaturePtr& feature, bool matched);
  void countFeature(std::string_view label, std::int64_t& count);

  std::string readerType_;  // as given
  std::string writerType_;
  std::string readerKeyword_;
  std::string writerKeyword_;
  std::string coordSys_;  // of the output; empty until known
  std::string defLineKey_;
  std::string statsHeading_;
  std::int64_t featuresRead_ = 0;
  bool logUngrouped_ = false;
  bool logUncorrelated_ = false;
  std::int64_t featuresThroughPipeline_ = 0;
  std::unordered_set<std::string> unroutedTypes_;
  std::int64_t featuresOutput_ = 0;
  std::int64_t coordinatesOutput_ = 0;
};
