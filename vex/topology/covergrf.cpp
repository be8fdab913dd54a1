#include "vex/topology/covergrf.h"

#include <algorithm>

#include "vex/src/letgo.h"
#include "vex/topology/course.h"
#include "vex/topology/facefind.h"

// ---- pieces ----

void VEXCoverGraph::clear() {
  for (const VEXPieceCourse& course : pieces_) {
    for (std::uint32_t coord : {course.first, course.last})
      if (chains_.nodeAt(coord) != kNoNode) graphNodes_[chains_.nodeAt(coord)] = kNone;
  }
  pieces_.clear();
  nodeOf_.clear();
  numNodes_ = 0;
  lowest_ = Lowest{};
  faultPieces_.clear();
}

void VEXCoverGraph::reserve(std::size_t numPieces) {
  pieces_.reserve(numPieces);
  nodeOf_.reserve(2 * numPieces);
}

VEXCoverGraph::Bounds VEXCoverGraph::boundsOf(const VEXPieceCourse& course) const {
  const std::size_t chain = chains_.chainOf(course.first);
  return {chains_.chain(chain).first, chains_.endOf(chain) - 1};
}

// Shows the numbers of the piece's coordinates; where it runs over the end of its ring the last one stands for the
// first.
template <class Show>
void VEXCoverGraph::forEachCoord(const VEXPieceCourse& course, Show&& show) const {
  if (course.first < course.last) {
    for (std::uint32_t at = course.first; at <= course.last; ++at) show(at);
    return;
  }
  const Bounds bounds = boundsOf(course);
  for (std::uint32_t at = course.first; at <= bounds.last; ++at) show(at);
  for (std::uint32_t at = bounds.first + 1; at <= course.last; ++at) show(at);
}

bool VEXCoverGraph::isPoint(const VEXPieceCourse& course) const {
  bool isOne = true;
  const double x = chains_.xs()[course.first], y = chains_.ys()[course.first];
  forEachCoord(course, [&](std::uint32_t at) { isOne = isOne && chains_.xs()[at] == x && chains_.ys()[at] == y; });
  return isOne;
}

VEXBox VEXCoverGraph::extentOf(std::size_t piece) const {
  const std::uint32_t first = pieces_[piece].first;
  VEXBox box{chains_.xs()[first], chains_.ys()[first], kNoZ, chains_.xs()[first], chains_.ys()[first], kNoZ};
  forEachCoord(pieces_[piece], [&](std::uint32_t at) {
    box.minX = std::min(box.minX, chains_.xs()[at]);
    box.minY = std::min(box.minY, chains_.ys()[at]);
    box.maxX = std::max(box.maxX, chains_.xs()[at]);
    box.maxY = std::max(box.maxY, chains_.ys()[at]);
  });
  return box;
}

std::uint32_t VEXCoverGraph::makeNode(std::uint32_t coord) {
  const std::uint32_t node = chains_.nodeAt(coord);
  if (node == kNoNode) return numNodes_++;
  if (graphNodes_[node] == kNone) graphNodes_[node] = numNodes_++;
  return graphNodes_[node];
}

void VEXCoverGraph::note(std::uint32_t piece, Lowest& lowest) const {
  const VEXOrdinates xs = chains_.xs(), ys = chains_.ys();
  double x = 0.0, y = std::numeric_limits<double>::infinity();
  if (lowest.piece != kNone) {
    x = xs[lowest.coord];
    y = ys[lowest.coord];
  }
  forEachCoord(pieces_[piece], [&](std::uint32_t at) {
    if (ys[at] > y || (ys[at] == y && !(xs[at] > x))) return;
    x = xs[at];
    y = ys[at];
    lowest = {piece, at};
  });
}

void VEXCoverGraph::add(const VEXPieceCourse& course) {
  if (graphNodes_.size() < chains_.numNodes()) graphNodes_.assign(chains_.numNodes(), kNone);
  const auto piece = static_cast<std::uint32_t>(pieces_.size());
  pieces_.push_back(course);
  const bool isLoose = chains_.nodeAt(course.first) == kNoNode;  // a ring that meets nothing
  if (isLoose && isPoint(course)) {
    pieces_.back().change = 0;
    nodeOf_.insert(nodeOf_.end(), 2, kNone);
    return;
  }
  nodeOf_.push_back(makeNode(course.first));
  nodeOf_.push_back(isLoose ? nodeOf_.back() : makeNode(course.last));
  note(piece, lowest_);
}

// ---- rotational order ----

// The first coordinate away from the node. Only a ring that meets nothing has coordinates that stand twice.
std::uint32_t VEXCoverGraph::nextCoord(std::uint32_t half) const {
  const std::uint32_t from = nodeCoord(half);
  const VEXOrdinates xs = chains_.xs(), ys = chains_.ys();
  std::uint32_t at = half % 2 == 0 ? from + 1 : from - 1;
  while (xs[at] == xs[from] && ys[at] == ys[from]) half % 2 == 0 ? ++at : --at;
  return at;
}

