#include "taxonomy/taxonomy_loading.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>

#include "base/error.h"
#include "base/text.h"
#include "data/bulk_insert.h"
#include "data/new_database.h"
#include "taxonomy/position_code.h"
#include "taxonomy/taxonomy_file.h"
#include "taxonomy/taxonomy_schema.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

// The engine's limit on columns, less the three that every node has.
constexpr std::size_t kMostSons = 1997;

// The rows of `Source` while they are made. A row is found by its code as the table would be searched for it;
// a row's number is its place, from 1.
class SourceRows {
 public:
  struct Row {
    std::string code;
    std::string term;
    std::vector<std::string> sons;  // the values of SON1, SON2, ... that are not empty
  };

  // What one position of a node line writes: the child's term goes to its parent, which is made as a
  // placeholder when its own line has not come yet, and then the node itself gets its row or its term.
  void Add(const std::string& code, const std::string& term) {
    if (code.size() > 1) AddSon(ParentCode(code), term);  // the parent first: rows are numbered in this order
    Find(code).term = term;
  }

  const std::vector<Row>& rows() const { return rows_; }
  int son_columns() const { return static_cast<int>(son_columns_); }
  // True when a row has children but no term.
  bool has_gaps() const {
    return std::any_of(rows_.begin(), rows_.end(),
                       [](const Row& row) { return row.term.empty() && !row.sons.empty(); });
  }

 private:
  Row& Find(std::string_view code) {
    auto found = by_code_.find(code);
    if (found == by_code_.end()) {
      // Found again by its place, as rows_ moves when it grows.
      found = by_code_.emplace(std::string(code), rows_.size()).first;
      rows_.push_back({std::string(code), {}, {}});
    }
    return rows_[found->second];
  }

  void AddSon(std::string_view parent, const std::string& term) {
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

  std::vector<Row> rows_;
  TextMap<std::size_t> by_code_;
  std::size_t son_columns_ = 0;
};

SourceRows BuildRows(const TaxonomyFile& file) {
  SourceRows rows;
  for (const TaxonomyLine& line : file.lines) {
    const std::string term = WithoutQuotes(line.term);
    for (const std::string& code : line.codes) rows.Add(code, term);
  }
  return rows;
}

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

TaxonomyLoadReport ReportOf(const SourceRows& source) {
  TaxonomyLoadReport report;
  report.rows = static_cast<long>(source.rows().size());
  report.son_columns = source.son_columns();
  for (const SourceRows::Row& row : source.rows()) {
    if (row.term.empty()) ++report.unnamed;
    if (IsCategory(row.code) && FromCodePage1252(ToCodePage1252(row.term)) != row.term) {
      report.odd_categories.push_back(row.term);
    }
  }
  return report;
}

}  // namespace

TaxonomyLoadReport LoadTaxonomy(const std::filesystem::path& xml_file, const std::filesystem::path& database,
                                ExistingFile existing, Progress& progress) {
  CheckTaxonomyFileName(xml_file);
  progress.SetStatus("Initializing taxonomies database....");
  TaxonomyFile file;
  ReadTaxonomyFile(xml_file, file, progress);
  if (file.lines.empty()) {
    throw InputError(
        fmt::format("{}: no line holds canonical, type and tree; choose a taxonomy file", xml_file.string()));
  }
  TaxonomyLoadReport report;
  MakeDatabase(database, existing, [&](const std::filesystem::path& path) {
    progress.SetStatus("Loading taxonomies in database....");
    const SourceRows source = BuildRows(file);
    TaxonomyStore::Create(path, source.son_columns());
    FillDatabase(path, source, progress);
    TaxonomyStore store(path);
    // Copying row by row stops at a row's first empty value; without gaps that is the whole row, and one
    // statement does the same much faster.
    source.has_gaps() ? store.Rebuild(progress) : store.CopyWholeSource(progress);
    report = ReportOf(source);
  });
  report.passed_over = std::move(file.passed_over);
  progress.SetStatus("Completed!!");
  return report;
}

void RestoreTaxonomy(const std::filesystem::path& database, Progress& progress) {
  progress.SetStatus("Restoring all eventually eliminated taxonomies...");
  TaxonomyStore(database).Rebuild(progress);
  progress.SetStatus("Completed!!");
}

}  // namespace selvane
