// Feature stores: their bytes, series of files, and files that are broken on purpose.
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

#include "tests/unit/qds/qdstest.h"
#include "vex/src/sharfile.h"

namespace {

std::string u32(std::uint32_t value) {
  return {char(value), char(value >> 8), char(value >> 16), char(value >> 24)};
}
std::string u16(std::uint32_t value) {
  return u32(value).substr(0, 2);
}
std::string text(const std::string& bytes) {
  return u32(static_cast<std::uint32_t>(bytes.size())) + bytes;
}
std::string f64(double value) {
  const auto bits = std::bit_cast<std::uint64_t>(value);
  return u32(static_cast<std::uint32_t>(bits)) + u32(static_cast<std::uint32_t>(bits >> 32));
}

// A whole store of these records and names.
std::string store(const VEXStringVector& records, const VEXStringVector& names) {
  const std::string body = joined(records, "");
  const std::string count = u32(static_cast<std::uint32_t>(names.size()));
  std::string byName, byIndex;
  for (std::uint32_t i = 0; i < names.size(); ++i) {
    byName += text(names[i]) + u32(i);
    byIndex += u32(i) + text(names[i]);
  }
  return u32(0) + u32(static_cast<std::uint32_t>(12 + body.size())) + u32(static_cast<std::uint32_t>(records.size())) +
         body + count + byName + count + byIndex;
}
// A record of one attribute, without geometry.
std::string record(std::uint32_t index, const std::string& value, const std::string& type) {
  return u32(1) + u32(index) + text(value) + u32(0) + text(type) + text("") + u16(0) + "\2" + u32(0) + u32(0);
}

const VEXStringVector kThree = {"road {name=A1, lanes=2} line 0 0, 10 5.5, 20 0", "tree {kind=oak} point 1 2 3",
                                "stone"};

TEST_F(StoreTest, BytesAreThoseOfTheFormat) {
  VEXFeaturePtr feature = VEXObjectRecycler::instance().getFeature(3, 2);
  feature->setSequenced("n", "ab");
  feature->setFeatureType("t");
  feature->setCoordSys("cs");
  feature->setReprojectionCommands({"@X("});
  feature->addCoord(1, 2, std::numeric_limits<double>::quiet_NaN());
  feature->addCoord(-0.0, 4, 6);
  feature->restoreGeometry(VEX_GEOM_LINE, 3);
  const std::string bytes = u32(1) + u32(0) + text("ab") + u32(1) + u32(0) + text("t") + text("cs") + u16(2) + "\3" +
                            u32(2) + f64(1) + f64(-0.0) + f64(2) + f64(4) + f64(NAN) + f64(6) + u32(1) + text("@X(");
  for (const bool isPortable : {false, true}) {
    VEXRecorder writer(at("s.qds"), VEXRecorder::WRITE_RECORDING, false, isPortable);
    VEXRecordAddress address{9, 9};
    ASSERT_EQ(writer.write(*feature, address), nullptr);
    EXPECT_EQ(address, (VEXRecordAddress{0, 12}));
    // Until it is finished the file says so.
    EXPECT_EQ(bytesOf("s.qds"), u32(0) + u32(isPortable ? 0 : 0xFFFFFFFF) + u32(0));
    ASSERT_EQ(writer.write(*feature, address), nullptr);
    EXPECT_EQ(address, (VEXRecordAddress{0, static_cast<std::uint32_t>(12 + bytes.size())}));
    ASSERT_EQ(writer.close(), nullptr);
    EXPECT_EQ(bytesOf("s.qds"), store({bytes, bytes}, {"n"}));
    // The other form reads it.
    VEXRecorder reader(at("s.qds"), VEXRecorder::READ_RECORDING, false, !isPortable);
    VEXFeaturePtr back;
    ASSERT_EQ(reader.readAt(address, back), nullptr);
    EXPECT_TRUE(std::signbit(back->xs()[1]));
    EXPECT_TRUE(std::isnan(back->zs()[0]));
    EXPECT_EQ(back->sequence(), feature->sequence());
    EXPECT_EQ(back->reprojectionCommands(), feature->reprojectionCommands());
    EXPECT_EQ(back->coordSys(), "cs");
    EXPECT_FALSE(back->attributeExists("orv_geometry"));  // travels as stored
    ASSERT_EQ(reader.read(back), nullptr);                // reading in order begins at the first
    ASSERT_EQ(reader.read(back), nullptr);
    ASSERT_NE(back, nullptr);
    ASSERT_EQ(reader.read(back), nullptr);
    EXPECT_EQ(back, nullptr);
  }
  EXPECT_EQ(names(), "s.qds");
}

TEST_F(StoreTest, SeriesRollOver) {
  const std::string one = record(0, "1", "t");
  const auto size = static_cast<std::uint32_t>(one.size());
  struct Row {
    std::uint32_t maxFileSize;
    std::string files;
  };
  for (const Row& row :
       {Row{12 + size, "a.b.qds a.b_1.qds"}, Row{11 + size, "a.b.qds a.b_1.qds a.b_2.qds"}, Row{1000, "a.b.qds"}}) {
    EXPECT_EQ(writeAll("a.b.qds", {"t {x=1}", "t {y=2}", "t {x=3, y=4}"}, row.maxFileSize), "");
    EXPECT_EQ(names(), row.files);  // members of the longer series before are gone
    EXPECT_EQ(readAll("a.b.qds"), "t {x=1}; t {y=2}; t {x=3, y=4}");
  }
  EXPECT_EQ(scope_->logged("earlier and longer series"), 2U);
  EXPECT_EQ(writeAll("plain", {"t", "t"}, 1), "");
  EXPECT_TRUE(isThere("plain_1"));

  // What the caller deletes, gives up or never wrote leaves nothing.
  for (const bool closes : {true, false}) {
    VEXRecorder recorder(at("gone.qds"), VEXRecorder::WRITE_RECORDING, false, false);
    recorder.setMaxFileSize(1);
    VEXRecordAddress address;
    for (int i = 0; i < 3; ++i) ASSERT_EQ(recorder.write(*makeFeature("t {a=1}"), address), nullptr);
    EXPECT_EQ(address, (VEXRecordAddress{2, 12}));
    EXPECT_TRUE(isThere("gone_2.qds"));
    if (closes) {
      ASSERT_EQ(recorder.close(true), nullptr);
    }
  }
  EXPECT_EQ(writeAll("gone.qds", {}), "");
  EXPECT_EQ(names(), "a.b.qds plain plain_1");

  // Another's store is in the way of a series.
  const std::unordered_set<std::string> taken = {at("x_1.qds")};
  VEXRecorder recorder(at("x.qds"), VEXRecorder::WRITE_RECORDING, false, false);
  recorder.setMaxFileSize(1);
  recorder.setTaken(&taken);
  VEXRecordAddress address;
  ASSERT_EQ(recorder.write(*makeFeature("t"), address), nullptr);
  EXPECT_EQ(numberOf(recorder.write(*makeFeature("t"), address)), 393381U);
}

TEST_F(StoreTest, NamesOfSeries) {
  struct Row {
    const char* name;
    const char* first;  // null: no later member
    std::uint32_t number;
  };
  for (const Row& row :
       {Row{"roads_1.qds", "roads.qds", 1}, Row{"a_b_12.qds", "a_b.qds", 12}, Row{"roads_01.qds", nullptr, 0},
        Row{"roads_0.qds", nullptr, 0}, Row{"roads_x1.qds", nullptr, 0}, Row{"roads_.qds", nullptr, 0},
        Row{"roads_99999999999.qds", nullptr, 0}, Row{"roads.qds", nullptr, 0}, Row{"roads_3", "roads", 3}}) {
    std::string first;
    std::uint32_t number = 0;
    EXPECT_EQ(VEXRecorder::isLaterMember(row.name, first, number), row.first != nullptr) << row.name;
    if (row.first == nullptr) continue;
    EXPECT_EQ(first, row.first);
    EXPECT_EQ(number, row.number);
    EXPECT_EQ(VEXRecorder::memberPath(first, number), row.name);
  }
  EXPECT_EQ(VEXRecorder::memberPath("a.d/roads", 2), "a.d/roads_2");
}

TEST_F(StoreTest, WrongUseIsToldByNumber) {
  ASSERT_EQ(writeAll("s.qds", kThree), "");
  VEXFeaturePtr feature = makeFeature("t");
  VEXRecordAddress address;
  VEXRecorder reader(at("s.qds"), VEXRecorder::READ_RECORDING, false, false);
  EXPECT_EQ(numberOf(reader.write(*feature, address)), 393370U);
  EXPECT_EQ(numberOf(reader.readAt({1, 12}, feature)), 393372U);
  ASSERT_EQ(reader.readAt({0, 12}, feature), nullptr);
  EXPECT_EQ(writeAll("../store/s.qds", {"t"}), "#393383");
  EXPECT_EQ(readAll("s.qds").substr(0, 5), "road ");
  EXPECT_EQ(numberOf(reader.readAt({0, 4}, feature)), 393373U);
  EXPECT_EQ(numberOf(reader.readAt({0, 0xFFFFFFF0}, feature)), 393373U);
  VEXRecorder writer(at("w.qds"), VEXRecorder::WRITE_RECORDING, false, false);
  EXPECT_EQ(numberOf(writer.read(feature)), 393371U);
  EXPECT_EQ(writeAll("none/w.qds", {"t"}), "#393361");
  EXPECT_EQ(writeAll("../../../../../../../../../../../dev/full", {"t"}), "#393362");
  EXPECT_EQ(readAll("none.qds"), "#393365");
  EXPECT_EQ(readAll("."), "#393365");
  put("empty.qds", "");
  EXPECT_EQ(readAll("empty.qds"), "#393365");
}

TEST_F(StoreTest, BrokenStores) {
  const std::string good = record(0, "1", "t");
  const std::string head = u32(0) + u32(12) + u32(0);
  auto with = [](std::string bytes, std::size_t place, std::uint32_t value) {
    return bytes.replace(place, 4, u32(value));
  };
  auto region = [&](const std::string& bytes) { return head + bytes; };
  struct Row {
    std::string bytes;
    std::string read, recovered;
  };
  const std::string whole = store({good, good}, {"a"});
  for (const Row& row : {
           Row{whole, "t {a=1}; t {a=1}", "t {a=1}; t {a=1}"},
           Row{store({}, {}), "", ""},
           // The header.
           Row{with(whole, 0, 1), "#393366", "#393366"},
           Row{whole.substr(0, 7), "#393366", "#393366"},
           Row{whole.substr(0, 11), "#393367", "#393367"},
           Row{with(whole, 4, 5), "#393369", "t {attribute_0=1}; t {attribute_0=1}"},
           Row{with(whole, 4, 0x7FFFFFFF), "#393369", "t {attribute_0=1}; t {attribute_0=1}"},
           Row{with(whole, 4, 0), "#393376", "t {attribute_0=1}; t {attribute_0=1}"},
           Row{with(whole, 4, 0xFFFFFFFF), "#393376", "t {attribute_0=1}; t {attribute_0=1}"},
           Row{with(whole, 8, 99), "#393367", "t {a=1}; t {a=1}"},
           Row{with(whole, 8, 1), "t {a=1}; #393379", "t {a=1}"},
           Row{with(store({good, good.substr(0, 3), good}, {"a"}), 8, 2), "t {a=1}; #393374", "t {a=1}"},
           // The dictionary.
           Row{store({record(1, "1", "t")}, {"a"}), "#879010", ""},
           Row{store({good}, {"a", "a"}), "#393377", "t {a=1}"},
           Row{store({good}, {""}), "#393377", "t {attribute_0=1}"},
           Row{store({good}, {"a"}) + "x", "#393377", "t {a=1}"},
           Row{region(u32(0xFFFFFFFF) + u32(0)), "#393377", ""},
           Row{region(u32(1) + text("a") + u32(1) + u32(1) + u32(1) + text("a")), "#393377", ""},
           Row{region(u32(1) + text("a") + u32(0) + u32(1) + u32(0) + text("b")), "#393377", ""},
           Row{region(u32(1) + u32(0xFFFFFFF0) + "a" + u32(0) + u32(0)), "#393377", ""},
           // Lengths and counts that lie.
           Row{store({with(good, 0, 0xFFFFFFFF)}, {"a"}), "#393374", ""},
           Row{store({with(good, 8, 0xFFFFFFFF)}, {"a"}), "#393374", ""},
           Row{store({with(good, 13, 0xFFFFFFFF)}, {"a"}), "#879010", ""},
           Row{store({with(good, good.size() - 8, 0xFFFFFFFF)}, {"a"}), "#393374", ""},
           Row{store({with(good, good.size() - 4, 0xFFFFFFFF)}, {"a"}), "#393374", ""},
           Row{store({good, std::string(good).replace(good.size() - 9, 1, "\4")}, {"a"}), "t {a=1}; #393374",
               "t {a=1}"},
           Row{store({good, std::string(good).replace(good.size() - 11, 1, "\3")}, {"a"}), "t {a=1}; #393374",
               "t {a=1}"},
       }) {
    put("s.qds", row.bytes);
    EXPECT_EQ(readAll("s.qds"), row.read);
    EXPECT_EQ(readAll("s.qds", true), row.recovered);
  }
}

TEST_F(StoreTest, CutAnywhereNeverLooksWhole) {
  ASSERT_EQ(writeAll("s.qds", kThree), "");
  const std::string whole = bytesOf("s.qds");
  const std::string all = readAll("s.qds");
  std::size_t mostRecovered = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    put("s.qds", whole.substr(0, length));
    EXPECT_NE(readAll("s.qds").find('#'), std::string::npos) << length;
    const std::string saved = readAll("s.qds", true);
    if (length >= 12) {
      EXPECT_EQ(saved.find('#'), std::string::npos) << length << saved;
    }
    mostRecovered = std::max<std::size_t>(mostRecovered, std::count(saved.begin(), saved.end(), ';'));
  }
  EXPECT_EQ(mostRecovered, 2U);
  // Any byte changed: it ends, and what is read is no more than there is.
  for (std::size_t place = 0; place < whole.size(); ++place) {
    for (const char value : {'\0', '\1', '\177', '\377'}) {
      put("s.qds", std::string(whole).replace(place, 1, 1, value));
      for (const bool recovers : {false, true}) {
        const std::string read = readAll("s.qds", recovers);
        EXPECT_LT(std::count(read.begin(), read.end(), ';'), 30);
      }
    }
  }
}