struct VEXCoverGraph::Course {
  const double* x;
  const double* y;
  VEXPieceCourse piece;
  Bounds bounds;
  bool isBackward;
  std::uint32_t count;
  std::uint32_t coordAt(std::uint32_t i) const {
    const std::uint32_t at = piece.first + (isBackward ? count - 1 - i : i);
    return at <= bounds.last ? at : bounds.first + (at - bounds.last);
  }
  double xAt(std::uint32_t i) const { return x[coordAt(i)]; }
  double yAt(std::uint32_t i) const { return y[coordAt(i)]; }
};

VEXCoverGraph::Course VEXCoverGraph::courseOf(std::uint32_t half) const {
  const VEXPieceCourse& piece = pieces_[half / 2];
  const Bounds bounds = boundsOf(piece);
  const std::uint32_t beyond = piece.first < piece.last ? 0 : bounds.last - bounds.first;
  return {
      chains_.xs().data(), chains_.ys().data(), piece, bounds, half % 2 != 0, piece.last + beyond - piece.first + 1};
}

void VEXCoverGraph::orderEnds() {
  endStart_.assign(numNodes_ + 1, 0);
  for (std::uint32_t node : nodeOf_)
    if (node != kNone) ++endStart_[node];
  std::uint32_t sum = 0;
  for (std::uint32_t& start : endStart_) start = sum += start;  // where runs end; filling moves it to where they begin
  ends_.resize(sum);
  for (std::size_t half = nodeOf_.size(); half-- > 0;)
    if (nodeOf_[half] != kNone) ends_[--endStart_[nodeOf_[half]]] = static_cast<std::uint32_t>(half);
  const VEXOrdinates xs = chains_.xs(), ys = chains_.ys();
  for (std::uint32_t node = 0; node < numNodes_; ++node) {
    std::uint32_t* const first = ends_.data() + endStart_[node];
    const std::size_t count = endStart_[node + 1] - endStart_[node];
    const std::uint32_t at = nodeCoord(first[0]);
    sorting_.resize(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t next = nextCoord(first[i]);
      sorting_[i] = {first[i], goesLower(xs[at], ys[at], xs[next], ys[next]), xs[next], ys[next]};
    }
    sortEnds(xs[at], ys[at], sorting_.data(), count, [this](std::uint32_t half) { return courseOf(half); });
    for (std::size_t i = 0; i < count; ++i) first[i] = sorting_[i].half;
  }
}

// ---- cover ----

void VEXCoverGraph::join(std::uint32_t a, std::uint32_t b) {
  a = find(a);
  b = find(b);
  if (a != b) parents_[std::max(a, b)] = std::min(a, b);
}

// All ends leave the lowest point, the rightmost of these, between the east, left out, and the west: the outside lies
// before the first of them. Inside a piece the side on which it turns decides.
std::uint32_t VEXCoverGraph::outerSide(const Lowest& lowest) const {
  const VEXPieceCourse& course = pieces_[lowest.piece];
  const std::uint32_t half = 2 * lowest.piece;
  if (lowest.coord == course.first || lowest.coord == course.last) {
    const std::uint32_t node = nodeOf_[lowest.coord == course.first ? half : half + 1];
    return ends_[endStart_[node]] ^ 1U;
  }
  const VEXOrdinates xs = chains_.xs(), ys = chains_.ys();
  auto isHere = [&](std::uint32_t at) { return xs[at] == xs[lowest.coord] && ys[at] == ys[lowest.coord]; };
  const Bounds bounds = boundsOf(course);
  std::uint32_t before = lowest.coord, after = lowest.coord;
  while (isHere(before)) before = before == bounds.first ? bounds.last : before - 1;
  while (isHere(after)) after = after == bounds.last ? bounds.first : after + 1;
  const int side = orientation(xs[lowest.coord], ys[lowest.coord], xs[before], ys[before], xs[after], ys[after]);
  return side > 0 ? half : half + 1;
}

bool VEXCoverGraph::fail(std::uint32_t half) {
  const std::uint32_t at = nodeCoord(half);
  faultPlace_ = VEXPoint{chains_.xs()[at], chains_.ys()[at], kNoZ};
  const std::uint32_t node = nodeOf_[half];
  for (std::uint32_t i = endStart_[node]; i < endStart_[node + 1]; ++i) faultPieces_.push_back(ends_[i] / 2);
  std::sort(faultPieces_.begin(), faultPieces_.end());
  faultPieces_.erase(std::unique(faultPieces_.begin(), faultPieces_.end()), faultPieces_.end());
  return false;
}

