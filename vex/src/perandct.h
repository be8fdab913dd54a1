// VEXPersistentDictionary: the attribute names of one feature file, as its records refer to them, with the form in which
// they stand in the file's dictionary region. A file's recorder owns it and makes a new one for each file.
#pragma once

#include <cstdint>
#include <string>

#include "vex/inc/statinfo.h"
#include "vex/src/featfifo.h"
#include "vex/src/vexfile.h"

// The region: the table from name to index (u32 count, then for each entry u32 length, the name's bytes, u32 index), then
// the table from index to name (u32 count, then for each entry u32 index, u32 length, the name's bytes).
class VEXPersistentDictionary : public VEXNameDictionary {
 public:
  void save(std::string& bytes) const;  // appends
  // Takes the region that runs from the file's position to `end`. False, with the names that could be told before the
  // fault, when it is no such region: `fault` says why.
  bool restore(VEXInputFile& file, std::uint64_t end, std::string& fault);
  // Gives an index that is the next one a name, for a file whose own names are lost.
  void addUnknown();
};
