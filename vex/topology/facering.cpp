// The faces' rings and the polygons made of them.
#include <algorithm>
#include <iterator>

#include "vex/topology/facewalk.h"
#include "vex/topology/orient.h"

namespace {

constexpr std::uint32_t kNotPlane = 328005;

}  // namespace

// ---- half edges to rings ----

void VEXFaceWalk::listHalves(std::uint32_t face) {
  halves_.clear();
  hasBridge_ = false;
  touchesItself_ = false;
  forEachHalf(face, [&](std::uint32_t half) {
    halves_.push_back(half);
    hasBridge_ = hasBridge_ || face_[half ^ 1U] == face;
    std::uint32_t& stamp = stamp_[static_cast<std::size_t>(startOf(half))];
    touchesItself_ = touchesItself_ || stamp == face;
    stamp = face;
  });
}

// Lists the face's half edges and cuts them into rings, the shell, if there is one, first. Says what the walk as a
// whole is. Where a ring runs along an arc twice it stays in one piece.
VEXFaceWalk::Shape VEXFaceWalk::cutIntoRings(std::uint32_t face) {
  listHalves(face);
  rings_.assign(1, Ring{0, static_cast<std::uint32_t>(halves_.size())});
  gather(halves_);
  wasTrimmed_ = false;
  const Shape whole = shapeOfGathered();
  isGathered_ = !wasTrimmed_;
  if ((whole != Shape::Shell && whole != Shape::Hole) || !touchesItself_ || hasBridge_) return whole;
  isGathered_ = false;
  cutWhereTouching();
  std::size_t numShells = 0;
  std::size_t kept = 0;
  for (const Ring& ring : rings_) {
    gather(std::span(halves_).subspan(ring.first, ring.count));
    const Shape shape = shapeOfGathered();
    if (shape == Shape::Faulty) return shape;
    if (shape == Shape::NoArea) continue;
    rings_[kept++] = ring;
    if (shape == Shape::Shell)
      std::rotate(rings_.begin(), rings_.begin() + static_cast<std::ptrdiff_t>(kept) - 1,
                  rings_.begin() + static_cast<std::ptrdiff_t>(kept));
    if (shape == Shape::Shell) ++numShells;
  }
  rings_.resize(kept);
  return numShells == (whole == Shape::Shell ? 1U : 0U) ? whole : Shape::Faulty;
}

// Whenever the walk comes to a node again, what it did since is a ring of its own.
void VEXFaceWalk::cutWhereTouching() {
  place_.resize(stamp_.size(), kNone);
  rings_.clear();
  open_.clear();
  std::vector<std::uint32_t> cut;
  cut.reserve(halves_.size());
  for (std::size_t i = 0; i <= halves_.size(); ++i) {
    const std::uint32_t half = halves_[i < halves_.size() ? i : 0];
    std::uint32_t& place = place_[static_cast<std::size_t>(startOf(half))];
    if (place != kNone) {
      const std::uint32_t from = place;
      rings_.push_back({static_cast<std::uint32_t>(cut.size()), static_cast<std::uint32_t>(open_.size()) - from});
      for (std::size_t k = from; k < open_.size(); ++k) {
        cut.push_back(open_[k]);
        place_[static_cast<std::size_t>(startOf(open_[k]))] = kNone;
      }
      open_.resize(from);
    }
    if (i == halves_.size()) break;
    place = static_cast<std::uint32_t>(open_.size());
    open_.push_back(half);
  }
  halves_ = std::move(cut);
}

// ---- coordinates ----

// The closed line of a ring, into x_, y_ and z_.
void VEXFaceWalk::gather(std::span<const std::uint32_t> ring) {
  const bool hasZ = graph_.dimension_ == 3;
  x_.clear();
  y_.clear();
  z_.clear();
  tips_.clear();
  std::uint32_t before = ring.back();
  for (std::uint32_t half : ring) {
    if (before == (half ^ 1U)) tips_.push_back(static_cast<std::uint32_t>(x_.size()));
    before = half;
    const VEXTopologyArcIndex::Record& arc = arcOf(half);
    // All but the last coordinate, which the next arc brings.
    auto append = [&](std::vector<double>& to, const double* from) {
      if (half % 2 == 0)
        to.insert(to.end(), from, from + arc.count - 1);
      else
        to.insert(to.end(), std::reverse_iterator(from + arc.count), std::reverse_iterator(from + 1));
    };
    append(x_, arcs_.xs(arc));
    append(y_, arcs_.ys(arc));
    if (hasZ) append(z_, arcs_.zs(arc));
  }
  x_.push_back(x_[0]);
  y_.push_back(y_[0]);
  if (hasZ) z_.push_back(z_[0]);
}

