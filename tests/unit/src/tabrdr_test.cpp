// The row language: what each text gives, row by row, and the number of each fault.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/unit/support.h"
#include "vex/src/homedir.h"
#include "vex/src/tabrdr.h"
#include "vex/src/tclbind.h"

namespace {

// All rows as "a|b c;d": tokens between bars, a semicolon behind each row; "#<number>" at a failure.
std::string rowsOf(TableReader& reader) {
  std::string text;
  VEXStringVector row;
  for (;;) {
    VEXStatus failure = reader.checkOpen();
    if (failure == nullptr) failure = reader.getRow(row);
    if (failure != nullptr) return text + "#" + std::to_string(failure->messageNumber());
    if (row.empty()) return text;
    for (std::size_t i = 0; i < row.size(); ++i) text += (i > 0 ? "|" : "") + row[i];
    text += ";";
  }
}

std::string rowsOf(std::string_view text) {
  return rowsOf(*TableReader::overText(text));
}

struct Case {
  std::string text;
  std::string rows;
};

TEST(TableReader, Tokens) {
  using namespace std::string_literals;
  for (const Case& c : {Case{"", ""},
                        Case{"a", "a;"},
                        Case{"a b\n\n  \t\nc\td", "a|b;c|d;"},
                        Case{"a\r\nb\r\n", "a;b;"},
                        Case{"\"a b\"c d", "a bc|d;"},
                        Case{"a \"\" b", "a|b;"},
                        Case{"\"\"\nb", "b;"},
                        Case{"say \\\"hi\\\"", "say|\"hi\";"},
                        Case{"\"a \\\" b\"", "a \" b;"},
                        Case{"a\\b", "a\\b;"},
                        Case{"@F(a, b) c", "@F(a,b)|c;"},
                        Case{"@F(\"a, b\", c)", "@F(a, b,c);"},
                        Case{"(a\tb)", "(a|b);"},
                        Case{"\"(\" \":)\"", "(|:);"},
                        Case{"@F(@G( a ) , b)", "@F(@G(a),b);"},
                        Case{"abc # def", "abc|#|def;"},
                        Case{"# abc\n  # def\nx", "x;"},
                        Case{"a\0b"s, "a\0b;"s},
                        Case{"a \\\nb", "a|b;"},
                        Case{"a\\  \nb", "a|b;"},
                        Case{"a \\", "a;"},
                        Case{"DELIM ,\na b,c,,d\nDELIM\na b,c", "a b|c|d;a|b,c;"},
                        Case{"DELIM,\na,b", "a|b;"},
                        Case{" DELIM ,\na,b", "DELIM|,;a,b;"},
                        Case{"\"a", "#261009"},
                        Case{"a)", "#261010"},
                        Case{"\"a )", "#261009"},
                        Case{"(a", "#261011"},
                        Case{"a \\\n\nb", "#261008"},
                        Case{"a \\\n# x\nb", "#261008"},
                        Case{"a \\\nMACRO B c\n", "#261008"},
                        Case{"a \\\nINCLUDE x\n", "#261008"},
                        Case{"INCLUDE x", "#261018"},
                        Case{"INCLUDE [puts a]", "#261018"}})
    EXPECT_EQ(rowsOf(c.text), c.rows) << c.text;
}

TEST(TableReader, BlockComments) {
  for (const Case& c :
       {Case{"/* a\nb\nc */\nd", "d;"}, Case{"/* a */\nd", "d;"}, Case{"  /*\n/* x\n*/ \t\nhidden\n*/\nd", "d;"},
        Case{"a /* b", "a|/*|b;"}, Case{"/*\nDELIM ,\nMACRO A b\n\"\n*/\na,b", "a,b;"}, Case{"a */", "#261005"},
        Case{"/* a\nb", "#261003"}, Case{"a \\\n/* x */\nb", "#261008"}})
    EXPECT_EQ(rowsOf(c.text), c.rows) << c.text;
  std::string text = "-- one\n{{ two\n}}\na +\nb";
  std::string path = scratchDirectory() + "syntax.txt";
  std::ofstream(path) << text;
  TableReader other(path, "--", "{{", "}}", "+");
  EXPECT_EQ(rowsOf(other), "a|b;");
  TableReader bare(path, nullptr, nullptr, nullptr, nullptr, "e\n");
  EXPECT_EQ(rowsOf(bare), "-- on;{{ two;}};a +;b;");
}

TEST(TableReader, Macros) {
  ::setenv("ORV_TEST_A", "x${ORV_TEST_B}y", 1);
  ::setenv("ORV_TEST_B", "b 1", 1);
  ::setenv("ORV_TEST_LOOP", "${ORV_TEST_LOOP}", 1);
  std::string many;
  for (int i = 0; i < 4000; ++i) many += "${ORV_TEST_B}";
  for (const Case& c : {Case{"MACRO A 1 2\nx $(A)", "x|1|2;"},
                        Case{"MACRO A   \"q r\" \t\nx $(A)y", "x|q ry;"},
                        Case{"MACRO A \\\nb\\\n c\n$(A)", "b|c;"},
                        Case{"MACRO A\nx$(A)\n$(A)\ny", "x;y;"},
                        Case{"MACRO A $(B)\nMACRO B 7\n$(A)", "7;"},
                        Case{"MACRO A 1\nMACRO A 2\n$(A)", "2;"},
                        Case{"MACRO A 1\nDEFAULT_MACRO A 2\n$(A)", "1;"},
                        Case{"DEFAULT_MACRO A 2\n$(A)", "2;"},
                        Case{"$(A", "#261011"},
                        Case{"\"$(A\" x", "$(A|x;"},
                        Case{"MACRO A (B)\nMACRO B 9\n$$(A)", "9;"},
                        Case{"MACRO", "MACRO;"},
                        Case{"MACRO  ", "#261007"},
                        Case{"$(NONE)", "#261013"},
                        Case{"MACRO A $(A)\n$(A)", "#261012"},
                        Case{"MACRO A $(A)$(A)\n$(A)", "#261012"},
                        Case{"${ORV_TEST_A}", "xb|1y;"},
                        Case{"${ORV_TEST_LOOP}", "#261012"},
                        Case{"${ORV_TEST_NONE}", "#261001"},
                        Case{"${}", "#261001"},
                        Case{"${A", "${A;"},
                        Case{"MACRO A ${ORV_TEST_B}\n$(A)", "b|1;"}})
    EXPECT_EQ(rowsOf(c.text), c.rows) << c.text;
  EXPECT_EQ(rowsOf(many).find('#'), std::string::npos);
  auto lenient = TableReader::overText("a $(NONE) b $(NONE)");
  lenient->allowUndefinedMacros(true);
  EXPECT_EQ(rowsOf(*lenient), "a|b;");
  auto given = TableReader::overText("DEFAULT_MACRO A 2\n$(A) $(D)x\nMACRO A 3\n$(A) $(ORV_CF_DIR) $(ORV_HOME)");
  given->addMacros({"A", "1", "D", "c:\\dir\\"});
  EXPECT_EQ(rowsOf(*given), "1|c:\\dir/x;3|./|" + getHomeDirectory() + ";");
}

TEST(TableReader, BoundsWhatALineMayBecome) {
  std::string half(TableReader::kLongestRow / 2 + 1, 'x');
  EXPECT_EQ(rowsOf("MACRO A " + half + "\n$(A)$(A)"), "#261017");
  EXPECT_EQ(rowsOf("a\n" + half + half), "a;#261017");
  EXPECT_EQ(rowsOf("MACRO A " + half + "\\\n" + half), "#261017");
}

class Includes : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::remove_all(directory_);
    std::filesystem::create_directories(directory_ + "sub dir");
    std::filesystem::create_directories(directory_ + "temp");
    ::setenv("ORV_TEMP", (directory_ + "temp").c_str(), 1);
  }
  void TearDown() override {
    EXPECT_TRUE(std::filesystem::is_empty(directory_ + "temp"));  // whatever happened
    ::unsetenv("ORV_TEMP");
  }
  void write(const std::string& name, const std::string& text) { std::ofstream(directory_ + name) << text; }
  std::string read(const std::string& name) {
    TableReader reader(directory_ + name, "#", nullptr, nullptr, "\\");
    return rowsOf(reader);
  }
  std::string directory_ = scratchDirectory() + "orv_includes/";
};

