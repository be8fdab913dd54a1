#include "vex/factory/polyform.h"

#include <algorithm>
#include <cstdlib>
#include <set>
#include <span>

VEXStatus setNoding(VEXNoding said, const VEXClauseWords& clause, std::uint32_t onOther, VEXNoding& noding) {
  if (noding != VEXNoding::None && noding != said)
    return makeStatus(onOther, {clause.keyword(), clause.lineText(), clause.clauseText()});
  noding = said;
  return nullptr;
}

VEXPolygonForm::VEXPolygonForm(VEXNoding noding)
    : noding_(noding),
      topology_(
          std::make_unique<VEXTopology>(noding == VEXNoding::Vertices ? VEXTopology::kSegments : VEXTopology::kPlain)) {
  if (noding == VEXNoding::None) intersector_ = std::make_unique<VEXLineIntersector>();
}

VEXStatus VEXPolygonForm::add(const VEXFeature& feature, std::int32_t number) {
  if (intersector_ == nullptr) return extendStatus(topology_->addLine(feature.buildLine(), number, {&number, 1}));
  VEX_TRY(intersector_->addLine(VEXLine::viewOf(feature), 1));
  numberOfInput_.push_back(number);
  return nullptr;
}

VEXStatus VEXPolygonForm::form(bool removesCorridors, const std::function<void(double)>& progress) {
  if (intersector_ != nullptr) {
    VEX_TRY(intersector_->computeIntersections(progress));
    for (VEXChainPiece piece; intersector_->nextPiece(piece);) {
      const std::int32_t input = intersector_->inputOf(piece.chainIds[0]);
      const std::int32_t number = numberOfInput_[static_cast<std::size_t>(std::abs(input)) - 1];
      VEX_TRY(topology_->addLine(piece.xs, piece.ys, piece.zs, number, {&number, 1}));
    }
    intersector_.reset();
  }
  VEXPolygonOptions options;
  // Segments of one line are joined again where nothing else meets them.
  if (noding_ == VEXNoding::Vertices) options.pseudoNodes = VEXPseudoNodes::MergeSameAttributes;
  options.removeDangles = true;
  options.removeSpikes = true;
  options.removeCorridors = removesCorridors;
  options.progress = progress;
  return extendStatus(topology_->buildPolygons(result_, options));
}

std::int64_t VEXPolygonForm::numFaultyLines() const {
  std::set<std::int32_t> numbers;
  for (const VEXTopologyFault& fault : result_.faults)
    for (std::int32_t arc : fault.arcs) numbers.insert(topology_->arc(arc).attributes()[0]);
  return static_cast<std::int64_t>(numbers.size());
}

// ---- what closed nothing ----

std::int64_t VEXPolygonForm::numOpenArcs() const {
  return static_cast<std::int64_t>(result_.dangles.size() + result_.spikes.size() + result_.corridors.size() +
                                   result_.lines.size());
}

std::vector<VEXPolygonForm::OpenArc> VEXPolygonForm::openArcs() const {
  std::vector<OpenArc> open;
  for (const std::vector<std::int32_t>* arcs : {&result_.dangles, &result_.spikes, &result_.corridors, &result_.lines})
    for (std::int32_t arc : *arcs) open.push_back({topology_->arc(arc).attributes()[0], arc});
  std::sort(open.begin(), open.end(), [](const OpenArc& a, const OpenArc& b) {
    return a.number != b.number ? a.number < b.number : a.arc < b.arc;
  });
  return open;
}

VEXStatus VEXPolygonForm::openLines(VEXFeatureSorter& sources,
                                    const std::function<VEXStatus(VEXFeaturePtr&)>& take) const {
  VEX_TRY(sources.startReading());
  VEXFeaturePtr source;
  std::int32_t read = -1;  // number of `source`
  for (const OpenArc& piece : openArcs()) {
    while (read < piece.number) {
      VEX_TRY(sources.next(source));
      ++read;
    }
    VEXFeaturePtr line = source->clone();
    line->loadFromLine(topology_->arc(piece.arc).line());
    VEX_TRY(take(line));
  }
  return nullptr;
}
