// What the tests of table files share: a directory of their own, files as text, the lines of the log.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/unit/support.h"
#include "vex/src/vexlog.h"
#include "vex/tables/vextabio.h"

using Pairs = std::vector<std::pair<std::string, std::string>>;

class TableTest : public ::testing::Test {
 protected:
  TableTest() {
    std::string pattern = (std::filesystem::temp_directory_path() / "orvtableXXXXXX").string();
    directory_ = mkdtemp(pattern.data());
    engine_.row("LOG_FILENAME NUL:");
    log_ = std::make_unique<VEXLogFile>();
    EXPECT_EQ(numberOf(log_->open()), 0u);
    log_->setCallback([](ORV_Int32 severity, const char* text) { lines_.push_back({severity, text}); });
    lines_.clear();
  }
  ~TableTest() override { std::filesystem::remove_all(directory_); }

  static std::uint32_t numberOf(const VEXStatus& status) { return status == nullptr ? 0 : status->messageNumber(); }

  std::string at(const std::string& name) const { return directory_ + "/" + name; }
  std::string put(const std::string& name, const std::string& bytes) const {
    std::ofstream(at(name), std::ios::binary) << bytes;
    return at(name);
  }
  static std::string bytesOf(const std::string& path) {
    std::ostringstream bytes;
    bytes << std::ifstream(path, std::ios::binary).rdbuf();
    return bytes.str();
  }
  // Opens, declares, and reads all rows as "a|b\nc|d\n"; what failed stands at the end as "#number".
  static std::string rowsOf(VEXTableInput& input, const Pairs& fields = {}) {
    std::string text;
    VEXStatus failure = input.open();
    for (const auto& [name, value] : fields)
      if (failure == nullptr) failure = input.addField(name, value);
    if (failure == nullptr) failure = input.startRows();
    for (bool end = false; failure == nullptr && !end;) {
      VEXTableRow row;
      failure = input.getRow(row, end);
      for (std::size_t i = 0; i < row.size(); ++i) text.append(i > 0 ? "|" : "").append(row[i]);
      if (failure == nullptr && !end) text += "\n";
    }
    if (failure == nullptr) failure = input.close();
    return failure == nullptr ? text : text + "#" + std::to_string(numberOf(failure));
  }
  // Opens, declares, writes the rows and closes; the number of the first failure.
  static std::uint32_t write(VEXTableOutput& output, const Pairs& fields,
                             const std::vector<std::vector<std::string_view>>& rows) {
    VEXStatus failure = output.open();
    for (const auto& [name, type] : fields)
      if (failure == nullptr) failure = output.addField(name, type);
    for (const auto& row : rows)
      if (failure == nullptr) failure = output.writeRow(row);
    if (failure == nullptr) failure = output.close();
    return numberOf(failure);
  }
  // True when a line of this severity holds the text.
  static bool logged(VEXSeverity severity, const std::string& part) {
    for (const auto& [code, text] : lines_)
      if (code == static_cast<std::int32_t>(severity) && text.find(part) != std::string::npos) return true;
    return false;
  }

  EngineScope engine_;
  std::unique_ptr<VEXLogFile> log_;
  std::string directory_;
  static inline std::vector<std::pair<std::int32_t, std::string>> lines_;
};
