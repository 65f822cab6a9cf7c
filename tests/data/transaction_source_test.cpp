#include "data/transaction_source.h"

#include "support/test_support.h"

namespace selvane::tests {

class TransactionSourceTest : public FolderTest {
 protected:
  TransactionSourceTest() {
    MakeForeignDatabase("t.mdb", R"(
        CREATE TABLE first("Index" SMALLINT, "Fever [high], acute" SMALLINT, Cough VARCHAR(5), Raw BLOB,
          Any REAL);
        INSERT INTO first VALUES (3, 1, '1', 0, 1.4), (7, 2, '01', 0, 1.6), (0, -1, '0', 0, 0.5),
          (9, 1, '1', 0, 1);
        CREATE VIEW v AS SELECT 1 x; CREATE VIRTUAL TABLE w USING fts5(t); CREATE TABLE sys_Queries(n, s);
        CREATE TABLE 'only ids'("Index" SMALLINT);
        CREATE TABLE empty("Index" SMALLINT, a SMALLINT);
        CREATE TABLE "Order"("Index" SMALLINT, a SMALLINT); INSERT INTO "Order" VALUES (6, 1);
        CREATE TABLE ids("Index" SMALLINT); INSERT INTO ids VALUES (5);
        CREATE TABLE made("Index" SMALLINT, a SMALLINT, b SMALLINT GENERATED ALWAYS AS (a + 1));
        CREATE TABLE Cases("INDEX" SMALLINT, "COUGH" SMALLINT); INSERT INTO Cases VALUES (4, 1);
        CREATE TABLE bad(i, a); INSERT INTO bad VALUES (1, NULL), (40000, 1), (1, 'word');)");
    source_.Open("t.mdb");
  }
  TransactionSource source_;
};

TEST_F(TransactionSourceTest, ReadsRowsAsSmallNumbers) {
  RowValues row;
  std::vector<RowValues> rows;
  for (bool more = source_.OpenReader("first", row); more; more = source_.NextRow(row)) rows.push_back(row);
  const std::uint32_t minus_one = 0xFFFFFFFF;
  EXPECT_EQ(rows, (std::vector<RowValues>{
                      {3, 1, 1, 0, 1}, {7, 2, 1, 0, 2}, {0, minus_one, 0, 0, 0}, {9, 1, 1, 0, 1}}));
  EXPECT_THROW(source_.NextRow(row), DatabaseError);
  // A reading can be abandoned for a new one.
  source_.OpenReader("first", row);
  source_.OpenReader("Order", row);  // a word of the language
  EXPECT_EQ(row, (RowValues{6, 1}));
  source_.OpenReader("ids", row);
  EXPECT_EQ(row, RowValues{5});
  EXPECT_FALSE(source_.NextRow(row));
}

TEST_F(TransactionSourceTest, ListsTablesAndItems) {
  Texts names = {"kept"};
  source_.ListTables(names);
  EXPECT_EQ(names, (Texts{"kept", "first", "only ids", "empty", "Order", "ids", "made", "Cases", "bad"}));
  source_.ListItemFields("first", names);
  EXPECT_EQ(names, (Texts{"Fever [high], acute", "Cough", "Raw", "Any"}));
  source_.ListItemFields("only ids", names);
  EXPECT_TRUE(names.empty());
  source_.ListItemFields("made", names);
  EXPECT_EQ(names, (Texts{"a", "b"}));
  EXPECT_EQ(source_.FieldCount("first"), 5);
  EXPECT_EQ(source_.RecordCount("first"), 4);
}

TEST_F(TransactionSourceTest, FindsTheRowsOfOneItem) {
  using Ids = std::vector<std::uint32_t>;
  const auto ask = [this](std::string_view table, int position) {
    std::pair<std::string, Ids> found = {"", {99}};
    source_.ItemRowIds(table, position, found.second, found.first);
    return found;
  };
  EXPECT_EQ(ask("first", 1), std::pair(std::string("Fever [high], acute"), Ids{3, 9}));
  EXPECT_EQ(ask("first", 2).second, (Ids{3, 9}));  // 01 is another text
  EXPECT_EQ(ask("cASES", 1), std::pair(std::string("COUGH"), Ids{4}));
  EXPECT_EQ(ask("Order", 1).second, Ids{6});
  for (const int position : {3, 9}) EXPECT_THROW(ask("first", position), DatabaseError);
}

TEST_F(TransactionSourceTest, ColumnsInARowGiveWhatEachGivesAlone) {
  // More columns than are read at a time, with values of all kinds, and then with one row whose id is too
  // great.
  std::mt19937 random(1);
  std::string sql = R"(CREATE TABLE T("Index")";
  for (int i = 1; i <= 150; ++i) {
    const char* const types[] = {"SMALLINT", "VARCHAR(3)", "REAL", "SMALLINT"};
    sql += fmt::format(", \"c]{}\" {}", i, i == 140 ? "BLOB" : types[i % 4]);
  }
  const std::string table = sql + ");";
  for (const bool has_bad_row : {false, true}) {
    sql = table;
    for (int row = 1; row <= 30; ++row) {
      const char* const values[] = {"0", "1", "'1'", "NULL", "2", "'01'", "1.0", "-1", "'x'"};
      const bool is_bad = has_bad_row && row == 17;
      sql += fmt::format("INSERT INTO T VALUES ({}", is_bad ? 70000 : row % 13);
      for (int i = 1; i <= 150; ++i)
        sql += fmt::format(",{}", is_bad ? (i == 70 ? "1" : "0") : values[random() % 9]);
      sql += ");";
    }
    const std::string path = has_bad_row ? "bad.mdb" : "good.mdb";
    MakeForeignDatabase(path, sql);
    const auto ask = [this](int position) {
      std::vector<std::uint32_t> ids;
      std::string name;
      try {
        source_.ItemRowIds("T", position, ids, name);
      } catch (const DatabaseError& error) {
        name = error.what();
      }
      return std::pair(name, ids);
    };
    std::map<int, std::pair<std::string, std::vector<std::uint32_t>>> alone;
    source_.Open(path);
    for (int i = 150; i >= 1; --i) alone[i] = ask(i);
    EXPECT_EQ(alone[70].first == "c]70", !has_bad_row);
    for (const int step : {1, 3, 70}) {
      source_.Open(path);
      for (int i = 1; i <= 150; i += step) EXPECT_EQ(ask(i), alone[i]) << i << " by " << step;
    }
  }
}

TEST_F(TransactionSourceTest, FaultsReachTheCaller) {
  RowValues row;
  EXPECT_THROW(source_.OpenReader("empty", row), DatabaseError);
  EXPECT_THROW(source_.OpenReader("only ids", row), DatabaseError);  // the blank is not bracketed
  EXPECT_THROW(source_.OpenReader("first x", row), DatabaseError);   // nor is the x another name for it
  EXPECT_THROW(source_.OpenReader("bad", row), DatabaseError);       // null
  Texts names;
  EXPECT_THROW(source_.ListItemFields("none", names), DatabaseError);
  EXPECT_THROW(source_.FieldCount("none"), SilentAbort);
  EXPECT_THROW(source_.RecordCount("none"), SilentAbort);
}

}  // namespace selvane::tests