TEST_F(Includes, RowsAppearWhereTheDirectiveStands) {
  write("main.orv", "a\nMACRO M 1\nDELIM ,\nINCLUDE \"sub dir\\in.orv\"  \nb,$(N),$(ORV_CF_DIR)\n");
  write("sub dir/in.orv", "c,d $(M) $(ORV_MF_DIR)\nDELIM\nMACRO N 2\ne f\n");
  EXPECT_EQ(read("main.orv"), "a;c|d 1 " + directory_ + "sub dir/;e|f;b|2|" + directory_ + ";");
  write("empty.orv", "# nothing\n");
  write("outer.orv", "INCLUDE $(ORV_CF_DIR)//empty.orv\nINCLUDE \\\nempty.orv\nx\n");
  EXPECT_EQ(read("outer.orv"), "x;");
  write("undefined.orv", "INCLUDE names.orv\n");
  write("names.orv", "a $(NONE)\n");
  TableReader lenient(directory_ + "undefined.orv", "#");
  lenient.allowUndefinedMacros(true);
  EXPECT_EQ(rowsOf(lenient), "a;");
}

TEST_F(Includes, PositionsNameTheFileOfTheRow) {
  write("main.orv", "# c\na \\\nb\nINCLUDE in.orv\n");
  write("in.orv", "\nx\n");
  TableReader reader(directory_ + "main.orv", "#", nullptr, nullptr, "\\");
  VEXStringVector row;
  ASSERT_EQ(reader.getRow(row), nullptr);
  EXPECT_EQ(reader.rowPosition(), "Row came from between lines 0 and 3 of file " + directory_ + "main.orv");
  ASSERT_EQ(reader.getRow(row), nullptr);
  EXPECT_EQ(reader.rowPosition(), "Row came from between lines 0 and 2 of file " + directory_ + "in.orv");
}

