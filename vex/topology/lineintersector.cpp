#include "vex/topology/lineintersector.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/topology/squarecmp.h"
#include "vex/topology/vexchain.h"

namespace {

// Computed points are off by a little, so that a cut segment may come to cross a neighbour. Segments for which that
// cannot be ruled out are compared again; two or three rounds do on nearly all input.
constexpr int kMostRounds = 10;
// The first rounds take points that are equal in single precision for one. The later ones only repair.
constexpr int kSingleRounds = 2;
constexpr std::size_t kWorkUnits = 250;
constexpr double kSmallCoord = 0x1p-200;

bool isSound(VEXOrdinates values) {
  for (double value : values)
    if (!(std::fabs(value) <= VEXLineIntersector::kLargestCoord)) return false;
  return true;
}

}  // namespace

struct VEXLineIntersector::Work {
  explicit Work(const VEXIntersectorParms& given) : parms(given) {}

  VEXStatus addParts(const VEXLine& line);
  VEXStatus checkChain(VEXOrdinates xs, VEXOrdinates ys) const;
  void addRings(const VEXLine& donut);
  template <class ForEach>
  void fillGrid(VEXSpatialGridCore& grid, ForEach&& forEach) const;
  const VEXGridParms* parmsFor(std::span<const VEXSpatialGridCore::Entry> entries) const;
  void findConcerned(std::vector<std::uint32_t>& segments) const;
  int exponentOfSmall() const;
  void runRound(int round);
  void report(std::size_t done, std::size_t total);

  VEXIntersectorParms parms;
  VEXChainStore chains;
  std::optional<VEXPieceCutter> cutter;
  std::int32_t numInputs = 0;
  bool isComputed = false;
  std::size_t numUnresolved = 0;
  VEXProgress progress;
  std::size_t lastUnit = 0;
  mutable std::optional<std::vector<std::uint32_t>> meetings;  // coordinates, found at the first question
};

VEXLineIntersector::VEXLineIntersector(const VEXIntersectorParms& parms) : work_(std::make_unique<Work>(parms)) {}
VEXLineIntersector::~VEXLineIntersector() = default;

// ---- adding ----

VEXStatus VEXLineIntersector::Work::checkChain(VEXOrdinates xs, VEXOrdinates ys) const {
  if (!isSound(xs) || !isSound(ys)) return makeRejection(329001, {integerText(static_cast<std::int64_t>(xs.size()))});
  if (xs.size() > VEXChainStore::kMostCoords - chains.numCoords())
    return makeStatus(329003, {integerText(static_cast<std::int64_t>(VEXChainStore::kMostCoords))});
  return nullptr;
}

void VEXLineIntersector::Work::addRings(const VEXLine& donut) {
  std::vector<VEXLineRange> ranges;
  donut.rings(ranges);
  for (const VEXLineRange& range : ranges) {
    if (range.count == 0) continue;
    const VEXLine ring = VEXLine::viewOf(donut, range.first, range.first + range.count - 1, VEX_GEOM_POLYGON);
    chains.addChain(ring.xs(), ring.ys(), ring.zs(), isRingClockwise(ring.xs(), ring.ys()) ? -numInputs : numInputs);
  }
}

VEXStatus VEXLineIntersector::Work::addParts(const VEXLine& line) {
  switch (line.geomType()) {
    case VEX_GEOM_DONUT:
      addRings(line);
      return nullptr;
    case VEX_GEOM_MULTI_LINE:
    case VEX_GEOM_MULTI_POLY:
    case VEX_GEOM_PIP:
    case VEX_GEOM_AGGREGATE: {
      // A list of one part has itself for a part.
      std::vector<VEXLine> parts;
      VEX_TRY(line.split(kEveryPartMask, parts));
      for (const VEXLine& part : parts) {
        const bool isSame = part.geomType() == line.geomType() && part.numCoords() == line.numCoords();
        if (isSame)
          chains.addChain(part.xs(), part.ys(), part.zs(), numInputs);
        else
          VEX_TRY(addParts(part));
      }
      return nullptr;
    }
    default:
      chains.addChain(line.xs(), line.ys(), line.zs(), numInputs);
      return nullptr;
  }
}

VEXStatus VEXLineIntersector::addLine(const VEXLine& line, int flag) {
  Work& work = *work_;
  if (work.isComputed) return makeStatus(329002);
  VEX_TRY(work.checkChain(line.xs(), line.ys()));
  if (flag != 0 && line.geomType() == VEX_GEOM_AGGREGATE) {
    std::vector<VEXLineRange> ranges;  // proves the header rows before anything is added
    VEX_TRY(line.leaves(ranges));
  }
  ++work.numInputs;
  if (flag != 0) return extendStatus(work.addParts(line));
  work.chains.addChain(line.xs(), line.ys(), line.zs(), work.numInputs);
  return nullptr;
}

