#include "taxonomy/source_rows.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "base/error.h"
#include "data/bulk_insert.h"
#include "taxonomy/position_code.h"
#include "taxonomy/taxonomy_schema.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

// The engine's limit on columns, less the three that every node has.
constexpr std::size_t kMostSons = 1997;

void WriteSource(Database& database, const SourceRows& source, Progress& progress) {
  const std::vector<Field> node_fields = NodeFields();
  std::vector<std::string> names;
  names.reserve(node_fields.size() + static_cast<std::size_t>(source.son_columns()));
  for (const Field& field : node_fields) names.push_back(field.name);
  for (int i = 1; i <= source.son_columns(); ++i) names.push_back(SonField(i).name);
  std::map<std::size_t, BulkInsert> inserts;  // by number of fields
  HundredthSteps steps(progress, source.rows().size());
  std::int64_t number = 0;
  for (const SourceRows::Row& row : source.rows()) {
    const std::size_t fields = node_fields.size() + row.sons.size();
    auto insert = inserts.find(fields);
    if (insert == inserts.end()) {
      insert =
          inserts.emplace(fields, database.OpenBulkInsert("Source", std::span(names).first(fields))).first;
    }
    insert->second.Set(0, fmt::format_int(++number).c_str());
    insert->second.Set(1, row.code);
    insert->second.Set(2, row.term);
    int field = 3;
    for (const std::string& son : row.sons) insert->second.Set(field++, son);
    insert->second.Insert();
    steps.Reached(static_cast<std::uint64_t>(number));
  }
}

// Fills `Source` from the rows. Its indexes are made afterwards, which is faster than keeping them.
void FillDatabase(const std::filesystem::path& path, const SourceRows& source, Progress& progress) {
  Database database = Database::Open(path, OpenMode::kWritable);
  Transaction transaction(database);
  database.DropIndexes("Source");
  WriteSource(database, source, progress);
  progress.SetStatus("Finalizing taxonomies database....");
  for (const Field& field : NodeFields()) database.CreateIndex("Source", field.name);
  progress.Pulse();
  transaction.Commit();
}

}  // namespace

void SourceRows::Add(const std::string& code, const std::string& term) {
  if (code.size() > 1) AddSon(ParentCode(code), term);  // the parent first: rows are numbered in this order
  Find(code).term = term;
}

long SourceRows::CountUnnamed() const {
  return std::count_if(rows_.begin(), rows_.end(), [](const Row& row) { return row.term.empty(); });
}

bool SourceRows::has_gaps() const {
  return std::any_of(rows_.begin(), rows_.end(),
                     [](const Row& row) { return row.term.empty() && !row.sons.empty(); });
}

SourceRows::Row& SourceRows::Find(std::string_view code) {
  auto found = by_code_.find(code);
  if (found == by_code_.end()) {
    // Found again by its place, as rows_ moves when it grows.
    found = by_code_.emplace(std::string(code), rows_.size()).first;
    rows_.push_back({std::string(code), {}, {}});
  }
  return rows_[found->second];
}

void SourceRows::AddSon(std::string_view parent, const std::string& term) {
  Row& row = Find(parent);
  // The column is counted before it is known whether the child has a term to leave in it.
  son_columns_ = std::max(son_columns_, row.sons.size() + 1);
  if (son_columns_ > kMostSons) {
    throw InputError(
        fmt::format("position {} has more than {} children, more than a table can hold; divide them "
                    "under positions between and load again",
                    parent, kMostSons));
  }
  if (!term.empty()) row.sons.push_back(term);  // an empty term leaves its place free
}

void MakeTaxonomy(const std::filesystem::path& path, const SourceRows& source, Progress& progress) {
  TaxonomyStore::Create(path, source.son_columns());
  FillDatabase(path, source, progress);
  TaxonomyStore store(path);
  // Copying row by row stops at a row's first empty value; without gaps that is the whole row, and one
  // statement does the same much faster.
  source.has_gaps() ? store.Rebuild(progress) : store.CopyWholeSource(progress);
}

}  // namespace selvane
