#include "data/database_error.h"

#include <fmt/format.h>

namespace selvane {

namespace {

std::string Describe(const std::filesystem::path& file, std::string_view reason, std::string_view statement) {
  std::string text = file.empty() ? std::string(reason) : fmt::format("{}: {}", file.string(), reason);
  if (!statement.empty()) text += fmt::format(" [{}]", statement);
  return text;
}

}  // namespace

DatabaseError::DatabaseError(const std::filesystem::path& file, std::string_view reason,
                             std::string_view statement)
    : Error(Describe(file, reason, statement)), file_(file), reason_(reason), statement_(statement) {}

}  // namespace selvane
