#include "support/test_support.h"

#include <linux/magic.h>
#include <sqlite3.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>

#include "data/recordset.h"
#include "data/statement.h"

namespace selvane {

fs::path ScratchRoot() {
  // On a disk, tests do little else than wait for what they wrote to be there for good.
  constexpr const char* kMemory = "/dev/shm";
  constexpr unsigned long long kEnough = 32ULL << 20;
  struct statfs about {};
  const bool in_memory = std::getenv("TMPDIR") == nullptr && ::access(kMemory, W_OK | X_OK) == 0 &&
                         ::statfs(kMemory, &about) == 0 && about.f_type == TMPFS_MAGIC &&
                         about.f_bavail * static_cast<unsigned long long>(about.f_bsize) >= kEnough;
  return in_memory ? kMemory : fs::temp_directory_path();
}

FolderTest::FolderTest() : before_(fs::current_path()) {
  std::string name = (ScratchRoot() / "selvane-test-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("cannot make a folder for the test");
  folder_ = name;
  fs::current_path(folder_);
}

FolderTest::~FolderTest() {
  fs::current_path(before_);
  std::error_code ignored;
  fs::remove_all(folder_, ignored);
}

void WriteText(const fs::path& path, std::string_view text) {
  std::ofstream(path, std::ios::binary) << text;
}

Texts FileNames(const fs::path& folder) {
  Texts names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

Texts Rows(Database& database, std::string_view sql) {
  Texts rows;
  for (Recordset set = database.OpenRecordset(sql); !set.AtEnd(); set.MoveNext()) {
    std::string& row = rows.emplace_back();
    for (int i = 0; i < set.FieldCount(); ++i) row += (i == 0 ? "" : "|") + set.Value(i).ToText();
  }
  return rows;
}

Texts Rows(const fs::path& path, std::string_view sql) {
  Database database = Database::Open(path, OpenMode::kReadOnly);
  return Rows(database, sql);
}

void MakeForeignDatabase(const fs::path& path, const std::string& sql) {
  sqlite3* raw = nullptr;
  ASSERT_EQ(sqlite3_open(path.c_str(), &raw), SQLITE_OK);
  const ConnectionHandle connection(raw);
  const std::string all = "BEGIN; " + sql + "COMMIT;";
  ASSERT_EQ(sqlite3_exec(raw, all.c_str(), nullptr, nullptr, nullptr), SQLITE_OK) << sqlite3_errmsg(raw);
}

}  // namespace selvane