VEXStatus VEXLineIntersector::addLine(VEXOrdinates xs, VEXOrdinates ys, VEXOrdinates zs) {
  Work& work = *work_;
  if (work.isComputed) return makeStatus(329002);
  VEX_TRY(work.checkChain(xs, ys));
  work.chains.addChain(xs, ys, zs, ++work.numInputs);
  return nullptr;
}

VEXStatus VEXLineIntersector::addLines(std::span<const VEXLine> lines, int flag) {
  std::size_t numCoords = 0;
  for (const VEXLine& line : lines) numCoords += line.numCoords();
  reserve(lines.size(), numCoords);
  for (const VEXLine& line : lines) VEX_TRY(addLine(line, flag));
  return nullptr;
}

void VEXLineIntersector::reserve(std::size_t numLines, std::size_t numCoords) {
  work_->chains.reserve(numLines, numCoords);
}

// ---- finding meetings ----

// A crowded square that only one or two chains pass is that of long chains: their own parameters hold, and so long as
// the product of their segment counts is small they are just walked.
const VEXGridParms* VEXLineIntersector::Work::parmsFor(std::span<const VEXSpatialGridCore::Entry> entries) const {
  if (entries.size() <= std::min(parms.grid.maxEntries, parms.subGrid.maxEntries)) return &parms.grid;
  const std::size_t one = chains.chainOf(entries[0].number);
  std::size_t other = one;
  std::size_t numOne = 0;
  for (const VEXSpatialGridCore::Entry& entry : entries) {
    const std::uint32_t at = entry.number;
    if (at >= chains.chain(one).first && at < chains.endOf(one)) {
      ++numOne;
      continue;
    }
    if (other == one) other = chains.chainOf(at);
    if (at < chains.chain(other).first || at >= chains.endOf(other)) return &parms.grid;
  }
  const std::size_t numOther = other == one ? numOne : entries.size() - numOne;
  return numOne * numOther <= parms.subGridBruteForce ? nullptr : &parms.subGrid;
}

// The segments that a round on few dirty ones has to do with: those in the squares of a fine net that a dirty one is
// in.
void VEXLineIntersector::Work::findConcerned(std::vector<std::uint32_t>& segments) const {
  const VEXBox box = boxOf(chains.xs(), chains.ys());
  const double side = std::clamp(std::floor(std::sqrt(static_cast<double>(chains.numCoords() / 2))), 1.0, 4096.0);
  const auto perRow = static_cast<std::size_t>(side);
  const double inverseX = box.maxX > box.minX ? side / (box.maxX - box.minX) : 0.0;
  const double inverseY = box.maxY > box.minY ? side / (box.maxY - box.minY) : 0.0;
  std::vector<bool> isMarked(perRow * perRow, false);
  auto indexOf = [&](double value, double origin, double inverse) {
    return static_cast<std::size_t>(std::clamp((value - origin) * inverse, 0.0, side - 1.0));
  };
  auto anySquare = [&](std::uint32_t number, auto&& visit) {
    const VEXSpatialGridCore::Entry entry = VEXSpatialGridCore::entryOf(chains.segment(number), number);
    const std::size_t col1 = indexOf(entry.minX, box.minX, inverseX), col2 = indexOf(entry.maxX, box.minX, inverseX);
    const std::size_t row1 = indexOf(entry.minY, box.minY, inverseY), row2 = indexOf(entry.maxY, box.minY, inverseY);
    for (std::size_t row = row1; row <= row2; ++row)
      for (std::size_t col = col1; col <= col2; ++col)
        if (visit(row * perRow + col)) return true;
    return false;
  };
  chains.forEachSegment([&](std::uint32_t number) {
    if (chains.isDirty(number))
      anySquare(number, [&](std::size_t square) {
        isMarked[square] = true;
        return false;
      });
  });
  chains.forEachSegment([&](std::uint32_t number) {
    if (chains.isDirty(number) || anySquare(number, [&](std::size_t square) { return isMarked[square]; }))
      segments.push_back(number);
  });
}

void VEXLineIntersector::Work::report(std::size_t done, std::size_t total) {
  if (!progress || total == 0) return;
  const std::size_t unit = done / kWorkUnits;
  if (unit == lastUnit && done != total) return;
  lastUnit = unit;
  progress(std::round(static_cast<double>(done) * 10000.0 / static_cast<double>(total)) * 0.01);
}

template <class ForEach>
void VEXLineIntersector::Work::fillGrid(VEXSpatialGridCore& grid, ForEach&& forEach) const {
  grid.setChooser(
      [this](std::span<const VEXSpatialGridCore::Entry> entries, std::uint32_t) { return parmsFor(entries); },
      std::min(parms.grid.maxEntries, parms.subGrid.maxEntries));
  grid.fill(forEach);
}

