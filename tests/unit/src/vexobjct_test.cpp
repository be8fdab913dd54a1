// Attributes: the table and its compaction, sequence, lists, numbers in texts.
#include <gtest/gtest.h>

#include <charconv>
#include <cmath>
#include <random>

#include "vex/inc/numtext.h"
#include "vex/inc/vexobjct.h"

namespace {

std::uint32_t numberOf(const VEXStatus& status) {
  return status == nullptr ? 0 : status->messageNumber();
}

TEST(AttributeTable, SurvivesRandomSetsAndRemovals) {
  VEXAttributeTable table;
  std::vector<std::string> expected(200);
  std::vector<bool> present(200, false);
  std::uint32_t state = 20260101;
  std::size_t count = 0;
  for (int step = 0; step < 20000; ++step) {
    state = state * 1664525U + 1013904223U;
    std::size_t which = (state >> 8) % expected.size();
    VEXName name = VEXName::intern("a" + std::to_string(which));
    if ((state >> 4) % 3 == 0) {
      EXPECT_EQ(table.remove(name), present[which]);
      count -= present[which] ? 1 : 0;
      present[which] = false;
    } else {
      expected[which] = std::to_string(step);
      table.set(name, expected[which]);
      count += present[which] ? 0 : 1;
      present[which] = true;
    }
    if (step % 97 == 0) table.compact();
    ASSERT_EQ(table.entries(), count);
  }
  std::size_t walked = 0;
  table.forEach([&](VEXName name, std::string_view value) {
    std::size_t which = std::stoul(name.text().substr(1));
    EXPECT_TRUE(present[which]);
    EXPECT_EQ(value, expected[which]);
    ++walked;
  });
  EXPECT_EQ(walked, count);
}

TEST(AttributeTable, CompactionKeepsTheLoadBetweenAnEighthAndAHalf) {
  struct Row {
    std::size_t entries, buckets;
  };
  for (const Row& row : {Row{1, 5}, Row{2, 9}, Row{3, 17}, Row{8, 17}, Row{9, 37}, Row{100, 401}}) {
    VEXAttributeTable table;
    for (std::size_t i = 0; i < row.entries; ++i) table.set(VEXName::intern("n" + std::to_string(i)), "v");
    table.compact();
    EXPECT_EQ(table.buckets(), row.buckets) << row.entries;
    EXPECT_EQ(table.entries(), row.entries);
  }
}

TEST(AttributeTable, RefillAfterClearDoesNotSeeOldValues) {
  VEXAttributeTable table;
  table.set(VEXName::intern("x"), "a long text that does not fit into the string itself");
  table.clear();
  EXPECT_EQ(table.find(VEXName::intern("x")), nullptr);
  table.set(VEXName::intern("y"), "");
  EXPECT_EQ(*table.find(VEXName::intern("y")), "");
}

TEST(Object, SequenceMovesANameToTheEnd) {
  VEXObject object;
  for (const char* name : {"b", "a", "c", "b"}) object.setSequenced(name, name);
  object.setAttribute("z", "1");
  object.setAttribute("list{0}", "hidden");
  object.setSequenced(" t:tagged", "2");
  VEXStringVector names;
  VEXStringVector values;
  object.orderedAttributes(names, values);
  EXPECT_EQ(joined(names, " "), "a c b tagged z");
  EXPECT_EQ(joined(values, " "), "a c b 2 1");
}

TEST(Object, Lists) {
  VEXObject object;
  VEXStringVector values;
  bool found = true;
  EXPECT_EQ(numberOf(object.getList("a", values, found)), 879001U);
  EXPECT_EQ(numberOf(object.setList("a{}.b{}", {"x"})), 879002U);
  for (const char* index : {"0", "1", "3"}) object.setAttribute("p{" + std::string(index) + "}.h", index);
  EXPECT_EQ(object.getList("p{}.h", values, found), nullptr);
  EXPECT_EQ(joined(values, " "), "0 1");
  EXPECT_EQ(object.setList("p{}.h", {"9"}), nullptr);
  EXPECT_EQ(object.getList("p{}.h", values, found), nullptr);
  EXPECT_EQ(joined(values, " "), "9 1") << "elements behind the new list stay";
  EXPECT_EQ(object.removeList("p{}.h"), nullptr);
  EXPECT_FALSE(object.attributeExists("p{1}.h"));
  EXPECT_TRUE(object.attributeExists("p{3}.h"));
  EXPECT_EQ(object.getList("none{}", values, found), nullptr);
  EXPECT_FALSE(found);
  EXPECT_EQ(numberOf(object.setPairs("q{}", "ab\x02v")), 879003U);
  EXPECT_EQ(object.setPairs("q{}",
                            "0{}\x02zero\x02"
                            "1{}\x02"),
            nullptr);
  EXPECT_EQ(*object.findAttribute("q{0}"), "zero");
  EXPECT_EQ(*object.findAttribute("q{1}"), "");
}

TEST(Object, MergeKeepsAndOverwriteReplaces) {
  VEXObject target;
  VEXObject source;
  target.setFlag("flag");
  source.setAttribute("flag", "other");
  source.setAttribute("new", "n");
  target.mergeAttributes(source);
  EXPECT_EQ(*target.findAttribute("flag"), "");
  EXPECT_EQ(*target.findAttribute("new"), "n");
  target.overwriteAttributes(source);
  EXPECT_EQ(*target.findAttribute("flag"), "other");
  target.setSequenced("mixed", "1");
  target.upperCaseNames();
  EXPECT_TRUE(target.attributeExists("MIXED"));
  EXPECT_EQ(target.sequence().back().text(), "MIXED");
}

TEST(NumberText, IntegersAreStrict) {
  struct Row {
    const char* text;
    bool isInteger;
    std::int32_t value;
  };
  for (const Row& row : {Row{"", false, 0}, Row{"12", true, 12}, Row{"-7", true, -7}, Row{"+7", true, 7},
                         Row{"12.000 ", true, 12}, Row{"12.", true, 12}, Row{"12.5", false, 12}, Row{"12 ", false, 12},
                         Row{"x", false, 0}, Row{"+-1", false, 0}, Row{"2147483648", false, 0}}) {
    std::int32_t value = 99;
    EXPECT_EQ(textToInteger(row.text, value), row.isInteger) << row.text;
    EXPECT_EQ(value, row.value) << row.text;
  }
}

TEST(NumberText, Reals) {
  struct Row {
    double value;
    const char* text;
  };
  for (const Row& row : {Row{0.1, "0.1"}, Row{1e15, "1e+15"}, Row{123456789.125, "123456789.125"}, Row{-0.0, "-0"},
                         Row{1.0 / 3.0, "0.333333333333333"}})
    EXPECT_EQ(realText(row.value), row.text);
  double value = 5.0;
  EXPECT_TRUE(textToReal(" 1e3 ", value));
  EXPECT_EQ(value, 1000.0);
  for (const char* text : {"", "1x", "--1", "1 2"}) EXPECT_FALSE(textToReal(text, value)) << text;
}

// Fifteen digits as the standard library gives them: values near powers of ten, halves in the last place, whole
// numbers, small and large ones.
TEST(Numbers, RealsAreTheTextsOfFifteenDigits) {
  std::mt19937_64 random(7);
  const auto power = [](std::uint64_t exponent) { return std::pow(10.0, static_cast<double>(exponent) - 5.0); };
  for (int i = 0; i < 400000; ++i) {
    const double sign = random() % 2 == 0 ? 1.0 : -1.0;
    const auto any = static_cast<double>(random() >> 11) * 0x1p-53;
    const double near = 1.0 + (static_cast<double>(random() % 9) - 4.0) * 0x1p-52;
    const auto whole = static_cast<double>(random() % 1'000'000'000'000'000);
    const double values[] = {sign * any * power(random() % 23), sign * near * power(random() % 23),
                             sign * (whole + static_cast<double>(random() % 16) / 16.0),
                             sign * static_cast<double>(random() % 1'000'000'000) / 1000.0};
    for (const double value : values) {
      char text[64];
      const auto end = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 15).ptr;
      ASSERT_EQ(realText(value), std::string(text, end));
    }
  }
}

// A table that is emptied and filled again, mostly with the names of the time before, is as good as a new one:
// the same entries, walked in the same order.
TEST(AttributeTable, RefillsAsIfItWereNew) {
  std::mt19937 random(20261123);
  std::vector<VEXName> names;
  for (int i = 0; i < 12; ++i) names.push_back(VEXName::intern("column" + std::to_string(i)));
  const auto textOf = [](const VEXAttributeTable& table) {
    std::string text;
    table.forEach([&](VEXName name, std::string_view value) { ((text += name.text() + "=") += value) += " "; });
    return text;
  };
  VEXAttributeTable kept;
  for (int round = 0; round < 3000; ++round) {
    kept.clear();
    VEXAttributeTable fresh;
    fresh.copyFrom(kept);  // takes the number of buckets
    const std::size_t usual = random() % 10;
    std::uint32_t place = random() % 12;
    for (std::size_t i = 0; i < usual + random() % 3; ++i) {
      const VEXName name = names[random() % 8 == 0 ? random() % names.size() : i];
      const std::string value =
          std::to_string(random() % 100 * (random() % 2 == 0 ? 1 : 1000000007LL)) + std::string(random() % 50, 'x');
      if (random() % 12 == 0) {
        EXPECT_EQ(kept.remove(name), fresh.remove(name));
      } else if (random() % 12 == 0) {
        const VEXName to = names[random() % names.size()];
        for (VEXAttributeTable* table : {&kept, &fresh})
          if (const VEXText* own = table->find(name); own != nullptr)
            table->set(to, own->view().substr(own->size() / 4));
      } else {
        kept.set(name, value);
        fresh.set(name, value);
      }
      if (random() % 20 == 0) {
        kept.compact();
        fresh.compact();
      }
      const VEXName wanted = names[random() % names.size()];
      const VEXText* found = fresh.find(wanted);
      ASSERT_EQ(kept.find(wanted) == nullptr, found == nullptr);
      ASSERT_EQ(kept.find(wanted, place) == nullptr, found == nullptr);
      if (found != nullptr) {
        ASSERT_EQ(*kept.find(wanted, place), *found);
      }
    }
    ASSERT_EQ(kept.entries(), fresh.entries());
    ASSERT_EQ(textOf(kept), textOf(fresh)) << "round " << round;
  }
}

// Values around the length that lies in the slot itself, and long ones, grow and shrink from filling to filling.
TEST(AttributeTable, ValuesOfEveryLengthFollowEachOther) {
  const std::size_t lengths[] = {0, 1, 3, 4, 7, 8, 15, 16, 31, 32, 33, 100000};
  std::mt19937 random(4);
  std::vector<VEXName> names;
  for (int i = 0; i < 10; ++i) names.push_back(VEXName::intern("length" + std::to_string(i)));
  VEXAttributeTable table, copy;
  for (int round = 0; round < 400; ++round) {
    table.clear();
    std::vector<std::string> expected;
    for (const VEXName name : names) {
      expected.emplace_back(lengths[random() % std::size(lengths)], static_cast<char>('a' + random() % 26));
      table.set(name, expected.back());
    }
    copy.copyFrom(table);
    for (std::size_t i = 0; i < names.size(); ++i) {
      ASSERT_EQ(*table.find(names[i]), expected[i]);
      ASSERT_EQ(*copy.find(names[i]), expected[i]);
      ASSERT_EQ(copy.find(names[i])->c_str(), std::string(expected[i])) << "a zero byte follows";
    }
  }
}

// A value may be a part of the value that it replaces, and of one that moves when the table grows.
TEST(AttributeTable, ValuesMayComeFromTheTable) {
  const VEXName own = VEXName::intern("own");
  std::string letters;
  for (int i = 0; i < 60; ++i) letters += static_cast<char>('A' + i);
  for (const std::size_t length : {2U, 5U, 9U, 20U, 31U, 40U, 60U}) {
    for (std::size_t first = 0; first <= length; ++first) {
      VEXAttributeTable table;
      table.set(own, std::string_view(letters).substr(0, length));
      table.set(own, table.find(own)->view().substr(first));
      ASSERT_EQ(*table.find(own), letters.substr(first, length - first));
    }
    VEXAttributeTable table;
    table.set(own, std::string_view(letters).substr(0, length));
    for (int i = 0; i < 40; ++i) {
      const VEXName name = VEXName::intern("grown" + std::to_string(i));
      table.set(name, *table.find(own));
      ASSERT_EQ(*table.find(name), letters.substr(0, length));
    }
  }
}

TEST(AttributeTable, AHugeValueDoesNotStayForSmallOnes) {
  const VEXName name = VEXName::intern("huge"), other = VEXName::intern("other");
  const std::string huge(1'000'000, 'h');
  VEXAttributeTable table;
  table.set(name, huge);
  const char* buffer = table.find(name)->data();
  for (int round = 0; round < 3; ++round) {
    table.clear();
    table.set(name, huge);
    EXPECT_EQ(table.find(name)->data(), buffer) << "huge values that follow each other share one buffer";
  }
  table.clear();
  table.set(name, "small");
  table.clear();
  table.set(name, "small");
  EXPECT_FALSE(table.find(name)->hasLargeBuffer());
  table.clear();
  table.set(other, "first");
  table.set(name, huge);
  table.clear();
  table.set(other, "first");  // the slot of the huge one is not used at all
  table.clear();
  table.set(other, "first");
  table.set(name, "");
  EXPECT_FALSE(table.find(name)->hasLargeBuffer());
}

TEST(Object, ShelvedTextsStayWhileTheObjectIsFilledAnew) {
  VEXObject object;
  const VEXName name = VEXName::intern("kept"), gone = VEXName::intern("gone");
  for (const std::size_t length : {5U, 31U, 32U, 5000U}) {
    const std::string text(length, 'k');
    object.resetAttributes();
    object.setAttribute(gone, "1");
    object.setAttribute(name, text);
    object.removeAttribute(gone);
    std::string_view view = *object.findAttribute(name);
    object.shelveAttributes();
    for (int i = 0; i < 50; ++i) object.setAttribute("new" + std::to_string(i), text + "x");
    std::uint32_t place = 1;
    ASSERT_NE(object.findShelved(name, place), nullptr);
    EXPECT_EQ(*object.findShelved(name, place), text);
    EXPECT_EQ(view, text);
    EXPECT_EQ(object.findShelved(gone, place), nullptr);
    EXPECT_EQ(object.findAttribute(name), nullptr);
  }
}

}  // namespace
