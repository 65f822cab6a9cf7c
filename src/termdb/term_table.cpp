#include "termdb/term_table.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/file.h"
#include "base/text.h"
#include "data/new_database.h"
#include "literature/tagged_abstract.h"
#include "termdb/accepted_terms.h"
#include "termdb/column_choice.h"
#include "termdb/row_table_writer.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostColumns = 10;

bool IsTextName(const std::string& name) {
  const std::string lower = LowerCase(name);
  const std::size_t dot = lower.rfind('.');
  return dot != std::string::npos && lower.find("txt", dot) != std::string::npos;
}

void WriteRows(RowTableWriter& writer, const TermCollection& collection,
               std::span<const std::uint32_t> columns, Progress& progress) {
  constexpr std::uint32_t kNoColumn = UINT32_MAX;
  std::vector<std::uint32_t> column_of(collection.terms.size(), kNoColumn);
  for (std::uint32_t i = 0; i < columns.size(); ++i) column_of[columns[i]] = i;
  HundredthSteps steps(progress, collection.abstracts.size());
  std::vector<std::uint32_t> row;
  for (const std::vector<std::uint32_t>& terms : collection.abstracts) {
    row.clear();
    for (const std::uint32_t term : terms) {
      if (column_of[term] != kNoColumn) row.push_back(column_of[term]);
    }
    writer.AddRow(row);
    steps.Reached(static_cast<std::uint64_t>(writer.rows()));
  }
}

}  // namespace

std::vector<fs::path> QueryFiles(std::span<const fs::path> names) {
  std::vector<fs::path> files;
  for (const fs::path& name : names) {
    std::error_code error;
    if (!fs::exists(name, error))
      throw InputError(fmt::format("{}: there is no such file or folder", name.string()));
    if (!fs::is_directory(name, error)) {
      files.push_back(name);
      continue;
    }
    const std::size_t before = files.size();
    for (const fs::path entry : NamesInFolder(name)) {
      if (LowerCase(entry.extension().string()) == ".txt") files.push_back(name / entry);
    }
    if (files.size() == before) {
      throw InputError(fmt::format("{}: the folder holds no text files (*.txt)", name.string()));
    }
    std::sort(files.begin() + static_cast<std::ptrdiff_t>(before), files.end(),
              [](const fs::path& a, const fs::path& b) { return a.native() < b.native(); });
  }
  return files;
}

NoTerms::NoTerms()
    : InputError(
          "no file holds a term of the taxonomy, so no database was made; check that the files are "
          "tagged and that the taxonomy is not pruned too far") {}

TermCollection CollectTerms(const TaxonomyStore& taxonomy, std::span<const fs::path> files,
                            const SkippedFile& skipped, Progress& progress) {
  const PulseScope pulse = taxonomy.PulseDuring(progress);
  TermCollection collection;
  AcceptedTerms accepted(taxonomy);
  HundredthSteps steps(progress, files.size());
  std::uint64_t done = 0;
  for (const fs::path& file : files) {
    steps.Reached(done++);
    if (done % 64 == 0) progress.Pulse();
    if (!IsTextName(file.string())) {
      skipped(file, "A selected file is not txt tagged file");
      continue;
    }
    std::vector<std::uint32_t> terms;
    try {
      const std::string bytes = ReadFile(file);
      collection.bytes += bytes.size();
      ForEachTaggedTerm(bytes, [&](std::string_view form) {
        const std::uint32_t term = accepted.NumberOf(form);
        if (term == AcceptedTerms::kRejected) return;
        if (std::find(terms.begin(), terms.end(), term) == terms.end()) terms.push_back(term);
      });
    } catch (const FileError& error) {
      skipped(file, error.what());
      continue;
    }
    if (terms.empty()) continue;  // such an abstract gives no row
    collection.counts.resize(accepted.terms().size(), 0);
    for (const std::uint32_t term : terms) ++collection.counts[term];
    collection.abstracts.push_back(std::move(terms));
  }
  steps.Reached(done);
  collection.terms = accepted.terms();
  if (collection.terms.empty()) throw NoTerms();
  if (static_cast<long>(collection.abstracts.size()) > kMostNumberedRows) {
    throw InputError(
        fmt::format("there are {} abstracts with terms, and a term table holds {} rows; choose fewer "
                    "files, or build several databases",
                    collection.abstracts.size(), kMostNumberedRows));
  }
  return collection;
}

std::vector<std::uint32_t> SelectColumns(const TermCollection& collection) {
  return MostFrequent(collection.counts, kMostColumns);
}

TermTableReport WriteTermTable(const TermCollection& collection, const fs::path& path, ExistingFile existing,
                               const Clock& clock, Progress& progress) {
  const std::vector<std::uint32_t> columns = SelectColumns(collection);
  TermTableReport report;
  report.table = TermTableName(clock);
  report.rows = static_cast<long>(collection.abstracts.size());
  for (const std::uint32_t term : columns) report.columns.push_back(WithoutQuotes(collection.terms[term]));
  CheckColumnNames(report.columns);
  MakeDatabase(path, existing, [&](const fs::path& temporary) {
    Database database = Database::Create(temporary);
    RowTableWriter writer(database, report.table, report.columns);
    Transaction transaction(database);
    WriteRows(writer, collection, columns, progress);
    transaction.Commit();
  });
  return report;
}

}  // namespace selvane