TEST_F(StoreTest, RunThatIsKilledLeavesItsRecords) {
  {
    VEXRecorder recorder(at("s.qds"), VEXRecorder::WRITE_RECORDING, false, false);
    VEXRecordAddress address;
    // More than the buffer, so that some of it is on disk.
    for (int i = 0; i < 20000; ++i)
      ASSERT_EQ(recorder.write(*makeFeature("road {name=A" + std::to_string(i) + "} line 0 0, 10 5, 20 0"), address),
                nullptr);
    std::filesystem::create_directory(at("left"));
    std::filesystem::copy(at("s.qds"), at("left/s.qds"));
    std::filesystem::copy(at("s.qds.names"), at("left/s.qds.names"));
  }
  EXPECT_EQ(names(), "left");
  EXPECT_EQ(readAll("left/s.qds"), "#393376");
  const std::string saved = readAll("left/s.qds", true);
  EXPECT_EQ(saved.substr(0, 48), "road {name=A0} line 0 0, 10 5, 20 0; road {name=");
  EXPECT_GT(std::count(saved.begin(), saved.end(), ';'), 10000);
  EXPECT_EQ(saved.find("attribute_0"), std::string::npos);
  EXPECT_EQ(scope_->logged("Records saved from the feature file"), 1U);
  // Without the names beside it.
  std::filesystem::remove(at("left/s.qds.names"));
  EXPECT_EQ(readAll("left/s.qds", true).substr(0, 52), "road {attribute_0=A0, attribute_1=orv_line} line 0 0");
  // A new run over what is left makes a whole store.
  EXPECT_EQ(writeAll("left/s.qds", {"t {a=1}"}), "");
  EXPECT_EQ(readAll("left/s.qds"), "t {a=1}");
}

