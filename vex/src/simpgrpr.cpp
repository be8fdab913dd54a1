#include "vex/src/simpgrpr.h"

namespace {

constexpr std::uint32_t kTypeTwice = 230001;

}  // namespace

VEXStatus VEXSimpleGrouper::parseDefLine(const VEXStringVector& row) {
  if (findEntry(row[1]) != nullptr) return makeStatus(kTypeTwice, {row[1], row[0]});
  Entry& entry = addEntry(row[1], std::make_unique<VEXGroup>(row[1], std::string(), std::string()));
  for (std::size_t at = 2; at + 1 < row.size(); at += 2) entry.group->setSequenced(row[at], row[at + 1]);
  linkToItself(entry);
  return nullptr;
}
