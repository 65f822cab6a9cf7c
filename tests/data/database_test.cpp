#include "data/database.h"

#include <sys/wait.h>
#include <unistd.h>

#include "base/file.h"
#include "data/new_database.h"
#include "data/pulse_scope.h"
#include "data/recordset.h"
#include "data/statement.h"
#include "support/test_support.h"

namespace selvane::tests {

class DatabaseTest : public FolderTest {
 protected:
  static Database WithTable(const char* path) {
    Database database = Database::Create(path);
    database.CreateTable("T", std::vector<Field>{{"Small", FieldType::kInt16},
                                                 {"Large", FieldType::kInt32},
                                                 {"Single", FieldType::kSingle},
                                                 {"Text", FieldType::kText, 3}});
    return database;
  }
};

TEST_F(DatabaseTest, FileItselfEnforcesWidthsAndRanges) {
  Database database = WithTable("a.mdb");
  const auto insert = [&database](const std::string& values) {
    database.Execute("insert into T (Small,Large,Single,Text) values(" + values + ")");
  };
  for (const char* fitting : {"'32767','2147483647','1.5','abc'", "'-32768','-2147483648','0',''",
                              "'0','0','0','\xC3\xB6\xC3\xB6\xC3\xB6'",  // three characters, six bytes
                              "NULL,NULL,NULL,NULL"}) {
    insert(fitting);
  }
  for (const char* bad : {"'32768','0','0',''", "'0','2147483648','0',''", "'0','0','4e38',''",
                          "'0','0','0','abcd'", "'word','0','0',''", "'0','0','word',''"}) {
    EXPECT_THROW(insert(bad), DatabaseError) << bad;
  }
  EXPECT_EQ(database.RecordCount("T"), 4);
  const std::string refused = "a.mdb: a value for Text is too long, out of range or there already; ";
  ExpectFault<DatabaseError>(refused, [&] { insert("'0','0','0','abcd'"); });
}

TEST_F(DatabaseTest, SecondOpenerGetsAnErrorAtOnce) {
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kWritable}) {
    const std::string path = mode == OpenMode::kReadOnly ? "r.mdb" : "w.mdb";
    { WithTable(path.c_str()); }
    Database holder = Database::Open(path, mode);
    for (const OpenMode second : {OpenMode::kReadOnly, OpenMode::kWritable})
      ExpectFault<DatabaseError>("open elsewhere", [&] { Database::Open(path, second); });
    const pid_t child = ::fork();
    if (child == 0) {
      try {
        Database::Open(path, OpenMode::kReadOnly);
        ::_exit(0);
      } catch (const DatabaseError&) {
        ::_exit(7);
      }
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 7);
    holder.Close();
    EXPECT_NO_THROW(Database::Open(path, mode));
  }
}

// Root may write to protected files, and gives that up for the length of a test.
class Unprivileged {
 public:
  Unprivileged() : user_(::geteuid()) { EXPECT_TRUE(user_ != 0 || ::seteuid(65534) == 0); }
  ~Unprivileged() { EXPECT_EQ(::seteuid(user_), 0); }

 private:
  const uid_t user_;
};

TEST_F(DatabaseTest, WriteProtectedFileIsOpenedOnceAndToReadOnly) {
  using fs::perms;
  { WithTable("p.mdb"); }
  fs::permissions("p.mdb", perms::owner_read | perms::group_read | perms::others_read);
  fs::permissions(folder(), perms::owner_all | perms::group_exec | perms::others_exec);
  const Unprivileged user;
  const auto refused = [](OpenMode mode, const char* part) {
    ExpectFault<DatabaseError>(part, [mode] { Database::Open("p.mdb", mode); });
  };
  {
    const Database holder = Database::Open("p.mdb", OpenMode::kReadOnly);
    EXPECT_EQ(holder.RecordCount("T"), 0);
    for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kWritable, OpenMode::kShared})
      refused(mode, "open elsewhere");
  }
  refused(OpenMode::kWritable, "write-protected");
  {
    const Database one = Database::Open("p.mdb", OpenMode::kShared);
    EXPECT_EQ(Database::Open("p.mdb", OpenMode::kShared).RecordCount("T"), 0);
    refused(OpenMode::kReadOnly, "open elsewhere");
  }
  EXPECT_NO_THROW(Database::Open("p.mdb", OpenMode::kReadOnly));
}

TEST_F(DatabaseTest, ThoseWhoShareKeepOutAllOthers) {
  { WithTable("s.mdb"); }
  const auto refused = [](OpenMode mode) {
    ExpectFault<DatabaseError>("s.mdb: the file is open elsewhere",
                               [mode] { Database::Open("s.mdb", mode); });
  };
  {
    Database one = Database::Open("s.mdb", OpenMode::kShared);
    { const Database other = Database::Open("s.mdb", OpenMode::kShared); }
    EXPECT_THROW(one.Execute("insert into T (Small) values(1)"), DatabaseError);
    for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kWritable}) refused(mode);
  }
  const Database writer = Database::Open("s.mdb", OpenMode::kWritable);
  refused(OpenMode::kShared);
}

