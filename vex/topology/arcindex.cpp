#include "vex/topology/arcindex.h"

#include <algorithm>
#include <bit>

#include "vex/inc/numtext.h"
#include "vex/topology/orient.h"
#include "vex/topology/pointhash.h"

void VEXTopologyArcIndex::reserve(std::size_t numArcs, std::size_t numCoords, bool withZ) {
  records_.reserve(numArcs);
  xs_.reserve(numCoords);
  ys_.reserve(numCoords);
  if (withZ) zs_.reserve(numCoords);
  grow(std::bit_ceil(numArcs * 5 / 3 + 16));
}

VEXTopologyArc VEXTopologyArcIndex::view(std::int32_t id) const {
  const Record& of = record(id);
  VEXTopologyArc arc;
  arc.id_ = id;
  arc.startNode_ = of.startNode;
  arc.endNode_ = of.endNode;
  arc.left_ = of.left;
  arc.right_ = of.right;
  arc.isRemoved_ = of.isRemoved;
  arc.lowestIndex_ = of.lowest;
  arc.xs_ = VEXOrdinates(xs(of), of.count);
  arc.ys_ = VEXOrdinates(ys(of), of.count);
  if (!zs_.empty()) arc.zs_ = VEXOrdinates(zs(of), of.count);
  arc.attributes_ = attributes(of);
  return arc;
}

// ---- equal arcs ----

std::uint64_t VEXTopologyArcIndex::hashOf(const double* xs, const double* ys, std::size_t count, std::int32_t startNode,
                                          std::int32_t endNode) const {
  const std::uint64_t low = static_cast<std::uint32_t>(std::min(startNode, endNode));
  const std::uint64_t high = static_cast<std::uint32_t>(std::max(startNode, endNode));
  std::uint64_t sum = low << 32 | high;
  for (std::size_t i = 1; i + 1 < count; ++i) sum += pointHash(xs[i], ys[i]);  // a sum has no direction
  return mixBits(sum);
}

bool VEXTopologyArcIndex::isEqual(const Record& of, VEXOrdinates x, VEXOrdinates y, bool backward) const {
  const double* ownX = xs(of);
  const double* ownY = ys(of);
  const std::size_t last = x.size() - 1;
  for (std::size_t i = 0; i <= last; ++i) {
    const std::size_t at = backward ? last - i : i;
    if (ownX[i] != x[at] || ownY[i] != y[at]) return false;
  }
  return true;
}

std::int32_t VEXTopologyArcIndex::findOrAdd(VEXOrdinates x, VEXOrdinates y, VEXOrdinates z, std::int32_t startNode,
                                            std::int32_t endNode, bool& wasThere, bool& isReversed) {
  if ((records_.size() + 1) * 5 > slots_.size() * 3) grow(slots_.empty() ? 64 : slots_.size() * 2);
  const std::uint64_t hash = hashOf(x.data(), y.data(), x.size(), startNode, endNode);
  const std::uint32_t tag = static_cast<std::uint32_t>(hash >> 32);
  const std::size_t mask = slots_.size() - 1;
  std::size_t at = static_cast<std::size_t>(hash) & mask;
  for (; slots_[at].arc != 0; at = (at + 1) & mask) {
    if (slots_[at].tag != tag) continue;
    const std::int32_t id = static_cast<std::int32_t>(slots_[at].arc);
    const Record& other = record(id);
    if (other.isRemoved || other.count != x.size()) continue;
    const bool isForward = other.startNode == startNode && other.endNode == endNode && isEqual(other, x, y, false);
    if (!isForward && !(other.startNode == endNode && other.endNode == startNode && isEqual(other, x, y, true)))
      continue;
    wasThere = true;
    isReversed = !isForward;
    return id;
  }
  Record fresh;
  fresh.first = static_cast<std::uint32_t>(xs_.size());
  fresh.count = static_cast<std::uint32_t>(x.size());
  fresh.startNode = startNode;
  fresh.endNode = endNode;
  xs_.insert(xs_.end(), x.begin(), x.end());
  ys_.insert(ys_.end(), y.begin(), y.end());
  zs_.insert(zs_.end(), z.begin(), z.end());
  findLowest(fresh);
  records_.push_back(fresh);
  slots_[at] = {static_cast<std::uint32_t>(records_.size()), tag};
  wasThere = false;
  isReversed = false;
  return count();
}

void VEXTopologyArcIndex::grow(std::size_t numSlots) {
  if (numSlots <= slots_.size()) return;
  std::vector<Slot> before(numSlots);
  before.swap(slots_);
  const std::size_t mask = numSlots - 1;
  for (const Slot& slot : before) {
    if (slot.arc == 0) continue;
    const Record& of = record(static_cast<std::int32_t>(slot.arc));
    std::size_t at = static_cast<std::size_t>(hashOf(xs(of), ys(of), of.count, of.startNode, of.endNode)) & mask;
    while (slots_[at].arc != 0) at = (at + 1) & mask;
    slots_[at] = slot;
  }
}

