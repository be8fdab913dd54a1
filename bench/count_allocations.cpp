// Counts what the road of a feature allocates: runs one translation on n and on 2n rows and compares. What the
// second n rows cost is the steady state. Prints allocations per feature; fails above one in ten. What is left are the
// progress lines, one every hundred features.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <new>
#include <string>

#include "vex/inc/orvane.h"

namespace {
std::atomic<long> allocations{0};
}

void* operator new(std::size_t size) {
  ++allocations;
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) std::abort();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace {

namespace fs = std::filesystem;

void writeRows(const fs::path& path, int rows) {
  std::ofstream out(path);
  out << "ID,NAME,VALUE\n";
  for (int i = 0; i < rows; ++i)
    out << i << ",a name that is longer than a short string " << i % 7 << ',' << i * 0.25 << '\n';
}

long allocationsOf(const fs::path& directory, const char* mappingFile, const char* input) {
  std::string mapping = (directory / mappingFile).string();
  std::string macro = input;
  const char* arguments[] = {"orv", mapping.c_str(), "--INPUT", macro.c_str()};
  long before = allocations;
  if (ORV_Translate(4, arguments, 0, nullptr, nullptr) != 0) std::exit(1);
  return allocations - before;
}

void writeMapping(const fs::path& path, const std::string& reader, const std::string& writer) {
  std::ofstream(path)
      << "READER_KEYWORD IN\nWRITER_KEYWORD OUT\n"
      << reader << writer << "IN r ID %id NAME %name VALUE %value\n"
      << "OUT r ID %id NAME %name VALUE %value LABEL @Concatenate(%name,-,%id) @XValue(%id,Reset) @YValue(%value)\n";
}

std::string tableIn(const std::string& row) {
  return "READER_TYPE TABLE\nIN_DATASET $(ORV_MF_DIR)\nIN_DEF r " + row + "\n";
}

std::string tableOut(const std::string& row) {
  return "WRITER_TYPE TABLE\nOUT_DATASET $(ORV_MF_DIR)out\nOUT_DEF r " + row +
         " ID number(10,0) NAME char(60) VALUE number(12,2) LABEL char(80)\n";
}

}  // namespace

int main() {
  constexpr int kRows = 20000;
  fs::path directory =
      fs::temp_directory_path() / ("orv_count_" + std::to_string(std::rand()) + "_" + std::to_string(allocations));
  fs::create_directories(directory);
  writeRows(directory / "once.csv", kRows);
  writeRows(directory / "twice.csv", 2 * kRows);
  const std::string csv = "CSV $(INPUT).csv CSV_SKIP_LINES 1";
  writeMapping(directory / "csv_dbf.orv", tableIn(csv), tableOut("DBF $(INPUT).dbf"));
  writeMapping(directory / "dbf_csv.orv", tableIn("DBF out/$(INPUT).dbf"), tableOut("CSV $(INPUT).csv"));
  writeMapping(directory / "csv_csv.orv", tableIn(csv), tableOut("CSV $(INPUT)2.csv"));
  writeMapping(directory / "csv_qds.orv", tableIn(csv), "WRITER_TYPE QDS\nOUT_DATASET $(ORV_MF_DIR)out/$(INPUT).qds\n");
  writeMapping(directory / "qds_csv.orv", "READER_TYPE QDS\nIN_DATASET $(ORV_MF_DIR)out/$(INPUT).qds\n",
               tableOut("CSV $(INPUT)3.csv"));
  bool isSteady = true;
  for (const char* job : {"csv_dbf.orv", "dbf_csv.orv", "csv_csv.orv", "csv_qds.orv", "qds_csv.orv"}) {
    long once = allocationsOf(directory, job, "once");
    long twice = allocationsOf(directory, job, "twice");
    double each = static_cast<double>(twice - once) / kRows;
    std::printf("%-12s %ld allocations for %d rows, %ld for %d: %.4f per further feature\n", job, once, kRows, twice,
                2 * kRows, each);
    isSteady = isSteady && each < 0.1;
  }
  fs::remove_all(directory);
  return isSteady ? 0 : 1;
}
