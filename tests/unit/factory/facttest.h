// A factory alone in its pipeline, as rows of a table: clauses, what goes in, what comes out.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/unit/drivers.h"

struct FactoryRow {
  std::string clauses;
  std::vector<std::string> features;
  std::string result;   // what comes out, "#<number>" at its end for a failure while running
  std::string summary;  // in the log; how it begins is enough
};

inline void check(const std::string& className, const std::vector<FactoryRow>& rows) {
  for (const FactoryRow& row : rows) {
    PipelineScope scope({"FACTORY_DEF K " + className + " " + row.clauses});
    ASSERT_EQ(scope.defined(), 0U) << row.clauses;
    EXPECT_EQ(scope.run(row.features), row.result) << row.clauses;
    EXPECT_EQ(scope.engine.logged("f_0(" + className + "): " + row.summary), row.summary.empty() ? 0U : 1U)
        << row.clauses;
  }
}

inline void checkFaults(const std::string& className, const std::vector<std::pair<std::string, std::uint32_t>>& rows) {
  for (const auto& [clauses, number] : rows)
    EXPECT_EQ(PipelineScope({"FACTORY_DEF K " + className + " " + clauses}).defined(), number) << clauses;
}
