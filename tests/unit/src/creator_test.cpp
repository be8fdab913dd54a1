// Making drivers by name, the keyword look-ups and rows that all drivers share, and plug-ins.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "tests/unit/drivers.h"
#include "vex/jvmintfc/javaread.h"
#include "vex/src/platform/platform.h"
#include "vex/src/vexgrper.h"
#include "vex/src/writer.h"

namespace {

std::string readAll(const std::string& path) {
  std::ifstream in(path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::string scratch(const char* name) {
  return ::testing::TempDir() + name;
}

TEST(Creator, TypesThatNobodyKnows) {
  TranslationScope engine;
  std::unique_ptr<VEXReaderImp> reader;
  VEXStatus failure = VEXCreator::createReader(reader, "NOPE", "K", "Nope");
  ASSERT_EQ(numberOf(failure), 871005U);
  EXPECT_EQ(failure->message().find("Attempt to create"), std::string::npos);
  EXPECT_NE(failure->trace().find("Attempt to create unknown class 'NOPE'.  Class has not been registered."),
            std::string::npos);
  EXPECT_EQ(VEXCreator::instance().lastReaderType(), "NOPE");
  std::unique_ptr<VEXWriterImp> writer;
  EXPECT_EQ(numberOf(VEXCreator::createWriter(writer, "NOPE", "K")), 872001U);
  EXPECT_EQ(numberOf(VEXCreator::createWriter(writer, "NOPE", "K", "../../etc/x")), 872001U);
  std::unique_ptr<VEXFactory> factory;
  EXPECT_EQ(numberOf(VEXCreator::createFactory(factory, "NopeFactory")), 873001U);
  EXPECT_EQ(reader == nullptr && writer == nullptr && factory == nullptr, true);
}

// Without the bridge or the plug-in driver in the tables, the numbers tell which of them is missing.
TEST(Creator, TablesWithoutTheLastResorts) {
  TranslationScope engine;
  VEXCreator& creator = VEXCreator::instance();
  std::unique_ptr<VEXReaderImp> reader;
  std::unique_ptr<VEXWriterImp> writer;
  creator.readers() = VEXCreator::ReaderTable();
  creator.writers() = VEXCreator::WriterTable();
  EXPECT_EQ(numberOf(VEXCreator::createReader(reader, "NOPE", "K", "nope")), 871004U);
  creator.readers().addInstantiator("JavaReader", std::make_unique<DriverInstantiator<VEXReaderImp, JavaReader>>());
  EXPECT_EQ(numberOf(VEXCreator::createReader(reader, "NOPE", "K", "nope")), 871006U);
  EXPECT_EQ(numberOf(VEXCreator::createWriter(writer, "NOPE", "K")), 872001U);
  EXPECT_EQ(engine.logged("no plug-in writer to ask"), 1U);
  ASSERT_EQ(numberOf(creator.reset()), 0U);
  EXPECT_EQ(numberOf(VEXCreator::createReader(reader, "TABLE", "K", "table")), 0U);
}

TEST(Creator, AConstructorsFailureIsReturned) {
  class Sick final : public VEXWriterImp {
   public:
    Sick(const std::string& type, const std::string& keyword) : VEXWriterImp(type, keyword) {
      status_ = makeStatus(236101, {"sick"});
    }
    std::unique_ptr<VEXGrouper> createGrouper(VEXWriter&) override { return nullptr; }
    VEXStatus writeGlobalMetaData(VEXFeature&) override { return nullptr; }
    VEXStatus open(const VEXStringVector&) override { return nullptr; }
    int maxChannels() override { return 1; }
  };
  TranslationScope engine;
  VEXCreator::instance().writers().addInstantiator("SICK", std::make_unique<DriverInstantiator<VEXWriterImp, Sick>>());
  std::unique_ptr<VEXWriterImp> imp;
  EXPECT_EQ(numberOf(VEXCreator::createWriter(imp, "SICK", "K")), 236101U);
  VEXWriter front(std::move(imp));
  std::unique_ptr<VEXGrouper> grouper;
  EXPECT_EQ(numberOf(VEXCreator::createGrouper(grouper, front, "SICK")), 872003U);
}

// Opens what the base classes keep for drivers.
class Probe final : public VEXReaderImp {
 public:
  using VEXReaderImp::getDataset;
  using VEXReaderImp::getDefLines;
  using VEXReaderImp::getIDs;
  using VEXReaderImp::keepListedIDs;
  using VEXReaderImp::keywords;
  using VEXReaderImp::setCoordSys;
  using VEXReaderImp::VEXReaderImp;
  VEXStatus getGlobalMetaData(VEXFeaturePtr&) override { return nullptr; }
  VEXStatus readFeature(VEXFeaturePtr& out) override {
    out = makeFeature("a");
    return nullptr;
  }
  VEXStatus open(const VEXStringVector&) override { return nullptr; }
  VEXStatus close() override { return nullptr; }
  VEXStatus readSchemaFeatures(const VEXStringVector&, VEXFeatureVector& out) override {
    out.push_back(makeFeature("a"));
    out.push_back(makeFeature("b"));
    out.back()->setCoordSys("OWN");
    return nullptr;
  }
};

class WriterProbe final : public VEXWriterImp {
 public:
  using VEXWriterImp::getDatasetDir;
  using VEXWriterImp::VEXWriterImp;
  VEXStatus writeGlobalMetaData(VEXFeature&) override { return nullptr; }
  VEXStatus open(const VEXStringVector&) override { return nullptr; }
  int maxChannels() override { return 1; }
};

TEST(DriverKeywords, LookUpOrder) {
  TranslationScope engine(
      {"_A bare", "K_A key", "T_A type", "K_B key", "T_B type", "T_C 7", "K_L 1 2", "K_L 3", "K_D x"});
  VEXDriverKeywords keywords("T", "K");
  std::string text;
  EXPECT_TRUE(keywords.getString("_A", text) && text == "bare");
  EXPECT_TRUE(keywords.getString("_B", text) && text == "key");
  std::int32_t number = 0;
  EXPECT_TRUE(keywords.getInteger("_C", number) && number == 7);
  EXPECT_FALSE(keywords.getInteger("_D", number));
  double real = 0;
  EXPECT_TRUE(keywords.getDouble("_C", real) && real == 7.0);
  VEXStringVector list;
  EXPECT_TRUE(keywords.getStringList("_L", list));
  EXPECT_EQ(list, (VEXStringVector{"1", "2", "3"}));
  EXPECT_TRUE(keywords.keywordExists("_C"));
  EXPECT_FALSE(keywords.keywordExists("_N") || keywords.getString("_N", text));
  keywords.getString("_N", text, "other");
  EXPECT_EQ(text, "other");
}

TEST(DriverKeywords, Dataset) {
  struct Row {
    std::vector<std::string> rows;
    const char* keyword;
    std::uint32_t number;
    const char* result;  // of a failure: what its text must hold
  };
  for (const Row& row : {Row{{}, "K", 883001, "`K_DATASET' or `T_DATASET'"}, Row{{}, "T", 883001, "`T_DATASET' is"},
                         Row{{"T_DATASET x"}, "K", 0, "x"}, Row{{"T_DATASET x", "K_DATASET y\\\\"}, "K", 0, "y"},
                         Row{{"K_DATASET C:\\data\\\\"}, "K", 0, "C:/data"}, Row{{"K_DATASET a//b///"}, "K", 0, "a/b"},
                         Row{{"K_DATASET /"}, "K", 0, "/"}}) {
    TranslationScope engine(row.rows);
    Probe probe("T", row.keyword);
    std::string dataset;
    VEXStatus failure = probe.getDataset(dataset);
    EXPECT_EQ(numberOf(failure), row.number) << row.result;
    const std::string told = failure == nullptr ? dataset : failure->message();
    EXPECT_TRUE(failure == nullptr ? told == row.result : told.find(row.result) != std::string::npos) << told;
  }
}

TEST(DriverKeywords, DatasetDirectory) {
  const std::string root = scratch("orv_dirs");
  std::system(("rm -rf '" + root + "' && mkdir '" + root + "' && touch '" + root + "/file'").c_str());
  struct Row {
    std::string dataset;
    std::uint32_t number;
  };
  for (const Row& row :
       {Row{root + "/new/deep/", 0}, Row{root, 0}, Row{root + "/file", 0}, Row{root + "/file/below", 882005}}) {
    TranslationScope engine({"K_DATASET " + row.dataset});
    WriterProbe probe("T", "K");
    std::string directory;
    EXPECT_EQ(numberOf(probe.getDatasetDir(directory)), row.number) << row.dataset;
    EXPECT_TRUE(row.number != 0 || (directory.ends_with("/") && !directory.ends_with("//"))) << directory;
  }
  EXPECT_TRUE(platform::isDirectory(root + "/new/deep"));
  TranslationScope engine;
  WriterProbe probe("T", "K");
  std::string directory;
  EXPECT_EQ(numberOf(probe.getDatasetDir(directory)), 882006U);
}

TEST(DriverKeywords, DefinitionsAndLists) {
  struct Row {
    std::vector<std::string> rows;
    std::uint32_t number;
    std::size_t lines;
  };
  for (const Row& row : {Row{{"T_DEF a x y", "Z", "T_DEF b"}, 0, 2}, Row{{"T_DEF a", "K_DEF b"}, 0, 1},
                         Row{{"T_DEF a", "T_DEF a x"}, 883002, 1}, Row{{"T_DEF"}, 883008, 0}, Row{{}, 0, 0}}) {
    TranslationScope engine(row.rows);
    VEXLineVector lines;
    EXPECT_EQ(numberOf(Probe("T", "K").getDefLines(lines)), row.number);
    EXPECT_EQ(lines.size(), row.lines);
  }
  TranslationScope engine({"T_IDs a b", "ID road rail"});
  Probe probe("T", "K");
  VEXStringVector names = {"d/rail.shp", "river", "c:\\x\\road.dbf", "roads"};
  probe.keepListedIDs(names);
  EXPECT_EQ(names, (VEXStringVector{"d/rail.shp", "c:\\x\\road.dbf"}));
  probe.getIDs(names);
  EXPECT_EQ(names, (VEXStringVector{"a", "b"}));
}

TEST(DriverKeywords, CoordinateSystemOfAReader) {
  struct Row {
    const char* given;
    const char* log;
    const char* result;
  };
  for (const Row& row :
       {Row{"K_COORDINATE_SYSTEM MAP", "of the mapping file is used", "MAP"}, Row{"Z z", "was found before", "TWO"}}) {
    TranslationScope engine({row.given});
    Probe probe("T", "K");
    probe.setCoordSys("ONE");
    probe.setCoordSys("ONE");
    probe.setCoordSys("TWO");
    EXPECT_EQ(probe.coordSys(), row.result);
    EXPECT_GE(engine.logged(row.log), 1U);
    VEXFeaturePtr feature;
    ASSERT_EQ(numberOf(probe.read(feature)), 0U);
    EXPECT_EQ(feature->coordSys(), row.result);
    VEXFeatureVector schema;
    ASSERT_EQ(numberOf(probe.readSchema({}, schema)), 0U);
    EXPECT_EQ(schema[0]->coordSys(), row.result);
    EXPECT_EQ(schema[1]->coordSys(), "OWN");
  }
}

// ---- plug-ins ----

struct PluginRun {
  PluginRun(const std::string& source, const std::vector<std::string>& more) {
    setenv("ORV_PLUGINS", TEST_PLUGINS, 1);
    std::ofstream(in) << source;
    std::remove(out.c_str());
    TranslationScope run({"READER_TYPE TestPlug", "WRITER_TYPE TestPlug", "READER_KEYWORD IN", "WRITER_KEYWORD OUT",
                          "IN told", "OUT told", "IN_DATASET " + in, "OUT_DATASET " + out, "OUT_DEF road", "IN *",
                          "OUT * to file"});
    for (const std::string& row : more) run.row(row);
    number = run.translate();
    typeLogged = run.logged("TESTPLUG");
    rejected = run.logged("1 features were rejected");
    written = readAll(out);
    isThere = platform::fileExists(out);
  }
  std::string in = scratch("orv_plug.in");
  std::string out = scratch("orv_plug.out");
  std::uint32_t number = 0;
  std::size_t typeLogged = 0;
  std::size_t rejected = 0;
  std::string written;
  bool isThere = false;
};

TEST(Plugin, ReaderAndWriter) {
  PluginRun good("road 1 2 road 3.5 4 other 5 6", {});
  EXPECT_EQ(good.number, 0U);
  EXPECT_NE(good.written.find("road|"), std::string::npos);
  EXPECT_NE(good.written.find("from=plug-in"), std::string::npos);
  EXPECT_NE(good.written.find("to=file"), std::string::npos);
  EXPECT_NE(good.written.find(" 3.5 4\n"), std::string::npos) << good.written;
  EXPECT_GE(good.typeLogged, 1U);

  PluginRun broken("road 1 2 road x", {});
  EXPECT_EQ(broken.number, 871010U);
  EXPECT_FALSE(broken.isThere);  // what was half written is gone

  PluginRun failing("road 1 2", {"FACTORY_DEF IN TeeFactory OUTPUT FEATURE_TYPE * fail 1"});
  EXPECT_EQ(failing.number, 872005U);
  EXPECT_FALSE(failing.isThere);

  PluginRun refusing("road 1 2", {"FACTORY_DEF IN TeeFactory OUTPUT FEATURE_TYPE * refuse 1 OUTPUT FEATURE_TYPE *"});
  EXPECT_EQ(refusing.number, 0U);
  EXPECT_EQ(refusing.rejected, 1U);
  EXPECT_TRUE(refusing.isThere);
}

TEST(Plugin, Factory) {
  setenv("ORV_PLUGINS", TEST_PLUGINS, 1);
  PipelineScope good({"FACTORY_DEF K TestPlug STAMP here INPUT FEATURE_TYPE a"});
  EXPECT_EQ(good.defined(), 0U);
  EXPECT_EQ(good.run({"a {keep=1}", "a", "b"}), "a {keep=1, stamp=here}; b");
}

TEST(Plugin, FactoryRefusesAClause) {
  setenv("ORV_PLUGINS", TEST_PLUGINS, 1);
  EXPECT_EQ(PipelineScope({"FACTORY_DEF K TestPlug STAMP"}).defined(), 873003U);
}

}  // namespace
