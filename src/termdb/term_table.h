// From tagged abstracts to a term table: one row per abstract, one 0/1 column for each of the most frequent
// terms.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/error.h"
#include "base/new_file.h"
#include "base/progress.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// The accepted terms of all abstracts. Terms stand in order of first occurrence and are named by their place.
struct TermCollection {
  std::vector<std::string> terms;
  std::vector<std::uint32_t> counts;                  // for each term, the abstracts that hold it
  std::vector<std::vector<std::uint32_t>> abstracts;  // each with its terms, in order of first occurrence
  std::uint64_t bytes = 0;                            // of all files read
};

struct TermTableReport {
  std::string table;
  std::vector<std::string> columns;  // the names of the item columns, in their order
  long rows = 0;
};

// Told of a file that gives no abstract because it is of the wrong type or cannot be read, and why.
using SkippedFile = std::function<void(const std::filesystem::path& file, const std::string& reason)>;

// The files that a list of files and folders stands for: each folder gives its *.txt files in name order.
// Throws InputError for a folder without any and for a name that does not exist.
std::vector<std::filesystem::path> QueryFiles(std::span<const std::filesystem::path> names);

// No file holds a term of the taxonomy, so there is nothing to make a table of.
class NoTerms : public InputError {
 public:
  NoTerms();
};

// Reads the first abstract of each file, in order, and keeps the terms that the working taxonomy knows and
// whose category is not pruned. A file is told to `skipped` and passed over when its name has no "txt" behind
// its last "." or it cannot be read. Throws NoTerms, and InputError when there are more abstracts than a term
// table holds.
TermCollection CollectTerms(const TaxonomyStore& taxonomy, std::span<const std::filesystem::path> files,
                            const SkippedFile& skipped, Progress& progress);

// The columns of the term table: all terms when there are at most ten, else the ten with the greatest counts,
// of equal ones the first met.
std::vector<std::uint32_t> SelectColumns(const TermCollection& collection);

// Makes a new database with one term table, named by the time. The collection must hold a term. Throws
// DatabaseError, and InputError, before anything is written, for names that cannot be columns.
TermTableReport WriteTermTable(const TermCollection& collection, const std::filesystem::path& path,
                               ExistingFile existing, const Clock& clock, Progress& progress);

}  // namespace selvane
