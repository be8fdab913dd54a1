// Command lines as the program gets them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "tests/unit/support.h"
#include "vex/inc/orvane.h"
#include "vex/internat/internat.h"
#include "vex/src/homedir.h"
#include "vex/src/orvtran.h"

namespace {

std::vector<std::string> lines;     // from the log callback: severity and text
std::vector<std::string> failures;  // from the error callback

struct Outcome {
  std::int32_t code;
  std::string out;
  std::string error;
};

Outcome run(const std::vector<std::string>& arguments, bool showBanner = true) {
  std::vector<const char*> argv = {"orv"};
  for (const std::string& argument : arguments) argv.push_back(argument.c_str());
  lines.clear();
  failures.clear();
  ::testing::internal::CaptureStdout();
  ::testing::internal::CaptureStderr();
  std::int32_t code = ORV_Translate(
      static_cast<std::int32_t>(argv.size()), argv.data(), showBanner ? 1 : 0,
      [](ORV_Int32 severity, const char* text) { lines.push_back(std::to_string(severity) + text); },
      [](const char* text) { failures.emplace_back(text); });
  std::string out = ::testing::internal::GetCapturedStdout();
  return {code, out, ::testing::internal::GetCapturedStderr()};
}

std::string write(const std::string& name, const std::string& text) {
  std::string path = scratchDirectory() + name;
  std::ofstream(path) << text;
  return path;
}

std::string usage() {
  std::string text;
  EXPECT_EQ(ORVTranslator::getUsage("orv", text), nullptr);
  return text;
}

std::string report(const std::string& message) {
  return "\n" + message + "\nProgram Terminating\n\nTranslation FAILED.\n";
}

bool startsWithBanner(const std::string& text) {
  return text.starts_with("           " + std::string(kVersionText) + "\n" + std::string(28, ' ')) &&
         text.ends_with("\n\n");
}

// A mapping file that copies a delimited file of two points to another.
std::string goodMapping() {
  std::filesystem::remove_all(scratchDirectory() + "entry_out");
  std::filesystem::create_directories(scratchDirectory() + "entry_in");
  write("entry_in/in.csv", "1,a\n2,b\n");
  return write("good.orv",
               "READER_TYPE TABLE\nREADER_KEYWORD IN\nWRITER_TYPE TABLE\nWRITER_KEYWORD OUT\n"
               "IN_DATASET \"$(ORV_MF_DIR)entry_in\"\nOUT_DATASET \"$(ORV_MF_DIR)entry_out\"\n"
               "IN_DEF in CSV in.csv id char(5) name char(5)\nOUT_DEF out CSV out.csv id char(5) name char(5)\n"
               "IN in id %id name %name\nOUT out id %id name %name\n");
}

TEST(Entry, WordsOfTheCommandLine) {
  const std::string version = std::string(kVersionText) + "\n";
  const std::string home = "ORV_HOME is: `" + getHomeDirectory() + "'\n";
  struct Row {
    std::vector<std::string> arguments;
    std::string error;
    char bannerOn;  // 'o' standard output, 'e' error stream, in front of the rest
  };
  for (const Row& row :
       {Row{{}, usage(), 'o'}, Row{{"VERSION"}, version, '-'}, Row{{"-version"}, version, '-'},
        Row{{"--Version", "x"}, version, '-'}, Row{{"Home"}, home, '-'}, Row{{"REDIRECT_STDOUT"}, "", 'e'},
        Row{{"-redirect_stdout", "--version"}, version, 'e'}, Row{{"REDIRECT_STDOUT", "HOME"}, home, 'e'}}) {
    for (bool showBanner : {true, false}) {
      Outcome outcome = run(row.arguments, showBanner);
      std::string what = testing::PrintToString(row.arguments);
      EXPECT_EQ(outcome.code, 0) << what;
      EXPECT_EQ(startsWithBanner(outcome.out), row.bannerOn == 'o' && showBanner) << what;
      EXPECT_TRUE(outcome.error.ends_with(row.error)) << what << outcome.error;
      std::string before = outcome.error.substr(0, outcome.error.size() - row.error.size());
      EXPECT_EQ(startsWithBanner(before), row.bannerOn == 'e' && showBanner) << what;
      EXPECT_TRUE(failures.empty()) << what;
    }
  }
  EXPECT_EQ(ORV_Translate(0, nullptr, 0, nullptr, nullptr), 0);
}

TEST(Entry, WrongCommandLines) {
  std::string gone = scratchDirectory() + "gone.txt";
  std::string self = write("self.txt", "PARAMETER_FILE self.txt\n");
  write("self.txt", "PARAMETER_FILE \"" + self + "\"\n");
  std::string bad = write("bad.txt", "a \"\n");
  std::string empty = write("empty.txt", "# nothing\n");
  struct Row {
    std::vector<std::string> arguments;
    std::string message;
  };
  for (const Row& row : {Row{{"PARAMETER_FILE"}, usage()},
                         Row{{"parameter_file", "a", "b"}, usage()},
                         Row{{"COMMAND_FILE"}, usage()},
                         Row{{"CREATE_SOCKET"}, usage()},
                         Row{{"CREATE_SOCKET", "1", "2", "3"}, usage()},
                         Row{{"REGISTER_SOCKET", "1"}, usage()},
                         Row{{"REGISTER_SOCKET", "1", "2", "3", "4"}, usage()},
                         Row{{"GENERATE", "A", "B", "c"}, usage()},
                         Row{{"GENERATE", "A", "B", "c", "d", "-e"}, usage()},
                         Row{{"REDIRECT_STDOUT", "COMMAND_FILE"}, usage()},
                         Row{{"PARAMETER_FILE", empty}, usage()},
                         Row{{"Create_Socket", "1"}, formatMessage(875004, {"CREATE_SOCKET"})},
                         Row{{"REGISTER_SOCKET", "1", "2", "3"}, formatMessage(875004, {"REGISTER_SOCKET"})},
                         Row{{"-generate", "A", "B", "c", "d"}, formatMessage(875004, {"GENERATE"})},
                         Row{{"CFGENERATE", "A", "B", "c", "d", "-e", "f"}, formatMessage(875004, {"CFGENERATE"})},
                         Row{{"PARAMETER_FILE", gone}, formatMessage(261002, {gone})},
                         Row{{"COMMAND_FILE", gone}, formatMessage(261002, {gone})},
                         Row{{"COMMAND_FILE", bad}, formatMessage(261009, {"a \"", bad, "1"})},
                         Row{{"PARAMETER_FILE", self}, formatMessage(875003, {self, "16"})},
                         Row{{gone}, formatMessage(261002, {gone})}}) {
    std::string what = testing::PrintToString(row.arguments);
    Outcome outcome = run(row.arguments);
    EXPECT_EQ(outcome.code, -1) << what;
    EXPECT_TRUE(outcome.error.ends_with(report(row.message))) << what << outcome.error;
    EXPECT_EQ(failures, std::vector<std::string>{row.message}) << what;
    EXPECT_TRUE(lines.empty()) << what;
  }
  // The log is not open yet: console and callback only.
  Outcome odd = run({goodMapping(), "-LOG_STANDARDOUT"});
  EXPECT_EQ(odd.code, -1);
  EXPECT_NE(odd.error.find("instead got 1 for command line: >> `-LOG_STANDARDOUT' <<"), std::string::npos);
  EXPECT_TRUE(lines.empty());
}

TEST(Entry, ARunThatSucceeds) {
  std::string mapping = goodMapping();
  for (bool showBanner : {true, false}) {
    Outcome outcome = run({mapping}, showBanner);
    EXPECT_EQ(outcome.code, 0) << outcome.error;
    EXPECT_EQ(outcome.out.find(kVersionText) != std::string::npos, showBanner);
    EXPECT_EQ(outcome.error, showBanner ? "Translation was SUCCESSFUL.\n" : "");
    ASSERT_GT(lines.size(), 4U);
    EXPECT_EQ(lines[0], "0" + formatMessage(875002, {kVersionText}));
    EXPECT_EQ(lines[lines.size() - 3], "0" + formatMessage(875106, {"2", "0"}));
    EXPECT_EQ(lines[lines.size() - 2], "5" + formatMessage(875106, {"2", "0"}));
  }
  // The log takes the console: no banner and no verdict, when the word stands in this place.
  Outcome logged = run({mapping, "LOG_STANDARDOUT", "yes"});
  EXPECT_EQ(logged.out.find("|INFORM|" + formatMessage(875002, {kVersionText})), 0U);
  EXPECT_EQ(logged.error, "");
  Outcome dashed = run({mapping, "-LOG_STANDARDOUT", "yes"});
  EXPECT_EQ(dashed.error, "Translation was SUCCESSFUL.\n");
  EXPECT_EQ(dashed.out.find(std::string(11, ' ') + kVersionText), 0U);
  Outcome redirected = run({"REDIRECT_STDOUT", mapping});
  EXPECT_EQ(redirected.out, "");
  EXPECT_NE(redirected.error.find("Reading..."), std::string::npos);
}

TEST(Entry, AFailureIsReportedWhileTheLogIsOpen) {
  std::string mapping = write("untyped.orv", "READER_TYPE TABLE\nMACRO X 1\n");
  std::string log = scratchDirectory() + "failed.log";
  std::string message = formatMessage(231038, {"WRITER_TYPE"});
  for (bool toConsole : {false, true}) {
    std::filesystem::remove(log);
    std::vector<std::string> arguments = {mapping, "LOG_FILENAME", log};
    if (toConsole) arguments = {mapping, "LOG_STANDARDOUT", "yes", "LOG_FILENAME", log};
    Outcome outcome = run(arguments);
    EXPECT_EQ(outcome.code, -1);
    EXPECT_EQ(outcome.error, toConsole ? "" : report(message));
    EXPECT_EQ(failures, std::vector<std::string>{message});
    std::stringstream text;
    text << std::ifstream(log).rdbuf();
    std::size_t error = text.str().find("|ERROR |" + message + "\n");
    std::size_t fatal = text.str().find("|FATAL |" + formatMessage(875001) + "\n");
    std::size_t end = text.str().find("|INFORM|ORV Session Duration: ");
    EXPECT_TRUE(error < fatal && fatal < end && end != std::string::npos) << text.str();
  }
  Outcome noLog = run({mapping, "LOG_FILENAME", scratchDirectory() + "no/such/log"});
  EXPECT_NE(noLog.error.find(formatMessage(246011, {scratchDirectory() + "no/such/log"})), std::string::npos);
}

TEST(Entry, FilesOfParametersAndCommands) {
  std::string mapping = goodMapping();
  std::string parameters = write("parameters.txt", "# a run\n\"" + mapping + "\" \\\n -MAPPING_FILE_ID \"by file\"\n");
  Outcome outcome = run({"PARAMETER_FILE", parameters});
  EXPECT_EQ(outcome.code, 0) << outcome.error;
  EXPECT_EQ(outcome.error, "Translation was SUCCESSFUL.\n");
  std::string untyped = write("untyped.orv", "READER_TYPE TABLE\n");
  std::string commands =
      write("commands.txt", "gone.orv\n\"" + untyped + "\"\n\"" + mapping + "\"\nPARAMETER_FILE \"" + parameters +
                                "\"\nCOMMAND_FILE \"" + scratchDirectory() + "commands.txt\"\n");
  std::filesystem::remove_all(scratchDirectory() + "entry_out");
  outcome = run({"COMMAND_FILE", commands});
  EXPECT_EQ(outcome.code, 0);
  EXPECT_EQ(outcome.error, formatMessage(261002, {"gone.orv"}) + "\n" + formatMessage(231038, {"WRITER_TYPE"}) + "\n" +
                               formatMessage(875003, {commands, "16"}) + "\n");
  EXPECT_TRUE(failures.empty());
  EXPECT_TRUE(std::filesystem::exists(scratchDirectory() + "entry_out/out.csv"));
}

}  // namespace
