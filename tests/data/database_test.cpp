#include "data/database.h"

#include <sys/wait.h>
#include <unistd.h>

#include "data/database_error.h"
#include "data/new_database.h"
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
  const std::pair<const char*, bool> cases[] = {
      {"'32767','2147483647','1.5','abc'", true},
      {"'-32768','-2147483648','0',''", true},
      {"'32768','0','0',''", false},
      {"'0','2147483648','0',''", false},
      {"'0','0','4e38',''", false},
      {"'0','0','0','abcd'", false},
      {"'0','0','0','\xC3\xB6\xC3\xB6\xC3\xB6'", true},  // three characters, six bytes
      {"'word','0','0',''", false},
      {"'0','0','word',''", false},
      {"NULL,NULL,NULL,NULL", true},
  };
  long rows = 0;
  for (const auto& [values, fits] : cases) {
    const std::string sql = std::string("insert into T (Small,Large,Single,Text) values(") + values + ")";
    if (fits) {
      EXPECT_NO_THROW(database.Execute(sql)) << sql;
      EXPECT_EQ(database.RecordCount("T"), ++rows);
    } else {
      EXPECT_THROW(database.Execute(sql), DatabaseError) << sql;
    }
  }
}

TEST_F(DatabaseTest, SecondOpenerGetsAnErrorAtOnce) {
  for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kWritable}) {
    const std::string path = mode == OpenMode::kReadOnly ? "r.mdb" : "w.mdb";
    { WithTable(path.c_str()); }
    Database holder = Database::Open(path, mode);
    for (const OpenMode second : {OpenMode::kReadOnly, OpenMode::kWritable}) {
      const std::string message = MessageOf<DatabaseError>([&] { Database::Open(path, second); });
      EXPECT_NE(message.find("open elsewhere"), std::string::npos) << message;
    }
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
  Unprivileged() : user_(::geteuid()) {
    if (user_ == 0) {
      EXPECT_EQ(::seteuid(65534), 0);
    }
  }
  ~Unprivileged() { EXPECT_EQ(::seteuid(user_), 0); }

 private:
  const uid_t user_;
};

TEST_F(DatabaseTest, WriteProtectedFileIsOpenedOnceAndToReadOnly) {
  using std::filesystem::perms;
  { WithTable("p.mdb"); }
  std::filesystem::permissions("p.mdb", perms::owner_read | perms::group_read | perms::others_read);
  std::filesystem::permissions(folder(), perms::owner_all | perms::group_exec | perms::others_exec);
  const Unprivileged user;
  const auto fault = [](OpenMode mode) {
    return MessageOf<DatabaseError>([mode] { Database::Open("p.mdb", mode); });
  };
  {
    const Database holder = Database::Open("p.mdb", OpenMode::kReadOnly);
    EXPECT_EQ(holder.RecordCount("T"), 0);
    for (const OpenMode mode : {OpenMode::kReadOnly, OpenMode::kWritable}) {
      EXPECT_NE(fault(mode).find("open elsewhere"), std::string::npos);
    }
  }
  EXPECT_NE(fault(OpenMode::kWritable).find("write-protected"), std::string::npos);
  EXPECT_NO_THROW(Database::Open("p.mdb", OpenMode::kReadOnly));
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
  std::filesystem::create_directory("folder");
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
  };
  for (const auto& [call, part] : cases) {
    EXPECT_NE(MessageOf<DatabaseError>(call).find(part), std::string::npos) << part;
  }
  EXPECT_EQ(ReadFile("there.mdb") + ReadFile("empty.mdb"), "mine");
  EXPECT_EQ(FileNames("."), (std::vector<std::string>{"empty.mdb", "folder", "text.mdb", "there.mdb"}));
}

TEST_F(DatabaseTest, ResultsCanBeEdited) {
  Database database = WithTable("a.mdb");
  Recordset rows = database.OpenEditable("SELECT * FROM T");
  EXPECT_TRUE(rows.AtEnd());
  EXPECT_THROW(rows.Value(0), DatabaseError);
  for (int i = 1; i <= 5; ++i) {
    rows.AddNew();
    rows.SetField(0, std::to_string(i));
    rows.SetField("TEXT", "r");
    rows.Update();
  }
  Recordset some = database.OpenEditable("SELECT Small,Text FROM T WHERE Small>'1'");
  some.MoveNext();
  EXPECT_EQ(some.Int16(0), 3);
  some.Edit();
  some.SetField("text", "new");
  EXPECT_THROW(some.SetField("Large", 1), DatabaseError);
  some.Update();
  some.MoveNext();
  some.Delete();
  some.MoveNext();
  EXPECT_EQ(some.Int16(0), 5);
  EXPECT_THROW(some.Update(), DatabaseError);
  EXPECT_EQ(Rows(database, "SELECT Small,Text FROM T"),
            (std::vector<std::string>{"1|r", "2|r", "3|new", "5|r"}));
}

TEST_F(DatabaseTest, EditsTheRowItStandsOnAndReadsItAsStored) {
  Database database = WithTable("a.mdb");
  for (const char* row : {"1", "2", "2", "3"}) {
    database.Execute("insert into T (Small,Text) values(" + std::string(row) + ",'old')");
  }
  Recordset rows = database.OpenEditable("SELECT Text,Small FROM T");
  rows.MoveNext();
  rows.MoveNext();  // the second of two alike
  database.Execute("DELETE * FROM T WHERE Small=1");
  rows.Edit();
  rows.SetField("Text", "new");
  rows.SetField("Small", "07");
  rows.Update();
  EXPECT_EQ(rows.Text(0), "new");
  EXPECT_EQ(rows.Int16(1), 7);
  EXPECT_EQ(Rows(database, "SELECT Small,Text FROM T"),
            (std::vector<std::string>{"2|old", "7|new", "3|old"}));
  database.Execute("DELETE * FROM T WHERE Small=7");
  rows.Edit();
  rows.SetField("Text", "x");
  EXPECT_THROW(rows.Update(), DatabaseError);
  rows.MoveNext();
  EXPECT_EQ(rows.Text(0), "old");
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
    const std::string message = MessageOf<DatabaseError>([&] { database.OpenEditable(sql); });
    EXPECT_NE(message.find("cannot be changed"), std::string::npos) << sql << ": " << message;
  }
  Recordset plain = database.OpenRecordset("SELECT DISTINCT Text FROM T");
  EXPECT_NE(MessageOf<DatabaseError>([&] { plain.Edit(); }).find("not opened for changes"),
            std::string::npos);
  EXPECT_THROW(plain.Delete(), DatabaseError);
  Recordset named = database.OpenEditable("SELECT [a \"FROM\" b] FROM [U [x]]] ORDER BY 1 LIMIT 5");
  named.AddNew();
  named.SetField(0, 5);
  named.Update();
  EXPECT_EQ(database.RecordCount("U [x]"), 1);
}

}  // namespace selvane::tests
