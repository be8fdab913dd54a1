// BoundingBoxFactory: makes a rectangle around the features of each group, at the end of input.
#include "vex/factory/factory.h"
#include "vex/factory/featsort.h"
#include "vex/factory/grouptab.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kSecondGroupBy = 352505;
constexpr std::uint32_t kBoxMade = 352515;
constexpr std::uint32_t kNoCoordinates = 352516;
constexpr std::uint32_t kSummary = 352517;
constexpr std::uint32_t kNotMeasured = 352518;

class BoundingBoxFactory final : public VEXFactory {
 public:
  BoundingBoxFactory();

  VEXStatus flush(const std::string&) override {
    for (std::size_t group = 0; group < extents_.size(); ++group) VEX_TRY(putOutBox(group));
    extents_.clear();
    groups_.clear();
    VEX_TRY(originals_.startReading());
    for (VEXFeaturePtr feature;;) {
      VEX_TRY(originals_.next(feature));
      if (feature == nullptr) break;
      VEX_TRY(output("ORIGINAL", feature));
    }
    originals_.clear();
    return nullptr;
  }

  VEXStatus allDone() override {
    VEX_TRY(flush(std::string()));
    log(VEXSeverity::Stats, kSummary,
        {"Enclosed " + countText(numIn_, "input feature") + " in " +
         (numBoxes_ == 1 ? std::string("1 bounding box") : integerText(numBoxes_) + " bounding boxes")});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<BoundingBoxFactory> kClauses[];

  struct Extent {
    VEXBox box;
    std::string featureType;
    std::string coordSys;
    std::int64_t numFeatures = 0;
  };

  VEXStatus parseGroupBy(const VEXClauseWords& clause) { return extendStatus(groups_.parse(clause, kSecondGroupBy)); }

  VEXStatus process(VEXFeaturePtr& feature) override {
    ++numIn_;
    const std::size_t group = groups_.indexOf(*feature);
    if (group == extents_.size()) extents_.push_back({{}, feature->featureType(), feature->coordSys()});
    Extent& extent = extents_[group];
    ++extent.numFeatures;
    VEXBox box;
    if (VEXStatus failure = feature->boundingBox(box))
      log(VEXSeverity::Warn, kNotMeasured, {feature->featureType(), failure->message()});
    else if (!box.isEmpty())
      extent.box.add(box);
    if (hasOutput("ORIGINAL")) VEX_TRY(originals_.add(*feature, {}));
    feature.reset();
    return nullptr;
  }

  VEXStatus putOutBox(std::size_t group) {
    const Extent& extent = extents_[group];
    const std::string counted = countText(extent.numFeatures, "feature");
    const std::string where = groups_.hasFields() ? " where " + groups_.where(group) : std::string();
    if (extent.box.isEmpty()) {
      log(VEXSeverity::Warn, kNoCoordinates, {counted, where});
      return nullptr;
    }
    log(VEXSeverity::Inform, kBoxMade, {counted, where});
    VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature(2, 0);
    feature->setFeatureType(extent.featureType);
    feature->setCoordSys(extent.coordSys);
    groups_.setValues(group, *feature);
    feature->loadFromLine(VEXLine::fromBox(extent.box));
    ++numBoxes_;
    return extendStatus(output("BOUNDING_BOX", feature));
  }

  VEXGroupTable groups_;
  std::vector<Extent> extents_;  // by number of group
  VEXFeatureSorter originals_;   // under equal keys: in the order of arrival
  std::int64_t numIn_ = 0;
  std::int64_t numBoxes_ = 0;
};

const VEXClause<BoundingBoxFactory> BoundingBoxFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"GROUP_BY", atLeast(1), 352504, &BoundingBoxFactory::parseGroupBy},
};

BoundingBoxFactory::BoundingBoxFactory() : VEXFactory("BoundingBoxFactory") {
  useClauses(kClauses);
  addOutputTags({"BOUNDING_BOX", "ORIGINAL"});
}

}  // namespace

VEX_FACTORY_MAKER(fctbbox, BoundingBoxFactory)
