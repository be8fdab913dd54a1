// RpPacked: boxes that are all known, in one array in the order of their place, under covers of sixteen each, and
// covers of those. What a bulk-loaded RpTree is searched by: each box stands once, no pointer is followed.
#pragma once

#include <cstdint>
#include <vector>

#include "vex/rptree/rpnode.h"

class RpPacked {
 public:
  explicit RpPacked(const std::vector<RpEntry>& entries);

  std::size_t numEntries() const { return boxes_.size(); }
  RpEntry entry(std::size_t at) const { return {boxes_[at], ids_[at]}; }
  // Gives the entry another box; one of NaN hides it from searches.
  void setBox(std::size_t at, const RpBox& box);
  void hideAll();

  // Adds the id of each entry that meets the box and passes the test.
  template <class Test>
  void search(const RpBox& box, const Test& test, std::vector<std::uint32_t>& ids) const {
    scan(levels_.size() - 1, 0, levels_.back().size(), box, Cover(box), test, ids);
  }

 private:
  static constexpr std::size_t kRun = 16;
  // A box in single precision, rounded outward: half the bytes, and a search looks at the boxes themselves in the end.
  struct Cover {
    float minX, minY, maxX, maxY;
    explicit Cover(const RpBox& box);
    bool meets(const Cover& other) const {
      return (minX <= other.maxX) & (other.minX <= maxX) & (minY <= other.maxY) & (other.minY <= maxY);
    }
  };
  struct Place {
    float x, y;
    std::uint32_t at;
  };

  static void order(Place* places, std::size_t count);

  template <class Test>
  void scan(std::size_t level, std::size_t first, std::size_t last, const RpBox& box, const Cover& cover,
            const Test& test, std::vector<std::uint32_t>& ids) const {
    const Cover* const covers = levels_[level].data();
    const std::size_t below = level == 0 ? boxes_.size() : levels_[level - 1].size();
    std::uint32_t met = 0;
    for (std::size_t at = first; at < last; ++at) met |= std::uint32_t{covers[at].meets(cover)} << (at - first);
    for (std::size_t run = first; met != 0; ++run, met >>= 1) {
      if ((met & 1) == 0) continue;
      const std::size_t start = run * kRun, end = std::min(start + kRun, below);
      if (level > 0) {
        scan(level - 1, start, end, box, cover, test, ids);
        continue;
      }
      std::uint32_t found[kRun];
      std::size_t numFound = 0;
      for (std::size_t at = start; at < end; ++at) {
        found[numFound] = ids_[at];
        // No branch: it could not be foretold.
        numFound += std::size_t{boxes_[at].meets(box)} & std::size_t{test(boxes_[at])};
      }
      ids.insert(ids.end(), found, found + numFound);
    }
  }

  std::vector<RpBox> boxes_;
  std::vector<std::uint32_t> ids_;
  std::vector<std::vector<Cover>> levels_;  // of runs of boxes, of runs of those, up to one run
};