TEST_F(DatabaseTest, StatementIsStoppedByPulse) {
  Database database = WithTable("a.mdb");
  for (int i = 0; i < 100; ++i) database.Execute("insert into T (Small) values(1)");
  const std::string endless = " FROM T a,T b,T c,T d,T e,T f,T g,T h";
  RecordingProgress stopping;
  stopping.interrupt_at = 1;
  {
    const PulseScope scope(database, stopping);
    EXPECT_THROW(database.OpenRecordset("SELECT count(*)" + endless), Interrupted);
    stopping.interrupt_at = stopping.pulses;
    EXPECT_THROW(database.Execute("insert into T (Small) SELECT 1" + endless), Interrupted);
    EXPECT_EQ(database.RecordCount("T"), 100);  // undone, and usable
    RecordingProgress inner;
    { const PulseScope inside(database, inner); }
    stopping.interrupt_at = stopping.pulses;
    EXPECT_THROW(database.RecordCount("T] a,[T"), DatabaseError);
    EXPECT_THROW(database.OpenRecordset("SELECT count(*)" + endless), Interrupted);
    EXPECT_EQ(inner.pulses, 0);
  }
  EXPECT_EQ(Rows(database, "SELECT count(*) FROM T a,T b,T c"), Texts{"1000000"});
}

TEST_F(DatabaseTest, StatementsAreCompiledOnce) {
  Database database = WithTable("a.mdb");
  StatementCache& cache = database.connection()->cache;
  const std::string text = R"(SELECT "Small" FROM "T" WHERE "Small" = ?)";
  const auto is_kept = [&](std::string_view wanted) {
    StatementHandle kept = cache.Take(wanted);
    if (!kept) return false;
    cache.Give(wanted, std::move(kept));
    return true;
  };
  {
    const Recordset first = database.OpenRecordset("SELECT Small FROM T WHERE Small=1");
    EXPECT_FALSE(is_kept(text));
  }
  EXPECT_TRUE(is_kept(text));
  {
    const Recordset other_value = database.OpenRecordset("SELECT Small FROM T WHERE Small=2");
    EXPECT_FALSE(is_kept(text));  // it is the one in use
  }
  // 64 are kept, and what was used last stays longest.
  for (int i = 1; i < 64; ++i) database.OpenRecordset("SELECT Small FROM T LIMIT " + std::to_string(i));
  EXPECT_TRUE(is_kept(text));
  for (const int i : {64, 65}) database.OpenRecordset("SELECT Small FROM T LIMIT " + std::to_string(i));
  EXPECT_TRUE(is_kept(text));
  EXPECT_FALSE(is_kept(R"(SELECT "Small" FROM "T" LIMIT 2)"));
  EXPECT_TRUE(is_kept(R"(SELECT "Small" FROM "T" LIMIT 3)"));
}

TEST_F(DatabaseTest, FaultsSayWhatToDo) {
  WriteText("text.mdb", std::string(5000, 'x'));
  WriteText("there.mdb", "mine");
  WriteText("empty.mdb", "");
  fs::create_directory("folder");
  const std::pair<std::function<void()>, const char*> cases[] = {
      {[] { Database::Open("", OpenMode::kReadOnly); }, "no file was named"},
      {[] { Database::Open("missing.mdb", OpenMode::kReadOnly); }, "missing.mdb: there is no such file"},
      {[] { Database::Open("folder", OpenMode::kReadOnly); }, "this is a folder"},
      {[] { Database::Open("text.mdb", OpenMode::kWritable); }, "text.mdb: the file is not a database"},
      {[] { Database::Open("empty.mdb", OpenMode::kWritable); }, "the file is empty"},
      {[] { Database::Create("there.mdb"); }, "is there already"},
      {[] { Database::Create("no/folder.mdb"); }, "no such folder"},
      {[] { Database::Create(""); }, "no file was named"},
      {[] { MakeDatabase("there.mdb", ExistingFile::kRefuse, [](const auto&) {}); }, "is there already"},
      {[] {
         MakeDatabase("new.mdb", ExistingFile::kRefuse,
                      [](const auto& path) { Database::Create(path).Fields("x"); });
       },
       "new.mdb: there is no table \"x\""},
      {[] { Database::Create(":memory:").Execute("DELETE * FROM [" + std::string(500, 'x') + "]"); },
       "is looked for (no such table: xxx"},
  };
  for (const auto& [call, part] : cases) ExpectFault<DatabaseError>(part, call);
  EXPECT_EQ(ReadFile("there.mdb") + ReadFile("empty.mdb"), "mine");
  EXPECT_EQ(FileNames("."), (Texts{":memory:", "empty.mdb", "folder", "text.mdb", "there.mdb"}));
}

