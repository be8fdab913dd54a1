// dBase: values, fields, records, and files that are broken on purpose.
#include <unistd.h>

#include <algorithm>
#include <random>
#include <thread>

#include "tests/unit/tables/tabletest.h"
#include "vex/inc/numtext.h"
#include "vex/tables/dbfcodec.h"
#include "vex/tables/dbfin.h"
#include "vex/tables/dbfout.h"

namespace {

using namespace std::string_literals;

class Dbf : public TableTest {
 protected:
  // Three rows in columns of every type.
  std::string sample() {
    VEXDBFOutput output(at("s.dbf"));
    EXPECT_EQ(write(output,
                    {{"NAME", "char(6)"}, {"N", "number(8,2)"}, {"D", "date"}, {"L", "logical"}, {"I", "number(4,0)"}},
                    {{"abc", "12", "19990131", "true", "7"},
                     {"longer text", "-0.5", "", "", ""},
                     {"", "1e3", "x", "no", "12.9"}}),
              0u);
    return bytesOf(at("s.dbf"));
  }
  std::string read(const std::string& bytes, const Pairs& fields = {}) {
    VEXDBFInput input(put("r.dbf", bytes));
    return rowsOf(input, fields);
  }
};

constexpr std::size_t kSampleHeader = 32 + 5 * 32 + 1;
constexpr std::size_t kSampleRecord = 1 + 6 + 8 + 8 + 1 + 4;
const char* const kSampleRows = "abc|12|19990131|true|7\nlonger|-0.5|||0\n|1000|x|false|12\n";

TEST_F(Dbf, NumbersGoIntoTheirField) {
  struct Row {
    std::size_t width, decimals;
    const char *text, *bytes;  // null: lost
  };
  for (const Row& row :
       {Row{5, 2, "12", "12.00"},          Row{5, 2, "123456.5", nullptr}, Row{5, 2, "1234567", nullptr},
        Row{5, 2, "1234.567", "1234."},    Row{5, 2, "123.456", "123.4"},  Row{5, 2, "12345", nullptr},
        Row{6, 2, "1.999", "  1.99"},      Row{6, 2, "-.5", "  -.50"},     Row{6, 0, "12.9", "    12"},
        Row{6, 0, "12.", "    12"},        Row{6, 0, " 7 ", "     7"},     Row{6, 2, "", "      "},
        Row{6, 2, "  ", "      "},         Row{3, 0, "-123", nullptr},     Row{8, 2, "1.5e3", " 1500.00"},
        Row{8, 2, "1.5E+300", "1.5E+300"}, Row{6, 2, "1.5e+300", nullptr}, Row{6, 1, "abc", nullptr},
        Row{6, 1, "1.2.3", nullptr},       Row{6, 1, "-", nullptr},        Row{6, 1, "nan", nullptr},
        Row{6, 1, "1e999", nullptr},       Row{6, 1, "007", " 007.0"}}) {
    std::string place(row.width, ' ');
    EXPECT_EQ(dbf::putNumber(place.data(), row.width, row.decimals, row.text), row.bytes != nullptr) << row.text;
    EXPECT_EQ(place, row.bytes == nullptr ? std::string(row.width, ' ') : row.bytes) << row.text;
  }
}

// A field is so many bytes: no half of a UTF-8 character stands at its end, and other bytes are cut where they are.
TEST_F(Dbf, TextsAreCutBetweenCharacters) {
  struct Row {
    std::string_view text;
    std::size_t width;
    std::string_view bytes;
  };
  for (const Row& row :
       {Row{"abc", 2, "ab"}, Row{"a\xC3\xA4", 3, "a\xC3\xA4"}, Row{"a\xC3\xA4", 2, "a "}, Row{"\xC3\xA4", 1, " "},
        Row{"\xE2\x82\xACx", 3, "\xE2\x82\xAC"}, Row{"x\xE2\x82\xAC", 3, "x  "}, Row{"\xF0\x9F\x8C\x8D.", 3, "   "},
        Row{"\xE4\xF6\xFC", 2, "\xE4\xF6"}, Row{"\xA4\xA4\xA4\xA4\xA4", 4, "\xA4\xA4\xA4\xA4"},
        Row{"x\xE2\x82", 2, "x\xE2"}}) {
    std::string place(row.width, ' ');
    dbf::putText(place.data(), row.width, row.text);
    EXPECT_EQ(place, row.bytes);
  }
}

// A pipe has no way back to the header: small tables are patched before they leave, larger ones fail.
TEST_F(Dbf, WritesSmallTablesToAPipe) {
  for (const bool isLarge : {false, true}) {
    int ends[2];
    ASSERT_EQ(::pipe(ends), 0);
    std::string bytes;
    std::thread reader([&] {
      char block[4096];
      for (ssize_t count; (count = ::read(ends[0], block, sizeof block)) > 0;)
        bytes.append(block, static_cast<std::size_t>(count));
    });
    VEXDBFOutput output("/dev/fd/" + std::to_string(ends[1]));
    const std::vector<std::vector<std::string_view>> rows(isLarge ? 6000 : 2, {"x"});
    EXPECT_EQ(write(output, {{"A", "char(255)"}}, rows), isLarge ? 301002u : 0u);
    output.abort();
    ::close(ends[1]);
    reader.join();
    ::close(ends[0]);
    EXPECT_EQ(bytes.substr(4, 4), isLarge ? "\0\0\0\0"s : "\2\0\0\0"s);
  }
}

// Fields are looked at by sixteen bytes: at every width they give what each of them gives alone.
TEST_F(Dbf, RowsGiveTheValuesOfTheirFields) {
  constexpr std::size_t kWidths[] = {1, 2, 8, 15, 16, 17, 31, 32, 33, 48, 63, 64, 65, 200, 3};
  constexpr char kTypes[] = {'C', 'N', 'L', 'D', 'F'};
  constexpr std::string_view kBytes = "    0.1eTaf-";
  std::minstd_rand random(20261123);
  for (int round = 0; round < 200; ++round) {
    dbf::Header header;
    header.numRecords = 3;
    std::vector<dbf::Field> fields;
    for (const std::size_t width : kWidths) {
      dbf::Field& field = fields.emplace_back();
      field.name = "F" + std::to_string(fields.size());
      field.type = kTypes[random() % std::size(kTypes)];
      field.length = static_cast<std::uint32_t>(width);
      header.recordLength = static_cast<std::uint16_t>(header.recordLength + width);
    }
    header.headerLength = static_cast<std::uint16_t>(dbf::kHeaderBytes * (fields.size() + 1) + 1);
    std::string bytes;
    dbf::encodeHeader(header, bytes);
    for (const dbf::Field& field : fields) dbf::encodeField(field, bytes);
    bytes += dbf::kHeaderEnd;
    std::string expected;
    for (std::uint32_t row = 0; row < header.numRecords; ++row) {
      bytes += ' ';
      for (const dbf::Field& field : fields) {
        std::string content(field.length, ' ');
        for (char& c : content) c = kBytes[random() % kBytes.size()];
        if (random() % 8 == 0) content[random() % content.size()] = '\0';
        if (random() % 8 == 0) content.assign(content.size(), ' ');
        bytes += content;
        const std::string_view value = dbf::cutAtZero(content);
        const bool isNumber = field.type == 'N' || field.type == 'F';
        if (&field != fields.data()) expected += '|';
        expected += isNumber            ? dbf::numberValue(value)
                    : field.type == 'L' ? dbf::logicalValue(value)
                                        : dbf::textValue(value);
      }
      expected += '\n';
    }
    ASSERT_EQ(read(bytes), expected) << "round " << round;
  }
}

TEST_F(Dbf, FieldsGiveTheirValue) {
  for (const auto& [bytes, value] : Pairs{{"  12.500", "12.5"},
                                          {"12.000", "12"},
                                          {"0.000", "0"},
                                          {"      ", "0"},
                                          {"", "0"},
                                          {"  100", "100"},
                                          {"12.50\0009"s, "12.5"},
                                          {"1.50e010", "1.50e010"},
                                          {"1.500E3 ", "1.500E3"},
                                          {" 001 ", "001"},
                                          {"****", "****"},
                                          {".50", ".5"},
                                          {".00", "0"},
                                          {"-1.10", "-1.1"}})
    EXPECT_EQ(dbf::numberValue(dbf::cutAtZero(bytes)), value) << bytes;
  for (const auto& [bytes, value] : Pairs{{"abc   ", "abc"},
                                          {"                    ", ""},
                                          {"  a b                     ", "  a b"},
                                          {"ab\0cd  "s, "ab"},
                                          {"ab  \0  "s, "ab"},
                                          {"\0\0"s, ""}})
    EXPECT_EQ(dbf::textValue(dbf::cutAtZero(bytes)), value) << bytes;
  for (const auto& [bytes, value] :
       Pairs{{"T", "true"}, {"y", "true"}, {"f", "false"}, {"N", "false"}, {"?", ""}, {" ", ""}, {"", ""}})
    EXPECT_EQ(dbf::logicalValue(bytes), value) << bytes;
  // 0x81 leads a two-byte character, whose second byte is no letter even when it looks like one.
  for (const auto& [name, form] : Pairs{{"name", "NAME"},
                                        {"a-b_1", "AB_1"},
                                        {"\x81"
                                         "ab",
                                         "\x81"
                                         "aB"},
                                        {"\xD0"
                                         "a",
                                         "\xD0"
                                         "A"},
                                        {"b\x81", "B\x81"}})
    EXPECT_EQ(dbf::nameForm(name), form) << name;
  EXPECT_FALSE(
      dbf::hasLowerCase("\x81"
                        "aB"));
  EXPECT_TRUE(
      dbf::hasLowerCase("\x81"
                        "ab"));
}

TEST_F(Dbf, RefusesFieldsThatItCannotHold) {
  struct Row {
    Pairs fields;
    std::uint32_t number;
  };
  Pairs many, long_;
  for (int i = 0; i < 1025; ++i) many.emplace_back("F" + std::to_string(i), "char(1)");
  for (int i = 0; i < 258; ++i) long_.emplace_back("F" + std::to_string(i), "char(255)");
  for (const Row& row :
       {Row{{{"A", "date"}, {"A", "date"}}, 301005}, Row{{{"ABCDEFGHIJK", "date"}}, 301006},
        Row{{{"ABCDEFGHIJ", "date"}}, 0}, Row{{{"name", "date"}}, 301007}, Row{{{"NAME", "date"}}, 0},
        Row{{{"\x81"
              "a",
              "date"}},
            0},
        Row{{{"A", "char"}}, 301008}, Row{{{"A", "char(x)"}}, 301008}, Row{{{"A", "char(300)"}}, 0},
        Row{{{"A", "char(0)"}}, 301014}, Row{{{"A", "number(5)"}}, 301010}, Row{{{"A", "number"}}, 301010},
        Row{{{"A", "number(256,0)"}}, 301014}, Row{{{"A", "number(99999999999999999999,1)"}}, 301014},
        Row{{{"A", "integer"}}, 301011}, Row{many, 301012}, Row{long_, 301013}}) {
    VEXDBFOutput output(at("o.dbf"));
    EXPECT_EQ(write(output, row.fields, {}), row.number) << row.fields[0].first << ' ' << row.fields[0].second;
    output.abort();
    EXPECT_EQ(std::filesystem::exists(at("o.dbf")), row.number == 0);
  }
  EXPECT_TRUE(logged(VEXSeverity::Warn, "field 'A' of"));
  VEXDBFOutput wide(at("o.dbf"));
  EXPECT_EQ(write(wide, {{"A", "char(300)"}}, {{std::string(300, 'x')}}), 0u);
  EXPECT_EQ(bytesOf(at("o.dbf")).size(), 32u + 32 + 1 + 1 + 255 + 1);
}

TEST_F(Dbf, WritesTheBytesAndReadsThemBack) {
  const std::string bytes = sample();
  ASSERT_EQ(bytes.size(), kSampleHeader + 3 * kSampleRecord + 1);
  EXPECT_EQ(bytes.substr(4, 8), "\3\0\0\0\xC1\0\x1C\0"s);
  EXPECT_EQ(bytes.substr(12, 20), std::string(20, '\0'));
  EXPECT_EQ(bytes.substr(64, 32), "N\0\0\0\0\0\0\0\0\0\0N\0\0\0\0\x08\x02"s + std::string(14, '\0'));
  EXPECT_EQ(bytes.substr(kSampleHeader - 1),
            "\r abc      12.0019990131t   7"
            " longer   -0.50             "
            "        1000.00x       n  12\x1A");
  EXPECT_EQ(read(bytes), kSampleRows);
  EXPECT_EQ(read(bytes, {{"name", "char(6)"}, {"I", "number(4,0)"}}), kSampleRows);
  EXPECT_TRUE(logged(VEXSeverity::Inform, " has fields : NAME, N, D, L, I"));
  VEXDBFInput input(put("r.dbf", bytes));
  EXPECT_EQ(numberOf(input.open()), 0u);
  std::string type;
  std::string types;
  for (std::size_t i = 0; numberOf(input.fieldType(i, type)) == 0; ++i) types += type + " ";
  EXPECT_EQ(types, "char(6) number(8,2) date logical number(4,0) ");
  EXPECT_EQ(numberOf(input.fieldType(5, type)), 300020u);
}

TEST_F(Dbf, ChecksDeclaredFields) {
  std::string bytes = sample();
  for (const auto& [field, number] :
       std::vector<std::pair<std::pair<std::string, std::string>, int>>{{{"NAME", "date"}, 300006},
                                                                        {{"NAME", "char(7)"}, 300007},
                                                                        {{"NAME", "char"}, 300008},
                                                                        {{"N", "char(8)"}, 300009},
                                                                        {{"N", "number(9,2)"}, 300010},
                                                                        {{"N", "number"}, 300011},
                                                                        {{"N", "number(8,3)"}, 300012},
                                                                        {{"D", "char(8)"}, 300013},
                                                                        {{"N", "number(8)"}, 300014},
                                                                        {{"L", "char(1)"}, 300015},
                                                                        {{"NONE", "date"}, 300005}})
    EXPECT_EQ(read(bytes, {field}), "#" + std::to_string(number)) << field.first << field.second;
  // The same letters and lengths, broken: type and length of a descriptor stand at 11 and 16.
  const auto broken = [&bytes](std::size_t field, std::size_t place, char value) {
    std::string copy = bytes;
    copy[32 + 32 * field + place] = value;
    return copy;
  };
  EXPECT_EQ(read(broken(3, 16, 0), {{"L", "logical"}}), "#300016");
  EXPECT_EQ(read(broken(0, 11, '\1'), {{"NAME", "char(6)"}}), "#300017");
  EXPECT_EQ(read(broken(0, 11, 'M'), {{"NAME", "char(6)"}}), "#300018");
  EXPECT_EQ(read(broken(2, 16, 7), {{"D", "date"}}), "#300019");
  EXPECT_EQ(read(broken(0, 11, 'M')), "12|19990131|true|7\n-0.5|||0\n1000|x|false|12\n");
  EXPECT_TRUE(logged(VEXSeverity::Warn, "DBF Internal Type Designation `M' not found!"));
}

TEST_F(Dbf, ReadsAFileCutAtEveryLength) {
  const std::string bytes = sample();
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    std::string expected = "#300004";
    if (length >= kSampleHeader) {
      const std::size_t whole = (length - kSampleHeader) / kSampleRecord;
      const std::string rows = kSampleRows;
      std::size_t end = 0;
      for (std::size_t i = 0; i < whole; ++i) end = rows.find('\n', end) + 1;
      expected = rows.substr(0, end);
    }
    lines_.clear();
    EXPECT_EQ(read(bytes.substr(0, length)), expected) << length;
    EXPECT_EQ(logged(VEXSeverity::Warn, "promises 3"), length >= kSampleHeader && length < bytes.size() - 1) << length;
  }
}

