// Loading a configuration from file and command line, and asking it.
#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "tests/unit/support.h"
#include "vex/src/rowtext.h"
#include "vex/src/vexlog.h"

namespace {

std::vector<std::string> logged;
void takeLine(ORV_Int32, const char* text) {
  logged.emplace_back(text);
}

// Loads the text as a mapping file with the arguments behind it; all rows, or "#<number>" of the failure.
std::string load(const std::string& text, const std::vector<const char*>& arguments = {}) {
  std::string path;
  if (!text.empty()) {
    path = scratchDirectory() + "config.orv";
    std::ofstream(path) << text;
  }
  VEXStatus failure = VEXConfiguration::load(path, static_cast<int>(arguments.size()), arguments.data());
  std::string rows;
  VEXStringVector row;
  VEXConfiguration::rewind();
  while (VEXConfiguration::nextRow(row)) rows += rowText(row) + ";";
  EXPECT_TRUE(row.empty());
  return failure == nullptr ? rows : rows + "#" + std::to_string(failure->messageNumber());
}

// Gives `result`; may delete the feature.
class FixedCommand final : public VEXCommand {
 public:
  FixedCommand(std::string result, bool deletes) : result_(std::move(result)), deletes_(deletes) {}
  const char* name() const override { return "Fixed"; }
  VEXStatus execute(VEXFeaturePtr& feature, const VEXStringVector&, std::string& result) override {
    result = result_;
    if (deletes_) feature.reset();
    return nullptr;
  }
  VEXStatus extract(VEXFeaturePtr&, const VEXStringVector&, std::string&) override { return nullptr; }
  VEXStatus configure(const VEXStringVector&) override { return nullptr; }