// Takes out of the gathered ring what it runs out and back. False when no area is left.
bool VEXFaceWalk::trim() {
  auto copy = [&](std::size_t to, std::size_t from) {
    x_[to] = x_[from];
    y_[to] = y_[from];
    if (!z_.empty()) z_[to] = z_[from];
  };
  auto isTip = [&](std::size_t at, std::size_t a, std::size_t b) {
    return inSameDirection(x_[at], y_[at], x_[a], y_[a], x_[b], y_[b]);
  };
  auto isSame = [&](std::size_t a, std::size_t b) { return x_[a] == x_[b] && y_[a] == y_[b]; };
  std::size_t end = 0;  // one behind the last kept
  for (std::size_t i = 0; i + 1 < x_.size(); ++i) {
    while (end >= 2 && isTip(end - 1, end - 2, i)) --end;
    if (end >= 1 && isSame(end - 1, i)) --end;
    copy(end++, i);
  }
  std::size_t begin = 0;
  for (;;) {  // where the ring closes
    if (end - begin < 3) return false;
    if (isSame(begin, end - 1) || isTip(end - 1, end - 2, begin))
      --end;
    else if (isTip(begin, end - 1, begin + 1))
      ++begin;
    else
      break;
  }
  for (std::size_t i = begin; i < end && begin > 0; ++i) copy(i - begin, i);
  end -= begin;
  copy(end, 0);
  x_.resize(end + 1);
  y_.resize(end + 1);
  if (!z_.empty()) z_.resize(end + 1);
  return true;
}

VEXFaceWalk::Shape VEXFaceWalk::shapeOfGathered() {
  bool turnsBack = false;
  int turns = turningNumber(x_.data(), y_.data(), x_.size(), [&](std::size_t at) {
    // Around the end of a dangle the walk keeps to its right side.
    if (std::binary_search(tips_.begin(), tips_.end(), static_cast<std::uint32_t>(at))) return true;
    turnsBack = true;
    return false;
  });
  if (turnsBack) {  // arcs lie on each other
    wasTrimmed_ = true;
    if (!trim()) return Shape::NoArea;
    turns = turningNumber(x_.data(), y_.data(), x_.size(), [](std::size_t) { return false; });
  }
  return turns == -1 ? Shape::Shell : turns == 1 ? Shape::Hole : Shape::Faulty;
}

// ---- output ----

// Rings that cross others where no node is can turn once and still be no polygon. A shell must have an area, a hole
// must lie in the shell's box and not be larger than what is left of it.
bool VEXFaceWalk::fitsPolygon(bool isShell) {
  double area = 0.0;  // clockwise; seen from the first vertex, which keeps it exact far from the origin
  for (std::size_t i = 1; i + 2 < x_.size(); ++i)
    area += (x_[i + 1] - x_[0]) * (y_[i] - y_[0]) - (x_[i] - x_[0]) * (y_[i + 1] - y_[0]);
  const VEXBox box = boxOf(x_, y_);
  if (isShell) {
    shellBox_ = box;
    areaLeft_ = area;
    return !(area <= 0.0);
  }
  areaLeft_ += area;
  const double rounding = 1e-14 * (shellBox_.maxX - shellBox_.minX) * (shellBox_.maxY - shellBox_.minY);
  return shellBox_.encloses(box) && !(areaLeft_ <= rounding);
}

