// The geometry functions: every call in both directions, with what it gives and leaves behind.
#include <gtest/gtest.h>

#include "tests/unit/support.h"
#include "vex/inc/numtext.h"
#include "vex/src/cmdparm.h"

namespace {

struct Row {
  const char* feature;
  const char* call;    // "<" in front: on the source side
  const char* result;  // of the call
  const char* after;   // null: the feature as it was; empty: deleted
  std::uint32_t message = 0;
};

class Geometry : public ::testing::Test {
 protected:
  void check(std::initializer_list<Row> rows) {
    for (const Row& row : rows) {
      std::string_view call = row.call;
      const bool isSource = call[0] == '<';
      if (isSource) call.remove_prefix(1);
      VEXFeaturePtr feature = makeFeature(row.feature);
      const std::string before = describe(*feature);
      VEXCommandParm parsed;
      VEXVariableTable variables;
      std::string result;
      VEXStatus failure = parsed.parse(call);
      if (failure == nullptr)
        failure = isSource ? parsed.extract(feature, variables, result) : parsed.execute(feature, variables, result);
      const std::string where = std::string(row.call) + " on " + row.feature;
      EXPECT_EQ(failure == nullptr ? 0U : failure->messageNumber(), row.message) << where;
      EXPECT_EQ(failure == nullptr ? result : "", row.result) << where;
      EXPECT_EQ(feature == nullptr ? "" : describe(*feature), row.after == nullptr ? before : row.after) << where;
      if (feature == nullptr) continue;
      EXPECT_EQ(feature->ys().size(), feature->numCoords()) << where;
      EXPECT_EQ(feature->zs().size(), feature->dimension() == 3 ? feature->numCoords() : 0) << where;
    }
  }
  EngineScope engine_;
};

constexpr const char* kSquare = "t polygon 0 0, 10 0, 10 10, 0 10, 0 0";
constexpr const char* kDonut = "t donut 0 0, 10 0, 10 10, 0 10, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2";
constexpr const char* kFlatDonut = "t polygon 0 0, 10 0, 10 10, 0 10, 0 0, 2 2, 2 4, 4 4, 4 2, 2 2";
constexpr const char* kAggregate = "t aggregate 1 1, 7 8, 2 2, 0 0, 3 4, 512 5, 4 4, 0 0, 2 0, 2 2, 0 0";
constexpr const char* kLying = "t aggregate 2 9, 0 0, 1 1";

TEST_F(Geometry, Reading) {
  check({
      {"t line 3 4 5, 6 7 8", "@XValue()", "3", nullptr},
      {"t line 3 4 5, 6 7 8", "<@YValue(%y)", "4", nullptr},
      {"t line 3 4 5, 6 7 8", "@ZValue()", "5", nullptr},
      {"t line 3 4", "@ZValue()", "0", nullptr},
      {"t line 3 4", "<@ZValue(%z)", "0", nullptr},
      {"t line", "@XValue()", "", nullptr},
      {kAggregate, "@YValue()", "8", nullptr},
      {kLying, "@XValue()", "", nullptr, 244023},
      {"t line 0 0", "<@XValue(a,b,c)", "", nullptr, 846001},
      {"t line 0 0", "<@YValue(a,b)", "", nullptr, 847001},
      {"t line 0 0", "<@ZValue(a,b)", "", nullptr, 848001},
      {kDonut, "@NumCoords()", "10", nullptr},
      {"t", "<@NumCoords()", "0", nullptr},
      {kSquare, "@NumHoles()", "0", nullptr},
      {kDonut, "@NumHoles()", "1", nullptr},
      {kFlatDonut, "<@NumHoles()", "1", nullptr},
      {"t polygon 0 0, 1 0, 1 1, 0 0, 1 1, 2 1, 2 2, 1 1", "@NumHoles()", "0", nullptr},  // shells that touch
      {kLying, "@NumHoles()", "", nullptr, 244023},
      {"t line 0 0 0", "<@Dimension()", "3", nullptr},
      {kAggregate, "@GeometryType()", "orv_aggregate", nullptr},
      {"t 64 0 0, 1 1", "<@GeometryType(%t)", "orv_multi_line", nullptr},
      {kSquare, "<@GeometryType(a,b)", "", nullptr, 393301},
      {kSquare, "@CoordSys()", "", nullptr},
      {"t line 1 2, 3 4", "@Coordinate(X,0)", "1", nullptr},
      {"t line 1 2, 3 4", "<@Coordinate(C2,END)", "4", nullptr},
      {"t line 1 2, 3 4", "@Coordinate(z,1)", "0", nullptr},
      {"t line 1 2 9", "@Coordinate(c3,0)", "9", nullptr},
      {"t line 0 0, 1 1, 2 2, 3 3, 4 4", "@Coordinate(x,99)", "", nullptr, 813004},
      {"t line 0 0", "@Coordinate(x,-1)", "", nullptr, 813004},
      {"t", "@Coordinate(x,END)", "", nullptr, 813004},
      {"t line 0 0", "@Coordinate(x,one)", "", nullptr, 813003},
      {"t line 0 0", "@Coordinate(w,0)", "", nullptr, 813005},
      {"t", "@SAIFAngle(0)", "90", nullptr},
      {"t", "@SAIFAngle(90)", "0", nullptr},
      {"t", "@SAIFAngle(100.25)", "349.75", nullptr},
      {"t", "<@SAIFAngle(-1000)", "10", nullptr},
      {"t", "@SAIFAngle(east)", "", nullptr, 801003},
  });
}

TEST_F(Geometry, Measuring) {
  check({
      {kSquare, "@Area()", "100", nullptr},
      {kSquare, "<@Area(0.5)", "50", nullptr},
      {kDonut, "@Area()", "96", nullptr},
      {kFlatDonut, "@Area()", "96", nullptr},
      {kAggregate, "@Area()", "2", nullptr},
      {"t line 0 0, 1 1", "@Area()", "0", nullptr},
      {"t", "@Area()", "0", nullptr},
      {"t polygon 0 0, 1 1, 0 0", "@Area()", "0", nullptr},
      {"t polygon 5 5", "@Area()", "0", nullptr},
      {"t polygon 0 0, nan 0, 1 1, 0 0", "@Area()", "nan", nullptr},
      {kLying, "@Area()", "", nullptr, 244023},
      {kSquare, "@Area(big)", "", nullptr, 803005},
      {"t line 0 0 0, 3 4 12", "@Length()", "5", nullptr},
      {"t line 0 0 0, 3 4 12", "@Length(3)", "13", nullptr},
      {"t line 0 0, 3 4", "<@Length(3,2)", "10", nullptr},
      {"t line 0 0, 3 4, 3 4, 9 9, 9 10", "@Length()", "6", nullptr},
      {kDonut, "@Length()", "48", nullptr},
      {"t polygon 0 0 0, 3 0 4, 0 0 0", "@Length(3)", "10", nullptr},
      {"t 0 0 0, 3 4, 0 0", "@Length()", "10", nullptr},
      {"t point 1 1", "@Length()", "0", nullptr},
      {kAggregate, "@Length(2)", "11.8284271247462", nullptr},
      {kSquare, "@Length(4)", "", nullptr, 826003},
      {kSquare, "@Length(2,wide)", "", nullptr, 826005},
      {kLying, "@Length()", "", nullptr, 244023},
      {kSquare, "@Circularity()", "0.785398163397448", nullptr},
      {"t point 1 1", "<@Circularity()", "0", nullptr},
      {"t line -1 5, 3 2", "@Bounds(a,b,c,d)", "", "t {a=-1, b=3, c=2, d=5} line -1 5, 3 2"},
      {"t point 1 2", "<@Bounds(a,b,c,d,e,f)", "", "t {a=1, b=1, c=2, d=2, e=0, f=0} point 1 2"},
      {"t line 1 2 3, 1 2 9", "@Bounds(a,b,c,d,e,f)", "", "t {a=1, b=1, c=2, d=2, e=3, f=9} line 1 2 3, 1 2 9"},
      {"t {a=7} line", "@Bounds(a,b,c,d)", "", "t {a=, b=, c=, d=} line"},
      {kAggregate, "@Bounds(a,b,c,d)", "",
       "t {a=0, b=7, c=0, d=8} aggregate 1 1, 7 8, 2 2, 0 0, 3 4, 512 5, 4 4, 0 0, 2 0, 2 2, 0 0"},
      {kLying, "@Bounds(a,b,c,d)", "", nullptr, 244023},
  });
}

TEST_F(Geometry, BuildingFromAttributes) {
  check({
      {"t {x=1, y=2} line 9 9, 8 8", "@XValue(&x,Reset)", "", "t {x=1, y=2} point 1 0"},
      {"t {x=1, y=2}", "@Concatenate(@XValue(&x,Reset),@YValue(&y))", "", "t {x=1, y=2} point 1 2"},
      {"t", "@Concatenate(@YValue(2),@XValue(1))", "", "t point 1 2"},
      {"t", "@Concatenate(@XValue(1),@YValue(2),@ZValue(3),@XValue(4),@YValue(5),@ZValue(6))", "",
       "t line 1 2 3, 4 5 6"},
      {"t", "@Concatenate(@XValue(1),@XValue(3),@YValue(2),@YValue(4))", "", "t line 1 2, 3 4"},
      {"t", "@Concatenate(@XValue(5),@Area())", "0", "t point 5 0"},  // a y is still missing: it is 0
      {"t line 1 1", "@Concatenate(@ZValue(7),@ZValue(8))", "", "t line 1 1 7, 0 0 8"},
      {"t", "@Concatenate(@XValue(1),@Scale(2),@YValue(3))", "", "t point 2 0, 0 3"},
      {"t line 1 1", "@XValue(&none)", "", nullptr},
      {"t line 1 1", "@XValue(&none,Reset)", "", "t line"},
      {"t line 1 1", "@XValue(east)", "", nullptr, 846005},
      {"t line 1 1", "@XValue(east,Reset)", "", nullptr, 846005},
      {"t line 1 1", "@YValue(north)", "", nullptr, 847005},
      {"t line 1 1", "@ZValue(up)", "", nullptr, 848006},
      {"t line 1 2, 3 4", "@Dimension(3)", "", "t line 1 2 0, 3 4 0"},
      {"t line 1 2 5", "@Dimension(3)", "", nullptr},
      {"t line 1 2 5", "@Dimension(2)", "", "t line 1 2"},
      {"t line 1 2 5", "@Dimension(4)", "", nullptr, 816004},
      {"t line 1 2 5", "@Force2D()", "3", "t line 1 2"},
      {"t line 1 2", "<@Force2D()", "2", nullptr},
      {"t line 0 0, 1 1", "@GeometryType(orv_polygon)", "", "t polygon 0 0, 1 1"},
      {"t line 0 0, 1 1", "@GeometryType(orv_undefined)", "", "t 0 0 0, 1 1"},
      {"t line 0 0, 1 1", "@GeometryType(polygon)", "", nullptr, 393306},
      {kAggregate, "@RemoveGeometry()", "", "t"},
      {kAggregate, "<@RemoveGeometry()", "", nullptr},
  });
}

TEST_F(Geometry, Moving) {
  check({
      {"t line 1 2 3", "@Scale(2)", "", "t line 2 4 3"},
      {"t line 1 2 3", "@Scale(2,3,4)", "", "t line 2 6 12"},
      {"t line 2 6 12", "<@Scale(2,3,4)", "", "t line 1 2 3"},
      {"t line 1 2", "@Scale(2,3,4)", "", "t line 2 6"},
      {"t line 1 2", "@Scale(2,3,0)", "", nullptr, 842001},
      {"t line 1 2", "<@Scale(0)", "", nullptr, 842001},
      {"t line 1 2", "@Scale(a)", "", nullptr, 842004},
      {"t line 1 2", "@Scale(1,b)", "", nullptr, 842005},
      {"t line 1 2", "<@Scale(1,1,c)", "", nullptr, 842006},
      {"t line 1 2", "<@Scale()", "", nullptr, 842002},
      {kLying, "@Scale(2)", "", nullptr, 244023},
      {"t line 1 0", "@Rotate2D(90)", "", "t line 0 1"},
      {"t line 1 0", "<@Rotate2D(90)", "", "t line 0 -1"},
      {"t line 7 5", "@Rotate2D(180,5,5)", "", "t line 3 5"},
      {"t line 7 5", "@Rotate2D(-270,5,5)", "", "t line 5 7"},
      {kAggregate, "@Rotate2D(90)", "", "t aggregate 1 1, -8 7, 2 2, 0 0, -4 3, 512 5, 4 4, 0 0, 0 2, -2 2, 0 0"},
      {"t line 1 0", "@Rotate2D(right)", "", nullptr, 840003},
      {"t line 1 0", "@Rotate2D(1,a,0)", "", nullptr, 840004},
      {"t line 1 0", "<@Rotate2D(1,0,b)", "", nullptr, 840005},
      {"t line 1 0", "@Rotate2D(1,2)", "", nullptr, 840001},
      {"t line 1 2", "@Offset(1,2)", "", "t line 2 4"},
      {"t line 1 2 3", "@Offset(0.5,2,-3)", "", "t line 1.5 4 0"},
      {"t line 1.5 4 0", "<@Offset(0.5,2,-3)", "", "t line 1 2 3"},
      {kLying, "<@Offset(1,1)", "", nullptr, 244023},
      {"t line 1 2", "@Offset(a,2)", "", nullptr, 833003},
      {"t line 1 2", "@Offset(1,b)", "", nullptr, 833004},
      {"t line 1 2", "@Offset(1,2,c)", "", nullptr, 833005},
      {"t line 1 2", "@Affine(2,0,5,0,3,7)", "", "t line 7 13"},
      {"t line 7 13", "<@Affine(2,0,5,0,3,7)", "", "t line 1 2"},
      {"t line 1 2", "@Affine(0,-1,0,1,0,0)", "", "t line -2 1"},
      {"t line -2 1", "<@Affine(0,-1,0,1,0,0)", "", "t line 1 2"},
      {"t aggregate 1 1, 5 5", "@Affine(1,0,1,0,1,1)", "", "t aggregate 1 1, 6 6"},
      {"t line 1 2", "<@Affine(1,0,0,0,e,0)", "", nullptr, 800001},
      {"t line 1.25 2", "@RoundOffCoords(x,1)", "", "t line 1.3 2"},
      {"t line -1.25 2", "<@RoundOffCoords(X,1)", "", "t line -1.3 2"},
      {"t line 149 2, 150 2", "@RoundOffCoords(C1,-2)", "", "t line 100 2, 200 2"},
      {"t line 1 2 3.7", "@RoundOffCoords(c3,0)", "", "t line 1 2 4"},
      {"t line 1.01 2 1, 1.02 2 5, 3 4 6", "@RoundOffCoords(x,1)", "", "t line 1 2 5, 3 4 6"},
      {"t line 0 0, 1.01 0, 1.01 0, 1.02 0, 2 0", "@RoundOffCoords(x,1)", "", "t line 0 0, 1 0, 1 0, 1 0, 2 0"},
      {"t donut 0 0, 9 0, 9 9, 0 0, 0.1 0, 2 0, 2 1, 0.1 0", "@RoundOffCoords(x,0)", "",
       "t donut 0 0, 9 0, 9 9, 0 0, 0 0, 2 0, 2 1, 0 0"},
      {"t donut 0 0, 9 0, 9 9, 0 0, 5 1, 5.1 1, 5.2 1, 5 1", "@RoundOffCoords(x,0)", "",
       "t polygon 0 0, 9 0, 9 9, 0 0"},
      {"t aggregate 1 1, 1.2 0, 2 2, 0.1 0, 0.2 0", "@RoundOffCoords(x,0)", "", "t aggregate 1 1, 1 0, 2 1, 0 0"},
      {"t line 1.5 nan, 1e300 0", "@RoundOffCoords(y,400)", "", nullptr},
      {"t line 1.5 0", "@RoundOffCoords(x,-400)", "", "t line 0 0"},
      {kLying, "@RoundOffCoords(x,0)", "", nullptr, 244023},
      {"t line 1 2", "@RoundOffCoords(x,few)", "", nullptr, 841003},
      {"t line 1 2", "@RoundOffCoords(w,1)", "", nullptr, 841004},
  });
}

TEST_F(Geometry, RingsAndParts) {
  check({
      {kSquare, "@Orient(RIGHT_HAND_RULE)", "", "t polygon 0 0, 0 10, 10 10, 10 0, 0 0"},
      {kSquare, "<@Orient(LEFT_HAND_RULE)", "", "t polygon 0 0, 0 10, 10 10, 10 0, 0 0"},
      {kSquare, "@Orient(LEFT_HAND_RULE)", "", nullptr},
      {kDonut, "@Orient(LEFT_HAND_RULE)", "", "t donut 0 0, 10 0, 10 10, 0 10, 0 0, 2 2, 2 4, 4 4, 4 2, 2 2"},
      {kFlatDonut, "@Orient(RIGHT_HAND_RULE)", "", "t polygon 0 0, 0 10, 10 10, 10 0, 0 0, 2 2, 4 2, 4 4, 2 4, 2 2"},
      {kAggregate, "@Orient(RIGHT_HAND_RULE)", "",
       "t aggregate 1 1, 7 8, 2 2, 0 0, 3 4, 512 5, 4 4, 0 0, 2 2, 2 0, 0 0"},
      {"t line 0 0, 1 1", "@Orient(RIGHT_HAND_RULE)", "", nullptr},
      {"t polygon 5 5", "@Orient(RIGHT_HAND_RULE)", "", nullptr},
      {kLying, "@Orient(RIGHT_HAND_RULE)", "", nullptr, 244023},
      {kSquare, "@Orient(right)", "", nullptr, 834002},
      {"t line 0 0 1, 1 1 2", "@Orient(REVERSE)", "", "t line 1 1 2, 0 0 1"},
      {"t line 0 0, 1 1, 1 1, 2 2, 3 3", "<@Orient(REVERSE)", "", "t line 1 1, 0 0, 0 0, 3 3, 2 2"},
      {kDonut, "@Orient(REVERSE)", "", "t donut 0 0, 0 10, 10 10, 10 0, 0 0, 2 2, 2 4, 4 4, 4 2, 2 2"},
      {kAggregate, "@Orient(REVERSE)", "", "t aggregate 1 1, 7 8, 2 2, 3 4, 0 0, 512 5, 4 4, 0 0, 2 2, 2 0, 0 0"},
      {"t", "@Orient(REVERSE)", "", nullptr},
      {"t line 0 0 5, 1 0 6, 1 1 7", "@Close()", "", "t polygon 0 0 5, 1 0 6, 1 1 7, 0 0 5"},
      {"t line 0 0, 1 0, 0 0", "@Close()", "", "t polygon 0 0, 1 0, 0 0"},
      {"t line 0 0, 1 0, 1 1, 1 1, 5 5, 6 5, 6 6", "@Close()", "", "t polygon 0 0, 1 0, 1 1, 0 0, 5 5, 6 5, 6 6, 5 5"},
      {"t line 3 3", "@Close()", "", "t polygon 3 3"},
      {"t line", "@Close()", "", "t polygon"},
      {"t polygon 0 0, 1 1", "@Close()", "", nullptr},
      {"t point 0 0", "@Close()", "", nullptr},
      {"t line 0 0, 1 1", "<@Close()", "", nullptr},
      {"t line 0 0 1, 4 2 3", "@ConvertToPoint()", "", "t point 2 1 2"},
      {kAggregate, "@ConvertToPoint()", "", "t point 3.5 4"},
      {"t polygon nan nan, nan nan", "@ConvertToPoint()", "", "t point nan nan"},
      {"t", "@ConvertToPoint()", "", nullptr},
      {kLying, "@ConvertToPoint()", "", nullptr, 244023},
      {"t line 0 0, 4 2", "<@ConvertToPoint()", "", nullptr},
      {kSquare, "@GeneratePoint()", "", "t 256 5 5"},
      {"t donut 0 0 1, 9 0 1, 9 9 1, 0 9 1, 0 0 1, 4 1 1, 4 8 1, 5 8 1, 5 1 1, 4 1 1", "@GeneratePoint()", "",
       "t 256 2 4.5 1"},
      {kAggregate, "@GeneratePoint()", "", nullptr},  // its first part is no area
      {"t line 0 0, 1 1", "@GeneratePoint()", "", nullptr},
      {kLying, "@GeneratePoint()", "", nullptr},
      {kSquare, "<@GeneratePoint()", "", nullptr},
  });
}

TEST_F(Geometry, ArcsAndVertices) {
  engine_.row("ORV_ARC_DEGREES_PER_EDGE 90");
  check({
      {"t point 5 5 2", "@Arc(2,1,4,0)", "", "t polygon 7 5 2, 5 6 2, 3 5 2, 5 4 2, 7 5 2"},
      {"t point 0 0", "@Arc(2,1,2,90,0,180)", "", "t line 0 2, -1 0, 0 -2"},
      {"t", "@Arc(1,1,1,0,90,-90,10,10)", "", "t line 10 11, 11 10"},
      {"t point 5 5", "@Arc(0,0,4,0)", "", "t point 5 5"},
      {"t line 5 5, 9 9", "@Arc(2,1,0,0)", "", "t point 5 5"},  // nothing is stroked
      {"t", "@Arc(1,1,4,0)", "", nullptr, 802005},
      {"t point 0 0", "@Arc(1,1,4,0,90)", "", nullptr, 802003},
      {"t point 0 0", "@Arc(1,b,4,0)", "", nullptr, 802001},
      {"t point 0 0", "@Arc(1,1,-4,0)", "", nullptr, 802002},
      {"t point 0 0", "@Arc(1,1,4.5,0)", "", nullptr, 802002},
      {"t point 0 0", "@Arc(1,1,99999999,0)", "", nullptr, 878003},
      {"t point 0 0", "<@Arc(1,1,4,0)", "", nullptr},
      {"t line 1 0 3, 0 1 4, -1 0 5", "@ConvertToArc(p,s,a,b)", "", "t {a=0, b=180, p=1, s=1} point 0 0 3"},
      {"t line 1 0, 0 1", "@ConvertToArc(p,s,a,b)", "", nullptr, 244018},
      {"t line 1 0, 2 0, 3 0", "@ConvertToArc(p,s,a,b)", "", nullptr, 244019},
      {"t {a=0, b=180, p=2, s=1} point 1 1", "<@ConvertToArc(p,s,a,b)", "",
       "t {a=0, b=180, p=2, s=1} line 3 1, 1 2, -1 1"},
      {"t {a=0, b=1, p=0, s=1} point 1 1", "<@ConvertToArc(p,s,a,b)", "", nullptr, 809003},
      {"t {a=0, b=1, p=1} point 1 1", "<@ConvertToArc(p,s,a,b)", "", nullptr, 809004},
      {"t {a=x, b=1, p=1, s=1} point 1 1", "<@ConvertToArc(p,s,a,b)", "", nullptr, 809005},
      {"t {a=0, p=1, s=1} point 1 1", "<@ConvertToArc(p,s,a,b)", "", nullptr, 809006},
      {"t {a=0, b=1, p=1, s=1}", "<@ConvertToArc(p,s,a,b)", "", nullptr, 809010},
      {"t {a=0, b=1e300, p=1, s=1} point 1 1", "<@ConvertToArc(p,s,a,b)", "", nullptr, 878003},
      {"t point 1 1", "<@ConvertToArc(p)", "", nullptr, 809001},
      {"t line 0 0 0, 4 0 8", "@AddVertices(COUNT,1)", "", "t line 0 0 0, 2 0 4, 4 0 8"},
      {"t line 0 0, 4 0, 5 0", "@AddVertices(INTERVAL,1.5)", "",
       "t line 0 0, 1.33333333333333 0, 2.66666666666667 0, 4 0, 5 0"},
      {"t line 0 0, 4 0, 4 3", "@AddVertices(DISTANCE,2.5)", "", "t line 0 0, 2.5 0, 4 0, 4 1, 4 3"},
      {"t line 0 0, 2 0, 2 0, 8 0, 8 2", "@AddVertices(COUNT,1)", "", "t line 0 0, 1 0, 2 0, 2 0, 8 0, 8 1, 8 2"},
      {kAggregate, "@AddVertices(COUNT,1)", "",
       "t aggregate 1 1, 7 8, 2 3, 0 0, 1.5 2, 3 4, 512 8, 4 7, 0 0, 1 0, 2 0, 2 1, 2 2, 1 1, 0 0"},
      {kSquare, "<@AddVertices(COUNT,1)", "", nullptr},
      {kSquare, "@AddVertices(COUNT,0)", "", nullptr, 799003},
      {kSquare, "@AddVertices(INTERVAL,-1)", "", nullptr, 799003},
      {kSquare, "@AddVertices(DISTANCE,1e-300)", "", nullptr, 244025},
      {"t line 0 0, inf 0", "@AddVertices(INTERVAL,1)", "", nullptr, 244025},
      {"t point 0 0", "@AddVertices(COUNT,1)", "", nullptr, 799004},
      {kSquare, "@AddVertices(EVERY,1)", "", nullptr, 799005},
      {kLying, "@AddVertices(COUNT,1)", "", nullptr, 244023},
      {"t polygon 0 0, 10 0, 10 2, 0 2, 0 0", "@ConvertToLine(20)", "", "t line 0 1, 10 1"},
      {"t donut 0 0, 2 0, 2 10, 0 10, 0 0, 0.9 4, 1.1 4, 1.1 5, 0.9 4", "@ConvertToLine(20)", "", "t line 1 0, 1 10"},
      {"t line 0 0, 1 1", "@ConvertToLine(20)", "", nullptr},
      {kSquare, "@ConvertToLine(none)", "", nullptr, 810003},
      {kSquare, "@ConvertToLine(0)", "", nullptr, 810003},
      {kSquare, "@ConvertToLine(1e9)", "", nullptr, 244025},
      {"t polygon", "@ConvertToLine(5)", "", "t"},
      {"t line 0 0, 5 0.1, 10 0", "@Generalize(Douglas,1)", "", "t line 0 0, 10 0"},
      {kAggregate, "@Generalize(Douglas,99)", "", nullptr},
      {"t aggregate 2 0, 4 0", "@Generalize(Douglas,1)", "", ""},
      {"t", "@Generalize(Douglas,1)", "", nullptr},
      {"t line 0 0, 5 0.1, 10 0", "<@Generalize(Douglas,1)", "", nullptr},
      {kLying, "@Generalize(Douglas,1)", "", nullptr, 244023},
      {"t line 0 0", "@Generalize(Douglas,much)", "", nullptr, 822005},
      {"t line 0 0", "@Generalize(Douglas,1,2,3)", "", nullptr, 822001},
      {"t line 0 0", "@Generalize(Deveau,1)", "", nullptr, 822001},
      {"t line 0 0", "@Generalize(Smooth,1)", "", nullptr, 822001},
      {"t line 0 0, 5 0.1, 10 0", "@Generalize(Poiker,1)", "", "t line 0 0, 10 0"},
      {"t line 0 0, 5 0.1, 10 0, 10.001 0, 10 9", "@Generalize(Deveau,1,8,0)", "", "t line 0 0, 10 0, 10 9"},
      {"t line 0 0, 5 0, 10 0", "@Generalize(Deveau,0,8,0)", "", nullptr},
      {"t line 0 0, 10 0, 0 0.2", "@Generalize(Deveau,1,8,30)", "", nullptr},  // a sharp turn stays
      {"t line 0 0 1, 5 0.1 2, 10 0 3, 10 9 4", "@Generalize(Deveau,-1,99,180)", "", nullptr},
      {"t line 0 0 1, 5 0.1 2, 10 0 3, 10 9 4", "@Generalize(Deveau,1,99,180)", "", "t line 0 0 1, 10 0 3, 10 9 4"},
      {kSquare, "@Generalize(Poiker,1e9)", "", "t polygon 0 0, 10 0, 10 10, 0 0"},
      {kAggregate, "@Generalize(Deveau,99,30,0)", "", nullptr},
      {"t line nan 0, 1 1, nan 2, 2 2.1, 3 3", "@Generalize(Deveau,1,30,0)", "", "t line nan 0, 1 1, 3 3"},
      {"t line 0 0, 5 0.1, 10 0", "<@Generalize(Poiker,1)", "", nullptr},
      {"t line 0 0, 4 0, 2 1, 4 4, 0 4", "@ConvexHull()", "", "t polygon 0 0, 4 0, 4 4, 0 4, 0 0"},
      {"t line 3 3 7, 1 1 5, 2 2 6", "@ConvexHull()", "", "t polygon 1 1 5, 3 3 7, 1 1 5"},
      {"t line 3 3, 3 3, 3 3", "@ConvexHull()", "", "t polygon 3 3, 3 3"},
      {"t line 0 0, 4 0", "@ConvexHull()", "", nullptr},
      {"t line 0 0, nan 4, 4 0, 1 inf, 2 2", "@ConvexHull()", "", "t polygon 0 0, 4 0, 2 2, 0 0"},
      {"t line nan 0, nan 4, inf 0", "@ConvexHull()", "", nullptr},
      {"t donut 0 0, 9 0, 4 5, 0 0, 1 1, 20 1, 1 2, 1 1", "@ConvexHull()", "", "t polygon 0 0, 9 0, 4 5, 0 0"},
      {kLying, "@ConvexHull()", "", nullptr},
      {"t line 0 0, 4 0, 2 1", "<@ConvexHull()", "", nullptr},
      {"t line 0 0", "@Generalize(Deveau,1,5,sharp)", "", nullptr, 822005},
  });
}

TEST_F(Geometry, ArcsAreStrokedAsConfigured) {
  engine_.row("ORV_ARC_DEGREES_PER_EDGE 0");
  check({{"t {p=1} point 1 1", "<@ConvertToArc(p,p,p,p)", "", nullptr, 878002}});
  VEXConfiguration::setValue("ORV_ARC_DEGREES_PER_EDGE", "1");
  VEXConfiguration::setValue("ORV_ARC_EDGE_TOLERANCE", "0.2");
  check({{"t {a=0, b=90, p=1} point 0 0", "<@ConvertToArc(p,p,a,b)", "",
          "t {a=0, b=90, p=1} line 1 0, 0.707106781186548 0.707106781186547, 0 1"}});
}

}  // namespace