TEST_F(StoreTest, RecordsLargerThanTheBuffer) {
  VEXFeaturePtr large = VEXObjectRecycler::instance().getFeature(2, 0);
  for (int i = 0; i < 3000000; ++i) large->addCoord(i, -i);
  large->restoreGeometry(VEX_GEOM_LINE, 2);
  VEXRecorder writer(at("s.qds"), VEXRecorder::WRITE_RECORDING, false, false);
  VEXRecordAddress address;
  for (const bool isLarge : {false, true, false, true})
    ASSERT_EQ(writer.write(isLarge ? *large : *makeFeature("t {a=1}"), address), nullptr);
  ASSERT_EQ(writer.close(), nullptr);
  VEXRecorder reader(at("s.qds"), VEXRecorder::READ_RECORDING, false, false);
  for (const bool isLarge : {false, true, false, true}) {
    VEXFeaturePtr feature;
    ASSERT_EQ(reader.read(feature), nullptr);
    ASSERT_EQ(feature->numCoords(), isLarge ? 3000000U : 0U);
    if (isLarge) {
      EXPECT_TRUE(std::equal(feature->ys().begin(), feature->ys().end(), large->ys().begin()));
    }
  }
}

TEST_F(StoreTest, MemberMissing) {
  ASSERT_EQ(writeAll("s.qds", {"t {a=1}", "t {a=2}", "t {a=3}", "t {a=4}", "t {a=5}"}, 1), "");
  std::filesystem::remove(at("s_1.qds"));
  EXPECT_EQ(readAll("s.qds"), "t {a=1}; #393380");
  EXPECT_EQ(readAll("s.qds", true), "t {a=1}; t {a=3}; t {a=4}; t {a=5}");
  // In a directory each member behind the gap is a store by itself.
  EXPECT_EQ(readDataset(directory_), "t {a=1}; t {a=3}; t {a=4}; t {a=5}");
  scope_->row("S_RECOVER YES");
  EXPECT_EQ(readDataset(directory_), "t {a=1}; t {a=3}; t {a=4}; t {a=5}");
  EXPECT_EQ(scope_->logged("is missing from its series"), 3U);
  put("s_3.qds", "no feature file");
  EXPECT_EQ(readAll("s_2.qds", true), "t {a=3}");
  EXPECT_EQ(readAll("s.qds", true), "t {a=1}; t {a=3}; t {a=5}");
  put("s_4.qds", "");
  EXPECT_EQ(readAll("s.qds", true), "t {a=1}; t {a=3}");
  EXPECT_EQ(scope_->logged("Records saved from the feature file"), 3U);
  // A year is no number of a series.
  ASSERT_EQ(writeAll("roads.qds", {"old"}), "");
  ASSERT_EQ(writeAll("roads_2020.qds", {"new"}), "");
  EXPECT_EQ(readAll("roads.qds"), "old");
  EXPECT_EQ(readAll("roads.qds", true), "old");
}

