// Finds rows of figures by an expression that a user has typed.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/statement.h"
#include "data/variant.h"

namespace selvane {

// A table in memory whose columns an expression may name, as in "lift > 2 and p < 0.01": what the engine
// takes behind WHERE, with its functions, but nothing else. A comparison with a missing value is not true.
class ExpressionFilter {
 public:
  explicit ExpressionFilter(std::span<const std::string> columns);

  // Adds a row with a value for each column; null where there is none.
  void AddRow(std::span<const Variant> values);
  // The places, from 0, of the rows for which the expression is true, ascending. Throws InputError when it
  // is no expression, names what is no column, or wants more than these rows.
  std::vector<std::size_t> RowsWhere(std::string_view expression);

 private:
  std::shared_ptr<Connection> connection_;
  std::vector<std::string> columns_;
  std::unique_ptr<Statement> insert_;
  std::int64_t rows_ = 0;
};

}  // namespace selvane
