// RecorderFactory: writes the features that it takes to a feature file, plays such a file back, or both.
#include "vex/factory/factory.h"
#include "vex/inc/numtext.h"
#include "vex/src/platform/platform.h"
#include "vex/src/recorder.h"
#include "vex/src/vexconf.h"

namespace {

constexpr std::uint32_t kNoFreeName = 49054;
constexpr std::uint32_t kNoFile = 49064;
constexpr std::uint32_t kSummary = 49070;
constexpr std::uint32_t kBadMode = 49071;
constexpr std::uint32_t kBadSize = 49073;

constexpr std::uint32_t kMostNames = 100000;  // tried in a directory

class RecorderFactory final : public VEXFactory {
 public:
  RecorderFactory();

  VEXStatus allDone() override {
    if (recorder_ != nullptr) VEX_TRY(recorder_->close());
    // What nothing was recorded to is not there, or is of an earlier run.
    if (playback_ == Playback::AtEnd && (!isRecording() || recorder_ != nullptr)) VEX_TRY(playBack());
    log(VEXSeverity::Stats, kSummary,
        {"Recorded " + countText(numRecorded_, "feature") + ", played back " + countText(numPlayed_, "feature")});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  enum class Recording { Undefined, None, Only, AndPass };
  enum class Playback { None, AtBeginning, AtEnd };
  struct Mode {
    const char* word;
    Recording recording;
    Playback playback;
  };
  static const VEXClause<RecorderFactory> kClauses[];
  static const Mode kModes[6];

  bool isRecording() const { return recording_ == Recording::Only || recording_ == Recording::AndPass; }

  VEXStatus parseFile(const VEXClauseWords& clause) {
    path_ = VEXConfiguration::normalisePath(clause.word(0));
    return nullptr;
  }
  static VEXStatus findMode(const VEXClauseWords& clause, const Mode*& found) {
    for (const Mode& mode : kModes) {
      found = &mode;
      if (clause.word(0) == mode.word) return nullptr;
    }
    return makeStatus(kBadMode, {clause.word(0), clause.lineText(), clause.clauseText()});
  }
  VEXStatus parseMode(const VEXClauseWords& clause) { return extendStatus(findMode(clause, mode_)); }
  VEXStatus parseRecordMode(const VEXClauseWords& clause) {
    const Mode* mode = nullptr;
    VEX_TRY(findMode(clause, mode));
    if (mode->playback != Playback::None)
      return makeStatus(kBadMode, {clause.word(0), clause.lineText(), clause.clauseText()});
    recordingGiven_ = mode->recording;
    return nullptr;
  }
  VEXStatus parsePlaybackMode(const VEXClauseWords& clause) {
    const Mode* mode = nullptr;
    VEX_TRY(findMode(clause, mode));
    const std::string word = mode->word;
    if (word != "PLAYBACK_AT_BEGINNING" && word != "PLAYBACK_AT_END")
      return makeStatus(kBadMode, {clause.word(0), clause.lineText(), clause.clauseText()});
    playbackGiven_ = mode->playback;
    return nullptr;
  }
  VEXStatus parsePortable(const VEXClauseWords&) {
    isPortable_ = true;
    return nullptr;
  }
  VEXStatus parseSize(const VEXClauseWords& clause) {
    std::int32_t bytes = 0;
    if (!textToInteger(clause.word(0), bytes))
      return makeStatus(kBadSize, {clause.word(0), clause.lineText(), clause.clauseText()});
    maxFileBytes_ = bytes > 0 ? static_cast<std::uint32_t>(bytes) : 0;
    return nullptr;
  }

  VEXStatus start() override {
    const Mode& mode = mode_ != nullptr ? *mode_ : kModes[0];
    playback_ = playbackGiven_ != Playback::None ? playbackGiven_ : mode.playback;
    recording_ = mode.recording;
    // Who only says that a file is played back first does not mean it to be written anew.
    if (mode_ == nullptr && playback_ == Playback::AtBeginning) recording_ = Recording::None;
    if (recordingGiven_ != Recording::Undefined) recording_ = recordingGiven_;
    if (playback_ == Playback::AtBeginning) VEX_TRY(playBack());
    return nullptr;
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (isRecording()) {
      if (recorder_ == nullptr) VEX_TRY(startRecording());
      VEXRecordAddress address;
      VEX_TRY(recorder_->write(*feature, address));
      ++numRecorded_;
    }
    if (recording_ != Recording::Only) return extendStatus(sendOn(feature));
    feature.reset();
    return nullptr;
  }

  VEXStatus startRecording() {
    if (path_.empty()) return makeStatus(kNoFile, {name(), factoryName()});
    if (platform::isDirectory(platform::nativePath(path_))) VEX_TRY(chooseName());
    recorder_ = std::make_unique<VEXRecorder>(path_, VEXRecorder::WRITE_RECORDING, false, isPortable_);
    if (maxFileBytes_ > 0) recorder_->setMaxFileSize(maxFileBytes_);
    return nullptr;
  }

  // The next free name of a directory; "_" would make it a member of a series.
  VEXStatus chooseName() {
    const std::string start = path_ + (platform::isSeparator(path_.back()) ? "" : "/") + "recorded";
    for (std::uint32_t number = 1; number <= kMostNames; ++number) {
      std::string path = start + integerText(number) + ".qds";
      if (platform::fileExists(platform::nativePath(path))) continue;
      path_ = std::move(path);
      return nullptr;
    }
    return makeStatus(kNoFreeName, {path_});
  }

  VEXStatus playBack() {
    if (path_.empty()) return makeStatus(kNoFile, {name(), factoryName()});
    if (platform::isDirectory(platform::nativePath(path_))) return makeStatus(kNoFreeName, {path_});
    VEXRecorder player(path_, VEXRecorder::READ_RECORDING, false, isPortable_);
    for (;;) {
      VEXFeaturePtr feature;
      VEX_TRY(player.read(feature));
      if (feature == nullptr) return extendStatus(player.close());
      ++numPlayed_;
      VEX_TRY(output("RECORDED", feature));
    }
  }

  std::string path_;
  const Mode* mode_ = nullptr;
  Recording recordingGiven_ = Recording::Undefined;
  Playback playbackGiven_ = Playback::None;
  bool isPortable_ = false;
  std::uint32_t maxFileBytes_ = 0;  // 0: that of the recorder

  Recording recording_ = Recording::AndPass;
  Playback playback_ = Playback::None;
  std::unique_ptr<VEXRecorder> recorder_;
  std::int64_t numRecorded_ = 0;
  std::int64_t numPlayed_ = 0;
};

const RecorderFactory::Mode RecorderFactory::kModes[] = {
    {"RECORD_PASS_THROUGH", Recording::AndPass, Playback::None},  // without a MODE
    {"RECORD", Recording::Only, Playback::None},
    {"PASS_THROUGH", Recording::None, Playback::None},
    {"PLAYBACK", Recording::None, Playback::AtEnd},
    {"PLAYBACK_AT_END", Recording::None, Playback::AtEnd},
    {"PLAYBACK_AT_BEGINNING", Recording::None, Playback::AtBeginning},
};

const VEXClause<RecorderFactory> RecorderFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"FEATURE_FILE", exactly(1), 49072, &RecorderFactory::parseFile},
    {"MODE", exactly(1), 49071, &RecorderFactory::parseMode},
    {"RECORD_MODE", exactly(1), 49071, &RecorderFactory::parseRecordMode},
    {"PLAYBACK_MODE", exactly(1), 49071, &RecorderFactory::parsePlaybackMode},
    {"PORTABLE", exactly(0), 49074, &RecorderFactory::parsePortable},
    {"MAX_FILE_BYTES", exactly(1), 49073, &RecorderFactory::parseSize},
};

RecorderFactory::RecorderFactory() : VEXFactory("RecorderFactory") {
  useClauses(kClauses);
  addOutputTags({"RECORDED"});
}

}  // namespace

VEX_FACTORY_MAKER(fctrecrd, RecorderFactory)
