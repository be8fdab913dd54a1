// Groupers: faults of their rows, which group takes a feature, and in what order a hierarchy is written.
#include <gtest/gtest.h>

#include "tests/unit/drivers.h"
#include "vex/inc/numtext.h"
#include "vex/src/simpgrpr.h"
#include "vex/src/vexstats.h"
#include "vex/src/writer.h"

namespace {

// A writer of type FAKE and a grouper over the rows.
template <class Grouper>
struct GrouperScope {
  explicit GrouperScope(const std::vector<std::string>& rows, int maxChannels = 130) : engine(rows) {
    engine.fake.maxChannels = maxChannels;
    std::unique_ptr<VEXWriterImp> imp;
    EXPECT_EQ(VEXCreator::createWriter(imp, "FAKE", "D"), nullptr);
    writer = std::make_unique<VEXWriter>(std::move(imp));
    grouper = std::make_unique<Grouper>(*writer);
  }
  // Each feature is grouped and added; type of its group, "-" for none, "#<number>" of a failure.
  std::string group(const std::string& text) {
    VEXFeaturePtr feature = makeFeature(text);
    VEXGroup* found = nullptr;
    VEXStatus failure = grouper->findGroup(feature, found);
    if (failure != nullptr) return "#" + std::to_string(failure->messageNumber());
    if (found == nullptr) return "-";
    EXPECT_EQ(numberOf(found->addFeature(feature)), 0U);
    EXPECT_EQ(feature, nullptr);
    return found->featureType();
  }

