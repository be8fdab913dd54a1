// RpNode: a node of the R+ tree (see rptree.h), its entries and how it splits. The tree owns the root, a node its
// children. The boxes of a node stand in one array, so that a search runs over them without following a pointer.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "vex/src/bytecur.h"
#include "vex/src/plangeom.h"

// A box in the plane, its edges included. One with a NaN meets nothing.
struct RpBox {
  double minX = 0.0, minY = 0.0, maxX = 0.0, maxY = 0.0;

  static RpBox of(const VEXBox& box) { return {box.minX, box.minY, box.maxX, box.maxY}; }
  static RpBox nothing();  // what every box replaces when it is added
  bool meets(const RpBox& other) const {
    return (minX <= other.maxX) & (other.minX <= maxX) & (minY <= other.maxY) & (other.minY <= maxY);
  }
  bool encloses(const RpBox& other) const {
    return (minX <= other.minX) & (minY <= other.minY) & (maxX >= other.maxX) & (maxY >= other.maxY);
  }
  bool hasNaN() const { return minX != minX || minY != minY || maxX != maxX || maxY != maxY; }
  bool operator==(const RpBox&) const = default;
  double low(int axis) const { return axis == 0 ? minX : minY; }
  double high(int axis) const { return axis == 0 ? maxX : maxY; }
  void setLow(int axis, double value) { (axis == 0 ? minX : minY) = value; }
  void setHigh(int axis, double value) { (axis == 0 ? maxX : maxY) = value; }
  void add(const RpBox& other);  // NaN adds nothing
};

struct RpEntry {
  RpBox box;
  std::uint32_t id = 0;
};

// What the nodes of one tree count together, so that boxes that straddle every cut cannot fill the memory with copies.
struct RpGrowth {
  std::uint64_t inserted = 0;  // boxes given to the tree
  std::uint64_t copies = 0;    // data entries of all leaves
  int depth = 1;               // nodes from the root down to the lowest leaf, or more
  bool uncutTold = false;      // the text on a node without a cut is logged once a tree

  bool mayCopy() const { return copies <= 4 * inserted + 4096; }
};

class RpNode {
 public:
  enum Level : char { Undetermined = 'U', Leaf = 'L', Internal = 'I', DataRoot = 'D', Root = 'R' };
  static constexpr std::size_t kCapacity = 100;  // splits when it holds as many
  static constexpr int kMostDepth = 64;          // nodes from the root down to a leaf
  static constexpr std::uint32_t kNoCut = 1000000;

  struct Cut {
    int axis = 0;
    double at = 0.0;
    std::uint32_t cost = kNoCut;  // straddling entries
  };

  explicit RpNode(Level level = Undetermined) : nodeLevel_(level) {}

  Level level() const { return nodeLevel_; }
  std::size_t numEntries() const { return boxes_.size(); }
  bool holdsData() const { return nodeLevel_ != Internal && nodeLevel_ != Root; }
  const std::vector<RpBox>& boxes() const { return boxes_; }
  const RpNode& child(std::size_t at) const { return *children_[at]; }

  void setParent(RpNode* parent);
  void reserve(std::size_t count);  // data entries
  void addData(const RpBox& box, std::uint32_t id);
  void addChild(const RpBox& box, std::unique_ptr<RpNode> child);
  // The leaves that an entry belongs to: down every child that meets its box. The children divide the region of their
  // node among them, and those at its rim grow with it.
  void findLeaves(const RpBox& box, const RpBox& region, std::vector<RpNode*>& leaves);
  // The leaf below those children that have to grow least, for trees whose children leave gaps.
  RpNode* growOneLeaf(const RpBox& box);
  // Counts the leaves that meet the box, up to a limit.
  std::size_t countLeaves(const RpBox& box, std::size_t limit) const;
  // Splits a node that is full, and its parents as far as they become so.
  void selfSplit(RpGrowth& growth);
  RpBox myCoverage() const;  // of a root: around its entries; of another node: what its parent's entry says
  // Adds the boxes of each run of entries, which spare a search most of them. Any change drops them.
  void packCovers();

  void save(std::string& bytes) const;
  void saveWithLeaf(std::string& bytes, const RpNode& leaf) const;  // the same with one child more
  // False: the bytes do not hold a node at this depth (the root's is 1).
  bool restore(VEXByteCursor& bytes, int depth, RpGrowth& growth);

  // Adds the id of each data entry that meets the box and passes the test.
  template <class Test>
  void search(const RpBox& box, const Test& test, std::vector<std::uint32_t>& ids) const {
    const std::size_t top = numLevels_;
    scan(top, 0, levelSize(top), box, test, ids);
  }

 private:
  static constexpr std::size_t kRun = 8;  // entries, or covers, under one cover

  Cut bestCut(int axis) const;
  void changeInBound(std::size_t at, const RpBox& box);
  std::unique_ptr<RpNode> splitNode(RpNode& child, const Cut& cut, RpGrowth& growth);
  void shareEntries(RpNode& highSide, const Cut& cut, RpGrowth& growth);
  void insertFromSibling(const RpBox& box, std::uint32_t id);
  void insertFromSibling(const RpBox& box, std::unique_ptr<RpNode> child);
  void growTo(const RpBox& region);
  void keepUncut();
  void saveEntries(std::string& bytes) const;
  std::size_t positionOf(const RpNode& child) const;
  void dropCovers() {
    covers_.clear();
    numLevels_ = 0;
  }
  std::size_t levelSize(std::size_t level) const {
    std::size_t size = boxes_.size();
    for (; level > 0; --level) size = (size + kRun - 1) / kRun;
    return size;
  }
  const RpBox* levelBoxes(std::size_t level) const {
    if (level == 0) return boxes_.data();
    std::size_t start = 0;
    for (std::size_t below = 1; below < level; ++below) start += levelSize(below);
    return covers_.data() + start;
  }

  template <class Test>
  void scan(std::size_t level, std::size_t first, std::size_t last, const RpBox& box, const Test& test,
            std::vector<std::uint32_t>& ids) const {
    const RpBox* const boxes = levelBoxes(level);
    for (std::size_t at = first; at < last; ++at) {
      if (!boxes[at].meets(box)) continue;
      if (level > 0) {
        scan(level - 1, at * kRun, std::min((at + 1) * kRun, levelSize(level - 1)), box, test, ids);
      } else if (!children_.empty()) {
        children_[at]->search(box, test, ids);
      } else if (test(boxes[at])) {
        ids.push_back(ids_[at]);
      }
    }
  }

  std::vector<RpBox> boxes_;                       // of the entries
  std::vector<RpBox> covers_;                      // of each run of entries, then of each run of those, and so on
  std::vector<std::uint32_t> ids_;                 // of data entries
  std::vector<std::unique_ptr<RpNode>> children_;  // of child entries
  RpNode* parent_ = nullptr;
  std::size_t nextTry_ = kCapacity;  // the count at which a node without a cut looks for one again
  std::uint8_t numLevels_ = 0;       // of covers
  Level nodeLevel_;
};
