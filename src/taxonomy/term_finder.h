// From what a record of the literature names to the terms of a taxonomy.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// The place of a term in a TermFinder, from 0: first the terms of `Taxonomy` in the order of its rows, then
// those that were pruned.
using TermNumber = std::uint32_t;

// Why no term was found.
enum class TermMiss {
  kNone,
  kUnknownId,    // the taxonomy has none of the identifiers, nor the name
  kUnknownName,  // no identifier was given, and the name is neither a term nor an entry term
  kNoHeading,    // a supplementary record that maps to no heading of the taxonomy
  kPruned,       // the term is known, but was pruned
};

struct FoundTerms {
  std::span<const TermNumber> terms;  // each once; valid until the next search
  TermMiss miss = TermMiss::kNone;    // set when there are none
};

// Finds terms by identifier, name or entry term. It is filled once from the taxonomy and its own tables and
// keeps no hold of them, so a search costs a look into a hashed table or two. A database without these tables
// knows names only.
class TermFinder {
 public:
  // Throws DatabaseError.
  explicit TermFinder(const TaxonomyStore& taxonomy);

  // The terms that the identifiers stand for: all of them, each heading by itself and each supplementary
  // record by the headings that it maps to. When no identifier is known, the term of that name, or that has
  // the name for an entry term, or the headings of the supplementary record of that name. Names are compared
  // letter by letter, with apostrophes as blanks: spellings that MeSH does not list are not guessed.
  FoundTerms Find(std::span<const std::string> ids, std::string_view name);

  bool KnowsId(std::string_view id) const { return by_id_.contains(id); }
  // The text as in `Canonical`.
  const std::string& Text(TermNumber term) const { return terms_[term]; }
  std::size_t TermCount() const { return terms_.size(); }
  bool IsPruned(TermNumber term) const { return term >= kept_; }

 private:
  // A part of `targets_`.
  struct Targets {
    std::uint32_t first = 0;
    std::uint32_t count = 0;
  };

  void AddTerms(const TaxonomyTable& table);
  void AddHeadings(const HeadingTables& headings);
  void AddSupplementary(const HeadingTables& headings);
  // Appends those that were not pruned to `found_`; false when one was.
  bool Take(Targets targets);

  std::vector<std::string> terms_;
  TermNumber kept_ = 0;              // so many of them are in `Taxonomy`
  std::vector<TermNumber> targets_;  // each term alone at its own place, then the terms of other records
  TextMap<Targets> by_id_;
  TextMap<Targets> by_text_;
  std::vector<TermNumber> found_;
};

}  // namespace selvane
