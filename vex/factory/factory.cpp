#include "vex/factory/factory.h"

#include <algorithm>
#include <utility>

#include "vex/factory/pipeline.h"
#include "vex/inc/numtext.h"
#include "vex/internat/internat.h"
#include "vex/src/featout.h"

namespace {

constexpr std::uint32_t kUnknownClause = 859001;
constexpr std::uint32_t kBadOutputTag = 859002;
constexpr std::uint32_t kShortOutput = 859004;
constexpr std::uint32_t kShortInput = 859005;
constexpr std::uint32_t kBadInputForm = 859006;
constexpr std::uint32_t kUnknownInputTag = 859007;
constexpr std::uint32_t kBadFactoryName = 859008;
constexpr std::uint32_t kOutputRefused = 231032;
constexpr VEXOutputFaults kOutputFaults{kBadOutputTag, kBadOutputTag, kUnknownClause};

constexpr std::string_view kFeatureType = "FEATURE_TYPE";
constexpr std::int64_t kRejectedCoordinates = 20;  // of a rejected feature that are logged
constexpr std::size_t kFirstClause = 3;            // behind FACTORY_DEF, keyword and class

}  // namespace

std::string VEXClauseWords::lineText() const {
  return joined(tokens_, " ");
}

std::string VEXClauseWords::clauseText() const {
  std::string text = keyword();
  for (std::size_t at = 0; at < count(); ++at) text.append(" ").append(word(at));
  return text;
}

VEXStatus VEXClauseWords::parseSpec(std::size_t first, VEXFeatureSpec& spec) const {
  return extendStatus(spec.parse(tokens_, start_ + 1 + first, end_));
}

VEXFactory::VEXFactory(std::string className) : className_(std::move(className)) {}

VEXFactory::~VEXFactory() = default;

// ---- definition ----

bool VEXFactory::isClauseName(const std::string& word) const {
  if (word == "INPUT" || word == "OUTPUT" || word == "FACTORY_NAME") return true;
  return std::any_of(clauseRules_.begin(), clauseRules_.end(), [&](const auto& rule) { return word == rule.keyword; });
}

VEXStatus VEXFactory::configure(const VEXStringVector& row, std::size_t index) {
  factoryName_ = "f_" + integerText(static_cast<std::int64_t>(index));
  for (std::size_t start = kFirstClause; start < row.size();) {
    std::size_t next = start + 1;
    while (next < row.size() && !isClauseName(row[next])) ++next;
    VEX_TRY(parseClause(row, start, next - 1));
    start = next;
  }
  return nullptr;
}

VEXStatus VEXFactory::parseClause(const VEXStringVector& tokens, std::size_t start, std::size_t end) {
  const VEXClauseWords clause(tokens, start, end);
  for (const ClauseRule& rule : clauseRules_) {
    if (clause.keyword() != rule.keyword) continue;
    if (!rule.count.accepts(clause.count()))
      return makeStatus(rule.onCount, {clause.keyword(), clause.lineText(), clause.clauseText()});
    return extendStatus(rule.parse(clause));
  }
  if (clause.keyword() == "INPUT") return extendStatus(parseInput(clause));
  if (clause.keyword() == "OUTPUT") return extendStatus(parseOutput(clause));
  if (clause.keyword() != "FACTORY_NAME")
    return makeStatus(kUnknownClause, {className_, clause.lineText(), clause.clauseText()});
  if (clause.count() != 1) return makeStatus(kBadFactoryName, {clause.lineText(), clause.clauseText()});
  factoryName_ = clause.word(0);
  return nullptr;
}

VEXStatus VEXFactory::parseInput(const VEXClauseWords& clause) {
  if (clause.count() < 2) return makeStatus(kShortInput, {clause.lineText(), clause.clauseText()});
  const bool isTagged = clause.word(0) != kFeatureType;
  if (isTagged ? clause.word(1) != kFeatureType : !inputTagNames_.empty())
    return makeStatus(kBadInputForm, {clause.lineText(), clause.clauseText()});
  if (isTagged && inputTagNames_.find(clause.word(0)) == inputTagNames_.end())
    return makeStatus(kUnknownInputTag, {clause.lineText(), clause.word(0)});
  auto spec = std::make_unique<VEXFeatureSpec>();
  VEX_TRY(clause.parseSpec(isTagged ? 2 : 1, *spec));
  if (isTagged)
    taggedInputs_.push_back({clause.word(0), std::move(spec)});
  else
    inputSpecs_.push_back(std::move(spec));
  return nullptr;
}

VEXStatus VEXFactory::parseOutput(const VEXClauseWords& clause) {
  if (clause.count() < 3) return makeStatus(kShortOutput, {clause.keyword(), clause.lineText(), clause.clauseText()});
  return extendStatus(addOutput(clause, kOutputFaults));
}

