// Parsing and evaluating calls; the catalogue of functions.
#include <gtest/gtest.h>

#include "tests/unit/support.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdparm.h"
#include "vex/src/cmdrgstr.h"
#include "vex/src/cmdrule.h"

namespace {

std::uint32_t numberOf(const VEXStatus& status) {
  return status == nullptr ? 0 : status->messageNumber();
}

// Remembers what it is called with; gives its arguments back, one in brackets each. "@Echo(delete)" deletes the
// feature.
class EchoCommand final : public VEXCommand {
 public:
  const char* name() const override { return "Echo"; }
  VEXStatus execute(VEXFeaturePtr& feature, const VEXStringVector& params, std::string& result) override {
    for (const std::string& param : params) result += "<" + param + ">";
    if (params.size() == 1 && params[0] == "delete") feature.reset();
    return nullptr;
  }
  VEXStatus extract(VEXFeaturePtr&, const VEXStringVector& params, std::string& result) override {
    for (const std::string& param : params) result += "{" + param + "}";
    return nullptr;
  }
  VEXStatus configure(const VEXStringVector&) override { return nullptr; }
};

class Call : public ::testing::Test {
 protected:
  void SetUp() override { registry().registerCommand(std::make_unique<EchoCommand>(), "Echo"); }
  VEXCommandRegistry& registry() { return VEXCommandRegistry::instance(); }

  std::string execute(const std::string& text, const std::string& of = "t {a=1, b=two, me=&me, looks=&a}") {
    VEXFeaturePtr feature = makeFeature(of);
    VEXCommandParm call;
    std::string result;
    VEXStatus failure = call.parse(text);
    if (failure == nullptr) failure = call.execute(feature, variables_, result);
    return failure == nullptr ? result : "#" + std::to_string(failure->messageNumber());
  }

