// The layout of a table of counts, to the column.
#include <gtest/gtest.h>

#include "tests/unit/drivers.h"
#include "vex/src/vexstats.h"

namespace {

// The lines that the table adds to the log.
std::vector<std::string> written(const VEXStatistics& statistics, const char* heading, const char* title,
                                 std::size_t width, std::size_t lineLength) {
  TranslationScope engine;
  const std::size_t before = engine.log().size();
  statistics.write(heading, title, "Total", width, lineLength);
  return {engine.log().begin() + static_cast<std::ptrdiff_t>(before), engine.log().end()};
}

TEST(Statistics, Layout) {
  VEXStatistics statistics;
  statistics.add("road");
  statistics.add("a much longer key than fits", 12);
  statistics.add("Road", 7);
  statistics.add("road", 2);
  EXPECT_EQ(written(statistics, "Heading", "Features", 6, 21),
            (std::vector<std::string>{"", "=-=-=-=-=-=-=-=-=-=-=-", "       Heading", "=-=-=-=-=-=-=-=-=-=-=-",
                                      "      Features", "=-=-=-=-=-=-=-=-=-=-=-", "Road                7",
                                      "a much longer k    12", "road                3",
                                      "=====================", "Total              22", "=-=-=-=-=-=-=-=-=-=-=-"}));
}

TEST(Statistics, EmptyTableAndLongTitle) {
  EXPECT_EQ(written(VEXStatistics(), "", "a title as long as this", 3, 10),
            (std::vector<std::string>{"", "=-=-=-=-=-", "a title as long as this", "=-=-=-=-=-",
                                      "==========", "Total    0", "=-=-=-=-=-"}));
}

}  // namespace
