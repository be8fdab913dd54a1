#include "vex/topology/piececut.h"

#include <algorithm>
#include <cstdlib>

VEXLine VEXChainPiece::toLine(std::uint32_t geomType) const {
  std::vector<double> x(xs.begin(), xs.end());
  std::vector<double> y(ys.begin(), ys.end());
  if (zs.empty()) return VEXLine(std::move(x), std::move(y), geomType);
  return VEXLine(std::move(x), std::move(y), std::vector<double>(zs.begin(), zs.end()), geomType);
}

VEXPieceCutter::VEXPieceCutter(const VEXChainStore& chains) : chains_(chains) {
  findShared();
  countArms();
}

int VEXPieceCutter::directionOf(std::uint32_t segment) const {
  return chains_.nodeAt(segment) < chains_.nodeAt(segment + 1) ? 1 : -1;
}

// Segments of the same course have the same two nodes: sorted by the lower one, they stand together.
void VEXPieceCutter::findShared() {
  std::vector<std::uint32_t> starts(chains_.numNodes() + 1, 0);
  auto forEachNoded = [&](auto&& show) {
    for (std::size_t c = 0; c < chains_.numChains(); ++c)
      for (std::uint32_t at = chains_.chain(c).first, end = chains_.endOf(c); at + 1 < end; ++at) {
        const std::uint32_t one = chains_.nodeAt(at), two = chains_.nodeAt(at + 1);
        if (one != kNoNode && two != kNoNode) show(at, std::min(one, two));
      }
  };
  forEachNoded([&](std::uint32_t, std::uint32_t low) { ++starts[low + 1]; });
  for (std::size_t i = 1; i < starts.size(); ++i) starts[i] += starts[i - 1];
  std::vector<std::uint32_t> segments(starts.back());
  forEachNoded([&](std::uint32_t at, std::uint32_t low) { segments[starts[low]++] = at; });
  // Each start has become the end of its own run, which is the start of the next.
  auto highOf = [&](std::uint32_t at) { return std::max(chains_.nodeAt(at), chains_.nodeAt(at + 1)); };
  auto isBefore = [&](std::uint32_t a, std::uint32_t b) {
    const std::uint32_t highA = highOf(a), highB = highOf(b);
    return highA != highB ? highA < highB : a < b;
  };
  for (std::size_t node = 0, begin = 0; node + 1 < starts.size(); begin = starts[node], ++node) {
    const std::size_t end = starts[node];
    if (end - begin < 2) continue;
    if (end - begin == 2) {
      if (highOf(segments[begin]) == highOf(segments[begin + 1])) addShared(segments, begin, end);
      continue;
    }
    std::sort(segments.begin() + static_cast<std::ptrdiff_t>(begin),
              segments.begin() + static_cast<std::ptrdiff_t>(end), isBefore);
    for (std::size_t first = begin, last; first < end; first = last) {
      for (last = first + 1; last < end && highOf(segments[last]) == highOf(segments[first]);) ++last;
      if (last > first + 1) addShared(segments, first, last);
    }
  }
}

void VEXPieceCutter::addShared(const std::vector<std::uint32_t>& segments, std::size_t first, std::size_t last) {
  if (sharedOf_.empty()) sharedOf_.assign(chains_.numCoords(), kNotShared);
  Shared shared;
  shared.firstSegment = segments[first];
  shared.firstChain = static_cast<std::uint32_t>(sharedChains_.size());
  for (std::size_t i = first; i < last; ++i) {
    sharedOf_[segments[i]] = static_cast<std::uint32_t>(shareds_.size());
    const auto id = static_cast<std::int32_t>(chains_.chainOf(segments[i]) + 1);
    sharedChains_.push_back(id * directionOf(segments[i]));
  }
  const auto from = sharedChains_.begin() + shared.firstChain;
  std::sort(from, sharedChains_.end(), [](std::int32_t a, std::int32_t b) {
    return std::abs(a) != std::abs(b) ? std::abs(a) < std::abs(b) : a < b;
  });
  shared.endChain = static_cast<std::uint32_t>(sharedChains_.size());
  shareds_.push_back(shared);
}

void VEXPieceCutter::countArms() {
  numArms_.assign(chains_.numNodes(), 0);
  auto count = [&](std::uint32_t node) {
    if (node != kNoNode && numArms_[node] < kMoreArms) ++numArms_[node];
  };
  for (std::size_t c = 0; c < chains_.numChains(); ++c)
    for (std::uint32_t at = chains_.chain(c).first, end = chains_.endOf(c); at + 1 < end; ++at)
      if (isGiven(at)) {
        count(chains_.nodeAt(at));
        count(chains_.nodeAt(at + 1));
      }
}