VEXStatus VEXFactory::addOutput(const VEXClauseWords& clause, const VEXOutputFaults& faults) {
  const std::string& tag = clause.word(0);
  if (outputTagNames_.find(tag) == outputTagNames_.end())
    return makeStatus(faults.unknownTag, {tag, clause.lineText(), clause.clauseText()});
  if (hasOutput(tag)) return makeStatus(faults.twice, {tag, clause.lineText(), clause.clauseText()});
  if (clause.word(1) != kFeatureType)
    return makeStatus(faults.noType, {className_, clause.lineText(), clause.clauseText()});
  auto spec = std::make_unique<VEXFeatureSpec>();
  VEX_TRY(clause.parseSpec(2, *spec));
  outputs_.emplace(tag, std::move(spec));
  return nullptr;
}

// ---- features ----

VEXStatus VEXFactory::processFeature(VEXFeaturePtr& feature) {
  if (!isStarted_) VEX_TRY(startOnce());
  bool matched = true;
  VEX_TRY(match(feature, matched));
  if (feature == nullptr) return nullptr;  // a function of an INPUT clause deleted it
  if (!matched) return extendStatus(passBy(feature));
  if (trace_) extendTrace(*feature);
  tookLate_ = allDone_;
  return extendStatus(process(feature));
}

VEXStatus VEXFactory::match(VEXFeaturePtr& feature, bool& matched) {
  matchedTag_.clear();
  if (!hasInputs()) return nullptr;
  for (const std::unique_ptr<VEXFeatureSpec>& spec : inputSpecs_) {
    VEX_TRY(spec->testOnly(feature, matched));
    if (matched || feature == nullptr) return nullptr;
  }
  for (const TaggedInput& input : taggedInputs_) {
    VEX_TRY(input.spec->testOnly(feature, matched));
    if (matched) matchedTag_ = input.tag;
    if (matched || feature == nullptr) return nullptr;
  }
  matched = false;
  return nullptr;
}

// A feature that is not for this factory jumps it, and with it all that the factory holds.
VEXStatus VEXFactory::passBy(VEXFeaturePtr& feature) {
  feature->trimCoords();
  auto isGone = [&](VEXName name) { return !feature->attributeExists(name); };
  const std::vector<VEXName>& sequence = feature->sequence();
  if (std::any_of(sequence.begin(), sequence.end(), isGone)) {
    std::vector<VEXName> present = sequence;
    std::erase_if(present, isGone);
    feature->setSequence(std::move(present));
  }
  return extendStatus(sendOn(feature));
}

void VEXFactory::extendTrace(VEXFeature& feature) const {
  static const VEXName kTraceName = VEXName::intern("orv_factory_trace");
  const VEXText* sofar = feature.findAttribute(kTraceName);
  std::string trace(sofar == nullptr ? std::string_view() : sofar->view());
  if (!trace.empty()) trace += ':';
  trace.append(factoryName_).append("(").append(className_).append(")");
  feature.setAttribute(kTraceName, trace);
}

VEXStatus VEXFactory::output(std::string_view tag, VEXFeaturePtr& feature) {
  auto found = outputs_.find(tag);
  if (found == outputs_.end()) {
    feature.reset();
    return nullptr;
  }
  VEX_TRY(found->second->setAttributes(feature));
  return feature == nullptr ? nullptr : extendStatus(sendOn(feature));
}

// A feature that is refused further down ends here: the others that this factory makes or holds go on.
VEXStatus VEXFactory::sendOn(VEXFeaturePtr& feature) {
  VEXStatus failure = next_ != nullptr ? next_->processFeature(feature) : pipeline_->emit(feature);
  if (failure == nullptr || failure->severity() != kSeverityRejected) return extendStatus(std::move(failure));
  dropRefused(kOutputRefused, *failure, feature);
  return nullptr;
}

void VEXFactory::log(VEXSeverity severity, std::uint32_t number,
                     std::initializer_list<std::string_view> parameters) const {
  logText(severity, factoryName_ + "(" + className_ + "): " + formatMessage(number, parameters));
}

void VEXFactory::rejectFeature(std::uint32_t number, std::string_view reason, VEXFeaturePtr& feature) const {
  log(VEXSeverity::Warn, number, {feature->featureType(), reason});
  logFeature(*feature, VEXSeverity::Warn, kRejectedCoordinates);
  feature.reset();
}

// ---- end of input ----

VEXStatus VEXFactory::startOnce() {
  isStarted_ = true;
  return extendStatus(start());
}

VEXStatus VEXFactory::finish() {
  if (!isStarted_) VEX_TRY(startOnce());
  return extendStatus(allDone());
}

VEXStatus VEXFactory::allDone() {
  allDone_ = true;
  VEX_TRY(flush(std::string()));
  VEX_TRY(pipeline_->walk());
  return next_ == nullptr ? nullptr : extendStatus(next_->finish());
}

bool VEXFactory::takesLate() {
  return std::exchange(tookLate_, false);
}

VEXStatus VEXFactory::flush(const std::string&) {
  return nullptr;
}
