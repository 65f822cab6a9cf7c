// The rows of a taxonomy while they are made, and the database of them.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "base/text.h"

namespace selvane {

// The rows of `Source`. A row is found by its code as the table would be searched for it; a row's number is
// its place, from 1.
class SourceRows {
 public:
  struct Row {
    std::string code;
    std::string term;
    std::vector<std::string> sons;  // the values of SON1, SON2, ... that are not empty
  };

  // What one position writes: the child's term goes to its parent, which is made as a placeholder when its
  // own position has not come yet, and then the node itself gets its row or its term. Throws InputError for a
  // parent of more children than a table has columns.
  void Add(const std::string& code, const std::string& term);

  const std::vector<Row>& rows() const { return rows_; }
  int son_columns() const { return static_cast<int>(son_columns_); }
  // How many rows have no term.
  long CountUnnamed() const;
  // True when a row has children but no term.
  bool has_gaps() const;

 private:
  Row& Find(std::string_view code);
  void AddSon(std::string_view parent, const std::string& term);

  std::vector<Row> rows_;
  TextMap<std::size_t> by_code_;
  std::size_t son_columns_ = 0;
};

// Makes a taxonomy database of the rows, which are in both of its tables then. Throws DatabaseError.
void MakeTaxonomy(const std::filesystem::path& path, const SourceRows& source, Progress& progress);

}  // namespace selvane
