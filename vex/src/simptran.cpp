#include "vex/src/simptran.h"

#include "vex/factory/pipeline.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/creator.h"
#include "vex/src/featout.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"
#include "vex/src/vexspec.h"

namespace {

constexpr std::uint32_t kReaderKeyword = 231001;
constexpr std::uint32_t kWriterKeyword = 231002;
constexpr std::uint32_t kDefKeyword = 231003;
constexpr std::uint32_t kReaderType = 231004;
constexpr std::uint32_t kWriterType = 231005;
constexpr std::uint32_t kNoCoordSys = 231006;
constexpr std::uint32_t kCoordSys = 231007;
constexpr std::uint32_t kCannotEnter = 231008;
constexpr std::uint32_t kDirectory = 231009;
constexpr std::uint32_t kNoteUngrouped = 231010;
constexpr std::uint32_t kNoteUncorrelated = 231011;
constexpr std::uint32_t kNoteTransferProcess = 231012;
constexpr std::uint32_t kNoteTransferSpecs = 231013;
constexpr std::uint32_t kNoteMappingFile = 231014;
constexpr std::uint32_t kFailed = 231015;
constexpr std::uint32_t kEmptying = 231016;
constexpr std::uint32_t kProgress = 231026;
constexpr std::uint32_t kProgressLogged = 231027;
constexpr std::uint32_t kCoordSysTaken = 231028;
constexpr std::uint32_t kUngrouped = 231029;
constexpr std::uint32_t kUncorrelated = 231030;
constexpr std::uint32_t kSourceRefused = 231031;
constexpr std::uint32_t kOutputRefused = 231032;
constexpr std::uint32_t kNoWriterType = 231038;
constexpr std::uint32_t kNoReaderType = 231039;
constexpr std::uint32_t kMappingFileId = 231040;
constexpr std::uint32_t kBuildTooOld = 231041;
constexpr std::uint32_t kNoGrouper = 231042;
constexpr std::uint32_t kBuildMet = 231043;
constexpr std::uint32_t kTwoCoordSystems = 231044;

constexpr std::int32_t kBuild = 381;
constexpr std::int64_t kDumpedLines = 20;
constexpr std::size_t kStatsWidth = 6;
constexpr std::size_t kStatsLine = 78;

bool isRejection(const VEXStatus& failure) {
  return failure != nullptr && failure->severity() == kSeverityRejected;
}

// What the pipeline gives its features to.
template <class Take>  // VEXStatus(VEXFeaturePtr&)
class Outlet final : public VEXPipelineSink {
 public:
  explicit Outlet(Take take) : take_(std::move(take)) {}
  VEXStatus takeOutput(std::int32_t, const std::string&, VEXFeaturePtr& feature) override {
    return extendStatus(take_(feature));
  }

 private:
  Take take_;
};

}  // namespace

// ---- settings ----

VEXSimpleTranslator::VEXSimpleTranslator() {
  readSettings();
  logSettings();
  enterWorkingDirectory();
  noteDebugWords();
}

void VEXSimpleTranslator::readSettings() {
  VEXConfiguration::value("READER_TYPE", readerType_);
  VEXConfiguration::value("WRITER_TYPE", writerType_);
  if (!VEXConfiguration::value("READER_KEYWORD", readerKeyword_)) readerKeyword_ = upperCased(readerType_);
  if (!VEXConfiguration::value("WRITER_KEYWORD", writerKeyword_)) writerKeyword_ = upperCased(writerType_);
  defLineKey_ = writerKeyword_ + "_DEF";
  if (!VEXConfiguration::value(readerKeyword_ + "_COORDINATE_SYSTEM", coordSys_))
    VEXConfiguration::value(writerKeyword_ + "_COORDINATE_SYSTEM", coordSys_);
  if (!VEXConfiguration::value("STATS_HEADING", statsHeading_))
    statsHeading_ = readerKeyword_ + " to " + writerKeyword_ + " Statistics";
}

