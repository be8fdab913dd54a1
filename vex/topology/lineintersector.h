// VEXLineIntersector finds every place where lines of a data set meet, in themselves, too, and cuts them there. Calls
// come in this order: addLine or addLines, computeIntersections once, then nextPiece until it returns false. Ends of
// pieces that meet are equal bit for bit; the same input in the same order gives the same pieces in the same order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/src/vexline.h"
#include "vex/topology/piececut.h"
#include "vex/topology/spatialgridcore.h"

// The parameters of the grids, with the values used when a caller sets none. Values of 0 count as 1.
struct VEXIntersectorParms {
  VEXGridParms grid;
  VEXGridParms subGrid;                   // of a long chain that is compared with another
  std::size_t subGridBruteForce = 30000;  // chains with a product of segment counts up to this are just walked
};

// Called with per cent done, two decimals, every 250 coordinates of work and at the end.
using VEXProgress = std::function<void(double percent)>;

class VEXLineIntersector {
 public:
  explicit VEXLineIntersector(const VEXIntersectorParms& parms = {});
  ~VEXLineIntersector();
  VEXLineIntersector(const VEXLineIntersector&) = delete;
  VEXLineIntersector& operator=(const VEXLineIntersector&) = delete;

  // Copies the coordinates; the line may go afterwards. With flag 0 each line is one chain as it is. With flag 1 a
  // line of several parts is split into a chain each; a ring of a donut that runs clockwise gets a negative input
  // reference. Chains are numbered from 1 in the order in which they are added, inputs from 1 by calls of addLine. A
  // line without coordinates takes a number, too: as a chain (flag 0) that gives no piece.
  // Refused, and nothing of the line added: 329001 a coordinate that is no finite number; 329002 after
  // computeIntersections; 329003 more coordinates than can be counted; 244023 header rows that do not fit.
  VEXStatus addLine(const VEXLine& line, int flag);
  VEXStatus addLines(std::span<const VEXLine> lines, int flag);  // stops at the first that is refused
  // A line that is one chain, on bare arrays; z may be empty.
  VEXStatus addLine(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs);
  // For callers that know how much will come.
  void reserve(std::size_t numLines, std::size_t numCoords);

  // The largest coordinate that is taken, and how many there is room for.
  static constexpr double kLargestCoord = 1e75;  // sizes beyond this would overflow in a product of four
  std::size_t room() const;

  // 329002 when called twice.
  VEXStatus computeIntersections(const VEXProgress& progress = {});

  // The next piece; false when all are given. Pieces come by rising chain number, along each chain, a ring that meets
  // something from its first meeting. A piece of more than maxVertices coordinates (0: no limit; 1 counts as 2) comes
  // in runs that share their ends, none of a single coordinate.
  bool nextPiece(VEXChainPiece& piece, std::size_t maxVertices = 0);

  // The same pieces in the same order, as their courses in the chains.
  bool nextCourse(VEXPieceCourse& course);
  const VEXChainStore& chains() const;
  // The piece of a course. After a rewind, in the order in which courses came; some may be left out.
  void showPiece(const VEXPieceCourse& course, VEXChainPiece& piece);

  // Pieces are given from the first again.
  void rewind();

  std::size_t numChains() const;
  std::size_t numInputs() const;
  // The number of the input line that a chain came from, from 1; negative for a clockwise ring of a donut.
  std::int32_t inputOf(std::int32_t chainId) const;
  // Points where pieces of different course meet: crossings, touches, ends of overlaps, shared ends. After computing.
  std::size_t numMeetings() const;
  VEXPoint meeting(std::size_t at) const;  // z from the first chain that has it there
  // Pairs of pieces that still cross after the last round of noding: 0 on all but hopeless input.
  std::size_t numUnresolved() const;
  // The squares of the grid with their entries, a debugging aid. After adding, before or after computing.
  void visitGrid(const std::function<void(const VEXGridSquare&)>& visit) const;

 private:
  struct Work;
  std::unique_ptr<Work> work_;
};
