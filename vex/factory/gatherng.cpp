#include "vex/factory/gatherng.h"

#include <utility>

#include "vex/inc/numtext.h"

VEXGatheringFactory::VEXGatheringFactory(std::string className, const char* tag, const Numbers& numbers)
    : VEXFactory(std::move(className)), tag_(tag), numbers_(numbers) {
  addOutputTags({tag, "SINGLETON"});
}

VEXStatus VEXGatheringFactory::parseOutput(const VEXClauseWords& clause) {
  return extendStatus(addOutput(clause, numbers_.output));
}

VEXStatus VEXGatheringFactory::parseGroupBy(const VEXClauseWords& clause) {
  return extendStatus(held_.groups().parse(clause, numbers_.secondGroupBy));
}

VEXStatus VEXGatheringFactory::parseListName(const VEXClauseWords& clause) {
  return extendStatus(list_.parse(clause, numbers_.secondListName, numbers_.badListName));
}

VEXStatus VEXGatheringFactory::hold(VEXFeaturePtr& feature) {
  ++numIn_;
  return extendStatus(held_.add(feature));
}

VEXStatus VEXGatheringFactory::flush(const std::string&) {
  VEX_TRY(held_.startReading());
  for (std::size_t group = 0; held_.nextGroup(group);) {
    VEXFeaturePtr feature;
    VEX_TRY(held_.nextMember(feature));
    ++numGroups_;
    const bool isSingle = !held_.hasMember();
    if (isSingle) ++numSingletons_;
    const bool staysSingle = isSingle && hasOutput("SINGLETON");
    if (!staysSingle) VEX_TRY(gather(*feature));
    VEX_TRY(output(staysSingle ? "SINGLETON" : tag_, feature));
  }
  held_.clear();
  return nullptr;
}

VEXStatus VEXGatheringFactory::allDone() {
  VEX_TRY(flush(std::string()));
  log(VEXSeverity::Stats, numbers_.summary,
      {"Combined " + countText(numIn_, "input feature") + " into " + countText(numGroups_, "output feature") +
       " (including " + countText(numSingletons_, "singleton") + ")"});
  return extendStatus(VEXFactory::allDone());
}
