#include "vex/topology/facewalk.h"

#include <algorithm>
#include <cmath>

#include "vex/topology/facefind.h"
#include "vex/topology/orient.h"

VEXFaceWalk::VEXFaceWalk(VEXTopology& graph, const VEXPolygonOptions& options, VEXTopologyResult& output)
    : graph_(graph), arcs_(graph.arcs_), options_(options), output_(output) {}

void VEXFaceWalk::run() {
  output_ = VEXTopologyResult{};
  if (options_.pseudoNodes != VEXPseudoNodes::Keep) mergePseudoNodes();
  if (options_.removeSpikes) removeFolds();
  if (options_.removeDangles) {
    findDangles(output_.dangles);
    takeOut(output_.dangles);
  }
  walkFaces();
  if (options_.removeCorridors) removeCorridors();
  findComponents();
  findOuterBoundaries();
  placeComponents();
  makePolygons();
}

// ---- taking arcs out ----

void VEXFaceWalk::countEnds() {
  numEnds_.assign(static_cast<std::size_t>(graph_.nodes_.count()), 0);
  endsXor_.assign(numEnds_.size(), 0);
  for (std::int32_t id = 1; id <= arcs_.count(); ++id) {
    const VEXTopologyArcIndex::Record& arc = arcs_.record(id);
    if (arc.isRemoved) continue;
    const std::uint32_t half = static_cast<std::uint32_t>(id - 1) * 2;
    ++numEnds_[static_cast<std::size_t>(arc.startNode)];
    ++numEnds_[static_cast<std::size_t>(arc.endNode)];
    endsXor_[static_cast<std::size_t>(arc.startNode)] ^= half;
    endsXor_[static_cast<std::size_t>(arc.endNode)] ^= half + 1;
  }
}

// A node at which just two different arcs meet, and may become one.
bool VEXFaceWalk::isJoint(std::int32_t node) const {
  const std::size_t at = static_cast<std::size_t>(node);
  return numEnds_[at] == 2 && endsXor_[at] != 1 && !graph_.nodes_.flag(node);  // 1: the two ends of a loop
}

void VEXFaceWalk::mergePseudoNodes() {
  countEnds();
  std::vector<bool> isTaken(static_cast<std::size_t>(arcs_.count()) + 1, false);
  std::vector<std::int32_t> before;
  std::vector<std::int32_t> chain;
  // Follows `from` (negative: walked backward) over joints and lists what comes after it.
  auto follow = [&](std::int32_t from, std::vector<std::int32_t>& list) {
    std::int32_t id = std::abs(from);
    std::uint32_t half = static_cast<std::uint32_t>(id - 1) * 2 + (from < 0 ? 1 : 0);
    for (;;) {
      const std::int32_t node = startOf(half ^ 1U);
      if (!isJoint(node)) return;
      const std::uint32_t other = endsXor_[static_cast<std::size_t>(node)] ^ half ^ 1U;  // leaves the joint
      const std::int32_t otherId = static_cast<std::int32_t>(other / 2) + 1;
      if (isTaken[static_cast<std::size_t>(otherId)]) return;
      if (options_.pseudoNodes == VEXPseudoNodes::MergeSameAttributes &&
          !std::ranges::equal(arcs_.attributes(arcOf(half)), arcs_.attributes(arcOf(other))))
        return;
      isTaken[static_cast<std::size_t>(otherId)] = true;
      list.push_back(other % 2 == 0 ? otherId : -otherId);
      half = other;
    }
  };
  for (std::int32_t id = 1; id <= arcs_.count(); ++id) {
    if (arcs_.record(id).isRemoved || isTaken[static_cast<std::size_t>(id)]) continue;
    isTaken[static_cast<std::size_t>(id)] = true;
    before.clear();
    chain.clear();
    follow(-id, before);
    for (auto it = before.rbegin(); it != before.rend(); ++it) chain.push_back(-*it);
    chain.push_back(id);
    follow(id, chain);
    if (chain.size() == 1) continue;
    arcs_.join(chain);
    graph_.isOrdered_ = false;
  }
}

void VEXFaceWalk::removeFolds() {
  for (std::int32_t id = 1; id <= arcs_.count(); ++id) {
    if (arcs_.record(id).isRemoved || !arcs_.hasFold(id)) continue;
    graph_.isOrdered_ = false;
    if (arcs_.removeFolds(id)) continue;
    arcs_.record(id).isRemoved = true;
    output_.spikes.push_back(id);
  }
}

void VEXFaceWalk::findDangles(std::vector<std::int32_t>& found) {
  countEnds();
  for (std::int32_t start = 0; start < graph_.nodes_.count(); ++start) {
    // A removal leaves its other node to be looked at next.
    for (std::int32_t node = start; numEnds_[static_cast<std::size_t>(node)] == 1;) {
      const std::uint32_t half = endsXor_[static_cast<std::size_t>(node)];
      const std::int32_t other = startOf(half ^ 1U);
      numEnds_[static_cast<std::size_t>(node)] = 0;
      --numEnds_[static_cast<std::size_t>(other)];
      endsXor_[static_cast<std::size_t>(other)] ^= half ^ 1U;
      found.push_back(static_cast<std::int32_t>(half / 2) + 1);
      node = other;
    }
  }
}