void VEXLineIntersector::Work::runRound(int round) {
  const bool takesAll = round == 0;  // the others compare those that are dirty with all
  VEXSquareComparer comparer(chains, takesAll, round < kSingleRounds);
  VEXSpatialGridCore grid(chains.xs(), chains.ys(), parms.grid);
  if (takesAll) {
    fillGrid(grid, [&](auto&& enter) { chains.forEachSegment(enter); });
  } else {
    std::vector<std::uint32_t> segments;
    findConcerned(segments);
    fillGrid(grid, [&](auto&& enter) { std::for_each(segments.begin(), segments.end(), enter); });
  }
  const std::size_t total = grid.numEntered();
  std::size_t done = 0;
  grid.visit([&](std::span<VEXSpatialGridCore::Entry> entries) { comparer.compareAll(entries); },
             [&](std::size_t count) {
               done += count;
               if (takesAll && done < total) report(done, total);
             });
}

// Products of differences of very small coordinates would underflow: such data is noded at another scale. 0: it is not
// small.
int VEXLineIntersector::Work::exponentOfSmall() const {
  double largest = 0.0;
  for (double x : chains.xs()) largest = std::max(largest, std::fabs(x));
  for (double y : chains.ys()) largest = std::max(largest, std::fabs(y));
  if (!(largest < kSmallCoord)) return 0;
  int exponent = 0;
  std::frexp(largest, &exponent);
  return exponent;
}

VEXStatus VEXLineIntersector::computeIntersections(const VEXProgress& progress) {
  Work& work = *work_;
  if (work.isComputed) return makeStatus(329002);
  work.isComputed = true;
  work.progress = progress;
  const int exponent = work.exponentOfSmall();
  if (exponent != 0) work.chains.scale(-exponent);
  work.chains.beginRounds();
  for (int round = 0; round < kMostRounds; ++round) {
    work.runRound(round);
    const std::size_t numChanges = work.chains.numChanges();
    work.numUnresolved = round + 1 == kMostRounds ? numChanges : 0;
    if (numChanges == 0) break;
    work.chains.rebuild();
    if (work.chains.numDirty() == 0) break;
  }
  work.chains.endRounds();
  if (exponent != 0) work.chains.scale(exponent);
  work.cutter.emplace(work.chains);
  if (progress) progress(100.0);
  return nullptr;
}

// ---- reading ----

bool VEXLineIntersector::nextPiece(VEXChainPiece& piece, std::size_t maxVertices) {
  return work_->cutter.has_value() && work_->cutter->next(piece, maxVertices);
}

bool VEXLineIntersector::nextCourse(VEXPieceCourse& course) {
  return work_->cutter.has_value() && work_->cutter->nextCourse(course);
}

void VEXLineIntersector::showPiece(const VEXPieceCourse& course, VEXChainPiece& piece) {
  VEX_ASSERT(work_->cutter.has_value());
  work_->cutter->show(course, piece);
}

const VEXChainStore& VEXLineIntersector::chains() const {
  return work_->chains;
}

std::size_t VEXLineIntersector::room() const {
  return VEXChainStore::kMostCoords - work_->chains.numCoords();
}

void VEXLineIntersector::rewind() {
  if (work_->cutter.has_value()) work_->cutter->rewind();
}

std::size_t VEXLineIntersector::numChains() const {
  return work_->chains.numChains();
}

std::size_t VEXLineIntersector::numInputs() const {
  return static_cast<std::size_t>(work_->numInputs);
}

std::int32_t VEXLineIntersector::inputOf(std::int32_t chainId) const {
  VEX_ASSERT(chainId > 0);
  return work_->chains.chain(static_cast<std::size_t>(chainId) - 1).input;
}

std::size_t VEXLineIntersector::numMeetings() const {
  if (!work_->cutter.has_value()) return 0;
  if (!work_->meetings.has_value()) {
    work_->meetings.emplace();
    work_->cutter->meetings(*work_->meetings);
  }
  return work_->meetings->size();
}

VEXPoint VEXLineIntersector::meeting(std::size_t at) const {
  const VEXChainStore& chains = work_->chains;
  const std::uint32_t coord = (*work_->meetings)[at];
  return {chains.xs()[coord], chains.ys()[coord], chains.zs().empty() ? kNoZ : chains.zs()[coord]};
}

std::size_t VEXLineIntersector::numUnresolved() const {
  return work_->numUnresolved;
}

void VEXLineIntersector::visitGrid(const std::function<void(const VEXGridSquare&)>& visit) const {
  VEXSpatialGridCore grid(work_->chains.xs(), work_->chains.ys(), work_->parms.grid);
  work_->fillGrid(grid, [&](auto&& enter) { work_->chains.forEachSegment(enter); });
  grid.setDump(visit);
  grid.visit([](std::span<VEXSpatialGridCore::Entry>) {});
}