TEST_F(Dbf, SurvivesHostileHeaders) {
  struct Row {
    const char* what;
    std::size_t at;
    std::string bytes, rows;
  };
  const std::string all = kSampleRows;
  for (const Row& row : {
           Row{"two billion records", 4, "\0\0\0\x80"s, all},
           Row{"fewer records than there are", 4, "\1\0\0\0"s, "abc|12|19990131|true|7\n"},
           Row{"no record", 4, "\0\0\0\0"s, ""},
           Row{"dBase II", 0, "\x02", "#300022"},
           Row{"dBase 7", 0, "\x8C", "#300022"},
           Row{"a header shorter than any", 8, "\x1F\0"s, "#300023"},
           Row{"a header longer than the file", 8, "\xFF\xFF", "#300004"},
           Row{"a record of nothing", 10, "\0\0"s, "#300024"},
           Row{"a record that holds two fields", 10, "\x0F\0"s, ""},
           Row{"a record longer than the file", 10, "\xFF\xFF", ""},
           Row{"another terminator", kSampleHeader - 1, "\n", all},
           Row{"a name twice", 64, "NAME"s, all},
           Row{"a name of nothing but a hyphen", 64, "-"s, all},
           Row{"a deleted record", kSampleHeader + kSampleRecord, "*", "abc|12|19990131|true|7\n|1000|x|false|12\n"},
           Row{"a strange deletion byte", kSampleHeader, "\0"s, all},
       }) {
    std::string bytes = sample();
    bytes.replace(row.at, row.bytes.size(), row.bytes);
    const std::string rows = read(bytes);
    if (row.rows.empty() && row.at == 10)
      EXPECT_EQ(rows.find('#'), std::string::npos) << row.what;
    else
      EXPECT_EQ(rows, row.rows) << row.what;
  }
  for (const char* part : {"promises 2147483648 records and has room for 3", "reaches beyond the record of 15",
                           "read as 'NAME_2'", "read as 'FIELD2'"})
    EXPECT_TRUE(logged(VEXSeverity::Warn, part)) << part;
  EXPECT_TRUE(logged(VEXSeverity::Inform, "deleted records"));
}

