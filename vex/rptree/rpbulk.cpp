// The nodes of a bulk-loaded tree: the entries are cut in two, again and again, at the median of their lows on the axis
// where fewer straddle, until each part fills a leaf. The parts lie in one array; what straddles is put into the second
// part, too, over the end of the first, which is a leaf by then.
#include <cmath>
#include <span>

#include "vex/rptree/rptree.h"

namespace {

constexpr std::size_t kFill = 78;     // entries that a leaf is planned for: cuts below its node still add copies
constexpr std::size_t kFanOut = 49;   // children that a node is planned for: each may become two
constexpr std::size_t kSample = 512;  // lows that a median is taken of
constexpr int kMostCuts = 60;         // one after the other
using Entries = std::span<RpEntry>;

class BulkLoader {
 public:
  BulkLoader(std::vector<RpEntry>& entries, RpGrowth& growth) : entries_(entries), growth_(growth) {}

  std::unique_ptr<RpNode> load() {
    const RpBox everywhere = {-kFar, -kFar, kFar, kFar};
    return node(entries_, everywhere, 1, 0, entries_.size());
  }

 private:
  static constexpr double kFar = std::numeric_limits<double>::infinity();
  struct Cut {
    int axis = -1;
    double at = 0.0;
    std::size_t straddling = 0;
  };

  // `spare`: the copies that cuts below may make.
  std::unique_ptr<RpNode> node(Entries part, const RpBox& region, int depth, int cuts, std::size_t spare) {
    growth_.depth = std::max(growth_.depth, depth);
    const bool isRoot = depth == 1;
    if (part.size() < RpNode::kCapacity || depth >= RpNode::kMostDepth) return leaf(part, isRoot);
    const double numLeaves = std::ceil(static_cast<double>(part.size()) / kFill);
    const double height = std::max(1.0, std::ceil(std::log(numLeaves) / std::log(kFanOut) - 1e-9));
    const double wanted = std::clamp(std::ceil(std::pow(numLeaves, 1.0 / height)), 2.0, double{kFanOut});
    auto made = std::make_unique<RpNode>(isRoot ? RpNode::DataRoot : RpNode::Undetermined);
    if (!divide(*made, part, region, static_cast<std::size_t>(wanted), depth, cuts, spare)) return leaf(part, isRoot);
    made->packCovers();
    return made;
  }

  // Cuts the part into `wanted` children of the node, or up to twice as many unless `isLast`. False: there is no cut,
  // and nothing has happened.
  bool divide(RpNode& parent, Entries part, const RpBox& region, std::size_t wanted, int depth, int cuts,
              std::size_t spare, bool isLast = false) {
    const std::size_t lowWanted = wanted / 2;
    Cut cut;
    if (cuts < kMostCuts) cut = findCut(part, static_cast<double>(lowWanted) / static_cast<double>(wanted), spare);
    if (cut.axis < 0) return false;
    spare -= cut.straddling;
    growth_.copies += cut.straddling;

    // Low only, then straddling, then high only.
    std::size_t low = 0, high = part.size();
    for (std::size_t at = 0; at < high;) {
      const RpBox& box = part[at].box;
      if (box.low(cut.axis) >= cut.at) {
        std::swap(part[at], part[--high]);
      } else {
        // what cannot be compared is low
        if (!(box.low(cut.axis) < cut.at && box.high(cut.axis) > cut.at)) std::swap(part[at], part[low++]);
        ++at;
      }
    }
    const std::vector<RpEntry> straddling(part.begin() + low, part.begin() + high);
    RpBox lowRegion = region, highRegion = region;
    lowRegion.setHigh(cut.axis, cut.at);
    highRegion.setLow(cut.axis, cut.at);
    const std::size_t numLow = high, numHigh = part.size() - low;
    const std::size_t lowSpare =
        static_cast<std::size_t>(static_cast<double>(spare) * static_cast<double>(numLow) / (numLow + numHigh));
    side(parent, part.first(high), lowRegion, lowWanted, depth, cuts + 1, std::min(lowSpare, spare), isLast);
    std::copy(straddling.begin(), straddling.end(), part.begin() + low);
    side(parent, part.subspan(low), highRegion, wanted - lowWanted, depth, cuts + 1, spare - std::min(lowSpare, spare),
         isLast);
    return true;
  }

  void side(RpNode& parent, Entries part, const RpBox& region, std::size_t wanted, int depth, int cuts,
            std::size_t spare, bool isLast) {
    // Copies have made a part too full for one leaf: its node has room for two.
    if (wanted == 1 && !isLast && part.size() >= RpNode::kCapacity && part.size() < 2 * kFill) {
      if (divide(parent, part, region, 2, depth, cuts, spare, true)) return;
    } else if (wanted > 1 && divide(parent, part, region, wanted, depth, cuts, spare)) {
      return;
    }
    std::unique_ptr<RpNode> child = node(part, region, depth + 1, cuts, spare);
    const RpBox cover = coverOf(*child, region);
    parent.addChild(cover, std::move(child));
  }

