#include "data/row_set.h"
#include "data/set_table_writer.h"
#include "data/transaction_source.h"
#include "support/test_support.h"

namespace selvane::tests {

using Ids = std::vector<std::uint32_t>;

class SetTableTest : public FolderTest {
 protected:
  // A table T of some terms: row i holds term j when i is a multiple of j + 1, but for the last, in no row.
  static void Make(std::uint32_t rows, const Texts& terms) {
    fs::remove("s.mdb");
    Database database = Database::Create("s.mdb");
    Transaction transaction(database);
    SetTableWriter writer(database, "T", terms);
    for (std::uint32_t row = 1; row <= rows; ++row) {
      Ids held;
      for (std::uint32_t term = 0; term + 1 < terms.size(); ++term) {
        if (row % (term + 1) == 0) held.insert(held.begin(), {term, term});
      }
      writer.AddRow(held);
    }
    writer.Finish();
    transaction.Commit();
  }
  // The first message of reading the table in every way.
  static std::string FaultOf() {
    try {
      TransactionSource source;
      source.Open("s.mdb");
      Texts names;
      source.ListItemFields("T", names);
      RowValues row;
      for (bool more = source.OpenReader("T", row); more; more = source.NextRow(row)) {
      }
      for (int i = 1; i <= static_cast<int>(names.size()); ++i) source.ItemRowIds("T", i, row, names[0]);
    } catch (const DatabaseError& error) {
      return error.what();
    }
    return "";
  }
};

TEST_F(SetTableTest, IsReadAsOneOfRows) {
  const std::uint32_t rows = 3 * kRowsOfBlock + 7;
  const Texts terms = {"Every", "Every 'other'", "third", "every", "None"};
  Make(rows, terms);
  TransactionSource source;
  source.Open("s.mdb");
  Texts names;
  source.ListTables(names);
  EXPECT_EQ(names, Texts{"T"});
  source.ListItemFields("t", names);  // capitals do not matter
  EXPECT_EQ(names, terms);
  EXPECT_EQ(source.FieldCount("T"), 6);
  EXPECT_EQ(source.RecordCount("T"), rows);
  Ids ids;
  std::string name;
  RowValues row;
  std::uint32_t read = 0;
  for (bool more = source.OpenReader("T", row); more; more = source.NextRow(row)) {
    ++read;
    ASSERT_EQ(row, (RowValues{read, 1, read % 2 == 0, read % 3 == 0, read % 4 == 0, 0}));
    // Asking for another table meanwhile does not disturb the reading.
    if (read == 5) {
      EXPECT_THROW(source.ItemRowIds("sys_Locale", 1, ids, name), DatabaseError);
    }
  }
  EXPECT_EQ(read, rows);
  for (std::uint32_t i = 1; i <= 5; ++i) {
    source.ItemRowIds("T", static_cast<int>(i), ids, name);
    EXPECT_EQ(name, terms[i - 1]);
    ASSERT_EQ(ids.size(), i == 5 ? 0 : rows / i);
    for (std::uint32_t place = 0; place < ids.size(); ++place) ASSERT_EQ(ids[place], (place + 1) * i);
  }
  for (const int position : {-1, 0, 6})
    EXPECT_THROW(source.ItemRowIds("T", position, ids, name), DatabaseError);
  source.Close();
  Make(0, {"a"});
  EXPECT_NE(FaultOf().find("there is no current row"), std::string::npos);
  ExpectFault<InputError>("\"a\" stands twice", [] { Make(0, {"a", "b", "a"}); });
}

TEST_F(SetTableTest, TellsOfDamage) {
  const std::pair<const char*, const char*> damaged[] = {
      {"", "SELECT 1"},  // none
      {"does not name them", "DELETE FROM sys_Sets"},
      {"does not name them", "DROP TABLE sys_Sets"},
      {"sys_Sets does not name term 0", "DELETE FROM sys_Sets WHERE Term = 0"},
      {"sys_Sets does not name term 2", "DELETE FROM sys_Sets WHERE Term = 2"},
      {"names the term \"a\" twice", "UPDATE sys_Sets SET Name = 'a' WHERE Term = 2"},
      {"gives term 0 -1 rows", "UPDATE sys_Sets SET Rows = -1 WHERE Term = 0"},
      {"gives term 2 70001 rows", "UPDATE sys_Sets SET Rows = 70001 WHERE Term = 2"},
      {"\"b\" has 35000 rows, and sys_Sets states 34999", "UPDATE sys_Sets SET Rows = 34999 WHERE Term = 2"},
      {"\"b\" has 32767 rows, and sys_Sets states 35000", "DELETE FROM T WHERE Term = 2 AND Block = 1"},
      {"rows outside of 1..60000", "UPDATE sys_Sets SET Rows = 60000"},
      {"rows outside of 1..70000", "UPDATE T SET Block = -1 WHERE Block = 0"},
      {"has row 70000, outside of 1..69999", "UPDATE sys_Sets SET Rows = 69999 WHERE Term < 2"},
      {"\"b\", block 1: the set of rows is damaged",
       "UPDATE T SET Rows = substr(Rows, 2) WHERE Term = 2 AND Block = 1"},
      {"\"a\", block 0: the set of rows is damaged", "UPDATE T SET Rows = 'text' WHERE Term = 1"},
      {"a set of term 4", "INSERT INTO T SELECT 0, 4, Rows FROM T LIMIT 1"},
      {"primary key", "CREATE TABLE U AS SELECT * FROM T; DROP TABLE T; ALTER TABLE U RENAME TO T"},
      {"no such column: Rows", "ALTER TABLE T RENAME COLUMN Rows TO Sets"},
  };
  for (const auto& [reason, sql] : damaged) {
    Make(70000, {"a", "b", "c"});
    MakeForeignDatabase("s.mdb", std::string(sql) + ";");
    const std::string fault = FaultOf();
    EXPECT_TRUE(*reason == '\0' ? fault.empty() : fault.find(reason) != std::string::npos)
        << sql << ": " << fault;
  }
}

}  // namespace selvane::tests
