#include "vex/rptree/rpnode.h"

#include <cstring>
#include <limits>

#include "vex/src/vexlog.h"

namespace {

void internalError(const char* text) {
  logText(VEXSeverity::Error, std::string("FATAL ERROR: ") + text);
}

template <class Number>
void put(std::string& bytes, Number value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

void putBox(std::string& bytes, const RpBox& box) {
  put(bytes, box.minX);
  put(bytes, box.minY);
  put(bytes, box.maxX);
  put(bytes, box.maxY);
}

RpBox takeBox(VEXByteCursor& bytes) {
  RpBox box;
  box.minX = bytes.f64le();
  box.minY = bytes.f64le();
  box.maxX = bytes.f64le();
  box.maxY = bytes.f64le();
  return box;
}

enum class Side { Low, High, Both };

// An entry that cannot be compared stays on the low side.
Side sideOf(const RpBox& box, int axis, double at) {
  if (box.low(axis) >= at) return Side::High;
  return box.low(axis) < at && box.high(axis) > at ? Side::Both : Side::Low;
}

// The entries on either side of candidate cuts on one axis. A straddling entry counts on both.
class CutCounter {
 public:
  CutCounter(const std::vector<RpBox>& boxes, int axis) : boxes_(boxes), axis_(axis) {}

  std::uint32_t countPlainly(double at) const {  // the cost, or kNoCut
    std::size_t left = 0, right = 0, straddling = 0;
    for (const RpBox& box : boxes_) {
      const double low = box.low(axis_), high = box.high(axis_);
      const bool isPlaced = low <= high;
      straddling += low < at && high > at ? 1 : 0;
      left += !isPlaced || high <= at ? 1 : 0;
      right += isPlaced && low >= at ? 1 : 0;
    }
    return costOf(left + straddling, right + straddling, straddling);
  }

  void sort() {
    for (const RpBox& box : boxes_) {
      const double low = box.low(axis_), high = box.high(axis_);
      if (!(low <= high)) continue;
      lows_.push_back(low);
      highs_.push_back(high);
      if (low == high) flats_.push_back(low);
    }
    for (std::vector<double>* values : {&lows_, &highs_, &flats_}) std::sort(values->begin(), values->end());
  }

  std::uint32_t countSorted(double at) const {
    const std::size_t below = std::upper_bound(highs_.begin(), highs_.end(), at) - highs_.begin();
    const std::size_t above = lows_.end() - std::lower_bound(lows_.begin(), lows_.end(), at);
    const auto [first, last] = std::equal_range(flats_.begin(), flats_.end(), at);
    const std::size_t straddling = lows_.size() + static_cast<std::size_t>(last - first) - below - above;
    return costOf(below + straddling + (boxes_.size() - lows_.size()), above + straddling, straddling);
  }

 private:
  std::uint32_t costOf(std::size_t left, std::size_t right, std::size_t straddling) const {
    const std::size_t count = boxes_.size();
    if (left == 0 || left >= count || right == 0 || right >= count) return RpNode::kNoCut;
    return static_cast<std::uint32_t>(std::min<std::size_t>(straddling, RpNode::kNoCut));
  }

  const std::vector<RpBox>& boxes_;
  int axis_;
  std::vector<double> lows_, highs_, flats_;
};

}  // namespace

RpBox RpBox::nothing() {
  constexpr double kFar = std::numeric_limits<double>::infinity();
  return {kFar, kFar, -kFar, -kFar};
}

void RpBox::add(const RpBox& other) {
  if (other.minX < minX) minX = other.minX;
  if (other.minY < minY) minY = other.minY;
  if (other.maxX > maxX) maxX = other.maxX;
  if (other.maxY > maxY) maxY = other.maxY;
}

void RpNode::setParent(RpNode* parent) {
  if (nodeLevel_ == DataRoot || nodeLevel_ == Root) {
    internalError("RpNode::Parent : Attempt to give Root a parent_");
  } else {
    parent_ = parent;
  }
}

void RpNode::reserve(std::size_t count) {
  boxes_.reserve(count);
  ids_.reserve(count);
}

void RpNode::addData(const RpBox& box, std::uint32_t id) {
  if (!holdsData()) {
    internalError("RPNODE INSERT DISASTER: insert into unknown level\n");
    return;
  }
  if (nodeLevel_ == Undetermined) nodeLevel_ = Leaf;
  dropCovers();
  boxes_.push_back(box);
  ids_.push_back(id);
}

void RpNode::addChild(const RpBox& box, std::unique_ptr<RpNode> child) {
  if (nodeLevel_ == Undetermined) nodeLevel_ = Internal;
  if (nodeLevel_ == DataRoot) nodeLevel_ = Root;
  dropCovers();
  child->setParent(this);
  boxes_.push_back(box);
  children_.push_back(std::move(child));
}

void RpNode::findLeaves(const RpBox& box, const RpBox& region, std::vector<RpNode*>& leaves) {
  if (holdsData()) {
    leaves.push_back(this);
    return;
  }
  growTo(region);
  bool isPlaced = false;
  for (std::size_t at = 0; at < children_.size(); ++at) {
    if (!boxes_[at].meets(box)) continue;
    isPlaced = true;
    children_[at]->findLeaves(box, boxes_[at], leaves);
  }
  if (!isPlaced) leaves.push_back(growOneLeaf(box));  // a NaN in the box
}

// The sides of children that lie on the rim of all of them move out with it, so that they still leave no gap.
void RpNode::growTo(const RpBox& region) {
  RpBox rim = RpBox::nothing();
  for (const RpBox& box : boxes_) rim.add(box);
  if (rim.encloses(region)) return;
  for (std::size_t at = 0; at < boxes_.size(); ++at) {
    RpBox box = boxes_[at];
    if (box.minX == rim.minX && region.minX < box.minX) box.minX = region.minX;
    if (box.minY == rim.minY && region.minY < box.minY) box.minY = region.minY;
    if (box.maxX == rim.maxX && region.maxX > box.maxX) box.maxX = region.maxX;
    if (box.maxY == rim.maxY && region.maxY > box.maxY) box.maxY = region.maxY;
    changeInBound(at, box);
  }
}

void RpNode::changeInBound(std::size_t at, const RpBox& box) {
  if (nodeLevel_ != Internal && nodeLevel_ != Root) {
    internalError("RpNode::ChangeInBound : method invoked at incorrect nodeLevel_");
    return;
  }
  if (boxes_[at] == box) return;
  dropCovers();
  boxes_[at] = box;
}

RpNode* RpNode::growOneLeaf(const RpBox& box) {
  RpNode* node = this;
  while (!node->holdsData()) {
    std::size_t best = 0;
    double bestGrowth = std::numeric_limits<double>::infinity();
    for (std::size_t at = 0; at < node->boxes_.size(); ++at) {
      const RpBox& old = node->boxes_[at];
      const double growth = std::max(0.0, old.minX - box.minX) + std::max(0.0, old.minY - box.minY) +
                            std::max(0.0, box.maxX - old.maxX) + std::max(0.0, box.maxY - old.maxY);
      if (growth < bestGrowth) {
        best = at;
        bestGrowth = growth;
      }
    }
    RpBox grown = node->boxes_[best];
    if (grown.hasNaN()) grown = RpBox::nothing();
    grown.add(box);
    node->changeInBound(best, grown);
    node = node->children_[best].get();
  }
  return node;
}

std::size_t RpNode::countLeaves(const RpBox& box, std::size_t limit) const {
  if (holdsData()) return 1;
  std::size_t count = 0;
  for (std::size_t at = 0; at < children_.size() && count < limit; ++at) {
    if (boxes_[at].meets(box)) count += children_[at]->countLeaves(box, limit - count);
  }
  return count;
}

RpBox RpNode::myCoverage() const {
  if (nodeLevel_ == Undetermined || (parent_ == nullptr && (nodeLevel_ == Leaf || nodeLevel_ == Internal))) {
    internalError("RpNode::MyCoverage : Incorrect Node level");
    return RpBox::nothing();
  }
  if (parent_ != nullptr) return parent_->boxes_[parent_->positionOf(*this)];
  RpBox cover = RpBox::nothing();
  for (const RpBox& box : boxes_) cover.add(box);
  return cover;
}

std::size_t RpNode::positionOf(const RpNode& child) const {
  std::size_t at = 0;
  while (at < children_.size() && children_[at].get() != &child) ++at;
  if (at == children_.size()) internalError("RpNode::SplitNode : Not from parent_");
  return at;
}

// The first valid candidate: low and high of the entry in the middle, then the low of each.
RpNode::Cut RpNode::bestCut(int axis) const {
  CutCounter counter(boxes_, axis);
  const RpBox& middle = boxes_[boxes_.size() / 2];
  for (const double at : {middle.low(axis), middle.high(axis)}) {
    const std::uint32_t cost = counter.countPlainly(at);
    if (cost < kNoCut) return {axis, at, cost};
  }
  counter.sort();
  for (const RpBox& box : boxes_) {
    if (box.low(axis) != box.low(axis)) continue;
    const std::uint32_t cost = counter.countSorted(box.low(axis));
    if (cost < kNoCut) return {axis, box.low(axis), cost};
  }
  return {axis, 0.0, kNoCut};
}

void RpNode::keepUncut() {
  nextTry_ = boxes_.size() + boxes_.size() / 8;
}

void RpNode::selfSplit(RpGrowth& growth) {
  RpNode* node = this;
  while (node != nullptr && node->boxes_.size() >= node->nextTry_) {
    Cut cut = node->bestCut(1);
    if (const Cut alongX = node->bestCut(0); alongX.cost < cut.cost) cut = alongX;
    if (cut.cost >= kNoCut && node->nodeLevel_ != Leaf && !growth.uncutTold) {
      // The root keeps its entries, too: an index never loses one.
      growth.uncutTold = true;
      logText(VEXSeverity::Inform, "INFORMATION: RpNode::SelfSplit : No cut found for nonLeaf node");
    }
    const bool isRoot = node->parent_ == nullptr;
    if (cut.cost >= kNoCut || (cut.cost > 0 && !growth.mayCopy()) || (isRoot && growth.depth >= kMostDepth)) {
      node->keepUncut();
      return;
    }
    node->nextTry_ = kCapacity;
    if (!isRoot) {
      RpNode* const parent = node->parent_;
      RpBox highBox = node->myCoverage();
      highBox.setLow(cut.axis, cut.at);
      parent->addChild(highBox, parent->splitNode(*node, cut, growth));
      node = parent;
      continue;
    }
    RpBox lowBox = node->myCoverage(), highBox = lowBox;
    lowBox.setHigh(cut.axis, cut.at);
    highBox.setLow(cut.axis, cut.at);
    auto lowSide = std::make_unique<RpNode>(), highSide = std::make_unique<RpNode>();
    lowSide->nodeLevel_ = node->holdsData() ? Leaf : Internal;
    lowSide->boxes_.swap(node->boxes_);
    lowSide->ids_.swap(node->ids_);
    lowSide->children_.swap(node->children_);
    for (const auto& child : lowSide->children_) child->parent_ = lowSide.get();
    lowSide->shareEntries(*highSide, cut, growth);
    node->nodeLevel_ = Root;
    node->addChild(lowBox, std::move(lowSide));
    node->addChild(highBox, std::move(highSide));
    ++growth.depth;
    return;
  }
}

// Cuts a child at a place that lies in its box, and gives the new node of its high side.
std::unique_ptr<RpNode> RpNode::splitNode(RpNode& child, const Cut& cut, RpGrowth& growth) {
  auto highSide = std::make_unique<RpNode>();
  const std::size_t at = positionOf(child);
  if (at == children_.size()) return highSide;
  RpBox lowBox = boxes_[at];
  lowBox.setHigh(cut.axis, cut.at);
  changeInBound(at, lowBox);
  child.shareEntries(*highSide, cut, growth);
  return highSide;
}

void RpNode::shareEntries(RpNode& highSide, const Cut& cut, RpGrowth& growth) {
  dropCovers();
  std::size_t kept = 0;
  const bool isData = holdsData();
  const std::size_t count = boxes_.size();
  for (std::size_t at = 0; at < count; ++at) {
    const RpBox box = boxes_[at];
    const Side side = sideOf(box, cut.axis, cut.at);
    if (isData) {
      if (side != Side::Low) highSide.insertFromSibling(box, ids_[at]);
      if (side == Side::Both) ++growth.copies;
      if (side != Side::High) ids_[kept] = ids_[at];
    } else if (side == Side::High) {
      highSide.insertFromSibling(box, std::move(children_[at]));
    } else {
      if (side == Side::Both) {
        RpBox highBox = box;
        highBox.setLow(cut.axis, cut.at);
        highSide.insertFromSibling(highBox, splitNode(*children_[at], cut, growth));
      }
      // splitNode has clipped the box at `at`
      if (kept != at) children_[kept] = std::move(children_[at]);
    }
    if (side != Side::High) boxes_[kept++] = boxes_[at];
  }
  boxes_.resize(kept);
  (isData ? ids_.resize(kept) : children_.resize(kept));
  if (kept == 0) nodeLevel_ = Undetermined;
  nextTry_ = kCapacity;
}

void RpNode::insertFromSibling(const RpBox& box, std::uint32_t id) {
  if (nodeLevel_ != Undetermined && nodeLevel_ != Leaf) {
    internalError("RpNode::InsertFromSibling : Invoked on non-leaf node");
    return;
  }
  addData(box, id);
}

void RpNode::insertFromSibling(const RpBox& box, std::unique_ptr<RpNode> child) {
  addChild(box, std::move(child));
}

void RpNode::packCovers() {
  dropCovers();
  std::size_t first = 0, size = boxes_.size();
  while (size > 2 * kRun) {
    const std::size_t numRuns = (size + kRun - 1) / kRun;
    for (std::size_t run = 0; run < numRuns; ++run) {
      RpBox cover = RpBox::nothing();
      const std::size_t last = std::min((run + 1) * kRun, size);
      for (std::size_t at = run * kRun; at < last; ++at) {
        cover.add(numLevels_ == 0 ? boxes_[at] : covers_[first + at]);
      }
      covers_.push_back(cover);
    }
    if (numLevels_ > 0) first += size;
    size = numRuns;
    ++numLevels_;
  }
}

void RpNode::save(std::string& bytes) const {
  put(bytes, static_cast<char>(nodeLevel_));
  put(bytes, static_cast<std::uint32_t>(boxes_.size()));
  saveEntries(bytes);
}

void RpNode::saveWithLeaf(std::string& bytes, const RpNode& leaf) const {
  RpBox cover = RpBox::nothing();
  for (const RpBox& box : leaf.boxes_) cover.add(box);
  put(bytes, static_cast<char>(nodeLevel_));
  put(bytes, static_cast<std::uint32_t>(boxes_.size() + 1));
  saveEntries(bytes);
  putBox(bytes, cover);
  leaf.save(bytes);
}

void RpNode::saveEntries(std::string& bytes) const {
  for (std::size_t at = 0; at < boxes_.size(); ++at) {
    if (holdsData()) put(bytes, ids_[at]);
    putBox(bytes, boxes_[at]);
    if (!holdsData()) children_[at]->save(bytes);
  }
}

bool RpNode::restore(VEXByteCursor& bytes, int depth, RpGrowth& growth) {
  const char letter = static_cast<char>(bytes.u8());
  const std::uint32_t count = bytes.u32le();
  const bool isRoot = depth == 1;
  const bool isData = letter == (isRoot ? DataRoot : Leaf);
  const bool isInner = letter == (isRoot ? Root : Internal);
  const bool isEmpty = letter == Undetermined && !isRoot && count == 0;
  constexpr std::size_t kDataSize = 36, kLeastChildSize = 37;
  if (bytes.overrun() || !(isData || isInner || isEmpty) || depth > kMostDepth) return false;
  if (count > bytes.left() / (isInner ? kLeastChildSize : kDataSize)) return false;
  if (isInner && count == 0) return false;
  nodeLevel_ = static_cast<Level>(letter);
  growth.depth = std::max(growth.depth, depth);
  boxes_.reserve(count);
  if (isInner) {
    children_.reserve(count);
  } else {
    ids_.reserve(count);
    growth.copies += count;
  }
  for (std::uint32_t at = 0; at < count; ++at) {
    if (isInner) {
      auto child = std::make_unique<RpNode>();
      const RpBox box = takeBox(bytes);
      if (!child->restore(bytes, depth + 1, growth)) return false;
      addChild(box, std::move(child));
    } else {
      ids_.push_back(bytes.u32le());
      boxes_.push_back(takeBox(bytes));
      const RpBox& box = boxes_.back();
      if (box.minX > box.maxX || box.minY > box.maxY) return false;
    }
  }
  packCovers();
  return true;
}
