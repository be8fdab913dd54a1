// A reader and a writer in memory, which tell every call they get and fail where a test wants it, and the singletons
// of a whole translation around them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tests/unit/support.h"
#include "vex/factory/pipeline.h"
#include "vex/src/creator.h"
#include "vex/src/tmpfilmn.h"
#include "vex/src/vexlog.h"

// What the drivers of type FAKE do and what was done to them.
struct FakeDrivers {
  std::vector<std::string> source;  // features as text; "!30" refuses one, "!16" fails
  std::string failAt;               // a step such as "writer.open" or "write bad", which then fails with 236101
  int maxChannels = 130;
  bool givesMetaData = false;
  bool givesGrouper = true;
  bool hasOneStream = false;
  std::vector<std::string> calls;  // steps in order; features as "write <group>: <text>"
  std::string callText() const;    // joined by "; ", without progress through setup
};

// Recycler, configuration, functions, log, temporary files and creators, with the FAKE formats registered.
class TranslationScope {
 public:
  explicit TranslationScope(const std::vector<std::string>& rows = {});
  ~TranslationScope();
  void row(std::string_view text) { engine_.row(text); }
  // Runs the translation that the rows describe; the number of its failure, 0 for none.
  std::uint32_t translate();
  // Lines of the log so far that hold the text.
  std::size_t logged(std::string_view text) const;
  const std::vector<std::string>& log() const;

  FakeDrivers fake;
  std::int64_t featuresOutput = 0;
  std::int64_t coordinatesOutput = 0;

 private:
  EngineScope engine_;
  VEXLogFile logFile_;
  VEXTempFileManager tempFiles_;
  VEXCreator creator_;
};

// Builds a pipeline from FACTORY_DEF rows and takes features through it.
class PipelineScope {
 public:
  explicit PipelineScope(const std::vector<std::string>& rows);
  // Number of the failure that the definition gave, 0 for none.
  std::uint32_t defined() const { return definitionFailure_; }
  // Each feature goes in, then the input ends: what came out, joined by "; ", or "#<number>" of a failure.
  std::string run(const std::vector<std::string>& features);

  TranslationScope engine;

 private:
  std::uint32_t definitionFailure_ = 0;
  std::unique_ptr<VEXPipeline> pipeline_;
};

std::uint32_t numberOf(const VEXStatus& failure);  // 0 for success
