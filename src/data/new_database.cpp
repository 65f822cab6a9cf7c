#include "data/new_database.h"

#include <fmt/format.h>

#include <initializer_list>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "data/database_error.h"

namespace selvane {

namespace fs = std::filesystem;

namespace {

// A journal whose beginning is overwritten, or that is empty, holds nothing that is still to be done.
bool IsFinished(const fs::path& journal) {
  char first = '\0';
  return !InputFile(journal).Read({&first, 1}) || first == '\0';
}

}  // namespace

void CheckSideFiles(const fs::path& path) {
  for (const std::string_view suffix : std::initializer_list<std::string_view>{"-journal", "-wal", "-shm"}) {
    std::error_code error;  // a name that is too long is one of no file
    fs::path side = path;
    side += suffix;
    const fs::file_status status = fs::symlink_status(side, error);
    if (!fs::exists(status)) continue;
    if (suffix == "-journal" && fs::is_regular_file(status) && IsFinished(side) && fs::remove(side, error))
      continue;
    throw DatabaseError(
        path,
        fmt::format("beside this name lies {}, which belongs to an older database of that name and would "
                    "spoil a new one; move it away together with that database, or choose another name",
                    side.filename().string()));
  }
}

NewDatabase::NewDatabase(const fs::path& path, ExistingFile existing) : path_(path) {
  if (path.empty()) throw DatabaseError(path, "no file was named; choose a database file and try again");
  try {
    lock_.emplace(path);
    file_.emplace(path, existing);
    if (existing == ExistingFile::kReplace && Database::IsOne(path))
      replaced_ = Database::OpenToReplace(path);
  } catch (const FileError& error) {
    // As an error of the database it names the file by itself.
    std::string_view reason = error.what();
    const std::string prefix = path.string() + ": ";
    if (reason.starts_with(prefix)) reason.remove_prefix(prefix.size());
    throw DatabaseError(path, reason);
  }
  CheckSideFiles(file_->path());
}

void NewDatabase::Make(const std::function<void(const fs::path&)>& make) {
  try {
    make(temporary());
  } catch (const DatabaseError& error) {
    // The user knows nothing of a temporary name; errors of other files are told as they are.
    if (error.file() != temporary()) throw;
    throw DatabaseError(path_, error.reason(), error.statement());
  }
}

void NewDatabase::Commit(std::span<NewFile* const> others, const std::function<void()>& last_step) {
  std::vector<NewFile*> files(others.begin(), others.end());
  files.push_back(&*file_);
  CommitTogether(files, last_step);
  replaced_.reset();
}

void MakeDatabase(const fs::path& path, ExistingFile existing,
                  const std::function<void(const fs::path&)>& make) {
  NewDatabase made(path, existing);
  made.Make(make);
  made.Commit();
}

}  // namespace selvane
