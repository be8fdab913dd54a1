// Values shaped to a declared column type.
#include "vex/src/outfmt.h"

#include <gtest/gtest.h>

#include <random>

namespace {

TEST(OutputFormat, TakesTypesApart) {
  struct Row {
    const char* type;
    std::uint32_t number;
    VEXOutputFormat::Kind kind;
    std::int32_t width, decimals;
  };
  using Kind = VEXOutputFormat::Kind;
  for (const Row& row :
       {Row{" number(10,2) ", 0, Kind::Number, 10, 2}, Row{"number(10,0)", 0, Kind::Number, 10, 0},
        Row{"char(5)", 0, Kind::Text, 0, 0}, Row{"date", 0, Kind::Text, 0, 0}, Row{"smallint", 0, Kind::Small, 0, 0},
        Row{"integer", 0, Kind::Integer, 0, 0}, Row{"smallchar", 0, Kind::Text, 0, 0},
        Row{"number", 876002, Kind::Text, 0, 0}, Row{"number 5,2)", 876002, Kind::Text, 0, 0},
        Row{"number(5)", 876003, Kind::Text, 0, 0}, Row{"number(x,2)", 876004, Kind::Text, 0, 0},
        Row{"number(,2)", 876004, Kind::Text, 0, 0}, Row{"number(5,2", 876005, Kind::Text, 0, 0},
        Row{"number(5,)", 876006, Kind::Text, 0, 0}, Row{"number(5,y)", 876006, Kind::Text, 0, 0},
        Row{"number(5,-1)", 876006, Kind::Text, 0, 0}, Row{"number(5,5)", 876007, Kind::Text, 0, 0},
        Row{"number(99999999999,2)", 876004, Kind::Text, 0, 0}}) {
    VEXOutputFormat format;
    VEXStatus failure = VEXOutputFormat::parse(row.type, format);
    EXPECT_EQ(failure == nullptr ? 0 : failure->messageNumber(), row.number) << row.type;
    if (row.number != 0) continue;
    EXPECT_EQ(format.kind(), row.kind) << row.type;
    EXPECT_EQ(format.width(), row.width) << row.type;
    EXPECT_EQ(format.decimals(), row.decimals) << row.type;
  }
}

TEST(OutputFormat, ShapesValues) {
  struct Row {
    const char *type, *value, *shaped;  // null: does not suit
  };
  for (const Row& row : {Row{"number(8,2)", "12.34", "12.34"},
                         Row{"number(8,2)", "12", "12.00"},
                         Row{"number(8,2)", "12.", "12.00"},
                         Row{"number(8,2)", "-1.5", "-1.50"},
                         Row{"number(8,2)", ".5", "0.50"},
                         Row{"number(8,2)", "+007", "7.00"},
                         Row{"number(8,2)", "2.675", "2.67"},
                         Row{"number(8,2)", "1e3", "1000.00"},
                         Row{"number(8,2)", " 5 ", "5.00"},
                         Row{"number(8,2)", "99999.99", "99999.99"},
                         Row{"number(8,2)", "100000", nullptr},
                         Row{"number(8,2)", "1e300", nullptr},
                         Row{"number(8,2)", "abc", nullptr},
                         Row{"number(8,2)", "1.2.3", nullptr},
                         Row{"number(8,2)", "-", nullptr},
                         Row{"number(8,2)", "nan", nullptr},
                         Row{"number(8,2)", "", ""},
                         Row{"number(20,12)", "0.1", "0.100000000000"},
                         Row{"number(31,3)", "1234567890123456.5", "1234567890123456.500"},
                         Row{"number(200,150)", "1", nullptr},
                         Row{"number(5,0)", "12.7", "13"},
                         Row{"number(5,0)", "0", "0"},
                         Row{"smallint", "32767.0", "32767"},
                         Row{"smallint", "32768", nullptr},
                         Row{"integer", "-2147483648", "-2147483648"},
                         Row{"integer", "2147483648", nullptr},
                         Row{"char(2)", "as it stands", "as it stands"},
                         Row{"date", "1e3", "1e3"}}) {
    VEXOutputFormat format;
    ASSERT_EQ(VEXOutputFormat::parse(row.type, format), nullptr);
    std::string buffer;
    std::string_view shaped;
    EXPECT_EQ(format.format(row.value, buffer, shaped), row.shaped != nullptr) << row.type << ' ' << row.value;
    EXPECT_EQ(shaped, row.shaped != nullptr ? row.shaped : row.value) << row.type;
  }
}

// A text that is said to have so many decimals is one that a plain look at its characters tells the same of.
TEST(OutputFormat, TellsDecimalsByTheText) {
  constexpr std::string_view kCharacters = "000112.-+ e";
  std::minstd_rand random(7);
  int numFound = 0;
  for (int round = 0; round < 200000; ++round) {
    const std::size_t decimals = random() % 5;
    std::string text(random() % 19, '0');
    for (char& c : text) c = kCharacters[random() % (round % 2 == 0 ? 5 : kCharacters.size())];
    if (round % 4 == 0 && text.size() > decimals + 1) text[text.size() - decimals - 1] = '.';
    if (round % 3 == 0 && !text.empty()) text[0] = '-';
    const std::size_t start = text.starts_with('-') ? 1 : 0;
    const std::size_t end = text.find_first_not_of("0123456789", start);
    const bool isWhole = end == std::string::npos && text.size() > start;
    const bool hasPoint = end != std::string::npos && end > start && text[end] == '.' &&
                          text.find_first_not_of("0123456789", end + 1) == std::string::npos;
    const bool expected =
        text.size() <= 16 && (decimals == 0 ? isWhole : hasPoint && text.size() - end - 1 == decimals);
    ASSERT_EQ(hasDecimals(text, decimals), expected) << '"' << text << "\" " << decimals;
    numFound += expected ? 1 : 0;
  }
  EXPECT_GT(numFound, 10000);
}

}  // namespace
