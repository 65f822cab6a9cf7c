// Many rules on their way into one table.
#pragma once

#include <string>
#include <string_view>

#include "data/bulk_insert.h"
#include "data/database.h"
#include "rules/rule.h"

namespace selvane {

// One compiled INSERT, run for each rule; made by RulesStore, inside a transaction.
class RuleBatch {
 public:
  // `inserted` is the number that was given last, and is counted on; it must outlive the batch.
  RuleBatch(Database& database, std::string_view table, long& inserted);

  // Adds the rule under the next number, with the values that the text of RulesStore::InsertRule gives it,
  // and fails as that does. Throws DatabaseError.
  void Insert(const Rule& rule);

 private:
  Database& database_;
  std::string table_;
  long& inserted_;
  BulkInsert insert_;
};

// Throws DatabaseError, about this file, for a rule with a figure that is no finite number: in an SQL text it
// would be the name of a column.
void CheckFigures(const std::filesystem::path& file, std::string_view table, long number, const Rule& rule);

// The SQL text that adds a rule to a table under this number.
std::string InsertionText(std::string_view table, long number, const Rule& rule);

}  // namespace selvane
