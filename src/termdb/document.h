// A document: what a term database remembers of the record that a row was made of.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace selvane {

// Where a record names a term.
enum class MarkPlace {
  kText,          // in its title or its abstract
  kHeading,       // among its headings
  kMajorHeading,  // the same, as what the article is mainly about
  kSubstance,     // among its substances
};

struct DocumentMark {
  std::uint32_t term = 0;  // a place in the list of terms that the database has for all its marks
  MarkPlace place = MarkPlace::kText;
  // In bytes of the title, a blank and the abstract; for kText only.
  std::uint32_t offset = 0;
  std::uint32_t length = 0;
};

struct Document {
  std::uint32_t row = 0;  // of the term table, from 1
  std::string pmid;
  std::string title;
  std::string journal;
  int year = 0;      // 0 where it is not known
  std::string text;  // the abstract
  std::vector<DocumentMark> marks;
};

}  // namespace selvane