// Rings in a list of coordinates end where their first coordinate comes again: a ring that runs through that point
// twice begins at its first vertex that it meets once.
void VEXFaceWalk::beginWhereNothingRepeats() {
  auto firstMetOnce = [&] {
    const std::size_t count = x_.size() - 1;
    std::vector<std::size_t> order(count);
    for (std::size_t i = 0; i < count; ++i) order[i] = i;
    std::sort(order.begin(), order.end(), [&](std::size_t i, std::size_t j) {
      if (x_[i] != x_[j]) return x_[i] < x_[j];
      return y_[i] != y_[j] ? y_[i] < y_[j] : i < j;
    });
    auto isSame = [&](std::size_t i, std::size_t j) {
      return x_[order[i]] == x_[order[j]] && y_[order[i]] == y_[order[j]];
    };
    std::size_t first = count;
    for (std::size_t i = 0; i < count; ++i)
      if ((i == 0 || !isSame(i - 1, i)) && (i + 1 == count || !isSame(i, i + 1))) first = std::min(first, order[i]);
    return first;
  };
  std::size_t again = 1;
  while (again + 1 < x_.size() && (x_[again] != x_[0] || y_[again] != y_[0])) ++again;
  if (again + 1 == x_.size()) return;
  std::size_t first = firstMetOnce();
  if (first + 1 == x_.size() && trim()) first = firstMetOnce();  // nothing but lines run out and back
  if (first + 1 == x_.size()) return;
  for (std::vector<double>* ordinates : {&x_, &y_, &z_}) {
    if (ordinates->empty()) continue;
    ordinates->pop_back();
    std::rotate(ordinates->begin(), ordinates->begin() + static_cast<std::ptrdiff_t>(first), ordinates->end());
    ordinates->push_back(ordinates->front());
  }
}

void VEXFaceWalk::appendGathered() {
  if (options_.removeSpikes && !trim()) return;
  beginWhereNothingRepeats();
  wholeX_.insert(wholeX_.end(), x_.begin(), x_.end());
  wholeY_.insert(wholeY_.end(), y_.begin(), y_.end());
  wholeZ_.insert(wholeZ_.end(), z_.begin(), z_.end());
}

void VEXFaceWalk::appendArcs(std::span<const std::uint32_t> ring, VEXArcList& arcs) const {
  if (!options_.keepArcs) return;
  if (!arcs.empty()) arcs.push_back(0);
  for (std::uint32_t half : ring) {
    const std::int32_t id = static_cast<std::int32_t>(half / 2) + 1;
    arcs.push_back(half % 2 == 0 ? id : -id);
  }
}

VEXLine VEXFaceWalk::takeLine(std::uint32_t code) {
  std::vector<double> x(wholeX_);
  std::vector<double> y(wholeY_);
  std::vector<double> z(wholeZ_);
  const bool hasZ = graph_.dimension_ == 3;
  dropGathered();
  return hasZ ? VEXLine(std::move(x), std::move(y), std::move(z), code) : VEXLine(std::move(x), std::move(y), code);
}

void VEXFaceWalk::dropGathered() {
  wholeX_.clear();
  wholeY_.clear();
  wholeZ_.clear();
}

void VEXFaceWalk::makePolygons() {
  for (std::int32_t id = 1; id <= arcs_.count(); ++id) arcs_.record(id).left = arcs_.record(id).right = 0;
  // Faces by component, and components by the face that holds them; both in rising order.
  std::vector<std::uint32_t> faceStart(components_.size() + 1, 0);
  for (std::uint32_t component : componentOf_) ++faceStart[component + 1];
  for (std::size_t i = 1; i < faceStart.size(); ++i) faceStart[i] += faceStart[i - 1];
  std::vector<std::uint32_t> faces(componentOf_.size());
  std::vector<std::uint32_t> filled(faceStart.begin(), faceStart.end());
  for (std::uint32_t face = 0; face < faces.size(); ++face) faces[filled[componentOf_[face]]++] = face;
  std::vector<std::uint32_t> held;
  for (std::uint32_t i = 0; i < components_.size(); ++i)
    if (components_[i].container != kNone) held.push_back(i);
  std::stable_sort(held.begin(), held.end(), [&](std::uint32_t i, std::uint32_t j) {
    return components_[i].container < components_[j].container;
  });
  auto inside = [&](std::uint32_t face) {
    const auto first = std::partition_point(held.begin(), held.end(),
                                            [&](std::uint32_t i) { return components_[i].container < face; });
    const auto last =
        std::partition_point(first, held.end(), [&](std::uint32_t i) { return components_[i].container == face; });
    return std::span<const std::uint32_t>(first, last);
  };
  for (std::uint32_t i = 0; i < components_.size(); ++i) {
    const Component& component = components_[i];
    if (isFaulty_[component.outerFace]) addFault(component.outerFace);
    if (component.numRings > 0 && component.container == kNone) makeOutside(component);
    for (std::uint32_t k = faceStart[i]; k < faceStart[i + 1]; ++k)
      if (faces[k] != component.outerFace) makePolygon(faces[k], inside(faces[k]));
  }
  for (std::int32_t id = 1; id <= arcs_.count(); ++id) {
    const VEXTopologyArcIndex::Record& arc = arcs_.record(id);
    const std::size_t half = static_cast<std::size_t>(id - 1) * 2;
    if (arc.isRemoved || arc.left != 0 || arc.right != 0) continue;
    if (!isFaulty_[face_[half]] && !isFaulty_[face_[half + 1]]) output_.lines.push_back(id);
  }
  if (options_.progress) options_.progress(100.0);
}

