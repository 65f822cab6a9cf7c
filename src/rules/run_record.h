// What made a rules table: the run's options and what it found, kept beside the table.
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace selvane {

// Names and values in the order in which they were set (docs/formats/rules-database.md has the names).
class RunRecord {
 public:
  // Control characters become blanks: a line is an entry.
  void Set(std::string_view name, std::string_view value);
  // The value; empty when there is none.
  std::string_view Find(std::string_view name) const;
  // Whether an item stands for all positions of its term, and whether rows count by distinct witnesses only.
  bool CountsTerms() const { return Find("items") == "terms"; }
  bool WantsDistinctWitnesses() const { return Find("witnesses") == "distinct"; }
  const std::vector<std::pair<std::string, std::string>>& entries() const { return entries_; }

  // A line "name: value" for each entry, and back; a line without ": " is passed over.
  std::string ToText() const;
  static RunRecord FromText(std::string_view text);

 private:
  std::vector<std::pair<std::string, std::string>> entries_;
};

}  // namespace selvane
