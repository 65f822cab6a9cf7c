#include "termdb/term_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <unordered_set>

#include "base/file.h"
#include "base/text.h"
#include "data/bulk_insert.h"
#include "data/new_database.h"
#include "literature/tagged_abstract.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kMostColumns = 10;

bool IsTextName(const std::string& name) {
  const std::string lower = LowerCase(name);
  const std::size_t dot = lower.rfind('.');
  return dot != std::string::npos && lower.find("txt", dot) != std::string::npos;
}

// Gives accepted terms their numbers; the taxonomy is asked once for each term.
class TermNumbers {
 public:
  static constexpr std::uint32_t kRejected = UINT32_MAX;

  TermNumbers(const TaxonomyStore& taxonomy, TermCollection& collection)
      : taxonomy_(taxonomy), collection_(collection) {}

  std::uint32_t NumberOf(std::string_view term) {
    const auto found = numbers_.find(term);
    if (found != numbers_.end()) return found->second;
    std::uint32_t number = kRejected;
    if (IsAccepted(term)) {
      number = static_cast<std::uint32_t>(collection_.terms.size());
      collection_.terms.emplace_back(term);
      collection_.counts.push_back(0);
    }
    numbers_.emplace(std::string(term), number);
    return number;
  }

 private:
  // A term that the working taxonomy knows at positions whose categories are all there.
  bool IsAccepted(std::string_view term) {
    const std::vector<std::string> codes = taxonomy_.working().PositionsOfTerm(term);
    return !codes.empty() && std::all_of(codes.begin(), codes.end(), [this](const std::string& code) {
      const std::string category(CategoryOf(code));
      const auto found = categories_.find(category);
      if (found != categories_.end()) return found->second;
      return categories_.emplace(category, taxonomy_.working().HasPosition(category)).first->second;
    });
  }

  const TaxonomyStore& taxonomy_;
  TermCollection& collection_;
  TextMap<std::uint32_t> numbers_;
  TextMap<bool> categories_;  // whether they are there
};

// The engine takes names for equal that differ in capitals only, and would fail in its own words.
void CheckColumnNames(const std::vector<std::string>& names) {
  std::unordered_set<std::string> seen = {"index"};
  for (const std::string& name : names) {
    if (seen.insert(LowerCase(name)).second) continue;
    throw InputError(
        fmt::format("the term \"{}\" cannot be a column: there is a column of that name already, "
                    "capitals apart; prune the term or its category and build again",
                    name));
  }
}

std::string TimeText(const Clock& clock) {
  const std::tm time = clock.LocalTime();
  std::array<char, 32> text{};
  return {text.data(), std::strftime(text.data(), text.size(), "%H_%M_%d_%m", &time)};
}

void WriteRows(Database& database, const TermCollection& collection, const TermTableReport& report,
               std::span<const std::uint32_t> columns, Progress& progress) {
  constexpr int kNoColumn = 0;
  std::vector<std::string> fields = {"Index"};
  std::vector<int> column_of(collection.terms.size(), kNoColumn);
  for (const std::uint32_t term : columns) {
    column_of[term] = static_cast<int>(fields.size());
    fields.push_back(report.columns[fields.size() - 1]);
  }
  BulkInsert insert = database.OpenBulkInsert(report.table, fields);
  HundredthSteps steps(progress, collection.abstracts.size());
  std::int64_t row = 0;
  for (const std::vector<std::uint32_t>& terms : collection.abstracts) {
    insert.Set(0, ++row);
    // Values stay set from row to row.
    for (std::size_t i = 1; i < fields.size(); ++i) insert.Set(static_cast<int>(i), std::int64_t{0});
    for (const std::uint32_t term : terms) {
      if (column_of[term] != kNoColumn) insert.Set(column_of[term], std::int64_t{1});
    }
    insert.Insert();
    steps.Reached(static_cast<std::uint64_t>(row));
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
  TermCollection collection;
  TermNumbers numbers(taxonomy, collection);
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
        const std::uint32_t term = numbers.NumberOf(form);
        if (term == TermNumbers::kRejected) return;
        if (std::find(terms.begin(), terms.end(), term) == terms.end()) terms.push_back(term);
      });
    } catch (const FileError& error) {
      skipped(file, error.what());
      continue;
    }
    if (terms.empty()) continue;  // such an abstract gives no row
    for (const std::uint32_t term : terms) ++collection.counts[term];
    collection.abstracts.push_back(std::move(terms));
  }
  steps.Reached(done);
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
  std::vector<std::uint32_t> columns(collection.terms.size());
  std::iota(columns.begin(), columns.end(), 0U);
  if (columns.size() <= kMostColumns) return columns;
  // Stable, so that of equally frequent terms the first met comes first.
  std::stable_sort(columns.begin(), columns.end(), [&collection](std::uint32_t a, std::uint32_t b) {
    return collection.counts[a] > collection.counts[b];
  });
  columns.resize(kMostColumns);
  return columns;
}

TermTableReport WriteTermTable(const TermCollection& collection, const fs::path& path, ExistingFile existing,
                               const Clock& clock, Progress& progress) {
  const std::vector<std::uint32_t> columns = SelectColumns(collection);
  TermTableReport report;
  report.table = TimeText(clock) + "_MESHTERMS";
  report.rows = static_cast<long>(collection.abstracts.size());
  for (const std::uint32_t term : columns) report.columns.push_back(WithoutQuotes(collection.terms[term]));
  CheckColumnNames(report.columns);
  std::vector<Field> fields = {{"Index", FieldType::kInt16}};
  for (const std::string& name : report.columns) fields.push_back({name, FieldType::kInt16});
  MakeDatabase(path, existing, [&](const fs::path& temporary) {
    Database database = Database::Create(temporary);
    database.CreateTable(report.table, fields);
    Transaction transaction(database);
    WriteRows(database, collection, report, columns, progress);
    transaction.Commit();
  });
  return report;
}

}  // namespace selvane
