// The sorter against a stable sort in memory, with limits from everything in memory down to a run for each feature.
#include "vex/factory/featsort.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "tests/unit/drivers.h"
#include "vex/inc/numtext.h"

namespace {

using Keyed = std::pair<std::string, std::string>;  // key, name of the feature

// What comes out: the names, one by one.
std::string sorted(VEXFeatureSorter& sorter, const std::vector<Keyed>& features) {
  for (const auto& [key, name] : features) {
    VEXFeaturePtr feature = makeFeature("a {" + name + "=1} line 0 0, 1 1");
    EXPECT_EQ(numberOf(sorter.add(*feature, key)), 0U);
  }
  EXPECT_EQ(numberOf(sorter.startReading()), 0U);
  std::string names;
  for (VEXFeaturePtr feature;;) {
    EXPECT_EQ(numberOf(sorter.next(feature)), 0U);
    if (feature == nullptr) return names;
    names += describe(*feature) + " ";
  }
}

TEST(FeatureSorter, AgreesWithAStableSort) {
  std::mt19937 random(20261123);
  for (std::size_t bytes : {1U, 300U, 5000U, 10000000U}) {
    for (bool isDescending : {false, true}) {
      TranslationScope engine({"ORV_SORT_BYTES " + integerText(static_cast<std::int64_t>(bytes))});
      VEXFeatureSorter sorter;
      sorter.setDescending(isDescending);
      std::vector<Keyed> features;
      for (int at = 0; at < 700; ++at) {
        // Keys of all lengths over few letters, so that many are equal or begin each other; bytes above 127, too.
        std::string key(random() % 12, 'a');
        for (char& letter : key) letter = "ab\xE9"[random() % 3];
        features.emplace_back(key, "n" + integerText(at));
      }
      std::vector<Keyed> wanted = features;
      std::stable_sort(wanted.begin(), wanted.end(), [isDescending](const Keyed& a, const Keyed& b) {
        return isDescending ? b.first < a.first : a.first < b.first;
      });
      std::string text;
      for (const Keyed& feature : wanted) text += "a {" + feature.second + "=1} line 0 0, 1 1 ";
      EXPECT_EQ(sorted(sorter, features), text) << bytes;
      EXPECT_EQ(sorter.runs() > 0, bytes < 10000000U);
      sorter.clear();
      EXPECT_EQ(sorted(sorter, {{"b", "x"}, {"a", "y"}}), isDescending
                                                              ? "a {x=1} line 0 0, 1 1 a {y=1} line 0 0, 1 1 "
                                                              : "a {y=1} line 0 0, 1 1 a {x=1} line 0 0, 1 1 ");
    }
  }
}

TEST(FeatureSorter, KeysCompareAsTheirValues) {
  const double infinity = std::numeric_limits<double>::infinity();
  std::vector<double> numbers = {-infinity, -1e300, -10.0, -9.5, -1e-310, 0.0, 1e-310, 9.0, 10.0, 1e300, infinity};
  auto numberKey = [](double value) {
    std::string key;
    appendNumberKey(key, value);
    return key;
  };
  for (std::size_t at = 1; at < numbers.size(); ++at) EXPECT_LT(numberKey(numbers[at - 1]), numberKey(numbers[at]));
  EXPECT_EQ(numberKey(-0.0), numberKey(0.0));
  EXPECT_EQ(numberKey(std::nan("")), numberKey(0.0));

  using std::string_literals::operator""s;
  // Pairs of texts: the first decides, a text stands in front of its continuations, whatever bytes it holds.
  const std::vector<std::pair<std::string, std::string>> pairs = {
      {"", "z"},  {"\0"s, "a"}, {"\0\0"s, ""}, {"\1", ""}, {"a", ""}, {"a", "\0"s},
      {"a", "b"}, {"a\0"s, ""}, {"a\1", ""},   {"ab", ""}, {"b", ""}};
  auto textKey = [](const std::pair<std::string, std::string>& pair) {
    std::string key;
    appendTextKey(key, pair.first);
    appendTextKey(key, pair.second);
    return key;
  };
  for (std::size_t at = 1; at < pairs.size(); ++at) EXPECT_LT(textKey(pairs[at - 1]), textKey(pairs[at])) << at;
}

}  // namespace
