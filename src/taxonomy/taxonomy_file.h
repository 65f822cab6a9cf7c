// The taxonomy file: one element a line with the attributes canonical, type and tree (docs/formats/).
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"

namespace selvane {

// A line that describes a node. Values are views into the file's text.
struct TaxonomyLine {
  std::string_view term;  // the value of `canonical`; its single quotes still stand
  std::string_view type;
  std::string_view tree;           // one tree number or several, separated by ";"
  std::vector<std::string> codes;  // the position codes of `tree`, see PositionCodes
};

struct TaxonomyFile {
  std::string text;
  std::vector<TaxonomyLine> lines;
  // Distinct types and first letters of codes in order of appearance, without the one that was added last.
  std::vector<std::string> types;
  std::vector<std::string> categories;
  // Numbers of the lines that hold some of the three words but not all, and were passed over.
  std::vector<long> passed_over;
};

// Ends the program, by its exception, for a file whose name has no "xml" behind its last ".".
void CheckTaxonomyFileName(const std::filesystem::path& path);

// Reads and checks the whole file. Throws FileError when it cannot be read and InputError, naming the line,
// when a node line lacks one of its three quoted values or holds one that the database cannot.
void ReadTaxonomyFile(const std::filesystem::path& path, TaxonomyFile& file, Progress& progress);
// The same from a text in memory; `name` stands in messages.
void ParseTaxonomyText(std::string text, std::string_view name, TaxonomyFile& file, Progress& progress);

}  // namespace selvane