TEST_F(StoreTest, DirectoriesAndKeywords) {
  ASSERT_EQ(writeAll("b.qds", {"b {n=1}", "b {n=2}"}, 1), "");
  ASSERT_EQ(writeAll("a.QDS", {"a"}), "");
  ASSERT_EQ(writeAll("c_2.qds", {"c"}), "");
  put("d.txt", "no store");
  EXPECT_EQ(readDataset(directory_), "a; b {n=1}; b {n=2}; c");
  scope_->row("S_IDs B c_2 x");
  EXPECT_EQ(readDataset(directory_), "b {n=1}; b {n=2}; c");
  EXPECT_EQ(scope_->logged("No feature store of the name X"), 1U);
  EXPECT_EQ(readDataset(at("a.QDS")), "#24105");
  VEXConfiguration::setValue("S_IDs", "b_1");
  EXPECT_EQ(readDataset(directory_), "b {n=2}");
  struct Row {
    const char* keyword;
    std::uint32_t number;
  };
  std::string name = "K";
  for (const Row& row : {Row{"_SEARCH_ENVELOPE 1 2 3", 24102}, Row{"_SEARCH_ENVELOPE 1 2 3 x", 24102},
                         Row{"_SEARCH_ENVELOPE 3 2 1 4", 24102}, Row{"_SEARCH_CLOSEST_POINT 1 2", 24104},
                         Row{"_SEARCH_CLOSEST_POINT 1 nan 2", 24104}, Row{"_SEARCH_ENVELOPE", 24102},
                         Row{"_RECOVER maybe", 24107}, Row{"_SEARCH_ENVELOPE -1e9 2 3.5 4", 0}}) {
    name += "K";
    scope_->row(name + row.keyword);
    EXPECT_EQ(numberOf(QDSReader("QDS", name).setup()), row.number) << row.keyword;
  }
  scope_->row(name + "_SEARCH_CLOSEST_POINT 1 2 3");
  EXPECT_EQ(numberOf(QDSReader("QDS", name).setup()), 24103U);
}

TEST_F(StoreTest, SharedFileIsClosedWithItsLastClient) {
  VEXSharedFile file(at("shared.txt"));
  ASSERT_EQ(file.open(), nullptr);
  ASSERT_EQ(file.open(), nullptr);
  EXPECT_TRUE(file.stream().append("one "));
  ASSERT_EQ(file.close(), nullptr);
  EXPECT_TRUE(file.stream().append("two"));
  ASSERT_EQ(file.close(), nullptr);
  EXPECT_EQ(bytesOf("shared.txt"), "one two");
  EXPECT_EQ(file.numClients(), 0);
  EXPECT_EQ(numberOf(VEXSharedFile(at("none/shared")).open()), 229001U);
}

}  // namespace
