// Random term tables over random taxonomies, with everything odd that a table may hold.
#pragma once

#include "data/transaction_source.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane {

// Makes "terms.mdb" with the table T and "tax.mdb"; returns what rebuilds them, for messages.
inline std::string MakeRandomInput(unsigned seed) {
  std::mt19937 random(seed);
  const std::string lines = RandomTaxonomy(random, 4 + static_cast<int>(random() % 14));
  LoadText(lines, "tax.mdb");
  if (random() % 2 == 0) {
    Database::Open("tax.mdb", OpenMode::kWritable)
        .Execute("DELETE * FROM Taxonomy WHERE FatherId='C." + std::to_string(1 + random() % 2) + "'");
  }
  const char* const names[] = {"Zoster",  "Fever",      "A",    "Unknown", "Asthma",
                               "Crohn's", "Lung, left", "AIDS", "Cough"};
  const std::size_t first = random() % 3;
  const std::size_t count = 2 + random() % (std::size(names) - first - 1);
  std::string sql = "CREATE TABLE T(\"Index\" SMALLINT";
  for (std::size_t i = first; i < first + count; ++i)
    sql += ", \"" + std::string(names[i]) + "\" " + (random() % 4 == 0 ? "VARCHAR(5)" : "SMALLINT");
  sql += ");";
  int id = random() % 3 == 0 ? 0 : 1;
  for (auto rows = 1 + random() % 20; rows > 0; --rows) {
    sql += "INSERT INTO T VALUES (" + std::to_string(id);
    for (std::size_t i = 0; i < count; ++i)
      sql += random() % 9 == 0 ? (random() % 2 == 0 ? ",2" : ",-1") : random() % 5 < 3 ? ",1" : ",0";
    sql += ");";
    id += static_cast<int>(random() % 7 == 0 ? 0 : 1 + random() % 2 * (random() % 5));
  }
  fs::remove("terms.mdb");
  MakeForeignDatabase("terms.mdb", sql);
  return "seed " + std::to_string(seed) + "\n" + lines + sql;
}

// The same, opened.
struct RandomInput {
  explicit RandomInput(unsigned seed) : text(MakeRandomInput(seed)) { source.Open("terms.mdb"); }
  std::string text;
  TaxonomyStore taxonomy{"tax.mdb"};
  TransactionSource source;
};

}  // namespace selvane
