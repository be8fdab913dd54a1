// VEXNearBlocks parts many numbered boxes into blocks of neighbours, and tells what lies near a block. Calls: add for
// each, part once, then the questions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vex/src/plangeom.h"

class VEXNearBlocks {
 public:
  void reserve(std::size_t numBoxes) {
    boxes_.reserve(numBoxes);
    weights_.reserve(numBoxes);
  }
  // Boxes are numbered from 0.
  void add(const VEXBox& box, std::size_t weight);
  // Into blocks of no more than `most` in weight, where that is possible. One block holds all when what lies near
  // blocks would weigh much in comparison with what is in them.
  void part(std::size_t most);
  std::size_t numBlocks() const { return std::size_t{1} << (depth_ - above_); }
  std::size_t blockOf(std::uint32_t number) const { return std::size_t{leafOf_[number]} >> above_; }
  // Those of the block, those near it, and those near these, ascending.
  void gather(std::size_t block, std::vector<std::uint32_t>& numbers) const;
  bool isNear(std::uint32_t number, std::size_t block) const {  // or of it
    return extents_[block].meets(boxes_[number]);
  }

 private:
  struct Box {  // rounded outwards
    float minX, minY, maxX, maxY;
    void add(const Box& other);
    Box grown(float byX, float byY) const { return {minX - byX, minY - byY, maxX + byX, maxY + byY}; }
    bool meets(const Box& other) const {
      return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
    }
  };
  static constexpr std::uint32_t kMostDepth = 7;
  void split(std::uint32_t* first, std::uint32_t* last, std::uint32_t depth, std::uint32_t leaf);
  void findReaches();
  bool sharesLittle() const;

  std::vector<Box> boxes_;
  std::vector<std::uint32_t> weights_;
  std::vector<std::uint8_t> leafOf_;  // by number
  std::vector<Box> extents_;          // by block: what meets it is near
  std::vector<Box> reaches_;          // by block: what meets it is gathered
  std::size_t weight_ = 0;
  double largest_ = 0.0;     // of all coordinates
  std::uint32_t depth_ = 0;  // of the tree of halves
  std::uint32_t above_ = 0;  // the leaves, how high up the blocks are taken
};