TEST_F(Includes, Faults) {
  write("self.orv", "a\nINCLUDE self.orv\n");
  write("one.orv", "INCLUDE sub dir/../two.orv\n");
  write("two.orv", "b\nINCLUDE .//one.orv\n");
  write("gone.orv", "a\nINCLUDE nowhere.orv\n");
  write("directory.orv", "INCLUDE temp\n");
  write("deep.orv", "\"\n");
  write("outer.orv", "INCLUDE deep.orv\n");
  for (int i = 0; i < 40; ++i)
    write("chain" + std::to_string(i), "INCLUDE chain" + std::to_string(i + 1) + "\nINCLUDE chain40\n");
  write("chain40", "# end\n");
  for (const Case& c : {Case{"self.orv", "a;#261006"}, Case{"one.orv", "b;#261006"}, Case{"gone.orv", "a;#261002"},
                        Case{"nowhere.orv", "#261002"}, Case{"directory.orv", "#261002"}, Case{"outer.orv", "#261009"},
                        Case{"chain0", "#261016"}, Case{"chain20", ""}})
    EXPECT_EQ(read(c.text), c.rows) << c.text;
  TableReader reader(directory_ + "outer.orv", "#");
  VEXStringVector row;
  VEXStatus failure = reader.getRow(row);
  ASSERT_NE(failure, nullptr);
  EXPECT_NE(failure->trace().find(" in file included from `" + directory_ + "outer.orv'"), std::string::npos);
  TableReader memory("/proc/self/mem", "#");  // opens, and cannot be read
  EXPECT_EQ(rowsOf(memory), "#261004");
}