void VEXFaceWalk::makePolygon(std::uint32_t face, std::span<const std::uint32_t> inside) {
  const Shape shape = cutIntoRings(face);
  reportProgress(halves_.size());
  if (shape == Shape::NoArea) return;
  if (shape != Shape::Shell) return addFault(face);
  VEXTopologyPolygon polygon;
  std::size_t numRings = 0;
  auto append = [&](std::span<const std::uint32_t> ring) {
    if (!isGathered_) gather(ring);
    isGathered_ = false;
    if (!fitsPolygon(numRings++ == 0)) return false;
    if (options_.keepLines) appendGathered();
    appendArcs(ring, polygon.arcs);
    return true;
  };
  bool isSound = true;
  for (const Ring& ring : rings_) isSound = isSound && append(std::span(halves_).subspan(ring.first, ring.count));
  for (std::uint32_t i : inside) {
    for (std::uint32_t k = 0; k < components_[i].numRings; ++k) {
      const Ring& ring = outerRings_[components_[i].firstRing + k];
      isSound = isSound && append(std::span(outerHalves_).subspan(ring.first, ring.count));
    }
  }
  if (options_.keepLines)
    polygon.line = takeLine(numRings > 1 ? VEX_GEOM_DONUT : VEX_GEOM_POLYGON);
  else
    dropGathered();
  if (!isSound) return addFault(face);
  if (options_.keepLines || options_.keepArcs) output_.polygons.push_back(std::move(polygon));
  const std::int32_t number = ++output_.numPolygons;
  auto setSide = [&](std::uint32_t half) {
    VEXTopologyArcIndex::Record& arc = arcs_.record(static_cast<std::int32_t>(half / 2) + 1);
    (half % 2 == 0 ? arc.right : arc.left) = number;
  };
  forEachHalf(face, setSide);
  for (std::uint32_t i : inside) forEachHalf(components_[i].outerFace, setSide);
}

void VEXFaceWalk::makeOutside(const Component& component) {
  if (!options_.keepLines && !options_.keepArcs) return;
  VEXTopologyBoundary& boundary = output_.outside.emplace_back();
  for (std::uint32_t k = 0; k < component.numRings; ++k) {
    const Ring& ring = outerRings_[component.firstRing + k];
    const std::span<const std::uint32_t> halves = std::span(outerHalves_).subspan(ring.first, ring.count);
    gather(halves);
    appendGathered();
    appendArcs(halves, boundary.arcs);
    boundary.rings.push_back(takeLine(VEX_GEOM_POLYGON));
  }
}

void VEXFaceWalk::addFault(std::uint32_t face) {
  isFaulty_[face] = true;
  VEXTopologyFault& fault = output_.faults.emplace_back();
  fault.number = kNotPlane;
  forEachHalf(face, [&](std::uint32_t half) {
    const VEXTopologyArcIndex::Record& arc = arcOf(half);
    const double x = arcs_.xs(arc)[arc.lowest];
    const double y = arcs_.ys(arc)[arc.lowest];
    if (fault.arcs.empty() || y < fault.y || (y == fault.y && x > fault.x)) {
      fault.x = x;
      fault.y = y;
    }
    fault.arcs.push_back(static_cast<std::int32_t>(half / 2) + 1);
  });
  std::sort(fault.arcs.begin(), fault.arcs.end());
  fault.arcs.erase(std::unique(fault.arcs.begin(), fault.arcs.end()), fault.arcs.end());
}