void VEXFaceWalk::takeOut(const std::vector<std::int32_t>& ids) {
  for (std::int32_t id : ids) arcs_.record(id).isRemoved = true;
  if (!ids.empty()) graph_.isOrdered_ = false;
}

// An arc that has one face on both sides joins two parts of the graph, or hangs in the face.
void VEXFaceWalk::removeCorridors() {
  std::vector<bool> hangs(static_cast<std::size_t>(arcs_.count()) + 1, false);
  if (!options_.removeDangles) {
    std::vector<std::int32_t> dangles;
    findDangles(dangles);
    for (std::int32_t id : dangles) hangs[static_cast<std::size_t>(id)] = true;
  }
  for (std::int32_t id = 1; id <= arcs_.count(); ++id) {
    const std::size_t half = static_cast<std::size_t>(id - 1) * 2;
    if (!arcs_.record(id).isRemoved && !hangs[static_cast<std::size_t>(id)] && face_[half] == face_[half + 1])
      output_.corridors.push_back(id);
  }
  if (output_.corridors.empty()) return;
  takeOut(output_.corridors);
  graph_.dropRemovedEnds();
  walkFaces();
}

// ---- faces and connected parts ----

// What follows what is a permutation of the half edges: every walk comes back to where it began.
void VEXFaceWalk::walkFaces() {
  graph_.orderEnds();
  const std::vector<std::uint32_t>& next = graph_.next_;
  face_.assign(next.size(), kNone);
  firstHalf_.clear();
  for (std::uint32_t start = 0; start < face_.size(); ++start) {
    if (face_[start] != kNone || arcOf(start).isRemoved) continue;
    const std::uint32_t face = static_cast<std::uint32_t>(firstHalf_.size());
    firstHalf_.push_back(start);
    for (std::uint32_t half = start; face_[half] == kNone; half = next[half]) face_[half] = face;
  }
  isFaulty_.assign(firstHalf_.size(), false);
}

void VEXFaceWalk::findComponents() {
  // Faces on two sides of an arc are of one component; the lowest face stands for all.
  std::vector<std::uint32_t> parent(firstHalf_.size());
  for (std::uint32_t face = 0; face < parent.size(); ++face) parent[face] = face;
  auto rootOf = [&](std::uint32_t face) {
    while (parent[face] != face) face = parent[face] = parent[parent[face]];
    return face;
  };
  for (std::size_t half = 0; half < face_.size(); half += 2) {
    if (face_[half] == kNone || face_[half] == face_[half + 1]) continue;
    const std::uint32_t a = rootOf(face_[half]);
    const std::uint32_t b = rootOf(face_[half + 1]);
    parent[std::max(a, b)] = std::min(a, b);
  }
  components_.clear();
  std::vector<std::uint32_t>& number = componentOf_;
  number.assign(parent.size(), kNone);
  for (std::uint32_t face = 0; face < parent.size(); ++face) {
    const std::uint32_t root = rootOf(face);
    if (root == face) {
      number[face] = static_cast<std::uint32_t>(components_.size());
      components_.emplace_back();
    }
    number[face] = number[root];
    ++components_[number[face]].numFaces;
  }
  for (std::size_t half = 0; half < face_.size(); half += 2) {
    if (face_[half] == kNone) continue;
    Component& component = components_[number[face_[half]]];
    const VEXTopologyArcIndex::Record& arc = arcOf(static_cast<std::uint32_t>(half));
    const double x = arcs_.xs(arc)[arc.lowest];
    const double y = arcs_.ys(arc)[arc.lowest];
    const bool isLower = y < component.y || (y == component.y && x > component.x);
    if (component.lowestArc != 0 && !isLower) continue;
    component.lowestArc = static_cast<std::int32_t>(half / 2) + 1;
    component.x = x;
    component.y = y;
  }
  std::vector<std::uint32_t> order(components_.size());
  for (std::uint32_t i = 0; i < order.size(); ++i) order[i] = i;
  std::sort(order.begin(), order.end(), [&](std::uint32_t i, std::uint32_t j) {
    const Component& a = components_[i];
    const Component& b = components_[j];
    if (a.y != b.y) return a.y < b.y;
    return a.x != b.x ? a.x > b.x : a.lowestArc < b.lowestArc;
  });
  std::vector<Component> sorted;
  std::vector<std::uint32_t> rank(order.size());
  sorted.reserve(order.size());
  for (std::uint32_t i : order) {
    rank[i] = static_cast<std::uint32_t>(sorted.size());
    sorted.push_back(components_[i]);
  }
  components_ = std::move(sorted);
  for (std::uint32_t& component : componentOf_) component = rank[component];
}