TEST_F(Includes, ScriptsAndPrograms) {
  if (!VEXTclInterp().isReady()) GTEST_SKIP() << "no Tcl library on this machine";
  std::string here = std::filesystem::current_path();
  write("tcl.orv",
        "MACRO N 3\nINCLUDE [ for {set i 0} {$i < $(N)} {incr i} { \\\n puts \"row $i \\\"[file tail [pwd]]\\\"\" } "
        "]\nlast");
  EXPECT_EQ(read("tcl.orv"), "row|0|orv_includes;row|1|orv_includes;row|2|orv_includes;last;");
  write("program.orv", "INCLUDE | echo a \"b c\" && echo \nx");
  EXPECT_EQ(read("program.orv"), "a|b|c|&&|echo;x;");
  write("macro.orv", "INCLUDE [puts {MACRO A 5}]\n$(A)");
  EXPECT_EQ(read("macro.orv"), "5;");
  write("fault.orv", "INCLUDE [cd / ; error \"no luck\"]");
  EXPECT_EQ(read("fault.orv"), "#261014");
  write("exit.orv", "INCLUDE [exit 3]");
  EXPECT_EQ(read("exit.orv"), "#261014");
  write("program_fault.orv", "INCLUDE |false");
  EXPECT_EQ(read("program_fault.orv"), "#261015");
  write("no_program.orv", "INCLUDE |/no/such/program");
  EXPECT_EQ(read("no_program.orv"), "#261015");
  write("bad_output.orv", "INCLUDE [puts (]");
  EXPECT_EQ(read("bad_output.orv"), "#261011");
  EXPECT_EQ(std::filesystem::current_path(), here);
}

TEST(TclInterp, VariablesTracesAndCommands) {
  VEXTclInterp interp;
  if (!interp.isReady()) GTEST_SKIP() << "no Tcl library on this machine";
  std::string type = "road";
  std::string seen;
  ASSERT_TRUE(interp.traceVar("Type", [&](VEXTclInterp::Access access, const std::string&) {
    if (access == VEXTclInterp::Access::Read) interp.setVar("Type", type);
    if (access == VEXTclInterp::Access::Write) interp.getVar("Type", type);
    if (access == VEXTclInterp::Access::Unset) type = "none";
  }));
  ASSERT_TRUE(interp.eval("array set A {}"));
  ASSERT_TRUE(interp.traceVar("A", [&](VEXTclInterp::Access access, const std::string& element) {
    seen += std::to_string(static_cast<int>(access)) + element + " ";
    if (access == VEXTclInterp::Access::Read) interp.setVar("A", "[" + element + "]", element);
  }));
  ASSERT_TRUE(interp.createCommand("Count", [](const VEXStringVector& words, std::string& result) {
    result = words.empty() ? "no words" : std::to_string(words.size());
    return !words.empty();
  }));
  struct Row {
    const char* script;
    const char* result;
  };
  for (const Row& row : {Row{"expr 1+1", "2"}, Row{"set Type", "road"}, Row{"set Type river", "river"},
                         Row{"unset Type; set Type", "none"}, Row{"set A(x)", "[x]"}, Row{"set A(y) 1", "1"},
                         Row{"unset A(y)", ""}, Row{"Count a {b c}", "2"}, Row{"catch Count r; set r", "no words"},
                         Row{"string length \xC3\xA9", "1"}, Row{"expr 1/3.0", "0.333333333333333"}}) {
    EXPECT_TRUE(interp.eval(row.script)) << interp.errorInfo();
    EXPECT_EQ(interp.result(), row.result) << row.script;
  }
  EXPECT_EQ(type, "none");
  EXPECT_EQ(seen, "0x 1y 2y ");
  EXPECT_FALSE(interp.eval("Count"));
  std::string decoded;
  ASSERT_TRUE(VEXTclInterp::decodeBackslashes("a\\tb\\x41\\\\\\", decoded));
  EXPECT_EQ(decoded, "a\tbA\\\\");
}

}  // namespace
