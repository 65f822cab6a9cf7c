#include "data/database_error.h"

#include <fmt/format.h>

#include "base/shown_text.h"

namespace selvane {

namespace {

// An INSERT holds all values of its row.
constexpr std::size_t kLongestStatement = 2000;

std::string Describe(const std::filesystem::path& file, std::string_view reason) {
  return file.empty() ? std::string(reason) : fmt::format("{}: {}", file.string(), reason);
}

}  // namespace

DatabaseError::DatabaseError(const std::filesystem::path& file, std::string_view reason,
                             std::string_view statement)
    : Error(Describe(file, reason)),
      file_(file),
      reason_(reason),
      statement_(Shortened(statement, kLongestStatement)) {}

}  // namespace selvane
