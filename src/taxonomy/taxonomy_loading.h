// From a taxonomy file to a taxonomy database, and back to it after pruning.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "base/new_file.h"
#include "base/progress.h"

namespace selvane {

struct TaxonomyLoadReport {
  long rows = 0;                  // rows of `Source`, and of `Taxonomy`
  int son_columns = 0;            // the greatest number of children of a node
  long unnamed = 0;               // positions without a name, mostly for want of a line of their own
  std::vector<long> passed_over;  // see TaxonomyFile
  // Categories with letters outside code page 1252, which the information file of their rules cannot hold.
  std::vector<std::string> odd_categories;
};

// What is to be told of its odd categories; empty where there are none.
std::string OddCategoriesText(const TaxonomyLoadReport& report);

// Makes a taxonomy database of a taxonomy file, packed or not. Nothing is left under the database's name when
// it fails. Throws EndOfProgram for a file that is not named as XML, FileError and InputError for one that
// cannot be read or understood, DatabaseError when the database is there already or cannot be made.
TaxonomyLoadReport LoadTaxonomy(const std::filesystem::path& xml_file, const std::filesystem::path& database,
                                ExistingFile existing, Progress& progress);
// The same for a file of any name.
TaxonomyLoadReport LoadTaxonomyFile(const std::filesystem::path& file, const std::filesystem::path& database,
                                    ExistingFile existing, Progress& progress);
// Whether it is one by its content: a node is among its first lines. False for a file that cannot be read.
bool HoldsTaxonomy(const std::filesystem::path& file);

// Undoes every pruning: `Taxonomy` is `Source` again. Throws DatabaseError; the table is then as it was.
void RestoreTaxonomy(const std::filesystem::path& database, Progress& progress);

}  // namespace selvane
