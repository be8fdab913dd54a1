// The factories that gather features and take them apart: aggregates, lists, elements, bounding boxes.
#include "tests/unit/factory/facttest.h"

namespace {

const std::vector<std::string> kFaultsOfLists = {"LIST_NAME", "LIST_NAME a b", "LIST_NAME a LIST_NAME b",
                                                 "LIST_NAME a{}.b"};

TEST(AggregateFactory, JoinsEachGroup) {
  const std::string both = " OUTPUT AGGREGATE FEATURE_TYPE many OUTPUT SINGLETON FEATURE_TYPE one";
  check("AggregateFactory",
        {{"GROUP_BY k" + both,
          {"a {k=x,n=1} point 1 2", "a {k=y} line 0 0, 1 1", "a {k=x,n=2} line 5 5, 6 6"},
          "many {k=x, n=1} aggregate 1 1, 1 2, 2 2, 5 5, 6 6; one {k=y} line 0 0, 1 1",
          "Combined 3 input features into 2 output features (including 1 singleton)"},
         {"OUTPUT AGGREGATE FEATURE_TYPE all", {"a point 1 2"}, "all point 1 2", "Combined 1 input feature into 1 "},
         // Keys of two values do not run into each other; an absent value is an empty one.
         {"GROUP_BY k l" + both,
          {"a {k=a,l=bc} point 1 2", "a {k=ab,l=c} point 3 4", "a {k=,l=} point 5 6", "a {l=} point 7 8"},
          "one {k=a, l=bc} point 1 2; one {k=ab, l=c} point 3 4; many {k=, l=} aggregate 1 1, 5 6, 1 1, 7 8",
          "Combined 4 input features into 3 output features (including 2 singletons)"},
         {"LIST_NAME p{} OUTPUT AGGREGATE FEATURE_TYPE all",
          {"a {n=1}", "a {n=2,q{0}.r=5}"},
          "all {n=1, p{0}.n=1, p{1}.n=2, p{1}.q{0}.r=5} aggregate",
          "Combined 2 "},
         {"LIST_NAME p" + both, {"a {n=1}"}, "one {n=1}", "Combined 1 "},
         {"LIST_NAME p OUTPUT AGGREGATE FEATURE_TYPE all", {"a {n=1}"}, "all {n=1, p{0}.n=1}", "Combined 1 "},
         {"GROUP_BY k" + both, {}, "", "Combined 0 input features into 0 output features (including 0 singletons)"},
         {"GROUP_BY k", {"a"}, "#860010", ""}});
  checkFaults("AggregateFactory", {{kFaultsOfLists[0], 860007},
                                   {kFaultsOfLists[1], 860007},
                                   {kFaultsOfLists[2], 860008},
                                   {kFaultsOfLists[3], 860009},
                                   {"GROUP_BY", 860005},
                                   {"GROUP_BY a GROUP_BY b", 860006},
                                   {"OUTPUT AGGREGATE FEATURE_TYPE", 860001},
                                   {"OUTPUT OTHER FEATURE_TYPE a", 860002},
                                   {"OUTPUT AGGREGATE FEATURE_TYPE a OUTPUT AGGREGATE FEATURE_TYPE b", 860003},
                                   {"OUTPUT AGGREGATE TYPE a", 860004}});
}

TEST(AggregateFactory, LeavesOutWhatCannotBeJoined) {
  PipelineScope scope({"FACTORY_DEF K AggregateFactory OUTPUT AGGREGATE FEATURE_TYPE *"});
  EXPECT_EQ(scope.run({"a point 1 2", "b point 1 2 3", "c aggregate 1 99, 5 5"}),
            "a aggregate 1 1 0, 1 2 0, 1 1 0, 1 2 3");
  EXPECT_EQ(scope.engine.logged("of type `b' has another dimension"), 1U);
  EXPECT_EQ(scope.engine.logged("of type `c' was left out of an aggregate"), 1U);
}

TEST(ListFactory, ListsEachGroup) {
  const std::string list = " OUTPUT LIST FEATURE_TYPE many";
  check("ListFactory", {{"LIST_NAME p GROUP_BY k" + list + " OUTPUT SINGLETON FEATURE_TYPE one",
                         {"a {k=x,n=1}", "b {k=y,n=2}", "c {k=x,m{0}=3}"},
                         "many {k=x, n=1, p{0}.k=x, p{0}.n=1, p{1}.k=x, p{1}.m{0}=3}; one {k=y, n=2}",
                         "Combined 3 input features into 2 output features (including 1 singleton)"},
                        {"LIST_NAME p" + list, {"a {n=1}"}, "many {n=1, p{0}.n=1}", "Combined 1 "},
                        {list, {"a"}, "#44010", ""},
                        {"LIST_NAME p", {"a"}, "#44011", ""}});
  checkFaults("ListFactory", {{kFaultsOfLists[0], 44005},
                              {kFaultsOfLists[1], 44005},
                              {kFaultsOfLists[2], 44006},
                              {kFaultsOfLists[3], 44007},
                              {"GROUP_BY", 44008},
                              {"GROUP_BY a GROUP_BY b", 44009},
                              {"OUTPUT LIST", 44001},
                              {"OUTPUT AGGREGATE FEATURE_TYPE a", 44002},
                              {"OUTPUT LIST FEATURE_TYPE a OUTPUT LIST FEATURE_TYPE b", 44003},
                              {"OUTPUT LIST TYPE a", 44004}});
}

TEST(ElementFactory, MakesAFeatureOfEachElement) {
  const std::string outputs = " OUTPUT BASE FEATURE_TYPE base OUTPUT ELEMENT FEATURE_TYPE element";
  check("ElementFactory",
        {{"LIST_NAME p ELEMENT_NUMBER_FIELD i CLONE_GEOMETRY" + outputs,
          {"a {k=x,p{1}.n=2,p{0}.n=1,p{10}.q{3}.r=5} point 1 2"},
          "element {i=0, n=1} point 1 2; element {i=1, n=2} point 1 2; element {i=10, q{3}.r=5} point 1 2; "
          "base {ElementFactory.baseCloned=TRUE, k=x} point 1 2",
          "Split out 3 list elements from 1 input feature"},
         {"LIST_NAME p" + outputs,
          {"a {p{0}=v,p{0}.orv_geometry=orv_line,pp{0}.n=1,p{x}.n=1,p{1}n=1} point 1 2"},
          "element {p=v}; base {ElementFactory.baseCloned=FALSE, pp{0}.n=1, p{1}n=1, p{x}.n=1} point 1 2",
          "Split out 1 list element from 1 input feature"},
         {"LIST_NAME p CLONE_GEOMETRY" + outputs,
          {"a {n=1} point 1 2"},
          "base {ElementFactory.baseCloned=FALSE, n=1} point 1 2",
          "Split out 0 list elements from 1 input feature"},
         {outputs, {"a"}, "#42009", ""},
         {"LIST_NAME p OUTPUT BASE FEATURE_TYPE b", {"a"}, "#42010", ""}});
  checkFaults("ElementFactory", {{kFaultsOfLists[0], 42006},
                                 {kFaultsOfLists[1], 42006},
                                 {kFaultsOfLists[2], 42007},
                                 {kFaultsOfLists[3], 42008},
                                 {"ELEMENT_NUMBER_FIELD", 42011},
                                 {"CLONE_GEOMETRY yes", 42012},
                                 {"OUTPUT BASE", 42002},
                                 {"OUTPUT LIST FEATURE_TYPE a", 42003},
                                 {"OUTPUT BASE FEATURE_TYPE a OUTPUT BASE FEATURE_TYPE b", 42004},
                                 {"OUTPUT BASE TYPE a", 42005}});
}

TEST(BoundingBoxFactory, EnclosesEachGroup) {
  const std::string outputs = " OUTPUT BOUNDING_BOX FEATURE_TYPE box OUTPUT ORIGINAL FEATURE_TYPE *";
  check(
      "BoundingBoxFactory",
      {{"GROUP_BY k" + outputs,
        {"a {k=x,n=1} point 1 2", "a {k=y} line 0 0, 5 1", "a {k=x} aggregate 1 1, 3 0 "},
        "box {k=x} polygon 1 0, 3 0, 3 2, 1 2, 1 0; box {k=y} polygon 0 0, 5 0, 5 1, 0 1, 0 0; "
        "a {k=x, n=1} point 1 2; a {k=y} line 0 0, 5 1; a {k=x} aggregate 1 1, 3 0",
        "Enclosed 3 input features in 2 bounding boxes"},
       {outputs, {"a"}, "a", "Enclosed 1 input feature in 0 bounding boxes"},
       {"OUTPUT BOUNDING_BOX FEATURE_TYPE *", {"a {n=1} point 1 2"}, "a polygon 1 2, 1 2, 1 2, 1 2, 1 2", "Enclosed 1"},
       {"GROUP_BY k INPUT FEATURE_TYPE a", {"a point 1 2", "b"}, "b", "Enclosed 1 input feature in 1 bounding box"}});
  checkFaults("BoundingBoxFactory", {{"GROUP_BY", 352504}, {"GROUP_BY a GROUP_BY b", 352505}});
  PipelineScope scope({"FACTORY_DEF K BoundingBoxFactory GROUP_BY k l" + outputs});
  scope.run({"a {k=1,l=2} point 1 2", "a {k=3} aggregate 1 99, 1 1"});
  EXPECT_EQ(scope.engine.logged("Bounding box of 1 feature where `k' is `1', and `l' is `2'"), 1U);
  EXPECT_EQ(scope.engine.logged("no bounding box: 1 feature where `k' is `3', and `l' is `' without"), 1U);
  EXPECT_EQ(scope.engine.logged("was left out of the bounding box"), 1U);
}

}  // namespace
