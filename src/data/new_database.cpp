#include "data/new_database.h"

#include <fmt/format.h>

#include <array>
#include <string_view>
#include <vector>

#include "data/database_error.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

// What the engine keeps beside a database while somebody works on it, or leaves there in a crash.
void CheckSideFiles(const fs::path& path) {
  for (const char* const suffix : {"-journal", "-wal", "-shm"}) {
    fs::path side = path;
    side += suffix;
    if (!fs::exists(fs::symlink_status(side))) continue;
    throw DatabaseError(
        path,
        fmt::format("beside this name lies {}, which belongs to an older database of that name and would "
                    "spoil a new one; move it away together with that database, or choose another name",
                    side.filename().string()));
  }
}

// True for the first bytes of every database of the engine.
bool IsDatabase(const fs::path& path) {
  constexpr std::string_view kMagic("SQLite format 3\0", 16);
  std::array<char, kMagic.size()> begin{};
  std::error_code error;
  return fs::is_regular_file(path, error) && InputFile(path).Read(begin) &&
         std::string_view(begin.data(), begin.size()) == kMagic;
}

}  // namespace

NewDatabase::NewDatabase(const fs::path& path, ExistingFile existing) {
  if (path.empty()) throw DatabaseError(path, "no file was named; choose a database file and try again");
  try {
    lock_.emplace(path);
    file_.emplace(path, existing);
    if (existing == ExistingFile::kReplace && IsDatabase(path)) replaced_ = Database::OpenToReplace(path);
  } catch (const FileError& error) {
    throw DatabaseError({}, error.what());
  }
  CheckSideFiles(file_->path());
}

void NewDatabase::Commit(std::span<NewFile* const> others) {
  std::vector<NewFile*> files(others.begin(), others.end());
  files.push_back(&*file_);
  CommitTogether(files);
  replaced_.reset();
}

void MakeDatabase(const fs::path& path, ExistingFile existing,
                  const std::function<void(const fs::path&)>& make) {
  NewDatabase made(path, existing);
  try {
    make(made.temporary());
  } catch (const DatabaseError& error) {
    // The user knows nothing of a temporary name; errors of other files are told as they are.
    if (error.file() != made.temporary()) throw;
    throw DatabaseError(path, error.reason(), error.statement());
  }
  made.Commit();
}

}  // namespace selvane