// The half edge that leaves the component's lowest point, the rightmost of these, with the outside on its right. All
// arcs leave that point between the east, left out, and the west: the outside lies before the first of them.
std::uint32_t VEXFaceWalk::outerHalf(const Component& component) {
  const VEXTopologyArcIndex::Record& arc = arcs_.record(component.lowestArc);
  const std::uint32_t half = static_cast<std::uint32_t>(component.lowestArc - 1) * 2;
  const std::uint32_t at = arc.lowest;
  if (at == 0 || at + 1 == arc.count) {
    const std::int32_t node = at == 0 ? arc.startNode : arc.endNode;
    return graph_.ends_[graph_.endStart_[static_cast<std::size_t>(node)]];
  }
  const double* x = arcs_.xs(arc) + at;
  const double* y = arcs_.ys(arc) + at;
  const int side = orientation(*x, *y, x[-1], y[-1], x[1], y[1]);
  if (side != 0) return side > 0 ? half + 1 : half;
  // The line turns back on itself there: the face that runs the other way round is the outer one.
  double area[2];
  for (std::uint32_t i = 0; i < 2; ++i) {
    halves_.clear();
    forEachHalf(face_[half + i], [&](std::uint32_t each) { halves_.push_back(each); });
    gather(halves_);
    area[i] = signedRingArea(x_, y_);
  }
  return area[1] > area[0] ? half + 1 : half;
}

void VEXFaceWalk::findOuterBoundaries() {
  stamp_.assign(static_cast<std::size_t>(graph_.nodes_.count()), kNone);
  for (Component& component : components_) {
    component.outerFace = face_[outerHalf(component)];
    component.firstRing = static_cast<std::uint32_t>(outerRings_.size());
    if (component.numFaces < 2) continue;  // a tree of lines
    const Shape shape = cutIntoRings(component.outerFace);
    if (shape == Shape::Shell || shape == Shape::Faulty) isFaulty_[component.outerFace] = true;
    if (shape != Shape::Hole) continue;
    for (const Ring& ring : rings_) {
      outerRings_.push_back({static_cast<std::uint32_t>(outerHalves_.size()), ring.count});
      outerHalves_.insert(outerHalves_.end(), halves_.begin() + ring.first, halves_.begin() + ring.first + ring.count);
    }
    component.numRings = static_cast<std::uint32_t>(rings_.size());
  }
}

// Each component with an area lies in the face that is met straight below its lowest point: in that face itself, or,
// when it is the outer one of its component, in what holds that component, which lies lower and has been placed before.
void VEXFaceWalk::placeComponents() {
  if (components_.size() < 2) return;
  std::vector<VEXFaceFinder::Point> points;
  std::vector<std::uint32_t> asked;
  for (std::uint32_t i = 0; i < components_.size(); ++i) {
    if (components_[i].numRings == 0) continue;
    points.push_back({components_[i].x, components_[i].y, i});
    asked.push_back(i);
  }
  if (points.size() < 2) return;
  VEXFaceFinder finder(std::move(points));
  auto forEachBoundary = [&](auto&& show) {
    for (std::size_t half = 0; half < face_.size(); half += 2) {
      if (face_[half] == face_[half + 1]) continue;  // not in the graph, or with the same face on both sides
      const VEXTopologyArcIndex::Record& arc = arcOf(static_cast<std::uint32_t>(half));
      show(half, componentOf_[face_[half]], arcs_.xs(arc), arcs_.ys(arc), arc.count);
    }
  };
  forEachBoundary([&](std::size_t, std::uint32_t component, const double* x, const double* y, std::uint32_t count) {
    for (std::uint32_t i = 0; i < count; ++i) finder.extend(component, x[i], y[i]);
  });
  forEachBoundary(
      [&](std::size_t half, std::uint32_t component, const double* x, const double* y, std::uint32_t count) {
        for (std::uint32_t i = 0; i + 1 < count; ++i)
          finder.addEdge(x[i], y[i], x[i + 1], y[i + 1], component, face_[half + 1], face_[half]);
      });
  const std::vector<std::uint32_t> found = finder.find();
  for (std::size_t i = 0; i < asked.size(); ++i) {
    if (found[i] == VEXFaceFinder::kNothing) continue;
    const Component& other = components_[componentOf_[found[i]]];
    Component& component = components_[asked[i]];
    if (other.outerFace != found[i])
      component.container = found[i];
    else if (componentOf_[found[i]] < asked[i])
      component.container = other.container;
  }
}

void VEXFaceWalk::reportProgress(std::size_t done) {
  numDone_ += done;
  if (!options_.progress || numDone_ - numReported_ < 250) return;
  numReported_ = numDone_;
  options_.progress(std::round(static_cast<double>(numDone_) * 10000.0 / static_cast<double>(face_.size())) * 0.01);
}