 private:
  std::string result_;
  bool deletes_;
};

struct Case {
  std::string text;
  std::vector<const char*> arguments;
  std::string rows;
};

TEST(Configuration, CommandLineOutranksTheFile) {
  EngineScope engine;
  for (const Case& c :
       {Case{"", {}, ""}, Case{"A 1\nB 2\n", {"-A", "x"}, "B 2;A x;"}, Case{"A 1\nA 2\n", {"A", "x"}, "A x;"},
        Case{"A 1\n", {"+A", "x"}, "A 1;A x;"}, Case{"A 1\n", {"-+A", "x", "+A", "y"}, "A x;A y;"},
        Case{"A 1\n", {"-A", "x y", "-A", ""}, "A \"\";"}, Case{"", {"-A", "1", "--M", "2"}, "A 1;"},
        Case{"MACRO X 1\nDEFAULT_MACRO X 2\nA $(X)", {"--X", "3"}, "A 1;"},
        Case{"DEFAULT_MACRO X 2\nA $(X)", {"--X", "3"}, "A 3;"}, Case{"A $(X)", {"---X", "1 2"}, "A 1 2;"},
        Case{"A $(X)", {"-X", "3"}, "#261013"}, Case{"A 1\nB \"\n", {"-A", "x"}, "A 1;#261009"}})
    EXPECT_EQ(load(c.text, c.arguments), c.rows) << c.text;
  std::vector<const char*> odd = {"-A", "1", "b"};
  EXPECT_NE(
      VEXConfiguration::load("", 3, odd.data())
          ->message()
          .find(
              "Expected an even number of command line arguments, instead got 3 for command line: >> `-A' `1' `b' <<"),
      std::string::npos);
  EXPECT_EQ(VEXConfiguration::load(scratchDirectory() + "no.orv", 0, nullptr)->messageNumber(), 261002U);
}

TEST(Configuration, ComputesTokens) {
  EngineScope engine;
  VEXCommandRegistry& registry = VEXCommandRegistry::instance();
  registry.registerCommand(std::make_unique<FixedCommand>("$[@Again()]", false), "Again");
  registry.registerCommand(std::make_unique<FixedCommand>("gone", true), "Gone");
  for (const Case& c :
       {Case{"A $[@Concatenate(a,b)]c$[@Concatenate(1)] $[x", {}, "A abc1 $[x;"},
        Case{"MACRO M q\nA $[@Concatenate($(M),b)]", {}, "A qb;"},
        Case{"$[@Concatenate(A,B)] 1\nAB 2\n", {}, "AB 1;AB 2;"},
        Case{"A $[@Concatenate(1)]\nB 2", {"-A", "$[@Not(1)]"}, "B 2;A $[@Not(1)];"},
        Case{"A $[@SupplyAttributes(x,1)]$[@Concatenate(&x)]", {}, "A 1;"},
        Case{"A $[@NoSuchFunction()]", {}, "A $[@NoSuchFunction()];#209002"},
        Case{"A $[@Concatenate($,[)]@Concatenate(x)]", {}, "A x;"}, Case{"A $[@Again()]", {}, "A $[@Again()];#236007"},
        Case{"A $[@Gone()]\nB $[@Concatenate(1)]", {}, "A gone;B $[@Concatenate(1)];#236002"}})
    EXPECT_EQ(load(c.text, c.arguments), c.rows) << c.text;
  ASSERT_EQ(load("$[@Concatenate(A,B)] 1\nAB 2\n"), "AB 1;AB 2;");
  VEXStringVector list;
  EXPECT_TRUE(VEXConfiguration::values("AB", list));
  EXPECT_EQ(list, VEXStringVector({"1", "2"}));
  EXPECT_FALSE(VEXConfiguration::contains("$[@Concatenate(A,B)]"));
}

TEST(Configuration, ComputingNeedsTheEngine) {
  VEXConfiguration alone;
  EXPECT_EQ(load("A $[@Concatenate(a,b)]"), "A $[@Concatenate(a,b)];#236002");
}

TEST(Configuration, AnswersByKeyword) {
  VEXLogFile log;
  VEXConfiguration configuration;
  log.setCallback(takeLine);
  ASSERT_EQ(log.open(), nullptr);
  ASSERT_EQ(
      load("A 1 \"x y\"\na 5\nA yEs\nN 12.0\nR 1e3\nBAD 1x\nT TRUE\nF no\nORV_DEBUG one\nORV_DEBUG two three",
           {"-EMPTY", "", "+A", ""}),
      "A 1 \"x y\";a 5;A yEs;N 12.0;R 1e3;BAD 1x;T TRUE;F no;ORV_DEBUG one;ORV_DEBUG two three;EMPTY \"\";A \"\";");
  std::string text = "kept";
  EXPECT_FALSE(VEXConfiguration::value("EMPTY", text));
  EXPECT_FALSE(VEXConfiguration::value("A", text));
  EXPECT_FALSE(VEXConfiguration::value("NONE", text));
  EXPECT_EQ(text, "kept");
  EXPECT_TRUE(VEXConfiguration::joinedValue("A", text, "/"));
  EXPECT_EQ(text, "1/x y/yEs/");
  VEXConfiguration::setValue("A", "yEs");
  EXPECT_TRUE(VEXConfiguration::flag("A") && VEXConfiguration::flag("T"));
  EXPECT_FALSE(VEXConfiguration::flag("F") || VEXConfiguration::flag("NONE") || VEXConfiguration::flag("EMPTY"));
  std::int32_t number = 7;
  double real = 7.0;
  EXPECT_TRUE(VEXConfiguration::intValue("N", number) && VEXConfiguration::doubleValue("R", real));
  EXPECT_EQ(number, 12);
  EXPECT_EQ(real, 1000.0);
  logged.clear();
  EXPECT_FALSE(VEXConfiguration::intValue("BAD", number) || VEXConfiguration::doubleValue("BAD", real));
  EXPECT_FALSE(VEXConfiguration::intValue("NONE", number));
  EXPECT_EQ(logged.size(), 2U);
  EXPECT_TRUE(VEXConfiguration::debugWord("one") && VEXConfiguration::debugWord("three"));
  EXPECT_FALSE(VEXConfiguration::debugWord("ONE"));
  VEXConfiguration::insertFront({"a", "4"});
  VEXStringVector list;
  EXPECT_TRUE(VEXConfiguration::values("a", list));
  EXPECT_EQ(list, VEXStringVector({"4", "5"}));
  logged.clear();
  VEXConfiguration::dump();
  EXPECT_EQ(logged.size(), 14U + 9U);  // emptied rows keep their numbers; one line a keyword
}

TEST(Configuration, NormalisesPaths) {
  struct Row {
    const char* path;
    const char* normal;
  };
  for (const Row& row : {Row{"a\\b/c", "a/b/c"}, Row{"a//b\\\\\\c", "a/b/c"}, Row{"//srv//x", "//srv/x"},
                         Row{"///x", "//x"}, Row{"C:\\d\\", "C:/d/"}, Row{"http://a//b", "http://a//b"},
                         Row{"ftp://a", "ftp://a"}, Row{"", ""}, Row{"/", "/"}, Row{"NUL:", "/dev/null"}})
    EXPECT_EQ(VEXConfiguration::normalisePath(row.path), row.normal) << row.path;
}

}  // namespace
