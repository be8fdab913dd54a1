// The TABLE reader and writer: which files they take, what becomes of a run that fails.
#include "tests/unit/tables/tabletest.h"
#include "vex/src/tmpfilmn.h"
#include "vex/src/vexgrper.h"
#include "vex/src/writer.h"
#include "vex/tables/tabread.h"
#include "vex/tables/tabwrit.h"

namespace {

class Tabular : public TableTest {
 protected:
  // The features that the reader gives, one a line; what failed stands at the end as "#number".
  std::string read() {
    TabularReader reader("TABLE", in_);
    std::string text;
    VEXFeaturePtr feature;
    VEXStatus failure = reader.setup();
    if (failure == nullptr) failure = reader.open({});
    if (failure == nullptr) failure = reader.getGlobalMetaData(feature);
    while (failure == nullptr) {
      failure = reader.read(feature);
      if (failure != nullptr || feature == nullptr) break;
      text += describe(*feature) + "\n";
    }
    if (failure == nullptr)
      failure = reader.close();
    else
      reader.abort();
    return failure == nullptr ? text : text + "#" + std::to_string(numberOf(failure));
  }
  // Runs features through grouper and writer as a translation does; the number of the first failure.
  std::uint32_t write(const std::vector<std::string>& features) {
    VEXWriter writer(std::make_unique<TabularWriter>("TABLE", out_));
    std::unique_ptr<VEXGrouper> grouper = writer.createGrouper();
    VEXStatus failure = writer.setup();
    if (failure == nullptr) failure = writer.open({});
    if (failure == nullptr) failure = grouper->initialize(out_ + "_DEF", "");
    for (const std::string& text : features) {
      if (failure != nullptr) break;
      VEXFeaturePtr feature = makeFeature(text);
      VEXGroup* group = nullptr;
      failure = grouper->findGroup(feature, group);
      if (failure == nullptr && group != nullptr) failure = group->addFeature(feature);
    }
    if (failure == nullptr) failure = writer.flushGroups();
    if (failure == nullptr) failure = writer.close();
    if (failure != nullptr) writer.abort();
    return numberOf(failure);
  }
  void rows(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) engine_.row(text);
  }
  // Other keywords: the rows given so far are no longer seen.
  void nextKeywords() {
    in_ += "N";
    out_ += "N";
  }

  VEXTempFileManager temporaryFiles_;
  std::string in_ = "IN";
  std::string out_ = "OUT";
};

TEST_F(Tabular, ReadsTheTablesOfADirectory) {
  put("roads.csv", "name,lanes\nMain,4\n");
  put("lakes.csv", "Blue;9\n");
  rows({"IN_DATASET " + directory_, "IN_DEF road CSV roads.csv CSV_SKIP_LINES 1",
        "IN_DEF lake CSV lakes.csv CSV_SEPARATOR (;) name char(20) depth number(5,1)", "IN_DEF gone DBF gone.dbf"});
  EXPECT_EQ(read(), "road {lanes=4, name=Main}\nlake {depth=9, name=Blue}\n");
  EXPECT_TRUE(logged(VEXSeverity::Inform,
                     "Table File 'gone.dbf' (Feature Type `gone') skipped -- was not present in "
                     "directory '" +
                         directory_ + "'"));
  EXPECT_TRUE(logged(VEXSeverity::Inform, "Tabular Reader Version 1.1 (Oct. 18, 1996)"));
  rows({"IN_IDs lakes"});
  EXPECT_EQ(read(), "lake {depth=9, name=Blue}\n");
  EXPECT_TRUE(logged(VEXSeverity::Inform, "(Feature Type `road') skipped -- was not requested for translation"));
  rows({"IN_IDs road lake"});
  EXPECT_EQ(read(), "road {lanes=4, name=Main}\nlake {depth=9, name=Blue}\n");
  std::filesystem::create_directory(at("elsewhere"));
  put("elsewhere/lakes.csv", "Red;1\n");
  rows({"IN_LOCATION " + at("elsewhere")});
  EXPECT_EQ(read(), "lake {depth=1, name=Red}\n");
}

TEST_F(Tabular, ReadsOneFile) {
  struct Row {
    std::string file;
    std::vector<std::string> defs;
    std::string features;
  };
  put("t.csv", "1,2\n");
  put("u.txt", "3\n");
  for (const Row& row : {Row{"t.csv", {}, "t {COL0=1, COL1=2}\n"}, Row{"u.txt", {}, "u {COL0=3}\n"},
                         Row{"t.csv", {"x CSV other a char(1)"}, "x {a=1}\n"},
                         Row{"t.csv", {"x CSV u.txt", "y CSV t.csv"}, "y {COL0=1, COL1=2}\n"},
                         Row{"none.csv", {"x CSV a.csv"}, "#315002"}, Row{"none.csv", {}, "#315002"}}) {
    nextKeywords();
    engine_.row(in_ + "_DATASET " + at(row.file));
    for (const std::string& def : row.defs) engine_.row(in_ + "_DEF " + def);
    EXPECT_EQ(read(), row.features) << row.file;
  }
}

