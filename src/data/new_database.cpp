#include "data/new_database.h"

#include "data/database_error.h"

namespace selvane {

void MakeDatabase(const std::filesystem::path& path, ExistingFile existing,
                  const std::function<void(const std::filesystem::path&)>& make) {
  if (path.empty()) throw DatabaseError(path, "no file was named; choose a database file and try again");
  if (std::filesystem::is_directory(path)) throw DatabaseError(path, "this is a folder; name a file in it");
  if (existing == ExistingFile::kRefuse && IsTaken(path)) throw DatabaseError(path, kTakenReason);
  NewFile file(path, existing);
  try {
    make(file.temporary());
  } catch (const DatabaseError& error) {
    // The user knows nothing of a temporary name; errors of other files are told as they are.
    if (error.file() != file.temporary()) throw;
    throw DatabaseError(path, error.reason(), error.statement());
  }
  file.Commit();
}

}  // namespace selvane
