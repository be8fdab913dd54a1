// Tables of function calls: a feature, a call, what it gives, and the feature afterwards.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/unit/drivers.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdparm.h"

struct CallRow {
  const char* feature;
  const char* call;
  const char* result;           // or "#<number>" of the failure
  const char* after = nullptr;  // null: the feature as it was
};

class FunctionTest : public ::testing::Test {
 protected:
  // The result, or "#<number>".
  static std::string perform(VEXFeaturePtr& feature, const std::string& text, bool isSource = false) {
    VEXCommandParm call;
    VEXVariableTable variables;
    std::string result;
    VEXStatus failure = call.parse(text);
    if (failure == nullptr)
      failure = isSource ? call.extract(feature, variables, result) : call.execute(feature, variables, result);
    return failure == nullptr ? result : "#" + std::to_string(failure->messageNumber());
  }

  static void hold(const std::vector<CallRow>& rows, bool isSource = false) {
    for (const CallRow& row : rows) {
      VEXFeaturePtr feature = makeFeature(row.feature);
      EXPECT_EQ(perform(feature, row.call, isSource), row.result) << row.call << " on " << row.feature;
      ASSERT_NE(feature, nullptr) << row.call;
      EXPECT_EQ(describe(*feature), row.after == nullptr ? row.feature : row.after) << row.call;
    }
  }

  // Number of the failure that the row gives, 0 for none.
  static std::uint32_t configure(const std::string& row) {
    VEXStringVector words;
    splitAt(row, ' ', words);
    return numberOf(VEXCommandRegistry::instance().configure(words));
  }

  TranslationScope engine_;
};
