// Databases: statements taken apart, what suits a column, and a server that goes away in the middle.
#include <cstdlib>

#include "tests/unit/tables/tabletest.h"
#include "vex/inc/numtext.h"
#include "vex/tables/dbschema.h"
#include "vex/tables/dbtable.h"

namespace {

using VEXDatabaseTest = TableTest;

TEST(DatabaseStatement, NumbersItsParameters) {
  struct Row {
    const char* text;
    const char* numbered;
    const char* names;
  };
  for (const Row& row :
       {Row{"a = :x AND b = :y AND c = :x", "a = $1 AND b = $2 AND c = $1", "x,y"},
        Row{"':x' \":y\" 'it''s :z' :w", "':x' \":y\" 'it''s :z' $1", "w"},
        Row{"-- :x\n/* :y */ :z::int", "-- :x\n/* :y */ $1::int", "z"}, Row{"a[1:n] ::t : :", "a[1:n] ::t : :", ""},
        Row{"$t$ :x $t$ :y $1", "$t$ :x $t$ $1 $1", "y"}, Row{"$t$ :x", "$t$ $1", "x"}, Row{"'open :x", "'open :x", ""},
        Row{"/* open :x", "/* open :x", ""}, Row{":\xC3\xA9,:a_1", "$1,$2", "\xC3\xA9,a_1"}}) {
    VEXStringVector names;
    EXPECT_EQ(dbschema::numberParameters(row.text, '$', names), row.numbered);
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ",") + name;
    EXPECT_EQ(list, row.names) << row.text;
  }
}

TEST(DatabaseSchema, KnowsWhatSuitsAColumn) {
  struct Row {
    const char* type;
    const char* good;  // values between blanks
    const char* bad;
  };
  for (const Row& row :
       {Row{"char(3)", "abc \xC3\xA9\xC3\xA9\xC3\xA9", "abcd"},
        Row{"number(5,2)", "1 -999.99 1e2 .5 999.994 000999", "1000 x 1e3 nan inf 999.996"},
        Row{"number(31,15)", "9999999999999999 -0012345.678", "1e16 10000000000000000"},
        Row{"smallint", "32767 -32768 +7", "32768 1.5 1e2 x"},
        Row{"integer", "2147483647 -2147483648", "2147483648 1.0 99999999999999999999"},
        Row{"double", "1e300 -.5 12", "1e400 12,5 0x10"}, Row{"date", "20200102 2020-01-02", "2020 x 202001021"},
        Row{"logical", "true F Yes 0", "maybe 2"}}) {
    const dbschema::Type type = dbschema::typeOf(row.type);
    VEXStringVector values;
    splitAt(row.good, ' ', values);
    for (const std::string& value : values) EXPECT_TRUE(dbschema::suits(type, value)) << row.type << " " << value;
    splitAt(row.bad, ' ', values);
    for (const std::string& value : values) EXPECT_FALSE(dbschema::suits(type, value)) << row.type << " " << value;
  }
  for (const char* type : {"blob", "number(2,5)", "", "text"}) EXPECT_EQ(dbschema::columnType(type), "") << type;
}

TEST_F(VEXDatabaseTest, TablesOfTheTableDriver) {
  {
    VEXDatabaseOutput output(at("t.db"));
    EXPECT_EQ(write(output, {{"DATABASE_TABLE", "t"}, {"id", "integer"}, {"name", "char(9)"}},
                    {{"1", "a"}, {"2", ""}, {"", std::string_view()}}),
              0u);
  }
  VEXDatabaseInput input(at("t.db"));
  EXPECT_EQ(rowsOf(input, {{"DATABASE_TABLE", "t"}}), "1|a\n2|\n|\n");
  VEXDatabaseInput where(at("t.db"));
  EXPECT_EQ(rowsOf(where, {{"DATABASE_TABLE", "t"}, {"DATABASE_WHERE", "name = ''"}, {"id", ""}}), "2\n");
  VEXDatabaseOutput failing(at("t.db"));
  EXPECT_EQ(write(failing, {{"DATABASE_TABLE", "t"}, {"id", "integer"}}, {{"5"}, {"x"}}), 310008u);
  VEXDatabaseInput after(at("t.db"));
  EXPECT_EQ(rowsOf(after, {{"DATABASE_TABLE", "t"}, {"id", ""}}), "1\n2\n\n");
}

