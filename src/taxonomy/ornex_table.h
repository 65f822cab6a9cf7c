// The table `TaxonomyOrnex`: a taxonomy for the extraction by closed itemsets, made by other programs.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <vector>

#include "data/database.h"
#include "taxonomy/taxonomy_table.h"

namespace selvane {

// As TaxonomyStore hands it out: a view, which the store must outlive. Columns may be of any type and order,
// and the numbers need not be those of `Taxonomy`. Every failure is a DatabaseError.
class OrnexTable {
 public:
  // The number is a text that may be anything.
  using VisitRow = std::function<void(const std::string& number, std::string code, std::string term)>;

  explicit OrnexTable(Database& database) : database_(database) {}

  // Whether the file has the table. Without it the operations below fail.
  bool Exists() const;
  void ForEachRow(const VisitRow& visit) const;
  // Appends the terms at these positions to `text`, each followed by " AND ", and their numbers to `numbers`.
  // Positions that are not there are left out.
  void Render(std::span<const std::string> codes, std::string& text, std::vector<NodeNumber>& numbers) const;

 private:
  Database& database_;
};

}  // namespace selvane
