#include "vex/rptree/rptree.h"

namespace {

void finish(RpHits& hits) {
  std::sort(hits.begin(), hits.end());
  hits.erase(std::unique(hits.begin(), hits.end()), hits.end());
}

}  // namespace

void RpTree::insert(RpBox box, std::uint32_t id) {
  if (box.minX > box.maxX) std::swap(box.minX, box.maxX);
  if (box.minY > box.maxY) std::swap(box.minY, box.maxY);
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

void RpTree::searchPoint(double x, double y, RpHits& hits) const {
  searchIntersecting({x, y, x, y}, hits);
}

void RpTree::searchTouching(const RpBox& box, RpHits& hits) const {
  hits.clear();
  const auto meetsOutline = [&](const RpBox& found) {
    return !(found.minX > box.minX && found.minY > box.minY && found.maxX < box.maxX && found.maxY < box.maxY);
  };
  root_->search(box, meetsOutline, hits);
  if (wide_ != nullptr) wide_->search(box, meetsOutline, hits);
  finish(hits);
}

void RpTree::searchContained(const RpBox& box, RpHits& hits) const {
  hits.clear();
  const auto liesInside = [&](const RpBox& found) { return box.encloses(found); };
  root_->search(box, liesInside, hits);
  if (wide_ != nullptr) wide_->search(box, liesInside, hits);
  finish(hits);
}

void RpTree::searchIntersecting(const RpBox& box, RpHits& hits) const {
  hits.clear();
  const auto any = [](const RpBox&) { return true; };
  root_->search(box, any, hits);
  if (wide_ != nullptr) wide_->search(box, any, hits);
  finish(hits);
}

void RpTree::save(std::string& bytes) const {
  if (wide_ == nullptr) {
    root_->save(bytes);
  } else {
    root_->saveWithLeaf(bytes, *wide_);
  }
}

bool RpTree::restore(VEXByteCursor& bytes) {
  *this = RpTree();
  auto root = std::make_unique<RpNode>(RpNode::DataRoot);
  RpGrowth growth;
  if (!root->restore(bytes, 1, growth)) return false;
  growth.inserted = growth.copies;
  // A root that gets its children one by one takes its level from them; a restored one has it from the bytes.
  root_ = std::move(root);
  growth_ = growth;
  hasGaps_ = !root_->holdsData();
  return true;
}
