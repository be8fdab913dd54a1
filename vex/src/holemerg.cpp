#include "vex/src/holemerg.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "vex/rptree/rptree.h"

namespace {

constexpr std::size_t kMostUnfiltered = 100;

// An edge of a hole as it runs when the hole lies on its left.
struct Edge {
  std::uint32_t from = 0, to = 0;  // vertices, equal where coordinates are
  std::uint32_t hole = 0;
  std::uint32_t at = 0, end = 0;  // the coordinates that these are
  bool isGone = false;
  std::uint32_t least() const { return std::min(from, to); }
  std::uint32_t most() const { return std::max(from, to); }
};

class HoleMerger {
 public:
  explicit HoleMerger(std::vector<VEXLine>& holes)
      : holes_(holes), group_(holes.size()), mayMerge_(holes.size(), true) {
    std::iota(group_.begin(), group_.end(), 0u);
  }

  void run() {
    collectEdges(candidates());
    if (!cancel()) return;
    std::vector<std::vector<std::uint32_t>> edgesOf(holes_.size());
    std::vector<std::uint32_t> numHoles(holes_.size(), 0);
    for (std::uint32_t hole = 0; hole < holes_.size(); ++hole) {
      const std::uint32_t first = groupOf(hole);
      ++numHoles[first];
      if (!mayMerge_[hole]) mayMerge_[first] = false;
    }
    for (std::uint32_t at = 0; at < edges_.size(); ++at) {
      if (!edges_[at].isGone) edgesOf[groupOf(edges_[at].hole)].push_back(at);
    }
    std::vector<VEXLine> merged;
    std::vector<bool> isMerged(holes_.size(), false);
    for (std::uint32_t hole = 0; hole < holes_.size(); ++hole) {
      const std::uint32_t first = groupOf(hole);
      if (isMerged[first]) continue;  // its ring stands where the first hole was
      std::vector<VEXLine> rings;
      if (first == hole && numHoles[hole] > 1 && mayMerge_[hole] && joinEdges(edgesOf[hole], rings)) {
        isMerged[hole] = true;
        for (VEXLine& ring : rings) merged.push_back(std::move(ring));
      } else {
        merged.push_back(std::move(holes_[hole]));
      }
    }
    holes_ = std::move(merged);
  }

 private:
  // The first hole of those joined so far.
  std::uint32_t groupOf(std::uint32_t hole) {
    while (group_[hole] != hole) hole = group_[hole] = group_[group_[hole]];
    return hole;
  }

  // Holes whose boxes meet another's; a few holes are not worth the search.
  std::vector<std::uint32_t> candidates() const {
    std::vector<std::uint32_t> chosen;
    std::vector<RpEntry> boxes;
    for (std::uint32_t hole = 0; hole < holes_.size(); ++hole) {
      const VEXBox box = boxOf(holes_[hole].xs(), holes_[hole].ys());
      boxes.push_back({RpBox::of(box), hole});
    }
    RpTree tree;
    if (holes_.size() > kMostUnfiltered) tree.bulkLoad(boxes);
    RpHits hits;
    for (const RpEntry& entry : boxes) {
      if (holes_.size() > kMostUnfiltered) {
        tree.searchIntersecting(entry.box, hits);
        if (hits.size() < 2) continue;
      }
      chosen.push_back(entry.id);
    }
    return chosen;
  }

  void collectEdges(const std::vector<std::uint32_t>& chosen) {
    struct Spot {
      double x, y;
      std::uint32_t hole, at;
    };
    std::vector<Spot> spots;
    for (const std::uint32_t hole : chosen) {
      const VEXOrdinates xs = holes_[hole].xs(), ys = holes_[hole].ys();
      const auto isNumber = [](double value) { return std::isfinite(value); };
      if (xs.size() < 4 || !holes_[hole].isClosed() || !std::all_of(xs.begin(), xs.end(), isNumber) ||
          !std::all_of(ys.begin(), ys.end(), isNumber)) {
        continue;
      }
      for (std::uint32_t at = 0; at < xs.size(); ++at) spots.push_back({xs[at], ys[at], hole, at});
    }
    std::sort(spots.begin(), spots.end(), [](const Spot& one, const Spot& other) {
      if (one.x != other.x) return one.x < other.x;
      if (one.y != other.y) return one.y < other.y;
      return one.hole != other.hole ? one.hole < other.hole : one.at < other.at;
    });
    std::vector<std::vector<std::uint32_t>> vertices(holes_.size());
    std::uint32_t vertex = 0;
    for (std::size_t i = 0; i < spots.size(); ++i) {
      if (i > 0 && (spots[i].x != spots[i - 1].x || spots[i].y != spots[i - 1].y)) ++vertex;
      std::vector<std::uint32_t>& own = vertices[spots[i].hole];
      own.resize(holes_[spots[i].hole].numCoords());
      own[spots[i].at] = vertex;
    }
    for (std::uint32_t hole = 0; hole < holes_.size(); ++hole) {
      const std::vector<std::uint32_t>& own = vertices[hole];
      if (own.empty()) continue;
      const bool isClockwise = isRingClockwise(holes_[hole].xs(), holes_[hole].ys());
      for (std::uint32_t at = 0; at + 1 < own.size(); ++at) {
        if (own[at] == own[at + 1]) continue;
        if (isClockwise) {
          edges_.push_back({own[at + 1], own[at], hole, at + 1, at});
        } else {
          edges_.push_back({own[at], own[at + 1], hole, at, at + 1});
        }
      }
    }
  }

