// The hot loops of table files: splitting a row of text, making and reading a dBase record. Twelve mixed columns, as
// most tables have them.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"
#include "vex/tables/dbfin.h"
#include "vex/tables/dbfout.h"
#include "vex/tables/sepvalin.h"
#include "vex/tables/sepvalot.h"

namespace {

constexpr int kNumRows = 200000;

struct Column {
  const char* name;
  const char* type;
  const char* value;
};

constexpr Column kColumns[] = {
    {"ID", "number(10,0)", "1234567"},
    {"NAME", "char(24)", "Northern Avenue"},
    {"CODE", "char(8)", "AB-12345"},
    {"LENGTH", "number(12,3)", "1523.875"},
    {"WIDTH", "number(8,2)", "12.5"},
    {"OPENED", "date", "19870412"},
    {"PAVED", "logical", "true"},
    {"LANES", "number(4,0)", "4"},
    {"OWNER", "char(30)", "City of Somewhere"},
    {"X", "number(15,6)", "-123.456789"},
    {"Y", "number(15,6)", "49.282729"},
    {"NOTE", "char(40)", "resurfaced after the storm"},
};

// The same files for all runs, in a directory that goes away at the end.
class Files {
 public:
  Files() : directory_(std::filesystem::temp_directory_path() / "orv_bench_tables") {
    std::filesystem::create_directories(directory_);
    VEXConfiguration::addRow({"LOG_FILENAME", "NUL:"});
    ignoreStatus(log_.open());  // a benchmark is the same without it
    for (const Column& column : kColumns) row_.emplace_back(column.value);
    std::ofstream text(path("rows.csv"), std::ios::binary);
    for (int i = 0; i < kNumRows; ++i)
      for (std::size_t c = 0; c < row_.size(); ++c) text << row_[c] << (c + 1 < row_.size() ? ',' : '\n');
    VEXDBFOutput table(path("rows.dbf"));
    fill(table);
  }
  ~Files() { std::filesystem::remove_all(directory_); }

  std::string path(const char* name) const { return (directory_ / name).string(); }
  void fill(VEXTableOutput& output) const {
    ignoreStatus(output.open());
    for (const Column& column : kColumns) ignoreStatus(output.addField(column.name, column.type));
    for (int i = 0; i < kNumRows; ++i) ignoreStatus(output.writeRow(row_));
    ignoreStatus(output.close());
  }

 private:
  VEXConfiguration configuration_;
  VEXLogFile log_;
  std::filesystem::path directory_;
  std::vector<std::string_view> row_;
};

const Files& files() {
  static const Files made;
  return made;
}

template <class Input>
void readTable(benchmark::State& state, const char* name, bool stripsQuotes) {
  std::size_t bytes = 0;
  for (auto _ : state) {
    Input input(files().path(name));
    ignoreStatus(input.open());
    if (stripsQuotes) ignoreStatus(input.addField("CSV_STRIP_QUOTES", "YES"));
    ignoreStatus(input.startRows());
    VEXTableRow row;
    for (bool end = false; !end;) {
      ignoreStatus(input.getRow(row, end));
      for (const std::string_view field : row) bytes += field.size();
    }
  }
  benchmark::DoNotOptimize(bytes);
  state.SetItemsProcessed(state.iterations() * kNumRows);
}

template <class Output>
void writeTable(benchmark::State& state) {
  for (auto _ : state) {
    Output output("NUL:");  // the file system is not what is timed
    files().fill(output);
  }
  state.SetItemsProcessed(state.iterations() * kNumRows);
}

void splitRow(benchmark::State& state) {
  readTable<VEXSeparatedInput>(state, "rows.csv", false);
}
void splitQuotableRow(benchmark::State& state) {
  readTable<VEXSeparatedInput>(state, "rows.csv", true);
}
void readDbfRecord(benchmark::State& state) {
  readTable<VEXDBFInput>(state, "rows.dbf", false);
}
void writeDbfRecord(benchmark::State& state) {
  writeTable<VEXDBFOutput>(state);
}
void writeTextRow(benchmark::State& state) {
  writeTable<VEXSeparatedOutput>(state);
}

BENCHMARK(splitRow)->Unit(benchmark::kMillisecond);
BENCHMARK(splitQuotableRow)->Unit(benchmark::kMillisecond);
BENCHMARK(readDbfRecord)->Unit(benchmark::kMillisecond);
BENCHMARK(writeDbfRecord)->Unit(benchmark::kMillisecond);
BENCHMARK(writeTextRow)->Unit(benchmark::kMillisecond);

}  // namespace
