// Making a database file that appears under its name only when it is complete.
#pragma once

#include <filesystem>
#include <functional>

#include "base/new_file.h"

namespace selvane {

// Calls `make` with a temporary path in the folder of `path`; what it makes and closes there gets its name
// when it returns, and is removed when it throws. Throws DatabaseError, naming `path`, when the file is there
// already and is not to be replaced, and when making it fails.
void MakeDatabase(const std::filesystem::path& path, ExistingFile existing,
                  const std::function<void(const std::filesystem::path&)>& make);

}  // namespace selvane