// From a half edge with known sides around the node that it leaves: the side to the left of one end is the side to the
// right of the next.
bool VEXCoverGraph::goAround(std::uint32_t half) {
  const std::uint32_t node = nodeOf_[half];
  if (isPassed_[node]) return true;
  isPassed_[node] = true;
  const std::uint32_t first = endStart_[node], last = endStart_[node + 1];
  std::uint32_t at = first;
  while (ends_[at] != half) ++at;
  std::uint32_t side = half;
  for (std::uint32_t i = first; i < last; ++i) {
    at = at + 1 == last ? first : at + 1;
    const std::uint32_t next = ends_[at];
    const std::int32_t cover = coverOf(side);
    if (covers_[next / 2] == kUnknown) {
      setCover(next ^ 1U, cover);
      spread_.push_back(next / 2);
    } else if (coverOf(next ^ 1U) != cover) {
      return fail(next);
    }
    join(side, next ^ 1U);
    side = next;
  }
  return true;
}

// Takes the cover of one side to all that hangs together with it: around both ends of each piece that became known.
bool VEXCoverGraph::spread(std::uint32_t side, std::int32_t cover) {
  setCover(side, cover);
  spread_.clear();
  spread_.push_back(side / 2);
  for (std::size_t i = 0; i < spread_.size(); ++i) {
    const std::uint32_t half = 2 * spread_[i];
    if (!goAround(half) || !goAround(half + 1)) return false;
  }
  return true;
}

// Parts that hang together with nothing lower are spread from 0 on. The side found straight below the lowest point of
// each has the cover of its outside; parts come by their lowest points, so what holds one has been placed before.
bool VEXCoverGraph::placeOthers() {
  std::vector<std::uint32_t> componentOf(pieces_.size(), 0);
  std::vector<Component> components(1);
  components[0].isPlaced = true;
  for (std::uint32_t piece = 0; piece < pieces_.size(); ++piece) {
    if (covers_[piece] != kUnknown) continue;
    if (!spread(2 * piece, 0)) return false;
    Component& component = components.emplace_back();
    for (std::uint32_t member : spread_) {
      componentOf[member] = static_cast<std::uint32_t>(components.size() - 1);
      note(member, component.lowest);
    }
    component.outerSide = outerSide(component.lowest);
  }
  const VEXOrdinates xs = chains_.xs(), ys = chains_.ys();
  std::vector<std::uint32_t> order;
  for (std::uint32_t at = 1; at < components.size(); ++at) order.push_back(at);
  std::sort(order.begin(), order.end(), [&](std::uint32_t i, std::uint32_t j) {
    const std::uint32_t a = components[i].lowest.coord, b = components[j].lowest.coord;
    if (ys[a] != ys[b]) return ys[a] < ys[b];
    return xs[a] != xs[b] ? xs[a] > xs[b] : i < j;
  });
  std::vector<VEXFaceFinder::Point> points;
  for (std::uint32_t at : order)
    points.push_back({xs[components[at].lowest.coord], ys[components[at].lowest.coord], at});
  VEXFaceFinder finder(std::move(points));
  for (std::uint32_t piece = 0; piece < pieces_.size(); ++piece)
    forEachCoord(pieces_[piece], [&](std::uint32_t at) { finder.extend(componentOf[piece], xs[at], ys[at]); });
  for (std::uint32_t piece = 0; piece < pieces_.size(); ++piece) {
    if (nodeOf_[2 * piece] == kNone) continue;
    std::uint32_t before = kNone;
    forEachCoord(pieces_[piece], [&](std::uint32_t at) {
      if (before != kNone)
        finder.addEdge(xs[before], ys[before], xs[at], ys[at], componentOf[piece], 2 * piece, 2 * piece + 1);
      before = at;
    });
  }
  const std::vector<std::uint32_t> found = finder.find();
  for (std::size_t i = 0; i < order.size(); ++i) {
    Component& component = components[order[i]];
    std::int32_t cover = 0;
    if (found[i] != VEXFaceFinder::kNothing) {
      const Component& other = components[componentOf[found[i] / 2]];
      if (!other.isPlaced) return fail(2 * component.lowest.piece);
      cover = coverOf(found[i]) + other.lift;
      join(component.outerSide, found[i]);
    }
    component.lift = cover - coverOf(component.outerSide);
    component.isPlaced = true;
  }
  for (std::size_t piece = 0; piece < pieces_.size(); ++piece) covers_[piece] += components[componentOf[piece]].lift;
  return true;
}

bool VEXCoverGraph::build() {
  covers_.assign(pieces_.size(), kUnknown);
  parents_.resize(2 * pieces_.size());
  for (std::uint32_t side = 0; side < parents_.size(); ++side) parents_[side] = side;
  isPassed_.assign(numNodes_, false);
  spread_.reserve(pieces_.size());
  std::size_t numPoints = 0;
  for (std::size_t piece = 0; piece < pieces_.size(); ++piece) {
    if (nodeOf_[2 * piece] != kNone) continue;
    covers_[piece] = 0;
    ++numPoints;
  }
  if (lowest_.piece == kNone) return true;
  orderEnds();
  return spread(outerSide(lowest_), 0) && (spread_.size() + numPoints == pieces_.size() || placeOthers());
}

void VEXCoverGraph::endBuilding() {
  letGo(nodeOf_, graphNodes_, endStart_, ends_, spread_, isPassed_);
}
