// From literature to a term table: one call for whatever the files hold.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/new_file.h"
#include "base/progress.h"
#include "taxonomy/taxonomy_store.h"
#include "termdb/column_choice.h"

namespace selvane {

enum class TermTableForm {
  kRows,  // a row for each record, a column of 0 and 1 for each term
  kSets,  // a set of rows for each term: any number of either
};

struct TermTableRequest {
  std::vector<std::filesystem::path> paths;  // files, and folders for the files in them
  std::filesystem::path output;
  ExistingFile existing = ExistingFile::kRefuse;
  ColumnChoice columns;
  bool major_only = false;  // count terms that a record is mainly about only
  // Years of publication; a record without a year is outside of all.
  std::optional<int> from_year;
  std::optional<int> to_year;
  std::optional<TermTableForm> form;  // nothing: rows, and sets where these do not suffice
};

// What gave less than it seems to, or nothing, of one kind.
struct BuildingNotice {
  std::string kind;            // as "records that stand twice"
  std::uint64_t count = 0;     // how often it came
  std::uint64_t distinct = 0;  // of identifiers and names: how many different ones; 0 for other kinds
  std::string example;         // the first
};

struct BuildingReport {
  std::string table;
  std::vector<std::string> columns;  // the terms of the table, in their order
  TermTableForm form = TermTableForm::kRows;
  std::uint32_t rows = 0;
  std::uint64_t terms = 0;        // that were met, chosen or not
  std::uint64_t files = 0;        // that gave a record
  std::uint64_t passed_over = 0;  // those that gave none
  std::uint64_t records = 0;
  std::uint64_t bytes = 0;  // of all files, as they stand on the disk
  double read_seconds = 0;
};

// Told what gave nothing, in the order in which it came up, when all is read: also when there is no table
// then.
using TellNotices = std::function<void(std::span<const BuildingNotice> notices)>;

// Makes a new database with one term table, named by the time, and the documents of its rows. A record gives
// a row when it names a term that the working taxonomy knows and whose category is not pruned. Tagged texts
// name terms by exactly their texts and always give a row of their own; of other records with one PMID the
// first that gives a row counts. Memory grows with the terms, not with the records. Throws NoTerms,
// DatabaseError, Interrupted, and InputError for files that are not there, for years and terms that make no
// sense, and for more terms or rows than a form that was asked for holds.
BuildingReport BuildTermTable(const TermTableRequest& request, const TaxonomyStore& taxonomy,
                              const Clock& clock, const TellNotices& tell, Progress& progress);

}  // namespace selvane
