// ElementFactory: makes a feature of each element of a list attribute.
#include <algorithm>

#include "vex/factory/factory.h"
#include "vex/factory/listattr.h"
#include "vex/inc/numtext.h"
#include "vex/src/vexline.h"
#include "vex/src/vexrcycl.h"

namespace {

constexpr std::uint32_t kSummary = 42001;
constexpr VEXOutputFaults kOutputFaults{42003, 42004, 42005};
constexpr std::uint32_t kSecondListName = 42007;
constexpr std::uint32_t kBadListName = 42008;
constexpr std::uint32_t kNoListName = 42009;
constexpr std::uint32_t kNoOutput = 42010;

class ElementFactory final : public VEXFactory {
 public:
  ElementFactory();

  VEXStatus allDone() override {
    log(VEXSeverity::Stats, kSummary,
        {"Split out " + countText(numElements_, "list element") + " from " + countText(numIn_, "input feature")});
    return extendStatus(VEXFactory::allDone());
  }

 private:
  static const VEXClause<ElementFactory> kClauses[];

  // An attribute of an element: where it goes, and its name on the base.
  struct Piece {
    std::size_t index;
    VEXName from;
    VEXName to;
  };

  VEXStatus parseOutput(const VEXClauseWords& clause) { return extendStatus(addOutput(clause, kOutputFaults)); }
  VEXStatus parseListName(const VEXClauseWords& clause) {
    return extendStatus(list_.parse(clause, kSecondListName, kBadListName));
  }
  VEXStatus parseClone(const VEXClauseWords&) {
    clonesGeometry_ = true;
    return nullptr;
  }
  VEXStatus parseNumberField(const VEXClauseWords& clause) {
    numberField_ = clause.word(0);
    return nullptr;
  }

  VEXStatus process(VEXFeaturePtr& feature) override {
    if (!list_.isSet()) return makeStatus(kNoListName, {name(), factoryName(), "LIST_NAME"});
    if (!hasOutput("ELEMENT")) return makeStatus(kNoOutput, {name(), factoryName(), "OUTPUT ELEMENT"});
    ++numIn_;
    findPieces(*feature);
    for (std::size_t first = 0, last = 0; first < pieces_.size(); first = last) {
      while (last < pieces_.size() && pieces_[last].index == pieces_[first].index) ++last;
      ++numElements_;
      VEXFeaturePtr element = makeElement(*feature, {pieces_.data() + first, last - first});
      VEX_TRY(output("ELEMENT", element));
    }
    for (const Piece& piece : pieces_) feature->removeAttribute(piece.from);
    if (!pieces_.empty()) dropFromSequence(*feature);
    feature->setAttribute("ElementFactory.baseCloned", clonesGeometry_ && !pieces_.empty() ? "TRUE" : "FALSE");
    return extendStatus(output("BASE", feature));
  }

  // Elements in the order of their numbers, whatever numbers are left out.
  void findPieces(const VEXFeature& feature) {
    pieces_.clear();
    feature.forEachAttribute([this](VEXName name, std::string_view) {
      Piece piece{0, name, name};
      std::string_view rest;
      if (!name.isListName() || !list_.matches(name.text(), piece.index, rest)) return;
      piece.to = VEXName::intern(rest.empty() ? list_.name() : rest);
      pieces_.push_back(piece);
    });
    std::stable_sort(pieces_.begin(), pieces_.end(), [](const Piece& a, const Piece& b) { return a.index < b.index; });
  }

  VEXFeaturePtr makeElement(const VEXFeature& base, std::span<const Piece> pieces) {
    static const VEXName kGeometry = VEXName::intern("orv_geometry");
    VEXFeaturePtr element = VEXObjectRecycler::instance().getFeature(2, 0);
    element->setFeatureType(base.featureType());
    element->setCoordSys(base.coordSys());
    for (const Piece& piece : pieces) element->setAttribute(piece.to, *base.findAttribute(piece.from));
    element->removeAttribute(kGeometry);  // that of the feature that once was put into the list
    if (clonesGeometry_) element->loadFromLine(base.buildLine());
    if (!numberField_.empty()) element->setInteger(numberField_, static_cast<std::int64_t>(pieces[0].index));
    return element;
  }

  static void dropFromSequence(VEXFeature& feature) {
    std::vector<VEXName> left = feature.sequence();
    std::erase_if(left, [&feature](VEXName name) { return !feature.attributeExists(name); });
    feature.setSequence(std::move(left));
  }

  VEXListAttribute list_;
  bool clonesGeometry_ = false;
  std::string numberField_;
  std::vector<Piece> pieces_;  // of the current feature; kept for its buffer
  std::int64_t numIn_ = 0;
  std::int64_t numElements_ = 0;
};

const VEXClause<ElementFactory> ElementFactory::kClauses[] = {
    // keyword  words after it  wrong count  handler
    {"OUTPUT", atLeast(3), 42002, &ElementFactory::parseOutput},
    {"LIST_NAME", exactly(1), 42006, &ElementFactory::parseListName},
    {"ELEMENT_NUMBER_FIELD", exactly(1), 42011, &ElementFactory::parseNumberField},
    {"CLONE_GEOMETRY", exactly(0), 42012, &ElementFactory::parseClone},
};

ElementFactory::ElementFactory() : VEXFactory("ElementFactory") {
  useClauses(kClauses);
  addOutputTags({"BASE", "ELEMENT"});
}

}  // namespace

VEX_FACTORY_MAKER(fctelem, ElementFactory)
