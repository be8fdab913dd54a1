// RecorderFactory: modes, files, faults.
#include "tests/unit/qds/qdstest.h"

namespace {

class RecorderFactory : public StoreTest {
 protected:
  struct Outcome {
    std::uint32_t defined;  // number of the failure that the row gives, 0 for none
    std::string out;
    std::string summary;
  };
  // Three features through a factory of these clauses; `%` stands for the directory.
  Outcome run(const std::string& clauses,
              const std::vector<std::string>& features = {"a {n=1} point 1 2", "a {n=2}", "b"}) {
    scope_.reset();
    PipelineScope scope(
        {"FACTORY_DEF K RecorderFactory INPUT FEATURE_TYPE a " + replacedAll(clauses, "%", directory_)});
    Outcome outcome{scope.defined(), "", ""};
    if (outcome.defined != 0) return outcome;
    outcome.out = scope.run(features);
    for (const std::string& line : scope.engine.log())
      if (line.find("f_0(RecorderFactory): ") != std::string::npos) outcome.summary = line.substr(line.find("): ") + 3);
    return outcome;
  }
};

TEST_F(RecorderFactory, Modes) {
  struct Row {
    std::string clauses, out, stored, summary;
  };
  const std::string file = "FEATURE_FILE %s.qds ";
  const std::string out = "OUTPUT RECORDED FEATURE_TYPE back";
  const std::string both = "a {n=1} point 1 2; a {n=2}";
  const std::string back = "back {n=1} point 1 2; back {n=2}";
  for (const Row& row : {
           Row{file, both + "; b", both, "Recorded 2 features, played back 0 features"},
           Row{file + "MODE RECORD_PASS_THROUGH PORTABLE", both + "; b", both,
               "Recorded 2 features, played back 0 features"},
           Row{file + "MODE RECORD", "b", both, "Recorded 2 features, played back 0 features"},
           Row{file + "MODE RECORD PLAYBACK_MODE PLAYBACK_AT_END " + out, "b; " + back, both,
               "Recorded 2 features, played back 2 features"},
           Row{file + "PLAYBACK_MODE PLAYBACK_AT_END " + out, both + "; b; " + back, both,
               "Recorded 2 features, played back 2 features"},
           Row{file + "MODE RECORD PLAYBACK_MODE PLAYBACK_AT_END", "b", both,
               "Recorded 2 features, played back 2 features"},
           // From here on the file is that of the run before.
           Row{file + "MODE PLAYBACK " + out, both + "; b; " + back, both,
               "Recorded 0 features, played back 2 features"},
           Row{file + "MODE PLAYBACK_AT_END " + out, both + "; b; " + back, both,
               "Recorded 0 features, played back 2 features"},
           Row{file + "MODE PLAYBACK_AT_BEGINNING " + out, back + "; " + both + "; b", both,
               "Recorded 0 features, played back 2 features"},
           Row{file + "PLAYBACK_MODE PLAYBACK_AT_BEGINNING " + out, back + "; " + both + "; b", both,
               "Recorded 0 features, played back 2 features"},
           Row{file + "MODE PLAYBACK PLAYBACK_MODE PLAYBACK_AT_BEGINNING " + out, back + "; " + both + "; b", both,
               "Recorded 0 features, played back 2 features"},
           Row{file + "MODE PASS_THROUGH", both + "; b", both, "Recorded 0 features, played back 0 features"},
           Row{"MODE PASS_THROUGH", both + "; b", both, "Recorded 0 features, played back 0 features"},
           Row{file + "MODE PLAYBACK_AT_BEGINNING RECORD_MODE RECORD " + out, back + "; b", both,
               "Recorded 2 features, played back 2 features"},
           Row{file + "MAX_FILE_BYTES 10 PLAYBACK_MODE PLAYBACK_AT_END MODE RECORD " + out, "b; " + back, both,
               "Recorded 2 features, played back 2 features"},
       }) {
    const Outcome outcome = run(row.clauses);
    EXPECT_EQ(outcome.defined, 0U) << row.clauses;
    EXPECT_EQ(outcome.out, row.out) << row.clauses;
    EXPECT_EQ(outcome.summary, row.summary) << row.clauses;
    scope_.emplace();
    EXPECT_EQ(readAll("s.qds"), row.stored) << row.clauses;
  }
  EXPECT_TRUE(isThere("s_1.qds"));
}

TEST_F(RecorderFactory, Faults) {
  for (const auto& [clauses, number] :
       std::vector<std::pair<std::string, std::uint32_t>>{{"FEATURE_FILE", 49072},
                                                          {"FEATURE_FILE a b", 49072},
                                                          {"MODE", 49071},
                                                          {"MODE BACK", 49071},
                                                          {"RECORD_MODE PLAYBACK", 49071},
                                                          {"PLAYBACK_MODE RECORD", 49071},
                                                          {"PLAYBACK_MODE PLAYBACK", 49071},
                                                          {"PORTABLE x", 49074},
                                                          {"MAX_FILE_BYTES", 49073},
                                                          {"MAX_FILE_BYTES much", 49073}})
    EXPECT_EQ(run(clauses).defined, number) << clauses;
  struct Row {
    std::string clauses, out;
  };
  for (const Row& row : {Row{"", "#49064"}, Row{"MODE PLAYBACK", "a {n=1} point 1 2; a {n=2}; b; #49064"},
                         Row{"MODE PLAYBACK_AT_BEGINNING FEATURE_FILE %none.qds", "#393365"},
                         Row{"MODE PLAYBACK_AT_BEGINNING FEATURE_FILE %", "#49054"},
                         Row{"FEATURE_FILE %none/s.qds", "#393361"}, Row{"FEATURE_FILE /dev/full", "#393362"}})
    EXPECT_EQ(run(row.clauses).out, row.out) << row.clauses;
  EXPECT_EQ(names(), "");
}

TEST_F(RecorderFactory, NamesInADirectoryAndNothingToRecord) {
  put("recorded1.qds", "taken");
  EXPECT_EQ(run("MODE RECORD FEATURE_FILE %").out, "b");
  EXPECT_EQ(names(), "recorded1.qds recorded2.qds");
  // A file of an earlier run is not what this one has recorded.
  EXPECT_EQ(
      run("MODE RECORD PLAYBACK_MODE PLAYBACK_AT_END FEATURE_FILE %recorded2.qds OUTPUT RECORDED FEATURE_TYPE *", {"b"})
          .out,
      "b");
}

}  // namespace
