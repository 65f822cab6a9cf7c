// The one error of the database layer.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/error.h"

namespace selvane {

// A database operation that failed. `what()` is one line for the user: the file, the reason and, where there
// is one, the statement.
class DatabaseError : public Error {
 public:
  DatabaseError(const std::filesystem::path& file, std::string_view reason, std::string_view statement = {});

  const std::filesystem::path& file() const { return file_; }
  // The engine's own words, or ours where it has none.
  const std::string& reason() const { return reason_; }
  // The SQL text that failed; empty when none did.
  const std::string& statement() const { return statement_; }

 private:
  std::filesystem::path file_;
  std::string reason_;
  std::string statement_;
};

}  // namespace selvane
