// VEXGrouper: decides which group of the destination takes a feature. This class knows groups with parents and any
// memberships; VEXSimpleGrouper and VEXStupidGrouper are the plain cases. Calls: initialize, findGroup per feature,
// finish. Groups belong to the grouper (children to their parents) until they are attached, then to the writer.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "vex/inc/statinfo.h"
#include "vex/inc/stkdefs.h"
#include "vex/src/typemap.h"
#include "vex/src/vexgroup.h"
#include "vex/src/vexspec.h"
#include "vex/src/vexstats.h"
#include "vex/src/vexvars.h"

class VEXWriter;

class VEXGrouper {
 public:
  explicit VEXGrouper(VEXWriter& writer) : writer_(writer) {}
  virtual ~VEXGrouper();
  VEXGrouper(const VEXGrouper&) = delete;
  VEXGrouper& operator=(const VEXGrouper&) = delete;

  // Builds the groups from the _DEF rows of the configuration. 243007: a membership of an unknown group. 243008: a
  // row with a wrong number of tokens. With an empty memberKeyword the members of a group are the features of the
  // type that is its key. With a memberFilter only membership rows of that one group are taken.
  VEXStatus initialize(const std::string& defKeyword, const std::string& memberKeyword) {
    return initialize(defKeyword, memberKeyword, std::string());
  }
  virtual VEXStatus initialize(const std::string& defKeyword, const std::string& memberKeyword,
                               const std::string& memberFilter);
  // The group that takes the feature, attached to the writer at its first use; null when none does. 243009: a
  // function of a membership deleted the feature.
  virtual VEXStatus findGroup(VEXFeaturePtr& feature, VEXGroup*& group);
  virtual bool usesGroups() const { return true; }
  // "<keyword> <key> <parent or -> <group type or -> <feature type> <name or -> [<attribute> <value>]...".
  // 243001 to 243006, 243012.
  virtual VEXStatus parseDefLine(const VEXStringVector& row);
  virtual std::size_t minDefFields() const { return 5; }
  // No feature follows. True when the statistics of groups are worth printing.
  bool finish() const { return usesGroups(); }

  const VEXStatistics& grouped() const { return grouped_; }
  const VEXStatistics& notGrouped() const { return notGrouped_; }
  void takeStatistics(VEXStatistics& grouped, VEXStatistics& notGrouped);

 protected:
  struct Entry {
    std::string key;
    VEXGroup* group = nullptr;
    Entry* parent = nullptr;          // itself for a top-level group
    std::unique_ptr<VEXGroup> owned;  // until a parent or the writer takes it
    std::int32_t depth = 1;
  };
  // Makes the group known under its key; the caller has seen to it that the key is new.
  Entry& addEntry(const std::string& key, std::unique_ptr<VEXGroup> group);
  Entry* findEntry(std::string_view key);
  // `row`: member keyword, group key, then the words of a specification.
  VEXStatus addMembership(const VEXStringVector& row);
  void linkToItself(Entry& entry) { entry.parent = &entry; }
  VEXStatus attach(Entry& entry);
  VEXWriter& writer() { return writer_; }

 private:
  struct Membership {
    Entry* entry = nullptr;
    VEXFeatureSpec spec;
    VEXVariableTable variables;
    std::int32_t* count = nullptr;  // this membership's statistics once it has taken a feature
    bool isTypeOnly = false;
  };
  struct Members {
    std::vector<std::unique_ptr<Membership>> list;  // tried in order
    std::int32_t* notGrouped = nullptr;
  };
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  VEXStatus linkToParent(Entry& entry, const std::string& parentKey);
  VEXStatus choose(Members& members, VEXFeaturePtr& feature, Membership*& chosen);

  std::unordered_map<std::string, std::unique_ptr<Entry>, Hash, std::equal_to<>> groupsByName_;
  VEXTypeMap<Members> membershipByType_;
  VEXStatistics grouped_;
  VEXStatistics notGrouped_;
  VEXWriter& writer_;
};