bool VEXPieceCutter::isBreak(std::uint32_t before, std::uint32_t after) const {
  const std::uint32_t node = chains_.nodeAt(after);
  if (node == kNoNode) return false;
  std::uint8_t& arms = numArms_[node];
  if (arms < 2 || arms == kMoreArms || isGiven(before) != isGiven(after)) return true;
  const std::uint32_t one = sharedAt(before), two = sharedAt(after);
  if (one == kNotShared || two == kNotShared) return one != two;
  const bool isSameWay = directionOf(before) == directionOf(after);
  if (one == two) return !isTurnable(shareds_[one]);
  // Every chain that passes here has the same answer, whatever way it runs.
  if (arms == 2) arms = hasSameChains(shareds_[one], shareds_[two], isSameWay) ? kArmsGoOn : kArmsEnd;
  return arms == kArmsEnd;
}

// True when each chain runs along it as often one way as the other: where it turns back the same chains go on.
bool VEXPieceCutter::isTurnable(const Shared& shared) const {
  if (shared.turns == Turns::Unknown)
    shared.turns = hasSameChains(shared, shared, false) ? Turns::Same : Turns::Different;
  return shared.turns == Turns::Same;
}

// Where the same chains run on side by side, nothing ends.
bool VEXPieceCutter::hasSameChains(const Shared& a, const Shared& b, bool isSameWay) const {
  const std::uint32_t count = a.endChain - a.firstChain;
  if (count != b.endChain - b.firstChain) return false;
  if (isSameWay)
    return std::equal(sharedChains_.begin() + a.firstChain, sharedChains_.begin() + a.endChain,
                      sharedChains_.begin() + b.firstChain);
  std::vector<std::int32_t> turned(sharedChains_.begin() + b.firstChain, sharedChains_.begin() + b.endChain);
  for (std::int32_t& id : turned) id = -id;
  std::sort(turned.begin(), turned.end(), [](std::int32_t x, std::int32_t y) {
    return std::abs(x) != std::abs(y) ? std::abs(x) < std::abs(y) : x < y;
  });
  return std::equal(turned.begin(), turned.end(), sharedChains_.begin() + a.firstChain);
}

// Sets a chain to work; false when there is none left.
bool VEXPieceCutter::beginChain() {
  for (; chain_ < chains_.numChains(); ++chain_) {
    first_ = chains_.chain(chain_).first;
    const std::uint32_t end = chains_.endOf(chain_);
    if (end == first_) continue;
    last_ = end - 1;
    // What has shrunk to a point in noding is no line any more.
    if (last_ == first_ && chains_.nodeAt(first_) != kNoNode) continue;
    at_ = first_;
    stop_ = last_;
    wraps_ = false;
    isOpen_ = true;
    const VEXChain& chain = chains_.chain(chain_);
    if (!chain.isRing || last_ < first_ + 2 || !isGiven(last_ - 1) || isBreak(last_ - 1, first_)) return true;
    for (std::uint32_t at = first_ + 1; at < last_; ++at)
      if (isBreak(at - 1, at)) {
        at_ = wrapTo_ = at;
        wraps_ = true;
        break;
      }
    return true;
  }
  return false;
}

void VEXPieceCutter::setIds(std::uint32_t segment) {
  const auto own = static_cast<std::int32_t>(chain_ + 1);
  ids_.assign(1, own);
  passes_.clear();
  const std::uint32_t shared = segment < last_ ? sharedAt(segment) : kNotShared;
  if (shared == kNotShared) return;
  const int direction = directionOf(segment);
  const auto others = sharedChains_.begin() + shareds_[shared].firstChain;
  const auto end = sharedChains_.begin() + shareds_[shared].endChain;
  for (auto it = others; it != end; ++it)
    if (*it * direction != own) ids_.push_back(*it * direction);
  // A chain that runs both ways comes with its own direction first.
  std::sort(ids_.begin() + 1, ids_.end(), [](std::int32_t a, std::int32_t b) {
    return std::abs(a) != std::abs(b) ? std::abs(a) < std::abs(b) : a > b;
  });
  ids_.erase(std::unique(ids_.begin() + 1, ids_.end()), ids_.end());
  if (ids_.size() == static_cast<std::size_t>(end - others)) return;
  for (auto it = others; it != end; ++it) passes_.push_back(*it * direction);
}

// Finds the next stretch between two breaks that is to be given. What is not is passed over at one go: a ring that
// goes round a thousand times would compare all of its passes at each vertex of each.
bool VEXPieceCutter::nextStretch(std::uint32_t& from, std::uint32_t& to) {
  while (isOpen_ || beginChain()) {
    from = to = at_;
    const bool isPassedOver = from < last_ && !isGiven(from);
    if (to < stop_)
      for (++to; to < stop_ && (isPassedOver ? !isGiven(to) : !isBreak(to - 1, to));) ++to;
    at_ = to;
    if (to == stop_) isOpen_ = false;
    if (from == last_ || isGiven(from)) return true;
    if (!isOpen_) ++chain_;
  }
  return false;
}

