// Making a database file that appears under its name only when it is complete.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>

#include "base/new_file.h"
#include "data/database.h"

namespace selvane {

// Throws DatabaseError when beside the name lies what the engine keeps there while somebody works on a
// database of that name, or leaves in a crash.
void CheckSideFiles(const std::filesystem::path& path);

// A database in the making, alone or as the last file of a set.
//
// A journal or a write-ahead log beside a database belongs to it: SQLite would carry what it holds over into
// a new file of that name. So a new database is refused where such files lie, and one that is to be replaced
// is opened first, which brings it up to date, and stays locked until its place is taken: no other program
// can be at work on it.
class NewDatabase {
 public:
  // Throws DatabaseError when the path is empty or its folder is not there, when a file of its name is not to
  // be replaced, may not be, or is open elsewhere, and when another run is making the same file.
  NewDatabase(const std::filesystem::path& path, ExistingFile existing);

  // Where to make it: an empty file. It must be closed before the commit.
  const std::filesystem::path& temporary() const { return file_->temporary(); }
  // Calls `make` with the path of the temporary file. Errors of the database there name the path that it is
  // to have.
  void Make(const std::function<void(const std::filesystem::path&)>& make);
  // The locked database that is replaced; nullptr where there is none.
  const Database* replaced() const { return replaced_ ? &*replaced_ : nullptr; }
  // Names the others, in their order, and then the database. Throws FileError. For `last_step` see
  // CommitTogether.
  void Commit(std::span<NewFile* const> others = {}, const std::function<void()>& last_step = {});

 private:
  std::filesystem::path path_;
  std::optional<OutputLock> lock_;
  std::optional<Database> replaced_;
  std::optional<NewFile> file_;
};

// Calls `make` with the path of a NewDatabase, and commits what it has made and closed there. Throws
// DatabaseError, naming `path`, also when making it fails.
void MakeDatabase(const std::filesystem::path& path, ExistingFile existing,
                  const std::function<void(const std::filesystem::path&)>& make);

}  // namespace selvane