  // Takes out the edges that two holes have in common. False: there is none.
  bool cancel() {
    std::vector<std::uint32_t> order(edges_.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(), [this](std::uint32_t one, std::uint32_t other) {
      const Edge &a = edges_[one], &b = edges_[other];
      if (a.least() != b.least()) return a.least() < b.least();
      return a.most() != b.most() ? a.most() < b.most() : one < other;
    });
    bool any = false;
    for (std::size_t start = 0, end = 0; start < order.size(); start = end) {
      const Edge& first = edges_[order[start]];
      for (end = start + 1; end < order.size(); ++end) {
        if (edges_[order[end]].least() != first.least() || edges_[order[end]].most() != first.most()) break;
      }
      if (end == start + 1) continue;
      Edge& one = edges_[order[start]];
      Edge& other = edges_[order[start + 1]];
      if (end - start > 2 || one.from != other.to || one.hole == other.hole) {
        for (std::size_t at = start; at < end; ++at) mayMerge_[edges_[order[at]].hole] = false;
        continue;
      }
      one.isGone = other.isGone = any = true;
      const std::uint32_t a = groupOf(one.hole), b = groupOf(other.hole);
      group_[std::max(a, b)] = std::min(a, b);
    }
    return any;
  }

  // Rings out of edges, turning left as sharply as possible where they meet. False: some ring runs the wrong way or
  // does not close.
  bool joinEdges(std::vector<std::uint32_t>& edges, std::vector<VEXLine>& rings) {
    std::sort(edges.begin(), edges.end(), [this](std::uint32_t one, std::uint32_t other) {
      return edges_[one].from != edges_[other].from ? edges_[one].from < edges_[other].from : one < other;
    });
    std::vector<bool> isUsed(edges.size(), false);
    for (std::size_t start = 0; start < edges.size(); ++start) {
      if (isUsed[start]) continue;
      std::vector<double> x, y, z;
      bool hasZ = false;
      std::size_t at = start;
      while (true) {
        isUsed[at] = true;
        const Edge& edge = edges_[edges[at]];
        const VEXPoint point = pointOf(edge);
        hasZ = hasZ || point.z == point.z;
        x.push_back(point.x);
        y.push_back(point.y);
        z.push_back(point.z);
        if (edge.to == edges_[edges[start]].from) break;
        at = nextOf(edge, edges, isUsed);
        if (at == edges.size()) return false;
      }
      x.push_back(x.front());
      y.push_back(y.front());
      z.push_back(z.front());
      if (!(signedRingArea(x, y) > 0.0)) return false;
      if (hasZ) {
        for (double& height : z) height = height == height ? height : 0.0;
        rings.emplace_back(std::move(x), std::move(y), std::move(z), VEX_GEOM_POLYGON);
      } else {
        rings.emplace_back(std::move(x), std::move(y), VEX_GEOM_POLYGON);
      }
    }
    return true;
  }

  std::size_t nextOf(const Edge& edge, const std::vector<std::uint32_t>& edges, const std::vector<bool>& isUsed) const {
    const auto found =
        std::lower_bound(edges.begin(), edges.end(), edge.to,
                         [this](std::uint32_t one, std::uint32_t from) { return edges_[one].from < from; });
    std::size_t best = edges.size();
    double bestTurn = 0.0;
    const VEXPoint a = pointOf(edge);
    for (auto at = static_cast<std::size_t>(found - edges.begin());
         at < edges.size() && edges_[edges[at]].from == edge.to; ++at) {
      if (isUsed[at]) continue;
      const Edge& next = edges_[edges[at]];
      const VEXPoint b = pointOf(next), c = endOf(next);
      const double dx = b.x - a.x, dy = b.y - a.y, ex = c.x - b.x, ey = c.y - b.y;
      const double turn = std::atan2(dx * ey - dy * ex, dx * ex + dy * ey);
      if (best != edges.size() && !(turn > bestTurn)) continue;
      best = at;
      bestTurn = turn;
    }
    return best;
  }

  VEXPoint pointOf(const Edge& edge) const { return holes_[edge.hole].point(edge.at); }
  VEXPoint endOf(const Edge& edge) const { return holes_[edge.hole].point(edge.end); }

  std::vector<VEXLine>& holes_;
  std::vector<std::uint32_t> group_;
  std::vector<bool> mayMerge_;
  std::vector<Edge> edges_;
};

}  // namespace

void mergeTouchingHoles(std::vector<VEXLine>& holes) {
  if (holes.size() > 1) HoleMerger(holes).run();
}
