// ConvexHullFactory: makes the convex hull of the features of each group, at the end of input. What is held in memory
// of a group is the points that its hull may have; its features are held on disk when they are to go out.
#include "vex/factory/factory.h"
#include "vex/factory/groupspl.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{861510, 861511, 861512};
constexpr std::uint32_t kSecondGroupBy = 861514;
constexpr std::uint32_t kHull = 861515;
constexpr std::uint32_t kNoHull = 861516;
constexpr std::uint32_t kDamaged = 861517;
constexpr std::uint32_t kSummary = 861518;
constexpr std::size_t kMostPoints = 4096;  // gathered before they are cut down to their hull

class ConvexHullFactory final : public VEXFactory {
 public:
  ConvexHullFactory();

  VEXStatus flush(const std::string&) override {
    VEX_TRY(held_.startReading());
    for (std::size_t group = 0; group < hulls_.size(); ++group) {
      held_.enterGroup(group);
      VEX_TRY(putOutHull(hulls_[group], held_.groups().where(group)));
      for (VEXFeaturePtr member;;) {
        VEX_TRY(held_.nextMember(member));
        if (member == nullptr) break;
        VEX_TRY(output("ORIGINAL", member));
      }
    }
    hulls_.clear();
    held_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    VEX_TRY(flush(std::string()));
    log(VEXSeverity::Stats, kSummary,
        {"Enclosed " + countText(numIn_, "input feature") + " in " + countText(numHulls_, "convex hull")});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<ConvexHullFactory> kClauses[];

  struct Hull {
    VEXFeaturePtr first;  // of the group, without its coordinates
    std::vector<double> x, y, z;
    bool hasZ = false;
    std::int64_t numFeatures = 0;
    std::size_t limit = kMostPoints;

    // Until there is a third dimension z is not kept; a missing one is 0 then.
    void add(const VEXLine& line, const VEXLineRange& range) {
      if (line.hasZ() && !hasZ) {
        hasZ = true;
        z.assign(x.size(), 0.0);
      }
      const VEXOrdinates xs = line.xs().subspan(range.first, range.count),
                         ys = line.ys().subspan(range.first, range.count);
      x.insert(x.end(), xs.begin(), xs.end());
      y.insert(y.end(), ys.begin(), ys.end());
      if (!hasZ) return;
      for (std::size_t at = 0; at < range.count; ++at) z.push_back(line.hasZ() ? line.zs()[range.first + at] : 0.0);
    }
    void keep(const std::vector<std::size_t>& chosen) {
      for (std::vector<double>* values : {&x, &y, &z}) {
        if (values->empty()) continue;
        std::vector<double> kept;
        for (const std::size_t at : chosen) kept.push_back((*values)[at]);
        values->swap(kept);
      }
    }
  };

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }
  VEXStatus parseGroupBy(const VEXClauseWords& clause) {
    return extendStatus(held_.groups().parse(clause, kSecondGroupBy));
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    ++numIn_;
    const std::size_t group = held_.groups().indexOf(*feature);
    if (group >= hulls_.size()) hulls_.resize(group + 1);
    Hull& hull = hulls_[group];
    ++hull.numFeatures;
    const VEXLine line = VEXLine::viewOf(*feature);
    std::vector<VEXLineRange> parts;
    if (VEXStatus failure = line.leaves(parts)) {
      log(VEXSeverity::Warn, kDamaged, {feature->featureType(), failure->message()});
      parts.clear();
    }
    for (const VEXLineRange& part : parts) hull.add(line, part);
    if (hull.x.size() > hull.limit) {
      hull.keep(hullIndices(hull.x, hull.y));
      hull.limit = std::max(kMostPoints, 2 * hull.x.size());
    }
    if (hull.first == nullptr) {
      hull.first = feature->clone();
      hull.first->resetCoords();
    }
    if (hasOutput("ORIGINAL")) return extendStatus(held_.add(feature, group));
    feature.reset();
    return nullptr;
  }

  VEXStatus putOutHull(Hull& hull, const std::string& where) {
    VEXLine gathered = hull.hasZ ? VEXLine(std::move(hull.x), std::move(hull.y), std::move(hull.z), VEX_GEOM_LINE)
                                 : VEXLine(std::move(hull.x), std::move(hull.y), VEX_GEOM_LINE);
    const std::string told = where.empty() ? std::string() : " where " + where;
    if (gathered.numCoords() == 1) gathered.setGeomType(VEX_GEOM_POINT);
    VEXLine line;
    VEXStatus failure = gathered.convexHull(line);
    if (failure != nullptr || line.numCoords() == 0) {
      log(VEXSeverity::Warn, kNoHull, {countText(hull.numFeatures, "feature"), told});
      return nullptr;
    }
    log(VEXSeverity::Inform, kHull, {countText(hull.numFeatures, "feature"), told});
    ++numHulls_;
    hull.first->loadFromLine(std::move(line));
    return extendStatus(output("CONVEX_HULL", hull.first));
  }

  VEXGroupSpool held_;
  std::vector<Hull> hulls_;  // by number of group
  std::int64_t numIn_ = 0;
  std::int64_t numHulls_ = 0;
};

const VEXClause<ConvexHullFactory> ConvexHullFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 861509, &ConvexHullFactory::parseOutput},
    {"GROUP_BY", atLeast(1), 861513, &ConvexHullFactory::parseGroupBy},
};

ConvexHullFactory::ConvexHullFactory() : VEXFactory("ConvexHullFactory") {
  useClauses(kClauses);
  addOutputTags({"CONVEX_HULL", "ORIGINAL"});
}

}  // namespace

VEX_FACTORY_MAKER(fctcnvhl, ConvexHullFactory)
