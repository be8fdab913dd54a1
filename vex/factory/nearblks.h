// VEXNearBlocks parts many numbered shapes into blocks of neighbours, and tells what lies near a block. Shapes that are
// larger than a block are a block of their own, the last one, and near that is what lies along their lines. Calls: add
// for each, part once, then the questions.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "vex/src/plangeom.h"
#include "vex/topology/segmeet.h"

class VEXNearBlocks {
 public:
  // Shows the segments of a shape.
  using ShowSegments = std::function<void(std::uint32_t number, const std::function<void(const VEXSegment&)>& show)>;

  void reserve(std::size_t numShapes) {
    boxes_.reserve(numShapes);
    weights_.reserve(numShapes);
  }
  // Shapes are numbered from 0.
  void add(const VEXBox& box, std::size_t weight);
  // Into blocks of about `most` in weight. One block holds all when what lies near blocks would weigh much in
  // comparison with what is in them.
  void part(std::size_t most, const ShowSegments& showSegments);
  std::size_t numBlocks() const { return depth_ == above_ ? 1 : numHalves() + (hasLarge_ ? 1 : 0); }
  std::size_t blockOf(std::uint32_t number) const {
    return leafOf_[number] == kLargeLeaf ? numHalves() : std::size_t{leafOf_[number]} >> above_;
  }
  bool isNear(std::uint32_t number, std::size_t block) const;  // or of it
  // Those of the block, those near it, and those near these, ascending.
  void gather(std::size_t block, std::vector<std::uint32_t>& numbers) const;

 private:
  struct Box {  // rounded outwards
    float minX, minY, maxX, maxY;
    void add(const Box& other);
    Box grown(float byX, float byY) const { return {minX - byX, minY - byY, maxX + byX, maxY + byY}; }
    bool meets(const Box& other) const {
      return minX <= other.maxX && other.minX <= maxX && minY <= other.maxY && other.minY <= maxY;
    }
    float width() const { return maxX - minX; }
    float height() const { return maxY - minY; }
  };
  class Net {  // of squares that lines pass; calls in this order
   public:
    void span(const Box& extent);
    void mark(const VEXSegment& segment);
    void addUp();
    bool meets(const Box& box) const;

   private:
    static constexpr std::uint32_t kSide = 256;
    struct Squares {
      std::uint32_t col1, row1, col2, row2;
    };
    static std::size_t at(std::uint32_t row, std::uint32_t col) { return row * std::size_t{kSide + 1} + col; }
    Squares squaresOf(const Box& box) const;
    Box extent_{};
    std::vector<std::uint32_t> sums_;  // marked squares below the row and left of the column
  };
  static constexpr std::uint32_t kMostDepth = 7;
  static constexpr std::uint8_t kLargeLeaf = 255;

  static Box boxOf(const VEXBox& box);
  std::size_t numHalves() const { return std::size_t{1} << (depth_ - above_); }
  Box extentOfAll() const;
  Box blockOfAll() const;
  void setLargeApart();
  void markLarge(const ShowSegments& showSegments);
  void split(std::uint32_t* first, std::uint32_t* last, std::uint32_t depth, std::uint32_t leaf);
  void findExtents();
  bool isGathered(std::uint32_t number, std::size_t block) const;
  bool sharesLittle() const;

  std::vector<Box> boxes_;
  std::vector<std::uint32_t> weights_;
  std::vector<std::uint8_t> leafOf_;  // by number
  std::vector<Box> extents_;          // by block: what meets it is near
  std::vector<Box> reaches_;          // by block: what meets it is gathered
  bool hasLarge_ = false;
  Net largeLines_;                         // the same of the last block: what meets them when it is grown
  float reach_ = 0.0F;                     // by this is near
  float gatherX_ = 0.0F, gatherY_ = 0.0F;  // by this is gathered
  std::size_t weight_ = 0;
  double largest_ = 0.0;     // of all coordinates
  std::uint32_t depth_ = 0;  // of the tree of halves
  std::uint32_t above_ = 0;  // the leaves, how high up the blocks are taken
};
