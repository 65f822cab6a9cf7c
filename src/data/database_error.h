// The one error of the database layer.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "base/error.h"

namespace selvane {

// A database operation that failed. `what()` is one line for the user: the file, what is wrong with it and
// what to do. The statement is a detail for those who want it.
class DatabaseError : public Error {
 public:
  DatabaseError(const std::filesystem::path& file, std::string_view reason, std::string_view statement = {});

  const std::filesystem::path& file() const { return file_; }
  // What is wrong and what to do, without the file.
  const std::string& reason() const { return reason_; }
  // The SQL text that failed, at most 2000 bytes of it; empty when none did.
  const std::string& statement() const { return statement_; }

 private:
  std::filesystem::path file_;
  std::string reason_;
  std::string statement_;
};

}  // namespace selvane
