#include "vex/src/vexstats.h"

#include <algorithm>
#include <vector>

#include "vex/inc/numtext.h"
#include "vex/src/vexlog.h"

namespace {

constexpr std::uint32_t kStatisticsLine = 254001;

// `text` padded or cut to the left column, then the count at the right end of the line.
std::string tableLine(std::string_view text, std::int64_t count, std::size_t width, std::size_t lineLength) {
  const std::size_t textWidth = lineLength > width ? lineLength - width : 0;
  std::string line(text.substr(0, textWidth));
  line.append(textWidth - line.size(), ' ');
  const std::string number = integerText(count);
  if (number.size() < width) line.append(width - number.size(), ' ');
  return line + number;
}

std::string centred(std::string_view text, std::size_t lineLength) {
  const std::size_t blanks = text.size() < lineLength ? (lineLength - text.size()) / 2 : 0;
  return std::string(blanks, ' ').append(text);
}

void logLine(std::string_view line) {
  logMessage(VEXSeverity::Stats, kStatisticsLine, {line});
}

}  // namespace

std::int32_t* VEXStatistics::counter(std::string_view key) {
  auto found = counts_.find(key);
  if (found == counts_.end()) found = counts_.emplace(key, 0).first;
  return &found->second;
}

std::int32_t VEXStatistics::count(std::string_view key) const {
  auto found = counts_.find(key);
  return found == counts_.end() ? 0 : found->second;
}

void VEXStatistics::write(std::string_view heading, std::string_view title, std::string_view totalLabel,
                          std::size_t width, std::size_t lineLength) const {
  std::string outerRule;
  while (outerRule.size() < lineLength) outerRule += "=-";
  const std::string innerRule(lineLength, '=');
  std::vector<std::pair<std::string_view, std::int32_t>> rows(counts_.begin(), counts_.end());
  std::sort(rows.begin(), rows.end());

  logLine({});
  logLine(outerRule);
  for (std::string_view line : {heading, title}) {
    if (line.empty()) continue;
    logLine(centred(line, lineLength));
    logLine(outerRule);
  }
  std::int64_t total = 0;
  for (const auto& [key, count] : rows) {
    logLine(tableLine(key, count, width, lineLength));
    total += count;
  }
  logLine(innerRule);
  logLine(tableLine(totalLabel, total, width, lineLength));
  logLine(outerRule);
}
