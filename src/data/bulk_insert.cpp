#include "data/bulk_insert.h"

#include <fmt/format.h>

#include "base/text.h"

namespace selvane {

namespace {

// In the engine's dialect, with every name quoted: what is inserted in bulk is never parsed as ours.
std::string InsertText(std::string_view table, std::span<const std::string> fields) {
  std::string names;
  std::string places;
  for (const std::string& field : fields) {
    names += (names.empty() ? "" : ",") + DoubleQuoted(field);
    places += places.empty() ? "?" : ",?";
  }
  return fmt::format("INSERT INTO {} ({}) VALUES ({})", DoubleQuoted(table), names, places);
}

}  // namespace

BulkInsert::BulkInsert(std::shared_ptr<Connection> connection, std::string_view table,
                       std::span<const std::string> fields)
    : statement_(std::move(connection), InsertText(table, fields)) {}

}  // namespace selvane