// An SQLite file cut or spoilt anywhere is told by a failure, or read as far as it goes.
TEST_F(VEXDatabaseTest, SpoiltFilesFailInOrder) {
  {
    VEXDatabaseOutput output(at("t.db"));
    std::vector<std::vector<std::string_view>> rows(2000, {"12345", "some text"});
    EXPECT_EQ(write(output, {{"DATABASE_TABLE", "t"}, {"id", "integer"}, {"name", "char(9)"}}, rows), 0u);
  }
  const std::string whole = bytesOf(at("t.db"));
  std::uint32_t numFailed = 0;
  for (std::size_t step = 0; step < 60; ++step) {
    std::string bytes = whole.substr(0, whole.size() * step / 60);
    if (step % 2 == 1) (bytes = whole).replace(step * 613 % (whole.size() - 64), 64, 64, static_cast<char>(step * 37));
    const std::string path = put("spoilt" + std::to_string(step) + ".db", bytes);
    VEXDatabaseInput input(path);
    numFailed += rowsOf(input, {{"DATABASE_TABLE", "t"}}).find('#') != std::string::npos ? 1 : 0;
  }
  EXPECT_GE(numFailed, 30u);
}

class Postgres : public TableTest {
 protected:
  void SetUp() override {
    if (std::getenv("ORV_POSTGRES_STOP") == nullptr) GTEST_SKIP() << "there is no PostgreSQL server";
    place_.serverType = "POSTGRESQL";
    std::string error;
    database_ = VEXDatabase::open(place_, VEXDatabase::Access::Create, error);
    ASSERT_NE(database_, nullptr) << error;
  }
  // All rows of a statement, "a|b;" each.
  std::string ask(std::string_view text, bool streamed = false) {
    const auto statement = database_->prepare(text, streamed);
    if (statement == nullptr || !statement->start({})) return "#" + database_->errorText();
    std::string answer;
    for (;;) {
      VEXDatabaseRow row;
      bool atEnd = false;
      if (!statement->next(row, atEnd)) return answer + "#";
      if (atEnd) return answer;
      for (std::size_t i = 0; i < row.size(); ++i) answer.append(i > 0 ? "|" : "").append(row[i].value_or("NULL"));
      answer += ";";
    }
  }

  VEXDatabasePlace place_;
  std::unique_ptr<VEXDatabase> database_;
};

TEST_F(Postgres, StreamsAndGivesUpRows) {
  for (const bool streamed : {false, true}) {
    EXPECT_EQ(ask("SELECT i, NULL, i > 1 FROM generate_series(1, 2) i", streamed), "1|NULL|false;2|NULL|true;");
    EXPECT_EQ(ask("SELECT 1 / (3 - i) FROM generate_series(1, 5) i", streamed),
              streamed ? "0;1;#" : "#ERROR:  division by zero");
    const auto statement = database_->prepare("SELECT i FROM generate_series(1, 300000) i", streamed);
    ASSERT_TRUE(statement->start({}));
    VEXDatabaseRow row;
    bool atEnd = false;
    ASSERT_TRUE(statement->next(row, atEnd));
    statement->reset();
    EXPECT_EQ(ask("SELECT 7", streamed), "7;");
  }
  EXPECT_EQ(ask("SELECT 1; SELECT 2").substr(0, 7), "#ERROR:");
  EXPECT_EQ(ask(""), "");
}

// The last of them: the server is gone afterwards.
TEST_F(Postgres, ZServerThatGoesAway) {
  EXPECT_EQ(ask("CREATE TABLE gone (x integer)"), "");
  VEXDatabaseOutput output("");
  const Pairs fields = {{"DATABASE_SERVER_TYPE", "POSTGRESQL"},
                        {"DATABASE_NAME", "postgres"},
                        {"DATABASE_TABLE", "gone"},
                        {"x", "integer"}};
  for (const auto& [name, value] : fields) ASSERT_EQ(numberOf(output.addField(name, value)), 0u);
  const std::string_view row[] = {"1"};
  ASSERT_EQ(numberOf(output.writeRow(row)), 0u);
  const auto statement = database_->prepare("SELECT i FROM generate_series(1, 3000000) i", true);
  ASSERT_TRUE(statement->start({}));
  ASSERT_EQ(std::system((std::string(std::getenv("ORV_POSTGRES_STOP")) + " >/dev/null").c_str()), 0);
  VEXDatabaseRow values;
  bool atEnd = false;
  while (statement->next(values, atEnd) && !atEnd) {
  }
  EXPECT_FALSE(atEnd);
  EXPECT_NE(database_->errorText(), "");
  EXPECT_EQ(database_->prepare("SELECT 1"), nullptr);
  EXPECT_FALSE(database_->begin());
  EXPECT_EQ(numberOf(output.close()), 310005u);
  VEXDatabaseInput input("postgres");
  EXPECT_EQ(rowsOf(input, {{"DATABASE_SERVER_TYPE", "POSTGRESQL"}, {"DATABASE_TABLE", "gone"}}), "#309001");
}

}  // namespace