// Files of other programs, the odd and the broken ones.
TEST_F(Dbf, ReadsFilesOfOthers) {
  struct Row {
    const char* file;
    std::size_t numRows;  // counted by another program
    const char *columns, *firstRow, *warning;
  };
  for (const Row& row : {
           Row{"chinese", 1, "\xD6\xD0\xB9\xFA", "\xD6\xD0\xB9\xFA", ""},
           Row{"date_empty_string", 1, "DATE", "", ""},
           Row{"nan", 1, "REAL", "nan", ""},
           Row{"padding_after_field_defns", 1, "ID, FOO", "1|2", ""},
           Row{"weird_header_length", 1, "NUMERO", "001", ""},
           Row{"dbase_02", 0, "", "#300022", ""},
           Row{"dbase_03_cyrillic", 2, "ШАР, ПЛОЩА", "Номер|36.3", ""},
           Row{"dbase_31", 77, "PRODUCTNAM, QUANTITYPE, DISCONTINU", "Chai|10 boxes x 20 bags|false",
               "`Y' not found! Field 'UNITPRICE'"},
           Row{"dbase_8b", 10, "CHARACTER, NUMERICAL, DATE, LOGICAL, FLOAT", "One|1|19700101|true|1.23456789012346",
               "`M' not found!"},
           Row{"mazovia", 2, "A1, A2", "2020-01-04|English", ""},
           Row{"polygon", 1, "", "", ""},
           Row{"dbase_03", 14, nullptr,
               "0507121|CMP|circular|12||no|Good||20050712|10:56:30am|5.2|2|Postprocessed "
               "Code|GeoXT|20050712|10:56:52am|New|Driveway|"
               "050712TR2819.cor|2|2|MS4|1331|226625|1131.323|3.1|1.3|0.897088|557904.898|2212577.192|401",
               "'Point_ID'"},
       }) {
    lines_.clear();
    VEXDBFInput input(std::string(TEST_DATA "/dbf/") + row.file + ".dbf");
    const std::string rows = rowsOf(input);
    EXPECT_EQ(static_cast<std::size_t>(std::count(rows.begin(), rows.end(), '\n')), row.numRows) << row.file;
    EXPECT_EQ(rows.substr(0, rows.find('\n')), row.firstRow) << row.file;
    if (row.columns != nullptr) {
      EXPECT_EQ(joined(input.columnNames(), ", "), row.columns);
    }
    const bool warned = std::any_of(lines_.begin(), lines_.end(), [](const auto& line) { return line.first == 1; });
    EXPECT_EQ(warned, *row.warning != '\0') << row.file;
    EXPECT_TRUE(!warned || logged(VEXSeverity::Warn, row.warning)) << row.file;
  }
}

