// Delimited text: what the lines of a file become, and what rows become.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <thread>

#include "tests/unit/tables/tabletest.h"
#include "vex/tables/sepvalin.h"
#include "vex/tables/sepvalot.h"

namespace {

using Delimited = TableTest;

const std::pair<std::string, std::string> kStrip{"CSV_STRIP_QUOTES", "yes"};

TEST_F(Delimited, Reads) {
  struct Row {
    const char* what;
    std::string bytes;
    Pairs fields;
    std::string rows;
  };
  const Pairs abc = {{"a", "char(5)"}, {"b", ""}, {"c", ""}};
  const Row rows[] = {
      {"line ends", "1,2,3\r\n4,5,6\n7,8,9", abc, "1|2|3\n4|5|6\n7|8|9\n"},
      {"last line with a carriage return alone", "1,2,3\r", abc, "1|2|3\n"},
      {"carriage returns inside a line are data", "1\r,2,3\n", abc, "1\r|2|3\n"},
      {"an empty file", "", abc, ""},
      {"an empty line is a row", "1,2,3\n\n4,5,6\n", abc, "1|2|3\n||\n4|5|6\n"},
      {"short and long rows", "1\n1,2,3,4,5\n,\n", abc, "1||\n1|2|3\n||\n"},
      {"zero bytes are data", std::string("a\0b,\0,c\n", 8), abc, std::string("a\0b|\0|c\n", 8)},
      {"a byte order mark is not data", "\xEF\xBB\xBFx,y,z\n", abc, "x|y|z\n"},
      {"separator", "1;2,2;3\n", {{"CSV_SEPARATOR", "(;)"}, abc[0], abc[1], abc[2]}, "1|2,2|3\n"},
      {"separator of another form", "", {{"CSV_SEPARATOR", ";"}}, "#307004"},
      {"quotes stay", "\"a,\"\"b\",c\n", abc, "\"a|\"\"b\"|c\n"},
      {"quotes go", "\"a,\"\"b\",c\n", {kStrip, abc[0], abc[1]}, "a,\"b|c\n"},
      {"quotes asked off", "\"a\"\n", {{"CSV_STRIP_QUOTES", "no"}, abc[0]}, "\"a\"\n"},
      {"an empty quoted field", "\"\",\"x\",\n", {kStrip, abc[0], abc[1], abc[2]}, "|x|\n"},
      {"doubled quotes at the edges",
       "\"\"\"a\"\"\",\"\"\"\",\"b\"\"\"\n",
       {kStrip, abc[0], abc[1], abc[2]},
       "\"a\"|\"|b\"\n"},
      {"quotes inside a field stay", "a\"b,c\"d,e\n", {kStrip, abc[0], abc[1]}, "a\"b,c\"d|e\n"},
      {"a quote that never ends", "\"a,b\nc,d\n", {kStrip, abc[0], abc[1]}, "a,b|\nc|d\n"},
      {"control bytes in quotes stay", "\"a\x01,\x02\",c\n", {kStrip, abc[0], abc[1]}, "a\x01,\x02|c\n"},
      {"skipped lines", "h1\nh2\n1,2,3\n", {abc[0], abc[1], abc[2], {"CSV_SKIP_LINES", "2"}}, "1|2|3\n"},
      {"more to skip than there is", "h1\nh2", {abc[0], {"CSV_SKIP_LINES", "2000000000"}}, ""},
      {"a count that is none", "", {{"CSV_SKIP_LINES", "-1"}}, "#307006"},
      {"another", "", {{"CSV_SKIP_LINES", "one"}}, "#307006"},
      {"an empty one", "", {{"CSV_SKIP_LINES", ""}}, "#307006"},
      {"a column twice", "", {{"a", ""}, {"a", ""}}, "#307008"},
      {"a column twice in the first line", "a,a\n", {{"CSV_SKIP_LINES", "1"}}, "#307008"},
      {"a line without end", std::string(VEXInputFile::kLongestLine + 2, 'x'), abc, "#307010"},
      {"one to skip without end",
       std::string(VEXInputFile::kLongestLine + 2, 'x'),
       {{"CSV_SKIP_LINES", "1"}},
       "#307010"},
      {"more columns than can be meant", std::string(1000000, ','), {}, "#307013"},
  };
  for (const Row& row : rows) {
    VEXSeparatedInput input(put("t.csv", row.bytes));
    EXPECT_EQ(rowsOf(input, row.fields), row.rows) << row.what;
  }
  VEXSeparatedInput missing(at("missing.csv"));
  EXPECT_EQ(rowsOf(missing), "#307002");
  VEXSeparatedInput unreadable("/proc/self/mem");  // opens, and every read at its start fails
  EXPECT_EQ(rowsOf(unreadable, {{"a", ""}}), "#307009");
}

TEST_F(Delimited, TakesColumnsFromTheFile) {
  struct Row {
    const char* bytes;
    Pairs fields;
    VEXStringVector names;
    const char* rows;
  };
  const std::pair<std::string, std::string> skip{"CSV_SKIP_LINES", "1"};
  for (const Row& row :
       {Row{"a,b\n1,2\n", {skip}, {"a", "b"}, "1|2\n"}, Row{"1,2\n3,4,5\n", {}, {"COL0", "COL1"}, "1|2\n3|4\n"},
        Row{"a,,\n1,2\n", {skip}, {"a", "COL1", "COL2"}, "1|2|\n"},
        Row{"\"a,b\",\"c\"\n1,2\n", {skip, kStrip}, {"a,b", "c"}, "1|2\n"},
        Row{"\xEF\xBB\xBF"
            "a;b\n1;2\n",
            {skip, {"CSV_SEPARATOR", "(;)"}},
            {"a", "b"},
            "1|2\n"},
        Row{"x\na,b\n1,2\n", {{"CSV_SKIP_LINES", "2"}}, {"COL0", "COL1"}, "1|2\n"},
        Row{"\n1,2\n", {}, {"COL0"}, "\n1\n"}, Row{"", {skip}, {}, ""}}) {
    VEXSeparatedInput input(put("t.csv", row.bytes));
    EXPECT_EQ(rowsOf(input, row.fields), row.rows) << row.bytes;
    EXPECT_EQ(input.columnNames(), row.names) << row.bytes;
  }
  EXPECT_TRUE(logged(VEXSeverity::Warn, "Line 1 of"));
}

TEST_F(Delimited, Writes) {
  struct Row {
    Pairs fields;
    std::vector<std::vector<std::string_view>> rows;
    std::uint32_t number;
    std::string bytes;
  };
  const std::string wide(300000, 'x');
  const Pairs ab = {{"a", "char(3)"}, {"b", "number(6,2)"}};
  const std::pair<std::string, std::string> named{"CSV_OUTPUT_FIELDNAMES", "Yes"};
  for (const Row& row : {
           Row{ab, {{"longer, than 3", "1.5"}, {"", ""}}, 0, "longer, than 3,1.50\n,\n"},
           Row{ab, {{"", "-2.005"}, {"", "abc"}, {"", "12345.678"}}, 0, ",-2.00\n,abc\n,12345.678\n"},
           Row{{named, ab[0], {"CSV_SEPARATOR", "(|)"}, ab[1]}, {{"x", "1"}, {"y", "2"}}, 0, "a|b\nx|1.00\ny|2.00\n"},
           Row{{named, ab[0]}, {}, 0, "a\n"},
           Row{{ab[0], {"b", "anything"}}, {{wide, "2"}}, 0, wide + ",2\n"},
           Row{{{"i", "integer"}, {"s", "smallint"}}, {{"2.0", "40000"}}, 0, "2,40000\n"},
           Row{{ab[0], ab[0]}, {}, 308006, ""},
           Row{{{"CSV_SEPARATOR", "(;"}}, {}, 308005, ""},
           Row{{{"n", "number(5)"}}, {}, 876003, ""},
           Row{ab, {{"one"}}, 308009, ""},
       }) {
    VEXSeparatedOutput output(at("o.csv"));
    EXPECT_EQ(write(output, row.fields, row.rows), row.number);
    output.abort();
    EXPECT_EQ(bytesOf(at("o.csv")), row.bytes);
    EXPECT_EQ(std::filesystem::exists(at("o.csv")), row.number == 0);
  }
  EXPECT_TRUE(logged(VEXSeverity::Warn, "'b' of"));
}

TEST_F(Delimited, FailsOnAFullDisk) {
  const std::string wide(500000, 'x');
  const Pairs named = {{"a", "char(3)"}, {"CSV_OUTPUT_FIELDNAMES", "YES"}};
  VEXSeparatedOutput small("/dev/full");
  EXPECT_EQ(write(small, {{"a", "char(3)"}}, {{"1"}}), 308002u);
  VEXSeparatedOutput large("/dev/full");
  EXPECT_EQ(write(large, {{"a", "char(3)"}}, {{wide}, {wide}, {wide}}), 308008u);
  VEXSeparatedOutput names("/dev/full");
  EXPECT_EQ(write(names, {{std::string(2000000, 'n'), "char(3)"}, named[1]}, {{"1"}}), 308007u);
  VEXSeparatedOutput nowhere(at("no/such/file.csv"));
  EXPECT_EQ(write(nowhere, named, {}), 308003u);
  {
    VEXSeparatedOutput forgotten("/dev/full");
    EXPECT_EQ(numberOf(forgotten.open()), 0u);
    EXPECT_EQ(numberOf(forgotten.writeRow({})), 0u);
  }
  EXPECT_TRUE(logged(VEXSeverity::Error, "given up"));
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
}

// Neither waits for ever nor ends the process.
TEST_F(Delimited, FailsOnAPipeWhoseReaderHasGone) {
  ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
  std::thread reader([&] {
    const int end = ::open(at("pipe").c_str(), O_RDONLY);
    char block[100];
    EXPECT_EQ(::read(end, block, sizeof block), 100);
    ::close(end);
  });
  const std::string wide(500000, 'x');
  VEXSeparatedOutput output(at("pipe"));
  EXPECT_EQ(write(output, {{"a", "char(3)"}}, {{wide}, {wide}, {wide}, {wide}, {wide}}), 308008u);
  reader.join();
}

}  // namespace
