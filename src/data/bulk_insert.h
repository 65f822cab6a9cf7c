// Fast insertion of many rows into one table.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "data/statement.h"

namespace selvane {

// One compiled INSERT, bound and run for each row. Made by Database::OpenBulkInsert; use it inside a
// Transaction. Positions are those of the fields it was made for, from 0.
class BulkInsert {
 public:
  BulkInsert(std::shared_ptr<Connection> connection, std::string_view table,
             std::span<const std::string> fields);

  void Set(int position, std::string_view text) { statement_.BindText(position, text); }
  // The same as a BLOB.
  void SetBytes(int position, std::string_view bytes) { statement_.BindBytes(position, bytes); }
  void Set(int position, std::int64_t value) { statement_.BindInteger(position, value); }
  void Set(int position, double value) { statement_.Bind(position, value); }
  // Adds the row; values that are not set again stay for the next row. Throws DatabaseError.
  void Insert() { statement_.Execute(); }

 private:
  Statement statement_;
};

}  // namespace selvane
