#include "vex/src/vexgrper.h"

#include "vex/inc/numtext.h"
#include "vex/src/vexconf.h"
#include "vex/src/writer.h"

namespace {

constexpr std::uint32_t kGroupTwice = 243001;
constexpr std::uint32_t kParentUnknown = 243002;
constexpr std::uint32_t kChildWithType = 243003;
constexpr std::uint32_t kTopWithoutType = 243004;
constexpr std::uint32_t kParentWithoutType = 243005;
constexpr std::uint32_t kParentNotFound = 243006;
constexpr std::uint32_t kMemberOfUnknown = 243007;
constexpr std::uint32_t kBadRow = 243008;
constexpr std::uint32_t kFeatureDeleted = 243009;
constexpr std::uint32_t kNotLinked = 243010;
constexpr std::uint32_t kKeyNotFound = 243011;
constexpr std::uint32_t kTooDeep = 243012;

constexpr std::int32_t kDeepest = 64;  // groups are walked by recursion
constexpr std::string_view kNone = "-";

std::string givenOrEmpty(const std::string& word) {
  return word == kNone ? std::string() : word;
}

}  // namespace

VEXGrouper::~VEXGrouper() = default;

VEXStatus VEXGrouper::initialize(const std::string& defKeyword, const std::string& memberKeyword,
                                 const std::string& memberFilter) {
  VEXStringVector row;
  for (VEXConfiguration::rewind(); VEXConfiguration::nextRow(row);) {
    const bool isDef = row[0] == defKeyword;
    const bool isMember = !memberKeyword.empty() && row[0] == memberKeyword;
    if (!isDef && !isMember) continue;
    if (isDef && row.size() > minDefFields() && (row.size() - minDefFields()) % 2 == 1) {
      VEX_TRY(parseDefLine(row));
      if (memberKeyword.empty()) VEX_TRY(addMembership({row[0], row[1], row[1]}));
    } else if (isMember && row.size() > 2 && row.size() % 2 == 1) {
      if (findEntry(row[1]) == nullptr) return makeStatus(kMemberOfUnknown, {row[1]});
      if (memberFilter.empty() || memberFilter == row[1]) VEX_TRY(addMembership(row));
    } else {
      return makeStatus(kBadRow, {joined(row, " ")});
    }
  }
  return nullptr;
}

VEXStatus VEXGrouper::parseDefLine(const VEXStringVector& row) {
  const std::string& key = row[1];
  const bool hasParent = row[2] != kNone;
  const bool hasType = row[3] != kNone;
  if (findEntry(key) != nullptr) return makeStatus(kGroupTwice, {key, row[0]});
  if (hasParent && findEntry(row[2]) == nullptr) return makeStatus(kParentUnknown, {row[2], key});
  if (hasParent && hasType) return makeStatus(kChildWithType, {key});
  if (!hasParent && !hasType) return makeStatus(kTopWithoutType, {key});

  Entry& entry = addEntry(key, std::make_unique<VEXGroup>(row[4], givenOrEmpty(row[3]), givenOrEmpty(row[5])));
  for (std::size_t at = 6; at + 1 < row.size(); at += 2) entry.group->setAttribute(row[at], row[at + 1]);
  if (hasParent) return extendStatus(linkToParent(entry, row[2]));
  linkToItself(entry);
  return nullptr;
}

VEXGrouper::Entry& VEXGrouper::addEntry(const std::string& key, std::unique_ptr<VEXGroup> group) {
  auto entry = std::make_unique<Entry>();
  entry->key = key;
  entry->group = group.get();
  entry->owned = std::move(group);
  return *groupsByName_.emplace(key, std::move(entry)).first->second;
}

VEXGrouper::Entry* VEXGrouper::findEntry(std::string_view key) {
  auto found = groupsByName_.find(key);
  return found == groupsByName_.end() ? nullptr : found->second.get();
}

VEXStatus VEXGrouper::linkToParent(Entry& entry, const std::string& parentKey) {
  Entry* parent = findEntry(parentKey);
  if (parent == nullptr) return makeStatus(kParentNotFound, {entry.key});
  if (parent->parent == nullptr && parent->group->groupType().empty())
    return makeStatus(kParentWithoutType, {entry.key});
  entry.depth = parent->depth + 1;
  if (entry.depth > kDeepest) return makeStatus(kTooDeep, {entry.key, integerText(kDeepest)});
  entry.parent = parent;
  return extendStatus(parent->group->addChild(std::move(entry.owned)));
}

VEXStatus VEXGrouper::addMembership(const VEXStringVector& row) {
  auto member = std::make_unique<Membership>();
  member->entry = findEntry(row[1]);
  if (member->entry == nullptr) return makeStatus(kKeyNotFound);
  VEX_TRY(member->spec.parse(row, 2));
  member->spec.bindVariables(member->variables);
  member->isTypeOnly = member->spec.isTypeOnly();
  membershipByType_[member->spec.featureType()].list.push_back(std::move(member));
  return nullptr;
}

// The first membership of the list that takes the feature; null when none does.
VEXStatus VEXGrouper::choose(Members& members, VEXFeaturePtr& feature, Membership*& chosen) {
  for (std::unique_ptr<Membership>& member : members.list) {
    if (!member->isTypeOnly) {  // otherwise the look-up by type was the whole test
      if (!member->spec.matchesConstants(*feature)) continue;
      member->variables.clear();
      VEX_TRY(member->spec.take(feature, member->variables));
      if (feature == nullptr) return makeStatus(kFeatureDeleted);
    }
    chosen = member.get();
    return nullptr;
  }
  return nullptr;
}

VEXStatus VEXGrouper::findGroup(VEXFeaturePtr& feature, VEXGroup*& group) {
  group = nullptr;
  Members* members = membershipByType_.find(feature->featureType());
  if (members == nullptr) {
    notGrouped_.add(feature->featureType());
    return nullptr;
  }
  Membership* chosen = nullptr;
  VEX_TRY(choose(*members, feature, chosen));
  if (chosen == nullptr) {
    if (members->notGrouped == nullptr) members->notGrouped = notGrouped_.counter(feature->featureType());
    ++*members->notGrouped;
    return nullptr;
  }
  Entry& entry = *chosen->entry;
  if (chosen->count == nullptr) chosen->count = grouped_.counter(entry.key + " (" + chosen->spec.description() + ")");
  ++*chosen->count;
  if (entry.parent == nullptr) return makeStatus(kNotLinked, {entry.key});
  if (entry.group->channel() == nullptr) VEX_TRY(attach(entry));
  group = entry.group;
  return nullptr;
}

// Gives the group's top-level ancestor to the writer, once.
VEXStatus VEXGrouper::attach(Entry& entry) {
  Entry* top = &entry;
  while (top->parent != top) top = top->parent;
  if (top->group->isQueued()) return nullptr;
  return extendStatusText(writer_.attachGroup(std::move(top->owned)), "VEXGrouper::findGroup");
}

void VEXGrouper::takeStatistics(VEXStatistics& grouped, VEXStatistics& notGrouped) {
  grouped = std::move(grouped_);
  notGrouped = std::move(notGrouped_);
}
