// How the command line prints documents.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cli/cli.h"
#include "cli/rules_output.h"
#include "termdb/document.h"

namespace selvane {

// Prints documents one after the other, as text (a line each: row, PMID, year and title), csv or json. Memory
// does not grow with them.
class DocumentPrinter {
 public:
  // All must outlive it. `terms` are what marks name by their places.
  DocumentPrinter(const CliContext& context, const RuleLayout& layout, const std::vector<std::string>& terms);
  // Throws FileError, as Finish does.
  void Print(const Document& document);
  // Writes what is left.
  void Finish();

 private:
  void AppendCsv(const Document& document);
  void AppendJson(const Document& document);

  const CliContext& context_;
  const RuleLayout& layout_;
  const std::vector<std::string>& terms_;
  std::string pending_;
  bool first_ = true;
};

}  // namespace selvane
