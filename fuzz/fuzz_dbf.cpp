// dBase files: the header, the records, and the same rows written again, so that odd values meet the writer, too.
#include "fuzz/fuzzfile.h"
#include "vex/tables/dbfin.h"
#include "vex/tables/dbfout.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzEngine::start();
  FuzzFile file(data, size);
  VEXDBFInput input(file.path());
  VEXDBFOutput output("NUL:");
  VEXStatus failure = input.open();
  if (failure == nullptr) ignoreStatus(input.addField("name", "char(10)"));
  if (failure == nullptr) failure = input.startRows();
  if (failure == nullptr) failure = output.open();
  for (std::size_t i = 0; failure == nullptr && i < input.columnNames().size(); ++i) {
    std::string type;
    if (input.fieldType(i, type) != nullptr) std::abort();
    // Names that the writer refuses leave their column out.
    ignoreStatus(output.addField(input.columnNames()[i], type));
  }
  const std::uint64_t expected = input.expectedRows();
  std::uint64_t numRows = 0;
  for (bool end = false; failure == nullptr && !end;) {
    VEXTableRow row;
    failure = input.getRow(row, end);
    if (failure != nullptr || end) break;
    if (row.size() != input.columnNames().size() || ++numRows > expected) std::abort();
    failure = output.writeRow(row);
  }
  ignoreStatus(input.close());
  ignoreStatus(output.close());
  return 0;
}
