#include "vex/rptree/rptree.h"

#include <algorithm>

void RpTree::insert(RpBox box, std::uint32_t id) {
  if (box.minX > box.maxX) std::swap(box.minX, box.maxX);
  if (box.minY > box.maxY) std::swap(box.minY, box.maxY);
  if (packed_ != nullptr) {
    hasGaps_ = !root().holdsData();
    packed_.reset();
  }
  ++growth_.inserted;
  if (!growth_.mayCopy() && root_->countLeaves(box, 2) > 1) {
    if (wide_ == nullptr) wide_ = std::make_unique<RpNode>(RpNode::Leaf);
    wide_->addData(box, id);
    return;
  }
  std::vector<RpNode*> leaves;
  if (hasGaps_) {
    leaves.push_back(root_->growOneLeaf(box));
  } else {
    RpBox region = root_->holdsData() ? RpBox::nothing() : root_->myCoverage();
    region.add(box);
    root_->findLeaves(box, region, leaves);
  }
  growth_.copies += leaves.size();
  for (RpNode* leaf : leaves) leaf->addData(box, id);
  for (RpNode* leaf : leaves) leaf->selfSplit(growth_);
}

const RpNode& RpTree::root() const {
  if (root_ == nullptr) root_ = makeNodes(growth_);
  return *root_;
}

template <class Test>
void RpTree::search(const RpBox& box, const Test& test, RpHits& hits) const {
  hits.clear();
  if (packed_ != nullptr) {
    packed_->search(box, test, hits);
  } else {
    root_->search(box, test, hits);
    if (wide_ != nullptr) wide_->search(box, test, hits);
  }
  std::sort(hits.begin(), hits.end());
  hits.erase(std::unique(hits.begin(), hits.end()), hits.end());
}

void RpTree::searchPoint(double x, double y, RpHits& hits) const {
  searchIntersecting({x, y, x, y}, hits);
}

void RpTree::searchTouching(const RpBox& box, RpHits& hits) const {
  const auto meetsOutline = [&](const RpBox& found) {
    return !((found.minX > box.minX) & (found.minY > box.minY) & (found.maxX < box.maxX) & (found.maxY < box.maxY));
  };
  search(box, meetsOutline, hits);
}

void RpTree::searchContained(const RpBox& box, RpHits& hits) const {
  search(
      box, [&](const RpBox& found) { return box.encloses(found); }, hits);
}

void RpTree::searchIntersecting(const RpBox& box, RpHits& hits) const {
  search(
      box, [](const RpBox&) { return true; }, hits);
}

void RpTree::save(std::string& bytes) const {
  if (wide_ != nullptr) {
    root_->saveWithLeaf(bytes, *wide_);
  } else if (root_ != nullptr) {
    root_->save(bytes);
  } else {
    RpGrowth growth = growth_;
    makeNodes(growth)->save(bytes);
  }
}

bool RpTree::restore(VEXByteCursor& bytes) {
  *this = RpTree();
  auto root = std::make_unique<RpNode>(RpNode::DataRoot);
  RpGrowth growth;
  if (!root->restore(bytes, 1, growth)) return false;
  growth.inserted = growth.copies;
  root_ = std::move(root);
  growth_ = growth;
  hasGaps_ = !root_->holdsData();
  return true;
}
