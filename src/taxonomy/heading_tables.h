// Our own tables beside a taxonomy: what MeSH says of its terms but for their positions.
#pragma once

#include <functional>
#include <span>
#include <string_view>

#include "data/bulk_insert.h"
#include "data/database.h"

namespace selvane {

// The widest name or entry term that the tables hold, in characters.
inline constexpr std::size_t kHeadingTextWidth = 1000;

// A heading and the term of the taxonomy that stands for it.
struct HeadingRow {
  std::string_view id;    // D001249
  std::string_view term;  // as in `Canonical`: without apostrophes, and cut where it was too long
  std::string_view name;  // as published
  int descriptor_class = 0;
};

// As TaxonomyStore hands it out: a view, which the store must outlive. A taxonomy that was made of a taxonomy
// file has none of the tables, and gives nothing. Every failure is a DatabaseError.
class HeadingTables {
 public:
  using VisitHeading = std::function<void(const HeadingRow&)>;
  using VisitEntryTerm = std::function<void(std::string_view id, std::string_view entry_term)>;
  // Once for each heading that a supplementary record maps to, the calls for one record next to each other;
  // once with an empty heading for a record that maps to none.
  using VisitSupplementary =
      std::function<void(std::string_view id, std::string_view name, std::string_view heading_id)>;

  explicit HeadingTables(Database& database) : database_(database) {}

  bool Exist() const;
  void ForEachHeading(const VisitHeading& visit) const;
  void ForEachEntryTerm(const VisitEntryTerm& visit) const;
  void ForEachSupplementary(const VisitSupplementary& visit) const;

 private:
  Database& database_;
};

// Makes the tables in a taxonomy database and fills them; use it inside a Transaction.
class HeadingWriter {
 public:
  explicit HeadingWriter(Database& database);

  void AddHeading(const HeadingRow& heading);
  void AddEntryTerm(std::string_view id, std::string_view entry_term);
  void AddSupplementary(std::string_view id, std::string_view name, std::string_view heading_id);

 private:
  BulkInsert headings_;
  BulkInsert entry_terms_;
  BulkInsert supplementary_;
};

}  // namespace selvane