TEST_F(DatabaseTest, WhatAFileBringsAlongDoesNothing) {
  {
    const Database made = WithTable("file:a?mode=memory");
    made.connection()->Run(
        "CREATE VIEW V AS SELECT * FROM T; CREATE TABLE Fired (X);"
        "CREATE TRIGGER R AFTER INSERT ON T BEGIN INSERT INTO Fired VALUES (1); END;");
  }
  EXPECT_EQ(FileNames("."), Texts{"file:a?mode=memory"});
  Database database = Database::Open("file:a?mode=memory", OpenMode::kWritable);
  database.Execute("insert into T (Small) values(1)");
  EXPECT_EQ(Rows(database, "SELECT Small FROM T"), Texts{"1"});
  EXPECT_EQ(database.RecordCount("Fired"), 0);
  for (const char* sql : {"SELECT * FROM V", "SELECT length(hex(zeroblob(33554433))) FROM T"})
    EXPECT_THROW(database.OpenRecordset(sql), DatabaseError) << sql;
  for (const char* sql : {"ATTACH 'b.mdb' AS b", "PRAGMA journal_mode=OFF; CREATE TABLE sqlite_x (Y)"})
    EXPECT_THROW(database.connection()->Run(sql), DatabaseError) << sql;
}

TEST_F(DatabaseTest, EditsTheRowItStandsOnAndReadsItAsStored) {
  Database database = WithTable("a.mdb");
  Recordset added = database.OpenEditable("SELECT * FROM T");
  EXPECT_TRUE(added.AtEnd());
  EXPECT_THROW(added.Value(0), DatabaseError);
  for (const char* number : {"1", "2", "2", "3", "5"}) {
    added.AddNew();
    added.SetField(0, number);
    added.SetField("TEXT", "old");
    added.Update();
  }
  Recordset rows = database.OpenEditable("SELECT Text,Small FROM T WHERE Small<'6'");
  rows.MoveNext();
  rows.MoveNext();  // the second of two alike
  database.Execute("DELETE * FROM T WHERE Small=1");
  rows.Edit();
  rows.SetField("Text", "new");
  rows.SetField("Small", "07");
  EXPECT_THROW(rows.SetField("Large", 1), DatabaseError);
  rows.Update();
  EXPECT_THROW(rows.Update(), DatabaseError);
  EXPECT_EQ(rows.Text(0), "new");
  EXPECT_EQ(rows.Int16(1), 7);
  EXPECT_EQ(Rows(database, "SELECT Small,Text FROM T"), (Texts{"2|old", "7|new", "3|old", "5|old"}));
  database.Execute("DELETE * FROM T WHERE Small=7");
  rows.Edit();
  rows.SetField("Text", "x");
  EXPECT_THROW(rows.Update(), DatabaseError);
  rows.MoveNext();
  EXPECT_EQ(rows.Text(0), "old");
  rows.Delete();
  rows.MoveNext();
  EXPECT_EQ(rows.Int16(1), 5);
  EXPECT_EQ(Rows(database, "SELECT Small FROM T"), (Texts{"2", "5"}));
}

TEST_F(DatabaseTest, OnlyRowsOfOneTableCanBeChanged) {
  Database database = WithTable("a.mdb");
  database.CreateTable("U [x]", std::vector<Field>{{"a \"FROM\" b", FieldType::kInt16}});
  database.Execute("insert into T (Small,Text) values(1,'a')");
  for (const char* sql :
       {"SELECT DISTINCT Text FROM T", "SELECT count(*) FROM T", "SELECT Small,Large FROM T GROUP BY Small",
        "SELECT Small FROM T WHERE Small=1 GROUP BY Small", "SELECT T.Small FROM T,T",
        "SELECT Small FROM T t", "SELECT Small AS Large FROM T", "SELECT Small+1 FROM T", "SELECT 1",
        "DELETE * FROM T"}) {
    ExpectFault<DatabaseError>("cannot be changed", [&] { database.OpenEditable(sql); });
  }
  Recordset plain = database.OpenRecordset("SELECT DISTINCT Text FROM T");
  ExpectFault<DatabaseError>("not opened for changes", [&] { plain.Edit(); });
  EXPECT_THROW(plain.Delete(), DatabaseError);
  Recordset named = database.OpenEditable("SELECT [a \"FROM\" b] FROM [U [x]]] ORDER BY 1 LIMIT 5");
  named.AddNew();
  named.SetField(0, 5);
  named.Update();
  EXPECT_EQ(database.RecordCount("U [x]"), 1);
}

}  // namespace selvane::tests