  TranslationScope engine;
  std::unique_ptr<VEXWriter> writer;
  std::unique_ptr<Grouper> grouper;
};

struct FaultRow {
  std::vector<std::string> rows;
  std::uint32_t number;
};

TEST(Groupers, FaultsOfSimpleRows) {
  for (const FaultRow& row :
       {FaultRow{{}, 0}, FaultRow{{"D_DEF a"}, 0}, FaultRow{{"D_DEF a x"}, 243008}, FaultRow{{"D_DEF"}, 243008},
        FaultRow{{"D_DEF a x y", "D_DEF b", "D_DEF a"}, 230001}, FaultRow{{"E_DEF a x", "Z"}, 0}}) {
    GrouperScope<VEXSimpleGrouper> scope(row.rows);
    EXPECT_EQ(numberOf(scope.grouper->initialize("D_DEF", "")), row.number) << joined(row.rows, " / ");
  }
}

TEST(Groupers, FaultsOfHierarchyRows) {
  for (const FaultRow& row :
       {FaultRow{{"D_DEF g - T a -", "D_DEF h g - b -"}, 0}, FaultRow{{"D_DEF g - T a"}, 243008},
        FaultRow{{"D_DEF g - T a n x"}, 243008}, FaultRow{{"D_DEF g - T a - x y", "D_DEF g - T b -"}, 243001},
        FaultRow{{"D_DEF h g - b -", "D_DEF g - T a -"}, 243002}, FaultRow{{"D_DEF g g - b -"}, 243002},
        FaultRow{{"D_DEF g - T a -", "D_DEF h g T b -"}, 243003}, FaultRow{{"D_DEF g - - a -"}, 243004},
        FaultRow{{"M g a"}, 243007}, FaultRow{{"D_DEF g - T a -", "M g"}, 243008},
        FaultRow{{"D_DEF g - T a -", "M g a x"}, 243008}, FaultRow{{"D_DEF g - T a -", "M g a x 1"}, 0},
        FaultRow{{"D_DEF g - T a -", "M g a x %y"}, 0}}) {
    GrouperScope<VEXGrouper> scope(row.rows);
    EXPECT_EQ(numberOf(scope.grouper->initialize("D_DEF", "M")), row.number) << joined(row.rows, " / ");
  }
  GrouperScope<VEXGrouper> deep({"D_DEF g0 - T a -"});
  for (int level = 1; level < 100; ++level)
    deep.engine.row("D_DEF g" + std::to_string(level) + " g" + std::to_string(level - 1) + " - a -");
  EXPECT_EQ(numberOf(deep.grouper->initialize("D_DEF", "M")), 243012U);
}

TEST(Groupers, SchemaKeepsOrderAndSpelling) {
  GrouperScope<VEXSimpleGrouper> scope({"D_DEF road zeta char(10) Alpha #1 mid{0} date"});
  ASSERT_EQ(numberOf(scope.grouper->initialize("D_DEF", "")), 0U);
  VEXFeaturePtr feature = makeFeature("road");
  VEXGroup* group = nullptr;
  ASSERT_EQ(numberOf(scope.grouper->findGroup(feature, group)), 0U);
  ASSERT_NE(group, nullptr);
  std::string schema;
  for (VEXName name : group->sequence()) ((schema += name.text() + "=") += *group->findAttribute(name)) += ";";
  EXPECT_EQ(schema, "zeta=char(10);Alpha=#1;mid{0}=date;");
  EXPECT_TRUE(group->groupType().empty() && group->groupName().empty());
}

TEST(Groupers, AMembershipMustNotDeleteTheFeature) {
  class Kill final : public VEXCommand {
   public:
    const char* name() const override { return "Kill"; }
    VEXStatus execute(VEXFeaturePtr& feature, const VEXStringVector&, std::string&) override {
      feature.reset();
      return nullptr;
    }
    VEXStatus extract(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
      return execute(feature, params, result);
    }
    VEXStatus configure(const VEXStringVector&) override { return nullptr; }
  };
  GrouperScope<VEXGrouper> scope({"D_DEF g - T G -", "M g a @Kill() @Kill()"});
  VEXCommandRegistry::instance().registerCommand(std::make_unique<Kill>(), "Kill");
  ASSERT_EQ(numberOf(scope.grouper->initialize("D_DEF", "M")), 0U);
  EXPECT_EQ(scope.group("a"), "#243009");
}

TEST(Groupers, CountsByMembership) {
  GrouperScope<VEXGrouper> scope(
      {"D_DEF wide - T W -", "D_DEF rest - T R name k v", "M wide road lanes 4", "M rest road", "M wide rail"});
  ASSERT_EQ(numberOf(scope.grouper->initialize("D_DEF", "M")), 0U);
  EXPECT_EQ(scope.group("road {lanes=4}"), "W");
  EXPECT_EQ(scope.group("road {lanes=2}"), "R");
  EXPECT_EQ(scope.group("road"), "R");
  EXPECT_EQ(scope.group("rail"), "W");
  EXPECT_EQ(scope.group("river"), "-");
  VEXStatistics grouped;
  VEXStatistics notGrouped;
  scope.grouper->takeStatistics(grouped, notGrouped);
  EXPECT_EQ(grouped.count("wide (road+lanes+4)"), 1);
  EXPECT_EQ(grouped.count("rest (road)"), 2);
  EXPECT_EQ(grouped.count("wide (rail)"), 1);
  EXPECT_EQ(notGrouped.count("river"), 1);
  EXPECT_TRUE(scope.grouper->finish());
}

TEST(Groupers, AFilterTakesOneGroupsMembers) {
  GrouperScope<VEXGrouper> scope({"D_DEF g - T G -", "D_DEF h - T H -", "M g a", "M h b"});
  ASSERT_EQ(numberOf(scope.grouper->initialize("D_DEF", "M", "h")), 0U);
  EXPECT_EQ(scope.group("a"), "-");
  EXPECT_EQ(scope.group("b"), "H");
}

// The first child in line is open; later children follow it, and what was put into the parent itself comes last.
TEST(Groupers, HierarchyIsWrittenChildrenFirst) {
  for (int maxChannels : {1, 0}) {
    GrouperScope<VEXGrouper> scope({"D_DEF top - T top -", "D_DEF kid1 top - kid1 -", "D_DEF kid2 top - kid2 -",
                                    "D_DEF leaf kid1 - leaf -", "D_DEF unused - T unused -"},
                                   maxChannels);
    ASSERT_EQ(numberOf(scope.grouper->initialize("D_DEF", "")), 0U);
    for (const char* type : {"kid2", "top", "leaf", "kid1", "kid2", "leaf", "top"}) EXPECT_EQ(scope.group(type), type);
    scope.grouper.reset();
    scope.engine.fake.maxChannels = 1;
    ASSERT_EQ(numberOf(scope.writer->flushGroups()), 0U);
    const std::string attached =
        "channel top; start top; start kid1; start leaf; write leaf: leaf; write leaf: leaf; end leaf; "
        "write leaf: kid1; end kid1; start kid2; write kid2: kid2; write kid2: kid2; end kid2; "
        "write kid2: top; write kid2: top; end top; close kid2; gone kid2";
    const std::string waiting =
        "channel top; start top; write top: top; write top: top; start kid1; write kid1: kid1; start leaf; "
        "write leaf: leaf; write leaf: leaf; end leaf; end kid1; start kid2; write kid2: kid2; write kid2: kid2; "
        "end kid2; end top; close kid2; gone kid2";
    EXPECT_EQ(scope.engine.fake.callText(), maxChannels == 1 ? attached : waiting);
  }
}

TEST(Groupers, AChildAddedLaterIsAttachedAtOnce) {
  GrouperScope<VEXGrouper> scope({"D_DEF top - T top -"});
  ASSERT_EQ(numberOf(scope.grouper->initialize("D_DEF", "")), 0U);
  VEXFeaturePtr feature = makeFeature("top");
  VEXGroup* top = nullptr;
  ASSERT_EQ(numberOf(scope.grouper->findGroup(feature, top)), 0U);
  for (const char* name : {"one", "two"}) {
    auto child = std::make_unique<VEXGroup>(name, std::string(), std::string());
    ASSERT_EQ(numberOf(top->addChild(std::move(child))), 0U);
  }
  ASSERT_EQ(numberOf(top->addFeature(feature)), 0U);  // the child has the channel: this one waits
  ASSERT_EQ(numberOf(scope.writer->flushGroups()), 0U);
  EXPECT_EQ(scope.engine.fake.callText(),
            "channel top; start top; start one; end one; start two; end two; write two: top; end top; "
            "close two; gone two");
}

}  // namespace
