// The log of a run, and the message files behind it.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/unit/support.h"
#include "vex/internat/internat.h"
#include "vex/src/vexlog.h"

namespace {

std::vector<std::string> received;
void receive(ORV_Int32 severity, const char* text) {
  received.push_back(std::to_string(severity) + text);
}

class Log : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::remove(path_);
    VEXConfiguration::setValue("LOG_FILENAME", path_);
    received.clear();
  }
  void open() {
    log_ = std::make_unique<VEXLogFile>();
    log_->setCallback(receive);
    sink_ = std::tmpfile();
    VEXLogFile::setConsoleSink(sink_);
    ASSERT_EQ(log_->open(), nullptr);
  }
  void openQuietly() {
    open();
    console();
  }
  // Ends the run; the file's lines without their time fields. A line of another shape begins with "?".
  std::string close() {
    log_.reset();
    std::string lines;
    std::string line;
    std::ifstream file(path_);
    while (std::getline(file, line)) lines += (hasTimes(line) ? line.substr(kTimes.size()) : "?" + line) + "\n";
    std::size_t number = lines.find("Duration: ") + 10;
    return lines.replace(number, lines.find(" seconds") - number, "N");
  }
  static bool hasTimes(std::string line) {
    for (char& c : line)
      if (c >= '0' && c <= '9') c = '9';
    for (std::size_t at : {20U, 21U, 22U, 27U, 28U})  // padded with blanks
      if (line.size() > at && line[at] == '9') line[at] = ' ';
    return line.starts_with(kTimes);
  }
  static constexpr std::string_view kTimes = "9999-99-99 99:99:99|   9.9|  9.9|";

  std::string console() {
    std::rewind(sink_);
    std::string text;
    for (int c = std::fgetc(sink_); c != EOF; c = std::fgetc(sink_)) text += static_cast<char>(c);
    std::fclose(sink_);
    VEXLogFile::setConsoleSink(nullptr);
    return text;
  }

  EngineScope engine_;
  std::unique_ptr<VEXLogFile> log_;
  std::FILE* sink_ = nullptr;
  std::string path_ = scratchDirectory() + "test.log";
};

constexpr const char* kEnd = "INFORM|ORV Session Duration: N seconds\n";

TEST_F(Log, RepeatsAreCountedAndProgressDoesNotDisturbThem) {
  open();
  for (const char* text : {"a", "b", "b", "c", "c", "c", "d", "d"}) {
    log_->logMessage(VEXSeverity::Warn, text);
    if (text[0] == 'c') log_->logMessage(VEXSeverity::StatRp, "c");
  }
  EXPECT_EQ(close(), std::string("WARN  |a\nWARN  |b\nWARN  |b\nWARN  |c\nWARN  |... Last line repeated 2 times ...\n"
                                 "WARN  |d\nWARN  |d\n") +
                         kEnd);
  EXPECT_EQ(console(), "");
  EXPECT_EQ(received, (std::vector<std::string>{"1a", "1b", "1b", "1c", "5c", "5c", "5c",
                                                "1... Last line repeated 2 times ...", "1d", "1d", received.back()}));
}

TEST_F(Log, SeveritiesAndConsole) {
  VEXConfiguration::setValue("LOG_STANDARDOUT", "YES");
  open();
  std::string text;
  for (int severity = 0; severity <= 7; ++severity)
    log_->logMessage(static_cast<VEXSeverity>(severity), "t" + std::to_string(severity));
  consoleWrite("Reading...");
  std::string tagged = "INFORM|t0\nWARN  |t1\nERROR |t2\nFATAL |t3\nSTATS |t4\nUNKNWN|t6\nUNKNWN|t7\n";
  EXPECT_EQ(close(), tagged + kEnd);
  text = console();
  EXPECT_EQ(text.substr(0, text.find("|INFORM|ORV")),
            "|INFORM|t0\n|WARN  |t1\n|ERROR |t2\n|FATAL |t3\n|STATS |t4\n|STATRP|t5\n|UNKNWN|t6\n|UNKNWN|t7\n");
  received.resize(8);
  EXPECT_EQ(received, (std::vector<std::string>{"0t0", "1t1", "2t2", "3t3", "4t4", "5t5", "0t6", "0t7"}));
  VEXConfiguration::setValue("LOG_STANDARDOUT", "no");
  open();
  consoleWrite("Reading...");
  log_.reset();
  EXPECT_EQ(console(), "Reading...");
}

TEST_F(Log, TimedEchoIsTheLineOfTheFile) {
  VEXConfiguration::setValue("LOG_STANDARDOUT", "yes");
  VEXConfiguration::setValue("LOG_TIMINGS", "yes");
  open();
  log_->logMessage(VEXSeverity::Inform, "text");
  log_.reset();
  std::stringstream file;
  file << std::ifstream(path_).rdbuf();
  EXPECT_EQ(console(), file.str());
}

TEST_F(Log, AppendsUnlessToldNotTo) {
  struct Row {
    const char* append;
    bool keeps;
  };
  for (const Row& row : {Row{nullptr, true}, Row{"", true}, Row{"yes", true}, Row{"True", true}, Row{"NO", false},
                         Row{"perhaps", false}}) {
    std::ofstream(path_) << "old\n";
    if (row.append != nullptr) VEXConfiguration::setValue("LOG_APPEND", row.append);
    openQuietly();
    EXPECT_EQ(close(), (row.keeps ? "?old\n" : "") + std::string(kEnd)) << row.append;
  }
}