void VEXTopologyArcIndex::findLowest(Record& of) const {
  const double* x = xs(of);
  const double* y = ys(of);
  of.lowest = 0;
  for (std::uint32_t i = 1; i < of.count; ++i)
    if (y[i] < y[of.lowest] || (y[i] == y[of.lowest] && x[i] >= x[of.lowest])) of.lowest = i;
}

VEXStatus VEXTopologyArcIndex::remove(std::int32_t id) {
  if (id < 1 || id > count()) return makeStatus(320001, {integerText(id)});
  if (record(id).isRemoved) return makeStatus(320002, {integerText(id)});
  record(id).isRemoved = true;
  return nullptr;
}

// ---- what callers keep with an arc ----

void VEXTopologyArcIndex::addUse(std::int32_t id, std::int32_t userId, bool isReversed) {
  const std::uint32_t at = static_cast<std::uint32_t>(uses_.size());
  uses_.push_back({userId, isReversed, kNone});
  Record& of = record(id);
  (of.firstUse == kNone ? of.firstUse : uses_[of.lastUse].next) = at;
  of.lastUse = at;
}

void VEXTopologyArcIndex::uses(std::int32_t id, std::vector<VEXArcUse>& found) const {
  found.clear();
  for (std::uint32_t at = record(id).firstUse; at != kNone; at = uses_[at].next)
    found.push_back({uses_[at].userId, uses_[at].isReversed});
}

void VEXTopologyArcIndex::setAttributes(std::int32_t id, std::span<const std::int32_t> attributes) {
  if (attributes.empty()) return;
  record(id).attributes = static_cast<std::uint32_t>(attributes_.size());
  attributes_.push_back(static_cast<std::int32_t>(attributes.size()));
  attributes_.insert(attributes_.end(), attributes.begin(), attributes.end());
}

std::span<const std::int32_t> VEXTopologyArcIndex::attributes(const Record& of) const {
  if (of.attributes == kNone) return {};
  return {attributes_.data() + of.attributes + 1, static_cast<std::size_t>(attributes_[of.attributes])};
}

// ---- changing arcs ----

void VEXTopologyArcIndex::join(std::span<const std::int32_t> chain) {
  std::int32_t whole = std::abs(chain[0]);
  for (std::int32_t id : chain) whole = std::min(whole, std::abs(id));
  Record joined = record(whole);
  joined.first = static_cast<std::uint32_t>(xs_.size());
  joined.firstUse = joined.lastUse = kNone;
  std::vector<VEXArcUse> gathered;
  std::vector<VEXArcUse> found;
  for (std::size_t i = 0; i < chain.size(); ++i) {
    const std::int32_t id = std::abs(chain[i]);
    Record& part = record(id);
    const bool isBackward = chain[i] < 0;
    if (i == 0) joined.startNode = isBackward ? part.endNode : part.startNode;
    joined.endNode = isBackward ? part.startNode : part.endNode;
    for (std::uint32_t k = i == 0 ? 0 : 1; k < part.count; ++k) {
      const std::size_t at = part.first + (isBackward ? part.count - 1 - k : k);
      xs_.push_back(xs_[at]);
      ys_.push_back(ys_[at]);
      if (!zs_.empty()) zs_.push_back(zs_[at]);
    }
    uses(id, found);
    for (VEXArcUse use : found) {
      use.isReversed = use.isReversed != isBackward;
      const bool isKnown = !gathered.empty() && gathered.back().userId == use.userId &&
                           gathered.back().isReversed == use.isReversed;  // the same line goes on
      if (!isKnown) gathered.push_back(use);
    }
    part.isRemoved = true;
  }
  joined.count = static_cast<std::uint32_t>(xs_.size() - joined.first);
  joined.isRemoved = false;
  findLowest(joined);
  record(whole) = joined;
  for (const VEXArcUse& use : gathered) addUse(whole, use.userId, use.isReversed);
}

bool VEXTopologyArcIndex::hasFold(std::int32_t id) const {
  const Record& of = record(id);
  const double* x = xs(of);
  const double* y = ys(of);
  for (std::uint32_t i = 1; i + 1 < of.count; ++i)
    if (inSameDirection(x[i], y[i], x[i - 1], y[i - 1], x[i + 1], y[i + 1])) return true;
  return false;
}

bool VEXTopologyArcIndex::removeFolds(std::int32_t id) {
  Record& of = record(id);
  double* x = xs_.data() + of.first;
  double* y = ys_.data() + of.first;
  double* z = zs_.empty() ? nullptr : zs_.data() + of.first;
  std::uint32_t kept = 0;
  for (std::uint32_t i = 0; i < of.count; ++i) {
    while (kept >= 2 && inSameDirection(x[kept - 1], y[kept - 1], x[kept - 2], y[kept - 2], x[i], y[i])) --kept;
    if (kept >= 1 && x[kept - 1] == x[i] && y[kept - 1] == y[i]) --kept;
    x[kept] = x[i];
    y[kept] = y[i];
    if (z != nullptr) z[kept] = z[i];
    ++kept;
  }
  of.count = kept;
  findLowest(of);
  return kept > 1;
}