  // What the entries of a node cover of its region.
  static RpBox coverOf(const RpNode& child, const RpBox& region) {
    RpBox cover = RpBox::nothing();
    for (const RpBox& box : child.boxes()) {
      cover.add({std::max(box.minX, region.minX), std::max(box.minY, region.minY), std::min(box.maxX, region.maxX),
                 std::min(box.maxY, region.maxY)});
    }
    return cover;
  }

  // The cheaper cut of the two axes. On each: at the low with this share of the lows below it, or else the next low
  // above that, or the high at this share.
  Cut findCut(Entries part, double share, std::size_t spare) {
    Cut best;
    best.straddling = std::min(part.size() / 3, spare) + 1;
    for (int axis = 0; axis < 2; ++axis) {
      const std::size_t step = part.size() / kSample + 1;
      lows_.clear();
      highs_.clear();
      for (std::size_t at = 0; at < part.size(); at += step) {
        const double low = part[at].box.low(axis), high = part[at].box.high(axis);
        if (!(low <= high)) continue;
        lows_.push_back(low);
        highs_.push_back(high);
      }
      if (lows_.empty()) continue;
      const auto place = static_cast<std::ptrdiff_t>(share * static_cast<double>(lows_.size()));
      std::nth_element(lows_.begin(), lows_.begin() + place, lows_.end());
      if (tryCut(part, axis, lows_[place], best)) continue;
      double next = kFar;
      for (const RpEntry& entry : part) {
        const double low = entry.box.low(axis);
        if (low > lows_[place] && low < next) next = low;
      }
      if (tryCut(part, axis, next, best)) continue;
      std::nth_element(highs_.begin(), highs_.begin() + place, highs_.end());
      tryCut(part, axis, highs_[place], best);
    }
    return best;
  }

  // Keeps the cut when it costs less than the best one. False: it leaves everything on one side.
  static bool tryCut(Entries part, int axis, double at, Cut& best) {
    std::size_t right = 0, straddling = 0;
    for (const RpEntry& entry : part) {
      const double low = entry.box.low(axis);
      right += low >= at ? 1 : 0;
      straddling += std::size_t{low < at} & std::size_t{entry.box.high(axis) > at};
    }
    const std::size_t left = part.size() - right;
    if (right == 0 || left == straddling) return false;
    if (straddling < best.straddling) best = {axis, at, straddling};
    return true;
  }

  // In strips along x, each along y, so that the runs of entries under one cover lie together.
  std::unique_ptr<RpNode> leaf(Entries part, bool isRoot) {
    constexpr std::size_t kRun = 8;
    const auto byAxis = [](int axis) {
      return [axis](const RpEntry& one, const RpEntry& other) { return place(one.box, axis) < place(other.box, axis); };
    };
    const std::size_t numRuns = (part.size() + kRun - 1) / kRun;
    const std::size_t strip = kRun * static_cast<std::size_t>(std::ceil(std::sqrt(static_cast<double>(numRuns))));
    if (part.size() > 2 * kRun) {
      std::sort(part.begin(), part.end(), byAxis(0));
      for (std::size_t first = 0; first < part.size(); first += strip) {
        std::sort(part.begin() + first, part.begin() + std::min(first + strip, part.size()), byAxis(1));
      }
    }
    auto made = std::make_unique<RpNode>(isRoot ? RpNode::DataRoot : RpNode::Leaf);
    made->reserve(part.size());
    for (const RpEntry& entry : part) made->addData(entry.box, entry.id);
    made->packCovers();
    return made;
  }

  static double place(const RpBox& box, int axis) {
    const double middle = box.low(axis) * 0.5 + box.high(axis) * 0.5;
    return middle == middle ? middle : kFar;
  }

  std::vector<RpEntry>& entries_;
  RpGrowth& growth_;
  std::vector<double> lows_, highs_;
};

}  // namespace

void RpTree::bulkLoad(std::vector<RpEntry> entries) {
  *this = RpTree();
  for (RpEntry& entry : entries) {
    if (entry.box.minX > entry.box.maxX) std::swap(entry.box.minX, entry.box.maxX);
    if (entry.box.minY > entry.box.maxY) std::swap(entry.box.minY, entry.box.maxY);
  }
  growth_.inserted = growth_.copies = entries.size();
  root_.reset();
  packed_ = std::make_unique<RpPacked>(entries);
}

std::unique_ptr<RpNode> RpTree::makeNodes(RpGrowth& growth) const {
  std::vector<RpEntry> entries(packed_->numEntries());
  for (std::size_t at = 0; at < entries.size(); ++at) entries[at] = packed_->entry(at);
  return BulkLoader(entries, growth).load();
}
