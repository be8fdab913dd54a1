// The whole loop over drivers in memory: the order of calls, failures at every step, refused features, channels.
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/unit/drivers.h"

namespace {

const std::vector<std::string> kRows = {"READER_TYPE fake",   "WRITER_TYPE Fake",    "READER_KEYWORD IN",
                                        "WRITER_KEYWORD OUT", "OUT_DEF a n char(3)", "OUT_DEF b",
                                        "IN * n %n",          "OUT * n %n"};

TEST(Translation, CallsComeInTheirOrder) {
  TranslationScope run(kRows);
  run.fake.givesMetaData = true;
  run.fake.source = {"a {n=1} line 0 0, 1 1", "b {n=2} point 0 0", "other {n=3}", "a {n=4}"};
  EXPECT_EQ(run.translate(), 0U);
  EXPECT_EQ(run.fake.callText(),
            "reader.setup; writer.setup; reader.open; writer.open; reader.meta; writer.meta; "
            "channel a; start a; write a: a {n=1} line 0 0, 1 1; channel b; start b; write b: b {n=2} point 0 0; "
            "write a: a {n=4}; end a; close a; gone a; end b; close b; gone b; reader.close; writer.close");
  EXPECT_EQ(run.featuresOutput, 3);
  EXPECT_EQ(run.coordinatesOutput, 3);
  EXPECT_EQ(run.logged("a (a)                                                                        2"), 1U);
  EXPECT_EQ(run.logged("other                                                                        1"), 1U);
}

// Whatever fails, the writer and then the reader are told once, channels are aborted and never closed afterwards.
TEST(Translation, AFailureAtAnyStepAborts) {
  for (const char* step : {"reader.setup", "writer.setup", "reader.open", "writer.open", "reader.meta", "writer.meta",
                           "channel a", "start a", "write a: a {n=1}", "channel b", "end a", "close a", "start c",
                           "write c: c {n=3}", "close c", "reader.close", "writer.close"}) {
    TranslationScope run(kRows);
    run.row("OUT_DEF c");
    run.fake.givesMetaData = true;
    run.fake.maxChannels = 2;
    run.fake.source = {"a {n=1}", "b {n=2}", "c {n=3}"};
    run.fake.failAt = step;
    EXPECT_EQ(run.translate(), 236101U) << step;
    const std::vector<std::string>& calls = run.fake.calls;
    auto failed = std::find(calls.begin(), calls.end(), step);
    ASSERT_NE(failed, calls.end()) << step;
    std::vector<std::string> tail(failed + 1, calls.end());
    std::erase_if(tail,
                  [](const std::string& call) { return call.starts_with("abort ") || call.starts_with("gone "); });
    EXPECT_EQ(tail, (std::vector<std::string>{"writer.abort", "reader.abort"})) << step << ": " << run.fake.callText();
    const bool inRun = std::string(step).find(".setup") == std::string::npos &&
                       std::string(step).find(".open") == std::string::npos &&
                       std::string(step).find("r.close") == std::string::npos;
    EXPECT_EQ(run.logged("Translation failed:"), inRun ? 1U : 0U) << step;
  }
}

TEST(Translation, AbortReachesChannelsWhoseCloseFailed) {
  TranslationScope run(kRows);
  run.fake.source = {"a {n=1}", "b {n=2}"};
  run.fake.failAt = "close a";
  EXPECT_EQ(run.translate(), 236101U);
  EXPECT_NE(run.fake.callText().find("close a; writer.abort; abort a; abort b; gone a; gone b; reader.abort"),
            std::string::npos)
      << run.fake.callText();
}

TEST(Translation, GroupsBeyondMaxChannelsAreSpooledAndWrittenOneByOne) {
  TranslationScope run(kRows);
  run.row("OUT_DEF c");
  run.fake.maxChannels = 1;
  run.fake.source = {"b {n=1} line 0 0, 1 2", "a {n=2}", "c {n=3} point 1 2 3", "a {n=4}", "b {n=5}", "c {n=6}"};
  EXPECT_EQ(run.translate(), 0U);
  EXPECT_EQ(run.fake.callText(),
            "reader.setup; writer.setup; reader.open; writer.open; reader.meta; "
            "channel b; start b; write b: b {n=1} line 0 0, 1 2; write b: b {n=5}; end b; close b; gone b; "
            "channel a; start a; write a: a {n=2}; write a: a {n=4}; end a; close a; gone a; "
            "channel c; start c; write c: c {n=3} point 1 2 3; write c: c {n=6}; end c; close c; gone c; "
            "reader.close; writer.close");
  EXPECT_EQ(run.featuresOutput, 6);
}

TEST(Translation, NoSpoolStaysBehindAFailure) {
  for (int repeat = 0; repeat < 2; ++repeat) {
    TranslationScope run(kRows);
    run.fake.maxChannels = 1;
    run.fake.source = {"b {n=1}", "a {n=2}", "!16"};
    EXPECT_EQ(run.translate(), 236101U);
  }
}

TEST(Translation, RefusedBySourceLeavesTheRunGoing) {
  TranslationScope run(kRows);
  run.fake.source = {"!30", "a {n=1}", "!30", "a {n=2}"};
  EXPECT_EQ(run.translate(), 0U);
  EXPECT_EQ(run.featuresOutput, 2);
  EXPECT_EQ(run.logged("A source feature was refused"), 2U);
}

TEST(Translation, RefusedByChannelLeavesTheRunGoing) {
  TranslationScope channel({"READER_TYPE FAKE", "WRITER_TYPE FAKE", "READER_KEYWORD IN", "WRITER_KEYWORD OUT",
                            "OUT_DEF a", "IN *", "OUT *"});
  channel.fake.source = {"a {refuse=1}", "a {n=1}", "a {refuse=2}"};
  EXPECT_EQ(channel.translate(), 0U);
  EXPECT_EQ(channel.logged("Feature rejected:"), 2U);
  EXPECT_EQ(channel.logged("2 features were rejected"), 1U);
  EXPECT_NE(channel.fake.callText().find("start a; write a: a {n=1}; end a"), std::string::npos);
}

TEST(Translation, SettingsThatStopIt) {
  struct Row {
    std::vector<std::string> rows;
    std::uint32_t number;
  };
  for (const Row& row :
       {Row{{"WRITER_TYPE FAKE"}, 231039}, Row{{"READER_TYPE FAKE"}, 231038},
        Row{{"READER_TYPE FAKE", "WRITER_TYPE NOPE"}, 872001}, Row{{"READER_TYPE NOPE", "WRITER_TYPE FAKE"}, 871005},
        Row{{"READER_TYPE JavaReader", "WRITER_TYPE FAKE"}, 871005},
        Row{{"READER_TYPE FAKE", "WRITER_TYPE FAKE", "ORV_MINIMUM_BUILD 382"}, 231041},
        Row{{"READER_TYPE FAKE", "WRITER_TYPE FAKE", "READER_KEYWORD A", "ORV_MINIMUM_BUILD 381"}, 0},
        Row{{"READER_TYPE FAKE", "WRITER_TYPE FAKE", "FAKE_DEF a", "FAKE_DEF a"}, 253003},
        Row{{"READER_TYPE FAKE", "WRITER_TYPE FAKE", "FAKE_DEF a", "FAKE_DEF a"}, 230001},
        Row{{"READER_TYPE FAKE", "WRITER_TYPE FAKE", "READER_KEYWORD R", "R a", "Count x"}, 814004}}) {
    TranslationScope run(row.rows);
    if (row.number == 253003) run.row("FAKE a"), run.row("FAKE b");
    EXPECT_EQ(run.translate(), row.number) << row.rows.back();
  }
}

TEST(Translation, AWriterWithoutGrouperStopsIt) {
  TranslationScope noGrouper({"READER_TYPE FAKE", "WRITER_TYPE FAKE"});
  noGrouper.fake.givesGrouper = false;
  EXPECT_EQ(noGrouper.translate(), 231042U);
}

TEST(Translation, OneCoordinateSystemARun) {
  struct Row {
    const char* given;
    std::vector<std::string> source;
    std::uint32_t number;
    std::size_t taken;  // how often the log tells that the data decided
  };
  for (const Row& row :
       {Row{"", {"a", "a {cs=X}", "a {cs=X}", "a"}, 0, 1}, Row{"", {"a {cs=X}", "a {cs=Y}"}, 231044, 1},
        Row{"OUT_COORDINATE_SYSTEM X", {"a {cs=X}", "a"}, 0, 0},
        Row{"OUT_COORDINATE_SYSTEM X", {"a {cs=Y}"}, 231044, 0},
        Row{"IN_COORDINATE_SYSTEM X", {"a", "a {cs=Y}"}, 231044, 0}}) {
    TranslationScope run(kRows);
    if (*row.given != '\0') run.row(row.given);
    run.fake.source = row.source;
    EXPECT_EQ(run.translate(), row.number) << row.given << row.source.back();
    EXPECT_EQ(run.logged("is taken from the data"), row.taken) << row.given;
  }
}

TEST(Translation, UnroutedTypesAreLoggedOnce) {
  TranslationScope run({"READER_TYPE FAKE", "WRITER_TYPE FAKE", "READER_KEYWORD IN", "WRITER_KEYWORD OUT", "OUT_DEF a",
                        "IN a", "OUT a", "IN lost", "OUT nowhere", "ORV_DEBUG UNGROUPED UNCORRELATED"});
  run.fake.source = {"lost", "x", "x", "lost", "y", "a"};
  EXPECT_EQ(run.translate(), 0U);
  EXPECT_EQ(run.logged("No group takes this feature"), 1U);
  EXPECT_EQ(run.logged("No row of the mapping file matches"), 2U);
  EXPECT_EQ(run.featuresOutput, 1);
  EXPECT_EQ(run.logged("nowhere                                                                      2"), 2U);
}

TEST(Translation, ProgressIsToldEveryHundred) {
  TranslationScope run(kRows);
  run.fake.source.assign(1250, "a {n=1}");
  run.row("FACTORY_DEF IN CreationFactory NUMBER_TO_CREATE 500 CREATE_AT_END OUTPUT FEATURE_TYPE b");
  EXPECT_EQ(run.translate(), 0U);
  EXPECT_EQ(run.logged("Reading source feature # 1000"), 2U);  // progress and log
  EXPECT_EQ(run.logged("Reading source feature # 1200"), 1U);
  EXPECT_EQ(run.logged("Writing pipeline output feature # 500"), 2U);
  EXPECT_EQ(run.featuresOutput, 1750);
}

TEST(Translation, OneStreamTakesEverything) {
  TranslationScope run({"READER_TYPE FAKE", "WRITER_TYPE FAKE", "READER_KEYWORD IN", "WRITER_KEYWORD OUT",
                        "OUT_DEF a b c", "IN *", "OUT *"});
  run.fake.hasOneStream = true;
  run.fake.source = {"a", "b"};
  EXPECT_EQ(run.translate(), 0U);
  EXPECT_NE(run.fake.callText().find("start ; reader.meta; write : a; write : b; end "), std::string::npos)
      << run.fake.callText();
  EXPECT_EQ(run.logged("Group Counts"), 0U);
}

}  // namespace