TEST_F(Log, WithoutAFile) {
  VEXLogFile log;
  log.setCallback(receive);
  VEXConfiguration::setValue("LOG_FILENAME", path_ + "/no/such/file");
  VEXStatus failure = log.open();
  ASSERT_NE(failure, nullptr);
  EXPECT_EQ(failure->messageNumber(), 246011U);
  ::testing::internal::CaptureStderr();
  log.logMessage(VEXSeverity::Error, "not open");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "not open\n");
  EXPECT_TRUE(received.empty());
  VEXConfiguration::setValue("LOG_FILENAME", "");  // then the null device
  ASSERT_EQ(log.open(), nullptr);
  log.logMessage(VEXSeverity::Error, "nowhere");
  EXPECT_EQ(received, std::vector<std::string>{"2nowhere"});
}

TEST_F(Log, FeaturesAreLimited) {
  struct Row {
    const char* limit;
    int shown;
    bool tells;
  };
  for (const Row& row : {Row{"2", 2, true}, Row{"3", 3, false}, Row{"0", 0, false}, Row{"-1", 3, false}}) {
    std::filesystem::remove(path_);
    VEXConfiguration::setValue("LOG_MAX_FEATURES", row.limit);
    openQuietly();
    for (int i = 0; i < 3; ++i) logFeature(*makeFeature("t" + std::to_string(i)), VEXSeverity::Inform, 0);
    std::string lines = close();
    for (int i = 0; i < 3; ++i)
      EXPECT_EQ(lines.find("`t" + std::to_string(i) + "'") != lines.npos, i < row.shown) << row.limit << i;
    EXPECT_EQ(lines.find(formatMessage(246007, {"1"})) != lines.npos, row.tells) << row.limit;
  }
}

TEST_F(Log, TracesAndBadNews) {
  VEXConfiguration::setValue("ORV_DEBUG", "BADNEWS");
  openQuietly();
  VEXStatus failure = makeStatus(261002, {"file"});
  logStatus(*failure);
  ignoreStatus(makeStatus(199999));  // a number without text
  std::string text = failure->message();
  std::string lines = close();
  EXPECT_EQ(lines.find("INFORM|BADNEWS: " + text + " TestBody(vexlog_test.cpp:"), 0U) << lines;
  EXPECT_NE(lines.find("ERROR |" + text + "\n"), lines.npos);
  EXPECT_NE(lines.find("BADNEWS: Message #199999 is not present in the message file"), lines.npos);
  EXPECT_EQ(lines.find(formatMessage(246010, {""})), lines.npos);
  VEXConfiguration::setValue("ORV_DEBUG", "ORV_STACK_TRACE");
  openQuietly();
  logStatus(*failure);
  EXPECT_NE(close().find(formatMessage(246010, {failure->trace()})), std::string::npos);
}

TEST(Messages, Formatting) {
  EXPECT_EQ(formatMessage(0, {"x"}), "");
  EXPECT_EQ(formatMessage(199998), "Message #199998 is not present in the message file");
  std::string whole = formatMessage(236005, {"KEY", "VALUE"});
  EXPECT_NE(whole.find("KEY"), whole.npos);
  EXPECT_NE(formatMessage(236005, {"KEY"}).find("%1"), std::string::npos);
}

// Loads the messages of a home made of this one file, in a fresh process, and prints the failure or message 7.
[[noreturn]] void loadInFreshProcess(const char* text) {
  std::string home = scratchDirectory() + "orv_home/";
  std::filesystem::remove_all(home);
  if (text != nullptr) {
    std::filesystem::create_directories(home + "messages");
    std::ofstream(home + "messages/texts.txt") << text;
  }
  VEXStatus failure = loadMessages(home);
  std::string shown = failure != nullptr ? failure->message() : formatMessage(7, {"p", "q"});
  std::fputs(("<" + shown + ">").c_str(), stderr);
  std::exit(0);
}

TEST(Messages, Files) {
  ::testing::FLAGS_gtest_death_test_style = "threadsafe";
  struct Row {
    const char* text;
    const char* shown;  // a pattern
  };
  for (const Row& row :
       {Row{"/ 7, x\n\n7, a %0,%1 %2 %0\r\n", "<a p,q %2 p>"}, Row{"7,  b\n7,c", "<c>"}, Row{"7,", "<>"},
        Row{"8, x", "<Message #7 is not present in the message file>"},
        Row{"7 x\n", "<Line `7 x' does not have the separator character `,' in it>"},
        Row{"7 , x\n", "<Line `7 , x' does not have a valid message number: `7 ' is not numeric>"},
        Row{", x\n", "<Line `, x' does not have a valid message number: `' is not numeric>"},
        Row{"99999999999, x\n", "`99999999999' is not numeric>"},
        Row{nullptr, "<Unable to open file: .*messages.  Make sure the file exists and can be opened.>"}})
    EXPECT_EXIT(loadInFreshProcess(row.text), ::testing::ExitedWithCode(0), row.shown);
  EXPECT_EXIT(
      {
        ::setenv("ORV_MSG_NUM_OUTPUT", "1", 1);
        loadInFreshProcess("7, text");
      },
      ::testing::ExitedWithCode(0), "<\\(#7\\) text>");
}

}  // namespace
