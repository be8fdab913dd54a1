// The row reader on any bytes. Includes are refused, so that nothing outside the input is touched.
#include <cstdint>
#include <cstdlib>

#include "vex/src/rowtext.h"
#include "vex/src/tabrdr.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  for (bool lenient : {false, true}) {
    auto reader = TableReader::overText(text);
    reader->allowUndefinedMacros(lenient);
    VEXStringVector row;
    for (std::size_t rows = 0;; ++rows) {
      if (VEXStatus failure = reader->getRow(row)) {
        if (failure->messageNumber() == 0) std::abort();  // a failure without a text
        break;
      }
      if (row.empty()) break;
      if (rows > size) std::abort();  // more rows than lines
      for (const std::string& token : row)
        if (token.empty()) std::abort();
      // A row written down gives the same tokens again, as long as nothing in it has a meaning of its own.
      std::string written = rowText(row);
      if (written.find_first_of("\\\n\x01\x02\x03\x04\x05") != std::string::npos) continue;
      VEXStringVector again;
      if (tokeniseRow(written, delimiterSet(" \t"), again) != RowFault::None || again != row) std::abort();
    }
  }
  return 0;
}
