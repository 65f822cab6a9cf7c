// Term tables of sets, made of tables of rows.
#pragma once

#include "data/set_table_writer.h"
#include "data/transaction_source.h"
#include "support/test_support.h"

namespace selvane {

// Makes a database whose table has the rows of the other in the form of sets, numbered from 1 on.
inline void MakeSetsOf(const fs::path& rows, const std::string& table, const fs::path& sets) {
  TransactionSource source;
  source.Open(rows);
  Texts names;
  source.ListItemFields(table, names);
  Database database = Database::Create(sets);
  Transaction transaction(database);
  SetTableWriter writer(database, table, names);
  RowValues row;
  for (bool more = source.CountRows(table) > 0 && source.OpenReader(table, row); more;
       more = source.NextRow(row)) {
    std::vector<std::uint32_t> terms;
    for (std::uint32_t i = 1; i < row.size(); ++i) {
      if (row[i] == 1) terms.push_back(i - 1);
    }
    writer.AddRow(terms);
  }
  writer.Finish();
  transaction.Commit();
}

}  // namespace selvane