TEST_F(Tabular, RefusesBadDefinitions) {
  for (const auto& [text, number] : std::vector<std::pair<std::string, std::string>>{
           {"t", "#315006"}, {"t CSV", "#315006"}, {"t CSV a.csv extra", "#315006"}, {"t XLS a.xls", "#315005"}, {"t SQLLDR a.ctl", "#315005"}}) {
    nextKeywords();
    engine_.row(in_ + "_DEF " + text);
    EXPECT_EQ(read(), number) << text;
  }
  TabularReader reader("TABLE", "IN");
  VEXFeatureVector schema;
  EXPECT_EQ(numberOf(reader.readSchema({}, schema)), 315004u);
}

TEST_F(Tabular, WritesAFileForEachFeatureType) {
  rows({"OUT_DATASET " + at("new/out"), "OUT_DEF road DBF sub/roads.dbf NAME char(8) LANES number(4,1)",
        "OUT_DEF lake CSV lakes.csv CSV_OUTPUT_FIELDNAMES YES name char(8) depth number(5,1)",
        "OUT_DEF none CSV none.csv a char(1)"});
  EXPECT_EQ(write({"road {NAME=Main,LANES=4}", "lake {name=Blue,depth=9}", "road {NAME=Side,other=1}", "river {a=1}"}),
            0u);
  EXPECT_EQ(bytesOf(at("new/out/lakes.csv")), "name,depth\nBlue,9.0\n");
  EXPECT_FALSE(std::filesystem::exists(at("new/out/none.csv")));
  EXPECT_TRUE(logged(VEXSeverity::Inform, "Table Writer Version 1.0 (Feb. 08, 1996)"));
  rows({"IN_DATASET " + at("new/out"), "IN_DEF road DBF sub/roads.dbf"});
  EXPECT_EQ(read(), "road {LANES=4, NAME=Main}\nroad {LANES=0, NAME=Side}\n");
}

TEST_F(Tabular, LeavesNoFileThatLooksWhole) {
  struct Row {
    std::vector<std::string> defs;
    std::uint32_t number;
  };
  put("plain", "");
  for (const Row& row :
       {Row{{"a XLS a.xls x char(1)"}, 316002}, Row{{"a CSV o.csv x char(1)", "b DBF ./o.csv X char(1)"}, 316003},
        Row{{"a CSV o.csv"}, 316004}, Row{{"a CSV"}, 316004}, Row{{"a CSV plain/o.csv x char(1)"}, 316005},
        Row{{"b CSV o.csv x char(1)", "a DBF p.dbf x char(1)"}, 301007},
        Row{{"b CSV o.csv x char(1)", "a DBF p.dbf X char(1) X char(2)"}, 301005},
        Row{{"b CSV o.csv x char(1)", "a CSV /dev/full x char(1)"}, 308002}}) {
    nextKeywords();
    engine_.row(out_ + "_DATASET " + directory_);
    for (const std::string& def : row.defs) engine_.row(out_ + "_DEF " + def);
    EXPECT_EQ(write({"a {x=1}", "b {x=2}"}), row.number) << row.defs[0];
    EXPECT_FALSE(std::filesystem::exists(at("o.csv"))) << row.defs[0];
    EXPECT_FALSE(std::filesystem::exists(at("p.dbf"))) << row.defs[0];
  }
}

TEST_F(Tabular, WritesMoreTypesThanItKeepsOpen) {
  engine_.row("OUT_DATASET " + directory_);
  std::vector<std::string> features;
  for (int i = 0; i < 465; ++i) {
    const std::string type = "t" + std::to_string(i);
    engine_.row("OUT_DEF " + type + " CSV " + type + ".csv x char(1)");
    features.push_back(type + " {x=" + std::to_string(i) + "}");
  }
  const std::vector<std::string> once = features;
  features.insert(features.end(), once.begin(), once.end());
  EXPECT_EQ(write(features), 0u);
  for (const int i : {0, 459, 460, 464}) {
    const std::string line = std::to_string(i) + "\n";
    EXPECT_EQ(bytesOf(at("t" + std::to_string(i) + ".csv")), line + line);
  }
}

}  // namespace