  EngineScope engine_;
  VEXVariableTable variables_;
};

TEST_F(Call, ArgumentsAreCutAtTopLevelCommas) {
  struct Row {
    const char* text;
    const char* result;
  };
  for (const Row& row :
       {Row{"@Echo()", ""}, Row{"@Echo(a,)", "<a><>"}, Row{"@Echo(,)", "<><>"},
        Row{"@Echo(a,(b,c),d)", "<a><(b,c)><d>"}, Row{"@Echo([b,c],d)", "<[b,c]><d>"}, Row{"@Echo(['a-b'])", "<a-b>"},
        Row{"@Echo([''])", "<>"}, Row{"@Echo(['])", "<[']>"}, Row{"@Echo(abc", "<ab>"}, Row{"xEcho(a)", "<a>"},
        Row{"@Echo", "#209001"}, Row{"@echo(a)", "#209002"}, Row{"", "#209001"}, Row{"(a)", "#209001"}})
    EXPECT_EQ(execute(row.text), row.result) << row.text;
}

TEST_F(Call, SubstitutesVariablesAttributesAndCalls) {
  variables_.set("%v", "vee");
  variables_.set("%ref", "&b");
  variables_.set("%call", "@Echo(&a)");
  struct Row {
    const char* text;
    const char* result;
  };
  for (const Row& row :
       {Row{"@Echo(%v,&a)", "<vee><1>"}, Row{"@Echo(%none&missing)", "<>"}, Row{"@Echo(x%v-&b+)", "<xvee-two+>"},
        Row{"@Echo(%ref)", "<two>"}, Row{"@Echo(&looks)", "<1>"}, Row{"@Echo(%call)", "<<1>>"},
        Row{"@Echo(@Concatenate(&a,%v),z)", "<1vee><z>"}, Row{"@Echo(@Echo(@Echo(&b)))", "<<<two>>>"},
        Row{"@Echo(%)", "<%>"}, Row{"@Echo(a & b)", "<a & b>"}, Row{"@Echo(&me)", "#209008"},
        Row{"@Echo(@Echo(delete))", "#209006"}, Row{"@Echo(@Nope(1))", "#209002"}})
    EXPECT_EQ(execute(row.text), row.result) << row.text;
}

TEST_F(Call, ACallThatHoldsItselfEnds) {
  EXPECT_EQ(execute("@Echo(&loop)", "t {loop=@Echo(&loop)}"), "#209008");
}

TEST_F(Call, ListsRunOncePerElement) {
  VEXFeaturePtr feature = makeFeature("t {a=1}");
  VEXCommandParm call;
  VEXStringVector results;
  std::string result;
  ASSERT_EQ(call.parse("@Echo(%list,&a)"), nullptr);
  EXPECT_EQ(numberOf(call.executeList(feature, variables_, results)), 209005U);
  variables_.set("%list", std::string("\x02") + "x\x01y");
  ASSERT_EQ(call.executeList(feature, variables_, results), nullptr);
  EXPECT_EQ(joined(results, " "), "<x><1> <y><1>");
  ASSERT_EQ(call.extractList(feature, {"p", "q"}, variables_), nullptr);
  std::string_view stored;
  ASSERT_TRUE(variables_.find("%list", stored));
  EXPECT_EQ(stored, "{p}{&a}\x01{q}{&a}");
  ASSERT_EQ(call.extractValue(feature, "val", variables_, result), nullptr);
  EXPECT_EQ(result, "{val}{&a}");
  ASSERT_EQ(call.parse("@Echo(x)"), nullptr);
  EXPECT_EQ(numberOf(call.executeList(feature, variables_, results)), 209003U);
  EXPECT_EQ(numberOf(call.extractList(feature, {"p"}, variables_)), 209007U);
  ASSERT_EQ(call.parse("@Echo(&a)"), nullptr);
  EXPECT_EQ(numberOf(call.executeList(feature, variables_, results)), 209004U);
}

TEST_F(Call, VariablesAreListedOnceInOrder) {
  VEXCommandParm call;
  VEXStringVector names;
  ASSERT_EQ(call.parse("@Echo(%b-%a,@Concatenate(%b,%c))"), nullptr);
  call.variables(names);
  EXPECT_EQ(joined(names, " "), "%b %a %c");
}

TEST_F(Call, ScopesHideAndGiveBack) {
  std::size_t id = registry().newScope();
  EXPECT_EQ(registry().find("Echo"), nullptr);
  registry().selectRoot();
  EXPECT_NE(registry().find("Echo"), nullptr);
  EXPECT_EQ(registry().selectScope(id), nullptr);
  EXPECT_EQ(registry().removeScope(id), nullptr);
  EXPECT_NE(registry().find("Echo"), nullptr);
  EXPECT_EQ(numberOf(registry().selectScope(id)), 210007U);
  EXPECT_EQ(numberOf(registry().removeScope(0)), 210006U);
  EXPECT_EQ(numberOf(registry().selectScope(99)), 210006U);
  EXPECT_EQ(numberOf(registry().configure({"Nobody"})), 210005U);
  VEXCommand* echo = registry().find("Echo");
  EXPECT_EQ(registry().unregisterCommand(echo), nullptr);
  EXPECT_EQ(numberOf(registry().unregisterCommand(nullptr)), 210001U);
}

// Every function of the list that is told by a rule refuses each wrong count with its number, and leaves the
// feature alone; it refuses configuration and a missing feature in the same way.
TEST_F(Call, CatalogueRefusesWrongCalls) {
  VEXStringVector names;
  registry().names(names);
  for (const std::string& name : names) {
    auto* command = dynamic_cast<VEXRuleCommand*>(registry().find(name));
    if (command == nullptr) continue;
    const VEXCommandRule& rule = command->rule();
    EXPECT_EQ(name, rule.name);
    if (rule.onConfigure != 0) {  // 0: the function takes rows of its own
      EXPECT_EQ(numberOf(command->configure({name})), rule.onConfigure) << name;
    }
    std::size_t right = 99;
    for (std::size_t count = 0; count < 12; ++count) {
      VEXFeaturePtr feature = makeFeature("t {a=1} line 0 0, 1 1");
      VEXStringVector params;
      for (std::size_t i = 0; i < count; ++i) params.push_back("q" + std::to_string(i));
      if (rule.count.accepts(count)) {
        right = std::min(right, count);
        continue;
      }
      std::string result;
      EXPECT_EQ(numberOf(command->execute(feature, params, result)), rule.onCount) << name << " with " << count;
      ASSERT_NE(feature, nullptr);
      EXPECT_EQ(describe(*feature), "t {a=1} line 0 0, 1 1") << name;
    }
    if (rule.onNoFeature == 0 || right == 99) continue;
    VEXFeaturePtr none;
    std::string result;
    EXPECT_EQ(numberOf(command->execute(none, VEXStringVector(right, "1"), result)), rule.onNoFeature) << name;
  }
}

TEST_F(Call, FirstFunctions) {
  struct Row {
    const char* call;
    const char* result;
  };
  for (const Row& row : {Row{"@Concatenate(a,&b,c)", "atwoc"}, Row{"@FeatureType()", "t"}, Row{"@Count()", "0"},
                         Row{"@Count()", "1"}, Row{"@Count(d,10,3)", "1"}, Row{"@Count(d,10,3)", "2"},
                         Row{"@Count(d,10,3)", "0"}, Row{"@Count(e,x)", "#814002"}, Row{"@Count(e,1,0)", "#814003"},
                         Row{"@Log(m,x)", "#827004"}, Row{"@Log(m,1,x)", "#827006"},
                         Row{"@SupplyAttributes(a)", "#844001"}, Row{"@SupplyAttributes(&none)", ""}, Row{"@SupplyAttributes(a,1,b)", "#844001"}})
    EXPECT_EQ(execute(row.call), row.result) << row.call;
  VEXFeaturePtr feature = makeFeature("t {b=2, a=1}");
  std::string all;
  std::string result;
  ASSERT_EQ(VEXFeature::performFunction("@SupplyAttributes()", feature, all), nullptr);
  EXPECT_EQ(all,
            "a\x01"
            "1\x01"
            "b\x01"
            "2");
  ASSERT_EQ(VEXFeature::performFunction("@FeatureType(other)", feature, result), nullptr);
  ASSERT_EQ(VEXFeature::performFunction("@SupplyAttributes(a,9,c,3)", feature, result), nullptr);
  EXPECT_EQ(describe(*feature), "other {a=9, b=2, c=3}");
  VEXStatus aborted = VEXFeature::performFunction("@Abort(why)", feature, result);
  ASSERT_NE(aborted, nullptr);
  EXPECT_EQ(aborted->message(), "Aborting Translation as directed by control file. Message is 'why'");
}

}  // namespace
