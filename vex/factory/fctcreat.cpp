// CreationFactory: makes features from nothing, before the first feature passes or at the end of input. Features
// that come in go on unchanged.
#include <algorithm>

#include "vex/factory/factory.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kBadOutput = 50022;
constexpr std::uint32_t kSummary = 50024;
constexpr std::uint32_t kBad2dNumber = 50026;
constexpr std::uint32_t kBad3dNumber = 50028;
constexpr std::uint32_t kBadCount = 50031;
constexpr std::uint32_t kTwoGeometries = 50032;

constexpr std::size_t kLeastRing = 4;  // coordinates of the smallest closed ring

class CreationFactory final : public VEXFactory {
 public:
  CreationFactory();

  VEXStatus allDone() override {
    if (createsAtEnd_) VEX_TRY(createAll());
    log(VEXSeverity::Stats, kSummary, {integerText(numCreated_)});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<CreationFactory> kClauses[];

  VEXStatus parse2d(const VEXClauseWords& clause) { return extendStatus(parseGeometry(clause, 2, kBad2dNumber)); }
  VEXStatus parse3d(const VEXClauseWords& clause) { return extendStatus(parseGeometry(clause, 3, kBad3dNumber)); }
  VEXStatus parseGeometry(const VEXClauseWords& clause, std::size_t dimension, std::uint32_t onNumber) {
    if (dimension_ != 0) return makeStatus(kTwoGeometries, {clause.lineText(), clause.clauseText()});
    dimension_ = dimension;
    ordinates_.resize(clause.count());
    for (std::size_t at = 0; at < clause.count(); ++at)
      if (!textToReal(clause.word(at), ordinates_[at]))
        return makeStatus(onNumber, {clause.word(at), clause.lineText(), clause.clauseText()});
    return nullptr;
  }
  VEXStatus parseNumber(const VEXClauseWords& clause) {
    if (!textToInteger(clause.word(0), numToCreate_) || numToCreate_ < 0)
      return makeStatus(kBadCount, {clause.word(0), clause.lineText(), clause.clauseText()});
    return nullptr;
  }
  VEXStatus parseCoordSys(const VEXClauseWords& clause) {
    coordSys_ = clause.word(0);
    return nullptr;
  }
  VEXStatus parseAtEnd(const VEXClauseWords&) {
    createsAtEnd_ = true;
    return nullptr;
  }
  VEXStatus parseOutput(const VEXClauseWords& clause) {
    const std::size_t first = clause.word(0) == "CREATED" ? 1 : 0;  // the tag may stand there: there is no other
    if (clause.count() < first + 2 || clause.word(first) != "FEATURE_TYPE")
      return makeStatus(kBadOutput, {clause.keyword(), clause.lineText(), clause.clauseText()});
    outputs_.push_back(std::make_unique<VEXFeatureSpec>());
    return extendStatus(clause.parseSpec(first + 1, *outputs_.back()));
  }

  VEXStatus start() override { return createsAtEnd_ ? nullptr : extendStatus(createAll()); }
  VEXStatus process(VEXFeaturePtr& feature) override { return extendStatus(sendOn(feature)); }

  VEXStatus createAll() {
    for (std::int32_t instance = 0; instance < numToCreate_; ++instance) {
      for (const std::unique_ptr<VEXFeatureSpec>& spec : outputs_) {
        VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature(dimension_ == 3 ? 3 : 2);
        setGeometry(*feature);
        feature->setCoordSys(coordSys_);
        feature->setInteger("creation_instance", instance);
        VEX_TRY(spec->setAttributes(feature));
        if (feature == nullptr) continue;
        ++numCreated_;
        VEX_TRY(sendOn(feature));
      }
    }
    return nullptr;
  }

  // One coordinate makes a point, a closed ring a polygon, anything else a line.
  void setGeometry(VEXFeature& feature) const {
    if (dimension_ == 0) return;
    const std::size_t count = ordinates_.size() / dimension_;
    const auto step = static_cast<std::ptrdiff_t>(dimension_);
    for (std::size_t at = 0; at < ordinates_.size(); at += dimension_)
      feature.addCoord(ordinates_[at], ordinates_[at + 1], dimension_ == 3 ? ordinates_[at + 2] : 0.0);
    const bool isClosed =
        count >= kLeastRing && std::equal(ordinates_.begin(), ordinates_.begin() + step, ordinates_.end() - step);
    feature.setGeomType(count == 1 ? VEX_GEOM_POINT : isClosed ? VEX_GEOM_POLYGON : VEX_GEOM_LINE);
  }

  std::vector<std::unique_ptr<VEXFeatureSpec>> outputs_;
  std::vector<double> ordinates_;
  std::size_t dimension_ = 0;  // 0: no geometry is given
  std::int32_t numToCreate_ = 1;
  std::string coordSys_;
  bool createsAtEnd_ = false;
  std::int64_t numCreated_ = 0;
};

constexpr VEXArgCount kPairs = pairs();
constexpr VEXArgCount kTriples{3, kPairs.most, 3, 0};

const VEXClause<CreationFactory> CreationFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"2D_GEOMETRY", kPairs, 50025, &CreationFactory::parse2d},
    {"3D_GEOMETRY", kTriples, 50027, &CreationFactory::parse3d},
    {"NUMBER_TO_CREATE", exactly(1), 50030, &CreationFactory::parseNumber},
    {"COORDINATE_SYSTEM", exactly(1), 50023, &CreationFactory::parseCoordSys},
    {"CREATE_AT_END", exactly(0), 50029, &CreationFactory::parseAtEnd},
    {"OUTPUT", atLeast(2), 50022, &CreationFactory::parseOutput},
};

CreationFactory::CreationFactory() : VEXFactory("CreationFactory") {
  useClauses(kClauses);
}

}  // namespace

VEX_FACTORY_MAKER(fctcreat, CreationFactory)
