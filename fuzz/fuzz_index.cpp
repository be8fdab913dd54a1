// The stored form of the spatial index: what restores has to save as the same bytes, and to answer and grow.
#include <algorithm>

#include "fuzz/fuzzfile.h"
#include "vex/rptree/rptree.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzEngine::start();
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  VEXByteCursor cursor(bytes);
  RpTree tree;
  if (!tree.restore(cursor)) return 0;
  std::string saved;
  tree.save(saved);
  if (saved != bytes.substr(0, cursor.offset())) std::abort();
  const RpBox everywhere = {-1e300, -1e300, 1e300, 1e300};
  RpHits hits;
  tree.searchContained({0, 0, 10, 10}, hits);
  tree.searchTouching({0, 0, 10, 10}, hits);
  for (std::uint32_t id = 0; id < 250; ++id) tree.insert(RpBox{id * 0.5, 1, id * 0.7, 4}, 1000000 + id);
  tree.searchIntersecting(everywhere, hits);
  for (std::uint32_t id = 0; id < 250; ++id) {
    if (!std::binary_search(hits.begin(), hits.end(), 1000000 + id)) std::abort();
  }
  return 0;
}
