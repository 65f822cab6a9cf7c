// Looking a term up by what a person knows of it.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "taxonomy/taxonomy_store.h"

namespace selvane {

// By what a search found a term; the best way first.
enum class FoundBy { kPosition, kId, kName, kEntryTerm, kSupplementary, kPartOfName, kPartOfEntryTerm };

struct SearchedTerm {
  std::string term;  // as in `Canonical`
  std::string id;    // empty where the taxonomy has none
  struct Position {
    TaxonomyNode node;
    bool is_pruned = false;  // it stands in `Source` only
  };
  std::vector<Position> positions;
  std::vector<std::string> entry_terms;
  FoundBy found_by = FoundBy::kName;
  std::string found;  // the identifier, position, name or entry term that was found
};

// All terms, pruned ones too, that have the text as their position (C.08.127 or C08.127), as their identifier
// or that of a supplementary record that maps to them, or in their name or in an entry term, whatever the
// case of ASCII letters. In the order of FoundBy, then of the rows. Throws InputError for a text of blanks,
// DatabaseError.
std::vector<SearchedTerm> SearchTerms(const TaxonomyStore& taxonomy, std::string_view text);

}  // namespace selvane
