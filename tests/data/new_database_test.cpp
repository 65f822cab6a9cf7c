#include "data/new_database.h"

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include "data/database_error.h"
#include "support/test_support.h"

namespace selvane::tests {

// A rollback journal that a killed program has left beside its database. The engine would bring the journal's
// pages into whatever database stands there next.
class ReplacingTest : public FolderTest {
 protected:
  static void Make(const char* path, ExistingFile existing, const char* table) {
    MakeDatabase(path, existing, [table](const std::filesystem::path& temporary) {
      Database::Create(temporary).CreateTable(table, std::vector<Field>{{"a", FieldType::kInt32}});
    });
  }
  // Leaves old.mdb with one committed row, and a change of many pages that was not: on the disk with its
  // journal, or in a log.
  static void LeaveHalfWritten(const char* mode) {
    const pid_t child = ::fork();
    if (child == 0) {
      const std::string sql =
          std::string("PRAGMA journal_mode=") + mode +
          "; PRAGMA cache_size=1; CREATE TABLE T(a); INSERT INTO T VALUES(1); BEGIN;"
          "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000) "
          "INSERT INTO T SELECT i FROM n;";
      sqlite3* raw = nullptr;
      sqlite3_open("old.mdb", &raw);
      sqlite3_exec(raw, sql.c_str(), nullptr, nullptr, nullptr);
      ::_exit(0);
    }
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
  }
};

TEST_F(ReplacingTest, NothingOfAnOlderDatabaseGetsIntoANewOne) {
  for (const char* mode : {"DELETE", "WAL"}) {
    LeaveHalfWritten(mode);
    const std::string side = std::string("old.mdb") + (mode[0] == 'W' ? "-wal" : "-journal");
    ASSERT_TRUE(std::filesystem::exists(side));
    std::filesystem::rename("old.mdb", "away.mdb");
    const auto make = [] { Make("old.mdb", ExistingFile::kReplace, "New"); };
    ExpectFault<DatabaseError>("beside this name lies " + side, make);
    std::filesystem::rename("away.mdb", "old.mdb");
    EXPECT_NO_THROW(make());
    EXPECT_EQ(FileNames("."), std::vector<std::string>{"old.mdb"}) << mode;
    EXPECT_FALSE(Database::Open("old.mdb", OpenMode::kReadOnly).HasTable("T"));
    std::filesystem::remove("old.mdb");
  }
}

TEST_F(ReplacingTest, WhatIsOpenElsewhereIsNotReplaced) {
  Make("old.mdb", ExistingFile::kRefuse, "Old");
  {
    const Database open_elsewhere = Database::Open("old.mdb", OpenMode::kWritable);
    ExpectFault<DatabaseError>("open elsewhere", [] { Make("old.mdb", ExistingFile::kReplace, "New"); });
  }
  // And what is about to be replaced can be opened by nobody.
  MakeDatabase("old.mdb", ExistingFile::kReplace, [](const std::filesystem::path& temporary) {
    Database::Create(temporary);
    EXPECT_THROW(Database::Open("old.mdb", OpenMode::kReadOnly), DatabaseError);
    EXPECT_THROW(MakeDatabase("old.mdb", ExistingFile::kReplace, [](const auto&) {}), DatabaseError);
  });
  EXPECT_FALSE(Database::Open("old.mdb", OpenMode::kReadOnly).HasTable("Old"));
  WriteText("text.mdb", "a file of another kind");
  EXPECT_NO_THROW(Make("text.mdb", ExistingFile::kReplace, "New"));
}

}  // namespace selvane::tests