TEST_F(Dbf, FailsWhereItCannotOpenOrWrite) {
  VEXDBFInput missing(at("missing.dbf"));
  EXPECT_EQ(rowsOf(missing), "#300002");
  VEXDBFInput unreadable("/proc/self/mem");
  EXPECT_EQ(rowsOf(unreadable), "#300004");
  EXPECT_EQ(numberOf(unreadable.close()), 300001u);
  const std::string bytes = sample();
  VEXDBFInput shrinking(put("r.dbf", bytes + std::string(3 << 20, ' ')));
  std::string more = bytesOf(at("r.dbf"));
  more.replace(4, 4, "\0\0\1\0"s);
  put("r.dbf", more);
  EXPECT_EQ(numberOf(shrinking.open()), 0u);
  EXPECT_EQ(numberOf(shrinking.startRows()), 0u);
  put("r.dbf", bytes);
  VEXTableRow row;
  bool end = false;
  std::uint32_t number = 0;
  while (number == 0 && !end) number = numberOf(shrinking.getRow(row, end));
  EXPECT_EQ(number, 300025u);

  const std::vector<std::vector<std::string_view>> rows(6000, {"x"});
  VEXDBFOutput nowhere(at("no/such/file.dbf"));
  EXPECT_EQ(write(nowhere, {}, {}), 301003u);
  VEXDBFOutput full("/dev/full");
  EXPECT_EQ(write(full, {{"A", "char(5)"}}, {{"x"}}), 301002u);
  VEXDBFOutput fuller("/dev/full");
  EXPECT_EQ(write(fuller, {{"A", "char(255)"}}, rows), 301015u);
  {
    VEXDBFOutput forgotten("/dev/full");
    EXPECT_EQ(numberOf(forgotten.open()), 0u);
  }
  EXPECT_TRUE(logged(VEXSeverity::Error, "given up"));
  VEXDBFOutput limited(at("l.dbf"), 2);
  EXPECT_EQ(write(limited, {{"A", "char(1)"}}, {{"1"}, {"2"}, {"3"}}), 301016u);
  limited.abort();
  VEXDBFInput finished(at("l.dbf"));
  EXPECT_EQ(rowsOf(finished), "1\n2\n");
  VEXDBFOutput lossy(at("l.dbf"));
  EXPECT_EQ(write(lossy, {{"A", "number(3,0)"}, {"B", "number(9,0)"}}, {{"5", "1"}, {"1234", "x"}, {"2345", "2"}}), 0u);
  EXPECT_TRUE(logged(VEXSeverity::Warn, "the field 'A' of 3 characters are left blank: 2 in the file"));
  EXPECT_TRUE(logged(VEXSeverity::Warn, "the first is '1234' in row 2"));
  EXPECT_TRUE(logged(VEXSeverity::Warn, "the field 'B' of 9 characters are left blank: 1 in the file"));
  EXPECT_FALSE(logged(VEXSeverity::Warn, "'2345'"));
}

}  // namespace
