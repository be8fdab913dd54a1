// Cuts noded chains into pieces. It reads the chains of a store that must outlive it; next() gives one piece at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "vex/src/vexline.h"
#include "vex/topology/vexchain.h"

// A piece of a chain between two places where lines meet. What it shows is valid until the next call of nextPiece.
struct VEXChainPiece {
  VEXOrdinates xs;
  VEXOrdinates ys;
  VEXOrdinates zs;  // empty when the chain had no z
  // The chains that run along the whole piece, the one that it was read from (above 0) first, then the others by
  // rising number; negative: that chain runs the other way. A stretch that several chains hold comes once.
  std::span<const std::int32_t> chainIds;
  // The same, each chain as often as it runs along the piece: a ring may go round twice.
  std::span<const std::int32_t> passes;
  bool isWhole = false;  // the chain as it was added: nothing cut it and it shares nothing

  std::size_t numCoords() const { return xs.size(); }
  VEXPoint first() const { return at(0); }
  VEXPoint last() const { return at(xs.size() - 1); }
  VEXPoint at(std::size_t i) const { return {xs[i], ys[i], zs.empty() ? kNoZ : zs[i]}; }
  bool isClosed() const { return xs.front() == xs.back() && ys.front() == ys.back(); }
  // A line that owns its coordinates.
  VEXLine toLine(std::uint32_t geomType = VEX_GEOM_LINE) const;
};

// Where a piece lies in the chain store, instead of its coordinates. From `first` it runs to `last`; when that does not
// lie behind it, over the end of its ring, whose first and last coordinates are one place, and on from the start.
struct VEXPieceCourse {
  std::uint32_t first = 0;
  std::uint32_t last = 0;
  std::int32_t change = 0;  // how many times chains run along it, less how many times they run the other way
};

class VEXPieceCutter {
 public:
  explicit VEXPieceCutter(const VEXChainStore& chains);

  bool next(VEXChainPiece& piece, std::size_t maxVertices);
  // The course of the next piece. Pieces are asked for in the one way or the other; rewind lies between.
  bool nextCourse(VEXPieceCourse& course);
  // The piece of a course that nextCourse gave. After a rewind, in the same order; some may be left out.
  void show(const VEXPieceCourse& course, VEXChainPiece& piece);
  void rewind();
  // The nodes in which pieces end that meet others, or themselves, in the order of chains; and one of their
  // coordinates.
  void meetings(std::vector<std::uint32_t>& coords) const;

 private:
  static constexpr std::uint32_t kNotShared = 0xffffffffU;
  enum class Turns : std::uint8_t { Unknown, Same, Different };
  struct Shared {              // a segment that several chains hold, or one several times
    std::uint32_t firstChain;  // in sharedChains_
    std::uint32_t endChain;
    std::uint32_t firstSegment;            // the first that was met: its chain gives the piece
    mutable Turns turns = Turns::Unknown;  // asked at each turn of a line that runs to and fro
  };
  void findShared();
  void addShared(const std::vector<std::uint32_t>& segments, std::size_t first, std::size_t last);
  void countArms();
  std::uint32_t sharedAt(std::uint32_t segment) const { return shareds_.empty() ? kNotShared : sharedOf_[segment]; }
  bool isGiven(std::uint32_t segment) const {  // by the chain at hand
    const std::uint32_t shared = sharedAt(segment);
    return shared == kNotShared || shareds_[shared].firstSegment == segment;
  }
  // +1 when the segment runs from its lower node to the higher.
  int directionOf(std::uint32_t segment) const;
  bool isBreak(std::uint32_t before, std::uint32_t after) const;  // between two segments in succession
  bool isTurnable(const Shared& shared) const;
  bool hasSameChains(const Shared& a, const Shared& b, bool isSameWay) const;
  bool beginChain();
  void setIds(std::uint32_t segment);
  bool nextStretch(std::uint32_t& from, std::uint32_t& to);
  void setRun(std::uint32_t from, std::uint32_t to, bool wraps);
  void showRun(VEXChainPiece& piece, std::size_t maxVertices);

  const VEXChainStore& chains_;
  std::vector<std::uint32_t> sharedOf_;  // by segment; empty when nothing is shared
  std::vector<Shared> shareds_;
  std::vector<std::int32_t> sharedChains_;  // signed by the direction from the lower node to the higher; each pass
  // By node: segments of different course that end there, 3 for more. Of two, once it is known, whether the same chains
  // go on from the one to the other.
  static constexpr std::uint8_t kMoreArms = 3, kArmsGoOn = 4, kArmsEnd = 5;
  mutable std::vector<std::uint8_t> numArms_;

  std::size_t chain_ = 0;    // at work
  std::uint32_t first_ = 0;  // its first coordinate, and its last
  std::uint32_t last_ = 0;
  std::uint32_t at_ = 0;    // where its next stretch begins
  std::uint32_t stop_ = 0;  // where its last stretch ends
  bool isOpen_ = false;     // a chain is at work
  bool wraps_ = false;      // its last stretch goes on from its start, to wrapTo_
  std::uint32_t wrapTo_ = 0;
  std::vector<double> wrapXs_, wrapYs_, wrapZs_;
  std::vector<std::int32_t> ids_;
  std::vector<std::int32_t> passes_;    // empty where they are the ids
  VEXOrdinates runXs_, runYs_, runZs_;  // the stretch that is being given
  std::size_t runAt_ = 0;
  bool isWhole_ = false;
};
