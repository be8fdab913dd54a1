// VEXGatheringFactory: base of the factories that make one feature of each group at the end of input. Features are held
// by group; one that is alone in its group leaves under SINGLETON when there is such an output, unchanged. A class says
// under which tag all others leave and how they are made of their members.
#pragma once

#include <cstdint>
#include <string>

#include "vex/factory/factory.h"
#include "vex/factory/groupspl.h"
#include "vex/factory/listattr.h"

class VEXGatheringFactory : public VEXFactory {
 public:
  VEXStatus flush(const std::string& group) override;
  VEXStatus allDone() override;

 protected:
  struct Numbers {
    VEXOutputFaults output;
    std::uint32_t secondGroupBy;
    std::uint32_t secondListName;
    std::uint32_t badListName;
    std::uint32_t summary;
  };
  VEXGatheringFactory(std::string className, const char* tag, const Numbers& numbers);

  // Makes the first member of a group the feature of all of them; held() gives the others.
  virtual VEXStatus gather(VEXFeature& feature) = 0;

  // ---- for the clause table ----
  VEXStatus parseOutput(const VEXClauseWords& clause);
  VEXStatus parseGroupBy(const VEXClauseWords& clause);
  VEXStatus parseListName(const VEXClauseWords& clause);

  VEXStatus hold(VEXFeaturePtr& feature);
  VEXGroupSpool& held() { return held_; }
  VEXListAttribute& list() { return list_; }

 private:
  const char* tag_;
  Numbers numbers_;
  VEXGroupSpool held_;
  VEXListAttribute list_;
  std::int64_t numIn_ = 0;
  std::int64_t numGroups_ = 0;
  std::int64_t numSingletons_ = 0;
};
