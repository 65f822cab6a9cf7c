#include "taxonomy/taxonomy_loading.h"

#include <fmt/format.h>

#include "base/error.h"
#include "base/text.h"
#include "data/new_database.h"
#include "taxonomy/position_code.h"
#include "taxonomy/source_rows.h"
#include "taxonomy/taxonomy_file.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace {

SourceRows BuildRows(const TaxonomyFile& file) {
  SourceRows rows;
  for (const TaxonomyLine& line : file.lines) {
    const std::string term = WithoutQuotes(line.term);
    for (const std::string& code : line.codes) rows.Add(code, term);
  }
  return rows;
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
    MakeTaxonomy(path, source, progress);
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