void VEXSimpleTranslator::logSettings() const {
  std::string id;
  if (VEXConfiguration::joinedValue("MAPPING_FILE_ID", id)) logMessage(VEXSeverity::Inform, kMappingFileId, {id});
  logMessage(VEXSeverity::Inform, kReaderKeyword, {readerKeyword_});
  logMessage(VEXSeverity::Inform, kWriterKeyword, {writerKeyword_});
  logMessage(VEXSeverity::Inform, kDefKeyword, {defLineKey_});
  logMessage(VEXSeverity::Inform, kReaderType, {upperCased(readerType_)});
  logMessage(VEXSeverity::Inform, kWriterType, {upperCased(writerType_)});
  if (coordSys_.empty())
    logMessage(VEXSeverity::Inform, kNoCoordSys);
  else
    logMessage(VEXSeverity::Inform, kCoordSys, {coordSys_});
}

void VEXSimpleTranslator::enterWorkingDirectory() const {
  std::string directory;
  if (VEXConfiguration::value("WORKING_DIRECTORY", directory) &&
      !platform::changeDirectory(platform::nativePath(directory)))
    logMessage(VEXSeverity::Warn, kCannotEnter, {directory});
  directory = platform::currentDirectory();
  if (!directory.empty()) logMessage(VEXSeverity::Inform, kDirectory, {directory});
}

void VEXSimpleTranslator::noteDebugWords() {
  auto noted = [](std::string_view word, std::uint32_t number) {
    const bool isSet = VEXConfiguration::debugWord(word);
    if (isSet) logMessage(VEXSeverity::Inform, number);
    return isSet;
  };
  logUngrouped_ = noted("UNGROUPED", kNoteUngrouped);
  logUncorrelated_ = noted("UNCORRELATED", kNoteUncorrelated);
  VEXFeatureSpec::setTransferReport(noted("TRANSFER_PROCESS", kNoteTransferProcess));
  noted("TRANSFER_SPECS", kNoteTransferSpecs);
  if (noted("MAPPING_FILE", kNoteMappingFile)) VEXConfiguration::dump();
}

// ---- reader and writer ----

VEXStatus VEXSimpleTranslator::createReader(std::unique_ptr<VEXReaderImp>& reader) {
  if (readerType_.empty()) return makeStatus(kNoReaderType, {"READER_TYPE"});
  return extendStatus(VEXCreator::createReader(reader, upperCased(readerType_), readerKeyword_, readerType_));
}

VEXStatus VEXSimpleTranslator::createWriter(std::unique_ptr<VEXWriterImp>& writer) {
  if (writerType_.empty()) return makeStatus(kNoWriterType, {"WRITER_TYPE"});
  return extendStatus(VEXCreator::createWriter(writer, upperCased(writerType_), writerKeyword_, writerType_));
}

std::unique_ptr<VEXGrouper> VEXSimpleTranslator::createGrouper() {
  return writer_->createGrouper();
}

// ---- the run ----

VEXStatus VEXSimpleTranslator::run() {
  VEXStatus failure = translateAll();
  if (failure != nullptr) logMessage(VEXSeverity::Error, kFailed, {failure->message()});
  return extendStatus(std::move(failure));
}

VEXStatus VEXSimpleTranslator::checkMinimumBuild() const {
  std::int32_t wanted = 0;
  if (!VEXConfiguration::intValue("ORV_MINIMUM_BUILD", wanted)) return nullptr;
  if (wanted > kBuild) return makeStatus(kBuildTooOld, {integerText(wanted), integerText(kBuild)});
  logMessage(VEXSeverity::Inform, kBuildMet, {integerText(wanted)});
  return nullptr;
}

VEXStatus VEXSimpleTranslator::translateAll() {
  VEX_TRY(checkMinimumBuild());
  VEX_TRY(VEXCommandRegistry::instance().configureFrom());
  VEXCorrelator correlator;
  readerKeyword_ = reader_->keyword();
  VEX_TRY(correlator.load(readerKeyword_, writerKeyword_));
  std::unique_ptr<VEXGrouper> grouper = createGrouper();
  if (grouper == nullptr) return makeStatus(kNoGrouper, {writer_->type()});
  VEX_TRY(grouper->initialize(defLineKey_, std::string()));
  VEX_TRY(moveFeatures(correlator, *grouper));

  VEXStatistics grouped;
  VEXStatistics notGrouped;
  grouper->takeStatistics(grouped, notGrouped);
  const bool printsGroups = grouper->finish();
  grouper.reset();
  VEX_TRY(writer_->flushGroups());
  VEX_TRY(correlator.outputStats(statsHeading_));
  if (printsGroups) {
    grouped.write({}, "Group Counts", "Total Features Grouped", kStatsWidth, kStatsLine);
    notGrouped.write({}, "Features Not Grouped", "Total Features NOT Grouped", kStatsWidth, kStatsLine);
  }
  return nullptr;
}

