// RpTree: an R+ tree of boxes in the plane with 32-bit identifiers, under all spatial search. Siblings do not overlap:
// a box that straddles a cut is kept on both sides, and a search gives its identifier once. Filled box by box, or in
// one go when all boxes are known, which is faster and gives the better tree. Its owner keeps what the identifiers
// mean.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "vex/rptree/rpnode.h"
#include "vex/rptree/rppacked.h"

// Identifiers found: ascending, each once, whatever the shape of the tree.
using RpHits = std::vector<std::uint32_t>;

class RpTree {
 public:
  RpTree() : root_(std::make_unique<RpNode>(RpNode::DataRoot)) {}
  RpTree(RpTree&&) = default;
  RpTree& operator=(RpTree&&) = default;

  // The corners of the box may come in any order. A box with a NaN is kept, but meets nothing.
  void insert(RpBox box, std::uint32_t id);
  void insert(const VEXBox& box, std::uint32_t id) { insert(RpBox::of(box), id); }
  // Replaces what the tree holds.
  void bulkLoad(std::vector<RpEntry> entries);

  // Each replaces `hits`. Edges belong to a box.
  void searchPoint(double x, double y, RpHits& hits) const;       // boxes that hold the point
  void searchTouching(const RpBox& box, RpHits& hits) const;      // that meet the outline of the box
  void searchContained(const RpBox& box, RpHits& hits) const;     // that lie in it
  void searchIntersecting(const RpBox& box, RpHits& hits) const;  // that have a point in common with it

  bool isEmpty() const { return packed_ != nullptr ? packed_->numEntries() == 0 : root_->numEntries() == 0; }
  const RpNode& root() const;  // of a bulk-loaded tree: made now
  // Data entries of the leaves, those on both sides of a cut twice; of a bulk-loaded tree the boxes until root() is
  // called.
  std::uint64_t numCopies() const { return growth_.copies; }

  // The stored form, little-endian: kind u8, entry count u32; of a leaf ("L", "D") each entry as u32 identifier and
  // four doubles, minimum x and y, maximum x and y; otherwise ("I", "R") four doubles and the child in the same form.
  void save(std::string& bytes) const;  // appends
  // Takes one tree from the bytes, which may hold more behind it. False when they are no tree: this one is then empty.
  bool restore(VEXByteCursor& bytes);

 private:
  template <class Test>
  void search(const RpBox& box, const Test& test, RpHits& hits) const;
  std::unique_ptr<RpNode> makeNodes(RpGrowth& growth) const;

  mutable std::unique_ptr<RpNode> root_;  // null: not made yet from packed_
  std::unique_ptr<RpNode> wide_;  // boxes that came when copies were too many, and would have gone to several leaves
  std::unique_ptr<RpPacked> packed_;  // null once boxes are inserted one by one
  mutable RpGrowth growth_;
  bool hasGaps_ = false;  // bulk loaded or restored: the children do not fill their node's region
};
