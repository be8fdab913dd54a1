// DonutHoleFactory: takes donuts apart into their outer shell and their holes.
#include "vex/factory/factory.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"

namespace {

constexpr VEXOutputFaults kOutputFaults{43003, 43004, 43005};
constexpr std::uint32_t kSummary = 43001;

class DonutHoleFactory final : public VEXFactory {
 public:
  DonutHoleFactory();

  VEXStatus allDone() override {
    log(VEXSeverity::Stats, kSummary,
        {"Split " + countText(numHoles_, "hole") + " from " + countText(numIn_, "input feature")});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<DonutHoleFactory> kClauses[];

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }

  VEXStatus process(VEXFeaturePtr& feature) override {
    ++numIn_;
    if (feature->geomType() != VEX_GEOM_DONUT) return extendStatus(output("OUTERSHELL", feature));
    const VEXLine donut = feature->takeLine();
    std::vector<VEXLineRange> rings;
    donut.rings(rings);
    VEXFeatureVector parts;
    for (const VEXLineRange& ring : rings) {
      VEXFeaturePtr part = feature->clone();
      part->loadFromLine(VEXLine::viewOf(donut, ring.first, ring.first + ring.count - 1, VEX_GEOM_POLYGON).clone());
      parts.push_back(std::move(part));
    }
    feature.reset();
    for (std::size_t at = 0; at < parts.size(); ++at) {
      if (at > 0) ++numHoles_;
      VEX_TRY(output(at == 0 ? "OUTERSHELL" : "HOLE", parts[at]));
    }
    return nullptr;
  }

  std::int64_t numIn_ = 0;
  std::int64_t numHoles_ = 0;
};

const VEXClause<DonutHoleFactory> DonutHoleFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 43002, &DonutHoleFactory::parseOutput},
};

DonutHoleFactory::DonutHoleFactory() : VEXFactory("DonutHoleFactory") {
  useClauses(kClauses);
  addOutputTags({"OUTERSHELL", "HOLE"});
}

}  // namespace

VEX_FACTORY_MAKER(fctdnhol, DonutHoleFactory)