VEXStatus VEXSimpleTranslator::moveFeatures(VEXCorrelator& correlator, VEXGrouper& grouper) {
  bool isEmptying = false;
  Outlet outlet([&](VEXFeaturePtr& feature) -> VEXStatus {
    if (isEmptying) countFeature("Writing pipeline output feature # ", featuresThroughPipeline_);
    return extendStatus(processFeature(correlator, grouper, feature));
  });
  VEXPipeline pipeline;
  pipeline.setSink(&outlet);
  VEX_TRY(pipeline.configure(readerKeyword_));

  VEXFeaturePtr metaData;
  VEX_TRY(reader_->getGlobalMetaData(metaData));
  if (metaData != nullptr) VEX_TRY(writer_->writeGlobalMetaData(*metaData));
  featuresRead_ = 0;
  featuresThroughPipeline_ = 0;
  consoleWrite("Reading...");
  VEX_TRY(readAll(pipeline));
  consoleWrite("\nEmptying factory pipeline...");
  logMessage(VEXSeverity::Inform, kEmptying);
  isEmptying = true;
  VEX_TRY(pipeline.allDone());
  consoleWrite("\n");
  VEXCommandRegistry::instance().logStatisticsAll();
  VEXCommandRegistry::instance().closeDownAll();
  return nullptr;
}

VEXStatus VEXSimpleTranslator::readAll(VEXPipeline& pipeline) {
  for (;;) {
    VEXFeaturePtr feature;
    if (VEXStatus failure = reader_->read(feature)) {
      if (!isRejection(failure)) return extendStatus(std::move(failure));
      dropRefused(kSourceRefused, *failure, feature);
      continue;
    }
    if (feature == nullptr) return nullptr;
    countFeature("Reading source feature # ", featuresRead_);
    if (VEXStatus failure = pipeline.processFeature(feature)) {
      if (!isRejection(failure)) return extendStatus(std::move(failure));
      dropRefused(kOutputRefused, *failure, feature);
    }
  }
}

void VEXSimpleTranslator::countFeature(std::string_view label, std::int64_t& count) {
  ++count;
  if (count % 100 != 0) return;
  const std::string number = integerText(count);
  consoleWrite(".");
  logMessage(VEXSeverity::StatRp, kProgress, {label, number});
  if (count % 500 != 0) return;
  consoleWrite(number);
  logMessage(VEXSeverity::Inform, kProgressLogged, {label, number});
}

// ---- one feature ----

VEXStatus VEXSimpleTranslator::processFeature(VEXCorrelator& correlator, VEXGrouper& grouper, VEXFeaturePtr& feature) {
  VEX_TRY(matchCoordSys(*feature));
  bool matched = false;
  VEX_TRY(correlator.correlate(feature, matched));
  if (feature == nullptr) return nullptr;
  if (matched) {
    VEXGroup* group = nullptr;
    VEX_TRY(grouper.findGroup(feature, group));
    if (group != nullptr) {
      ++featuresOutput_;
      coordinatesOutput_ += static_cast<std::int64_t>(feature->numCoords());
      return extendStatus(group->addFeature(feature));
    }
  }
  dropUnrouted(feature, matched);
  return nullptr;
}

// The first feature that has a coordinate system decides for the run, unless the mapping file did.
VEXStatus VEXSimpleTranslator::matchCoordSys(VEXFeature& feature) {
  const std::string& name = feature.coordSys();
  if (name == coordSys_) return nullptr;
  if (name.empty()) {
    feature.setCoordSys(coordSys_);
  } else if (coordSys_.empty()) {
    coordSys_ = name;
    logMessage(VEXSeverity::Inform, kCoordSysTaken, {coordSys_});
  } else {
    return makeStatus(kTwoCoordSystems, {name, coordSys_});
  }
  return nullptr;
}

void VEXSimpleTranslator::dropUnrouted(VEXFeaturePtr& feature, bool matched) {
  const bool isNew = unroutedTypes_.insert(feature->featureType()).second;
  if (isNew && (matched ? logUngrouped_ : logUncorrelated_)) {
    logMessage(VEXSeverity::Warn, matched ? kUngrouped : kUncorrelated);
    logFeature(*feature, VEXSeverity::Warn, kDumpedLines);
  }
  feature.reset();
}
