// A record: one article as a file gives it, with the terms that it names. This folder reads the files in
// which literature comes; it knows no taxonomy, so what a record names is not looked up here.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace selvane {

// A term as a record names it.
struct Mention {
  // D and C numbers of MeSH and numbers as OMIM:123; several where one mark names several terms, or leaves
  // open which. Empty when the record gives a name only.
  std::vector<std::string> ids;
  // A heading without its qualifiers, a substance, the canonical form of a tagged text; the marked words when
  // a mark has no identifier. Empty for a mark that has one. Its single quotes are blanks, as those of terms
  // are.
  std::string name;
  bool is_heading = false;    // stands among the record's headings; else marked in the text, or a substance
  bool is_major = false;      // a heading that the record is mainly about, by itself or by a qualifier
  bool is_substance = false;  // a substance or supplementary concept of the record
  std::uint32_t offset = 0;   // of a mark: its bytes in DocumentText
  std::uint32_t length = 0;
};

// Texts are UTF-8, on one line, without blanks at either end.
struct Record {
  std::string pmid;
  std::string title;
  std::string text;  // the abstract, its paragraphs joined by a blank
  std::string journal;
  int year = 0;  // 0: unknown
  std::vector<Mention> mentions;
};

// Title, a blank and abstract: what the offsets of marks count in.
std::string DocumentText(const Record& record);

}  // namespace selvane