bool VEXPieceCutter::nextCourse(VEXPieceCourse& course) {
  std::uint32_t from = 0, to = 0;
  if (!nextStretch(from, to)) return false;
  course.first = from;
  course.last = !isOpen_ && wraps_ ? wrapTo_ : to;
  course.change = 1;
  const std::uint32_t shared = from < last_ ? sharedAt(from) : kNotShared;
  if (shared != kNotShared) {
    course.change = 0;
    for (std::uint32_t i = shareds_[shared].firstChain; i < shareds_[shared].endChain; ++i)
      course.change += sharedChains_[i] > 0 ? 1 : -1;
    course.change *= directionOf(from);
  }
  if (!isOpen_) ++chain_;
  return true;
}

// Makes ready what is shown of a stretch of the chain at hand.
void VEXPieceCutter::setRun(std::uint32_t from, std::uint32_t to, bool wraps) {
  setIds(from);
  isWhole_ = from == first_ && to == last_ && ids_.size() == 1 && passes_.empty();
  const bool hasZ = chains_.chain(chain_).hasZ;
  runAt_ = 0;
  if (wraps) {
    auto join = [&](VEXOrdinates all, std::vector<double>& joined) {
      joined.assign(all.begin() + from, all.begin() + last_ + 1);
      joined.insert(joined.end(), all.begin() + first_ + 1, all.begin() + to + 1);
    };
    join(chains_.xs(), wrapXs_);
    join(chains_.ys(), wrapYs_);
    if (hasZ) join(chains_.zs(), wrapZs_);
    runXs_ = wrapXs_;
    runYs_ = wrapYs_;
    runZs_ = hasZ ? VEXOrdinates(wrapZs_) : VEXOrdinates();
  } else {
    const std::size_t count = to - from + 1;
    runXs_ = chains_.xs().subspan(from, count);
    runYs_ = chains_.ys().subspan(from, count);
    runZs_ = hasZ ? chains_.zs().subspan(from, count) : VEXOrdinates();
  }
}

void VEXPieceCutter::show(const VEXPieceCourse& course, VEXChainPiece& piece) {
  while (chains_.endOf(chain_) <= course.first) ++chain_;
  first_ = chains_.chain(chain_).first;
  last_ = chains_.endOf(chain_) - 1;
  setRun(course.first, course.last, course.last <= course.first && first_ != last_);
  showRun(piece, 0);
}

// The next run of the stretch at hand; two runs share a coordinate.
void VEXPieceCutter::showRun(VEXChainPiece& piece, std::size_t maxVertices) {
  std::size_t count = runXs_.size() - runAt_;
  const std::size_t most = maxVertices == 1 ? 2 : maxVertices;
  if (most != 0 && count > most) count = most;
  piece.xs = runXs_.subspan(runAt_, count);
  piece.ys = runYs_.subspan(runAt_, count);
  piece.zs = runZs_.empty() ? VEXOrdinates() : runZs_.subspan(runAt_, count);
  piece.chainIds = ids_;
  piece.passes = passes_.empty() ? ids_ : passes_;
  piece.isWhole = isWhole_ && count == runXs_.size();
  runAt_ += count > 1 ? count - 1 : 1;
  if (runAt_ + 1 >= runXs_.size()) runXs_ = VEXOrdinates();
}

bool VEXPieceCutter::next(VEXChainPiece& piece, std::size_t maxVertices) {
  if (runXs_.empty()) {
    std::uint32_t from = 0, to = 0;
    if (!nextStretch(from, to)) return false;
    const bool wraps = !isOpen_ && wraps_;
    setRun(from, wraps ? wrapTo_ : to, wraps);
    if (!isOpen_) ++chain_;
  }
  showRun(piece, maxVertices);
  return true;
}

void VEXPieceCutter::rewind() {
  chain_ = 0;
  isOpen_ = false;
  runXs_ = VEXOrdinates();
}

void VEXPieceCutter::meetings(std::vector<std::uint32_t>& coords) const {
  coords.clear();
  std::vector<bool> isSeen(chains_.numNodes(), false);
  auto see = [&](std::uint32_t at) {
    const std::uint32_t node = chains_.nodeAt(at);
    if (node == kNoNode || isSeen[node]) return;
    isSeen[node] = true;
    coords.push_back(at);
  };
  for (std::size_t c = 0; c < chains_.numChains(); ++c) {
    const std::uint32_t first = chains_.chain(c).first, end = chains_.endOf(c);
    if (end < first + 2) continue;
    const bool closes = chains_.chain(c).isRing && end > first + 2;
    if (!closes || isBreak(end - 2, first)) see(first);
    for (std::uint32_t at = first + 1; at + 1 < end; ++at)
      if (isBreak(at - 1, at)) see(at);
    if (!closes) see(end - 1);
  }
}
