// @Evaluate and @TCL: what scripts see and change, and how they fail.
#include <fstream>

#include "tests/unit/funcs/functest.h"
#include "vex/src/tclbind.h"

namespace {

// "@Vanish()" deletes the feature.
class VanishCommand final : public VEXCommand {
 public:
  const char* name() const override { return "Vanish"; }
  VEXStatus execute(VEXFeaturePtr& feature, const VEXStringVector&, std::string& result) override {
    feature.reset();
    result = "gone";
    return nullptr;
  }
  VEXStatus extract(VEXFeaturePtr&, const VEXStringVector&, std::string&) override { return nullptr; }
  VEXStatus configure(const VEXStringVector&) override { return nullptr; }
};

class Scripts : public FunctionTest {
 protected:
  void SetUp() override {
    if (!VEXTclInterp().isReady()) GTEST_SKIP() << "no Tcl library on this machine";
    VEXCommandRegistry::instance().registerCommand(std::make_unique<VanishCommand>(), "Vanish");
  }
  // The text of the failure of a script.
  static std::string failureOf(const std::string& call, VEXFeaturePtr feature = makeFeature("t point 1 2")) {
    std::string result;
    const VEXStatus failure = VEXFeature::performFunction(call, feature, result);
    return failure == nullptr ? "no failure: " + result : failure->message();
  }
};

TEST_F(Scripts, ExpressionsAreEvaluated) {
  for (int round = 0; round < 3; ++round)  // the second time a text is compiled, the third it is reused
    hold({{"t", "@Evaluate(1+1)", "2"},
          {"t", "@Evaluate(10/4.0)", "2.5"},
          {"t", "@Evaluate(1.0/3)", "0.333333333333333"},
          {"t {a=6, b=7}", "@Evaluate(&a * &b)", "42"},
          {"t", "@Evaluate([string length abc])", "3"},
          {"t", "@Evaluate([)", ""},
          {"t", "@Evaluate([set kept 1])", "1"},
          {"t", "@Evaluate(1+)", "#818005"},
          {"t", "@Evaluate([ORV_Execute @Count()])", "#818005"},
          {"t", "@Evaluate([exit])", "#818005"},
          {"t", "@Evaluate(['1','2'])", "#818005"},
          {"t", "@Evaluate(1,2)", "#818001"},
          {"t", "@Evaluate([''])", "#818002"}});
  hold({{"t", "@Evaluate(1+1)", ""}}, true);
  hold({{"t", "@Evaluate([set kept])", "1"}});
  VEXCommandRegistry::instance().closeDownAll();
  hold({{"t", "@Evaluate([set kept])", "#818005"}});
}

// What a script has not read yet is there all the same, and it is this feature's.
TEST_F(Scripts, ChangeWhatTheyHaveNotRead) {
  hold({{"t {a=1, b=2}", "@TCL(unset ORV_Attributes(a))", "", "t {b=2}"},
        {"t {c=1, b=2}", "@TCL(unset -nocomplain ORV_Attributes(c) ORV_Attributes(none))", "", "t {b=2}"},
        {"t {d=1}", "@TCL(upvar #0 ORV_Attributes x; unset x(d))", "", "t"},
        {"t {d=1}", "@TCL(unset ORV_Attributes(none))", "#818053"},
        {"t", "@TCL(unset ORV_FeatureType)", "", ""},
        {"t {e=1}", "@TCL(append ORV_Attributes(e) q r)", "1qr", "t {e=1qr}"},
        {"t {e=5}", "@TCL(append ORV_Attributes(e) q)", "5q", "t {e=5q}"},
        {"t {e=7}", "@TCL(proc p {} {upvar #0 ORV_Attributes v; append v(e) q}; p)", "7q", "t {e=7q}"},
        {"t", "@TCL(append ORV_Attributes(e) q)", "q", "t {e=q}"},
        {"t", "@TCL(append ORV_FeatureType x)", "tx", "tx"},
        {"u {f=1}", "@TCL(lappend ORV_Attributes(f) 2)", "1 2", "u {f=1 2}"},
        {"u", "@TCL(append ORV_FeatureType x)", "ux", "ux"},
        {"u {g=1}", "@TCL(append none(x) a; append none(x) b; unset none; append y)", "#818053"},
        {"u {g=3}", "@TCL(incr ORV_Attributes(g); dict set ORV_Attributes(h) k v)", "k v", "u {g=4, h=k v}"}});
}

TEST_F(Scripts, SeeAndChangeTheFeature) {
  for (int round = 0; round < 3; ++round)
    hold({{"t", "@TCL(expr 1+1)", "2"},
          {"t {a=1}", "@TCL(set ORV_FeatureType abc)", "abc", "abc {a=1}"},
          {"t", "@TCL(set x $ORV_FeatureType)", "t"},
          {"t", "@TCL(unset ORV_FeatureType)", "", ""},
          {"t {a=1}", "@TCL(set ORV_Attributes(b) $ORV_Attributes(a)2)", "12", "t {a=1, b=12}"},
          {"t {a=1, b=2}", "@TCL(unset ORV_Attributes(a))", "", "t {b=2}"},
          {"t {b=2}", "@TCL(info exists ORV_Attributes(a))", "0"},
          {"t {b=2}", "@TCL(set ORV_Attributes(a))", "#818053"},
          {"t {a=}", "@TCL(info exists ORV_Attributes(a))", "1"},
          {"t {a=1, c=3, b=2}", "@TCL(lsort [array names ORV_Attributes])", "a b c", "t {a=1, b=2, c=3}"},
          {"t {z=9}", "@TCL(array get ORV_Attributes)", "z 9"},
          {"t {z=9}", "@TCL(incr ORV_Attributes(z))", "10", "t {z=10}"},
          {"t {z=9}", "@TCL(append ORV_Attributes(y) q)", "q", "t {y=q, z=9}"},
          {"t {z=9}", "@TCL(foreach {n v} [array get ORV_Attributes] {set ORV_Attributes(new$n) $v})", "",
           "t {newz=9, z=9}"},
          {"t {a=1, b=2}", "@TCL(unset ORV_Attributes)", "", "t"},
          {"t {a=[x] $y}", "@TCL(set ORV_Attributes(b) $ORV_Attributes(a))", "[x] $y", "t {a=[x] $y, b=[x] $y}"},
          {"t {a=1}", "@TCL(proc p {} {global ORV_Attributes; return $ORV_Attributes(a)}; p)", "1"}});
  VEXFeaturePtr feature = makeFeature("t");
  EXPECT_EQ(perform(feature, "@TCL(set ORV_CoordSys UTM-10; set ORV_CoordSys)"), "UTM-10");
  EXPECT_EQ(feature->coordSys(), "UTM-10");
  EXPECT_EQ(perform(feature, "@TCL(unset ORV_CoordSys)", true), "");
  EXPECT_EQ(feature->coordSys(), "UTM-10");  // the source side does nothing
}

// A plain "(" behind the name would have the call evaluated in front of the script.
TEST_F(Scripts, CallFunctions) {
  hold({{"t {a=1}", "@TCL(ORV_Execute @SupplyAttributes\\(b,2\\))", "", "t {a=1, b=2}"},
        {"t {a=1}", "@TCL(ORV_Execute @Concatenate\\(x\\ y,&a,\\))", "x y1"},
        {"t {a=1}", "@TCL(catch {ORV_Execute @Nope\\(\\)} why; string range $why 0 4)", "There"},
        {"t {a=5}", "@TCL(expr [ORV_Execute @TCL\\(set ORV_Attributes(a)\\)] + [set ORV_Attributes(a)])", "10"}});
  EXPECT_NE(failureOf("@TCL(ORV_Execute)").find("ORV_Execute procedure requires at least one parameter"),
            std::string::npos);
  EXPECT_NE(failureOf("@TCL(ORV_Execute @Vanish\\(\\))")
                .find("ORV_Execute: executing `@Vanish()' caused the feature to be deleted"),
            std::string::npos);
  // A script that carries on without its feature finds nothing, and harms nothing.
  VEXFeaturePtr feature = makeFeature("t {a=1}");
  EXPECT_EQ(perform(feature,
                    "@TCL(catch {ORV_Execute @Vanish\\(\\)}; set ORV_Attributes(b) 2; set ORV_FeatureType u; "
                    "list [info exists ORV_Attributes(a)] [array size ORV_Attributes] "
                    "[catch {ORV_Coordinates numCoords}] [catch {ORV_Execute @Count\\(\\)}])"),
            "0 0 1 1");
  EXPECT_EQ(feature, nullptr);
}

TEST_F(Scripts, RecursionEnds) {
  VEXFeaturePtr feature = makeFeature("t");
  EXPECT_EQ(perform(feature, "@TCL(proc again {} {ORV_Execute @TCL\\(again\\)}; again)"), "#818053");
  EXPECT_EQ(perform(feature, "@TCL(proc deeper {} {deeper}; deeper)"), "#818053");
  EXPECT_EQ(perform(feature, "@TCL(expr 1)"), "1");
}

TEST_F(Scripts, WorkOnCoordinates) {
  hold(
      {{"t line 1 2, 3 4", "@TCL(ORV_Coordinates numCoords)", "2"},
       {"t line 1 2, 3 4", "@TCL(list [ORV_Coordinates geomType] [ORV_Coordinates dimension])", "orv_line 2"},
       {"t line 1 2, 3 4", "@TCL(ORV_Coordinates getCoord 1 y)", "4"},
       {"t line 1 2, 3 4", "@TCL(ORV_Coordinates getCoord 1 z)", "0"},
       {"t line 1 2, 3 4", "@TCL(ORV_Coordinates addCoord 5 6.5)", "", "t line 1 2, 3 4, 5 6.5"},
       {"t point 1 2", "@TCL(ORV_Coordinates dimension 3; ORV_Coordinates addCoord 1 2 3)", "", "t point 1 2 0, 1 2 3"},
       {"t line 1 2, 3 4", "@TCL(ORV_Coordinates resetCoords; ORV_Coordinates geomType orv_point)", "", "t point"}});
  for (const auto& [words, text] : std::initializer_list<std::pair<const char*, const char*>>{
           {"", "ORV_Coordinates procedure requires at least one parameter"},
           {" getCoord 0 w", "Invalid axis for getCoord -- `w' must be one of x, y, or z"},
           {" getCoord 0", "Invalid subcommand `getCoord' or incorrect number of arguments given for ORV_Coordinates"},
           {" nothing", "Invalid subcommand `nothing' or incorrect number of arguments given for ORV_Coordinates"},
           {" addCoord 1 x", "Invalid subcommand `addCoord' or incorrect"},
           {" geomType orv_blob", "Invalid subcommand `geomType' or incorrect"},
           {" dimension 4", "Invalid subcommand `dimension' or incorrect"},
           {" getCoord 1 x", "There is no coordinate 1"},
           {" getCoord -1 x", "There is no coordinate -1"}})
    EXPECT_NE(failureOf("@TCL(ORV_Coordinates" + std::string(words) + ")").find(text), std::string::npos) << words;
}

TEST_F(Scripts, WriteMessages) {
  hold({{"t", "@TCL(ORV_LogMessage orv_warn 823004 name {its value})", ""}});
  EXPECT_EQ(engine_.logged("`name' ends with the value `its value'"), 1U);
  for (const auto& [words, text] : std::initializer_list<std::pair<const char*, const char*>>{
           {" orv_warn", "ORV_LogMessage procedure requires at least a severity and a message number"},
           {" loud 1",
            "ORV_LogMessage -- severity parameter `loud' is invalid --  must be one of orv_inform, orv_warn, "
            "orv_error, orv_fatal, orv_statistic, orv_statusreport"},
           {" orv_warn x", "`x' is no message number"}})
    EXPECT_NE(failureOf("@TCL(ORV_LogMessage" + std::string(words) + ")").find(text), std::string::npos) << words;
}

TEST_F(Scripts, RowsPrepareTheInterpreter) {
  const std::string path = scratchDirectory() + "prepare.tcl";
  std::ofstream(path) << "proc double {x} {expr {2 * $x}}\n";
  const std::string broken = scratchDirectory() + "broken.tcl";
  std::ofstream(broken) << "no such command\n";
  EXPECT_EQ(configure("TCL source " + path), 0U);
  EXPECT_EQ(configure("TCL set factor 21"), 0U);
  EXPECT_EQ(configure("TCL source " + broken), 818053U);
  EXPECT_EQ(configure("TCL source " + scratchDirectory() + "none.tcl"), 818053U);
  EXPECT_EQ(configure("TCL set factor"), 818054U);
  EXPECT_EQ(configure("TCL unset factor"), 818054U);
  EXPECT_EQ(configure("TCL"), 818054U);
  hold({{"t", "@TCL(double $factor)", "42"}, {"t", "@TCL(a,b)", "#818052"}, {"t", "@TCL(error oops)", "#818053"}});
  VEXCommandRegistry::instance().closeDownAll();
  hold({{"t", "@TCL(double $factor)", "#818053"}});
}

}  // namespace
