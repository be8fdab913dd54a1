#include "vex/src/vexcorr.h"

#include <algorithm>

#include "vex/inc/numtext.h"
#include "vex/inc/vexassert.h"
#include "vex/src/vexconf.h"
#include "vex/src/vexlog.h"

VEXTranslationSpec::VEXTranslationSpec(std::unique_ptr<VEXFeatureSpec> source, std::unique_ptr<VEXFeatureSpec> dest)
    : sourceSpec_(std::move(source)), destSpec_(std::move(dest)) {
  VEX_ASSERT(sourceSpec_ != NULL);
  VEX_ASSERT(destSpec_ != NULL);
  sourceSpec_->bindVariables(variables_);
  destSpec_->bindVariables(variables_);
  destSpec_->takeFrom(*sourceSpec_);
}

namespace {

// The names of `some` that are not among `others`, each in quotes and once; empty when there are none.
std::string quotedMissing(const VEXFeatureSpec& some, const VEXFeatureSpec& others) {
  VEXStringVector known;
  VEXStringVector reported;
  std::string text;
  others.listVariables([&known](const std::string& name) { known.push_back(name); });
  some.listVariables([&](const std::string& name) {
    for (const VEXStringVector* list : {&known, &reported})
      if (std::find(list->begin(), list->end(), name) != list->end()) return;
    reported.push_back(name);
    text += "`" + name + "' ";
  });
  return text;
}

VEXStatus checkVariables(const VEXFeatureSpec& source, const VEXFeatureSpec& dest, const VEXStringVector& row) {
  const std::string place = "This was discovered while processsing line `" + joined(row, " ") + "'";
  std::string unused = quotedMissing(source, dest);
  if (!unused.empty())
    return makeStatus(253001, {"Source specification contains transfer variable(s): " + unused +
                               "which is(are) not referenced in the destination spec.  " + place});
  std::string unknown = quotedMissing(dest, source);
  if (!unknown.empty())
    return makeStatus(253002, {"Destination specification contains transfer variable(s): " + unknown +
                               "which is(are) not created in the source spec.  " + place});
  return nullptr;
}

}  // namespace

VEXStatus VEXSpecSet::load(const std::string& sourceKeyword, const std::string& destKeyword) {
  VEX_ASSERT(specDict_ == NULL);
  specDict_ = std::make_unique<VEXTypeMap<SpecList>>();
  const bool logsRows = VEXConfiguration::debugWord("TRANSFER_SPECS");
  std::unique_ptr<VEXFeatureSpec> source;
  std::unique_ptr<VEXFeatureSpec> dest;
  VEXStringVector row;
  VEXConfiguration::rewind();
  while (VEXConfiguration::nextRow(row)) {
    const bool isSource = row[0] == sourceKeyword;
    if (!isSource && row[0] != destKeyword) continue;
    if (row.size() < 2) return makeStatus(253005, {joined(row, " ")});
    std::unique_ptr<VEXFeatureSpec>& pending = isSource ? source : dest;
    if (pending != nullptr) {
      if (isSource) return makeStatus(253003, {sourceKeyword, destKeyword, row[1], sourceKeyword});
      return makeStatus(253004, {destKeyword, sourceKeyword, row[1], destKeyword});
    }
    pending = std::make_unique<VEXFeatureSpec>();
    VEX_TRY(pending->parse(row, 1));
    if (logsRows) logMessage(VEXSeverity::Inform, 253006, {joined(row, " ")});
    if (source != nullptr && dest != nullptr) VEX_TRY(addPair(std::move(source), std::move(dest), row));
  }
  if (source != nullptr) return makeStatus(253007, {destKeyword, sourceKeyword, source->featureType()});
  if (dest != nullptr) return makeStatus(253008, {sourceKeyword, destKeyword, dest->featureType()});
  return nullptr;
}

VEXStatus VEXSpecSet::addPair(std::unique_ptr<VEXFeatureSpec> source, std::unique_ptr<VEXFeatureSpec> dest,
                              const VEXStringVector& row) {
  VEX_TRY(checkVariables(*source, *dest, row));
  std::string key = source->namesType() ? source->featureType() : "*";
  (*specDict_)[key].push_back(std::make_unique<VEXTranslationSpec>(std::move(source), std::move(dest)));
  hasSpecs_ = true;
  return nullptr;
}

VEXStatus VEXCorrelator::correlate(VEXFeaturePtr& feature, bool& matched) {
  VEX_ASSERT(feature != NULL);
  matched = false;
  VEX_TRY(correlateByType(feature->featureType(), feature, matched));
  if (!matched) VEX_TRY(correlateByType("*", feature, matched));
  if (!matched) notConverted_.add(feature->featureType());
  return nullptr;
}

VEXStatus VEXCorrelator::correlateByType(std::string_view typeName, VEXFeaturePtr& feature, bool& matched) {
  VEX_ASSERT(specDict_ != NULL);
  const SpecList* pairs = specDict_->find(typeName);
  if (pairs == nullptr) return nullptr;
  for (const auto& pair : *pairs) {
    matched = pair->sourceSpec_->matchesConstants(*feature);  // the look-up has seen to the type
    if (!matched) continue;
    pair->variables_.clear();
    VEX_TRY(pair->sourceSpec_->take(feature, pair->variables_));
    if (feature != nullptr) VEX_TRY(pair->destSpec_->apply(feature, pair->variables_));
    if (pair->converted_ == nullptr) {
      pair->converted_ = converted_.counter(pair->sourceSpec_->description());
      pair->output_ = output_.counter(pair->destSpec_->description());
    }
    ++*pair->converted_;
    ++*pair->output_;
    return nullptr;
  }
  return nullptr;
}

VEXStatus VEXCorrelator::outputStats(const std::string& heading) {
  converted_.write(heading, "Features Converted", "Total Features Converted", 6, 78);
  notConverted_.write({}, "Features NOT Converted", "Total Features NOT Converted", 6, 78);
  output_.write({}, "Features Output", "Total Features Output", 6, 78);
  return nullptr;
}
