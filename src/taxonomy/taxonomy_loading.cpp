#include "taxonomy/taxonomy_loading.h"

#include <fmt/format.h>

#include "base/byte_source.h"
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
  return LoadTaxonomyFile(xml_file, database, existing, progress);
}

TaxonomyLoadReport LoadTaxonomyFile(const std::filesystem::path& path, const std::filesystem::path& database,
                                    ExistingFile existing, Progress& progress) {
  progress.SetStatus("Initializing taxonomies database....");
  TaxonomyFile file;
  ReadTaxonomyFile(path, file, progress);
  if (file.lines.empty()) {
    throw InputError(
        fmt::format("{}: no line holds canonical, type and tree; choose a taxonomy file", path.string()));
  }
  TaxonomyLoadReport report;
  MakeDatabase(database, existing, [&](const std::filesystem::path& temporary) {
    progress.SetStatus("Loading taxonomies in database....");
    const SourceRows source = BuildRows(file);
    MakeTaxonomy(temporary, source, progress);
    report = ReportOf(source);
  });
  report.passed_over = std::move(file.passed_over);
  progress.SetStatus("Completed!!");
  return report;
}

bool HoldsTaxonomy(const std::filesystem::path& file) {
  try {
    ByteSource source(file);
    const std::string_view head = source.Head();
    TaxonomyFile begin;
    SilentProgress silent;
    // The last line may be cut.
    ParseTaxonomyText(std::string(head.substr(0, head.rfind('\n') + 1)), "", begin, silent);
    return !begin.lines.empty();
  } catch (const Error&) {
    return false;  // whoever reads it says why
  }
}

std::string OddCategoriesText(const TaxonomyLoadReport& report) {
  if (report.odd_categories.empty()) return {};
  return fmt::format(
      "The information file of rules has no letters for these categories and will name them with question "
      "marks: {}; filters find them all the same",
      Listed(report.odd_categories));
}

void RestoreTaxonomy(const std::filesystem::path& database, Progress& progress) {
  progress.SetStatus("Restoring all eventually eliminated taxonomies...");
  TaxonomyStore(database).Rebuild(progress);
  progress.SetStatus("Completed!!");
}

}  // namespace selvane
