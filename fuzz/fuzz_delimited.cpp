// Delimited text with every mixture of directives: the first byte chooses, the rest is the file.
#include "fuzz/fuzzfile.h"
#include "vex/tables/sepvalin.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzEngine::start();
  if (size == 0) return 0;
  const unsigned choice = data[0];
  FuzzFile file(data + 1, size - 1);
  VEXSeparatedInput input(file.path());
  VEXStatus failure = input.open();
  const auto add = [&](bool isWanted, const char* name, const char* value) {
    if (failure == nullptr && isWanted) failure = input.addField(name, value);
  };
  add((choice & 1) != 0, "CSV_STRIP_QUOTES", "YES");
  add((choice & 2) != 0, "CSV_SEPARATOR", "(;)");
  add((choice & 4) != 0, "CSV_SKIP_LINES", "1");
  add((choice & 8) != 0, "a", "char(5)");
  add((choice & 16) != 0, "b", "char(5)");
  add((choice & 32) != 0, "CSV_SKIP_LINES", "2000000000");
  if (failure == nullptr) failure = input.startRows();
  std::size_t bytes = 0;
  for (bool end = false; failure == nullptr && !end;) {
    VEXTableRow row;
    failure = input.getRow(row, end);
    if (failure != nullptr || end) break;
    if (row.size() != input.columnNames().size()) std::abort();
    for (const std::string_view field : row)
      for (const char c : field) bytes += static_cast<unsigned char>(c);
  }
  ignoreStatus(input.close());
  return bytes == 1 ? 1 : 0;
}
