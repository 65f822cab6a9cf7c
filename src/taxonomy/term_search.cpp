#include "taxonomy/term_search.h"

#include <algorithm>
#include <unordered_set>

#include "base/error.h"
#include "base/text.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

// As texts are compared: as they would stand in `Canonical`, in small letters.
std::string Folded(std::string_view text) {
  return LowerCase(WithoutQuotes(text));
}

// The terms of a taxonomy while a text is looked for in what is known of them.
class TermSearch {
 public:
  explicit TermSearch(std::string_view text) : wanted_(Folded(text)) {}

  void AddNodes(const TaxonomyStore& taxonomy) {
    std::unordered_set<NodeNumber> kept;
    taxonomy.working().ForEachNode([&kept](const TaxonomyNode& node) { kept.insert(node.number); });
    taxonomy.source().ForEachNode([&](const TaxonomyNode& node) {
      if (node.term.empty()) return;
      const auto [place, is_new] = by_term_.try_emplace(node.term, entries_.size());
      if (is_new) {
        entries_.emplace_back().term.term = node.term;
        TakePart(entries_.back(), node.term, FoundBy::kName, FoundBy::kPartOfName);
      }
      Entry& entry = entries_[place->second];
      entry.term.positions.push_back({node, !kept.contains(node.number)});
    });
  }

  void AddHeadings(const HeadingTables& headings) {
    headings.ForEachHeading([this](const HeadingRow& row) {
      const auto place = by_term_.find(row.term);
      if (place == by_term_.end()) return;
      by_id_.emplace(row.id, place->second);
      Entry& entry = entries_[place->second];
      entry.term.id = row.id;
      if (Folded(row.id) == wanted_) Take(entry, row.id, FoundBy::kId);
    });
    headings.ForEachEntryTerm([this](std::string_view id, std::string_view entry_term) {
      if (Entry* const entry = OfHeading(id)) {
        entry->term.entry_terms.emplace_back(entry_term);
        TakePart(*entry, entry_term, FoundBy::kEntryTerm, FoundBy::kPartOfEntryTerm);
      }
    });
    headings.ForEachSupplementary([this](std::string_view id, std::string_view name, std::string_view to) {
      if (Folded(id) != wanted_ && Folded(name) != wanted_) return;
      if (Entry* const entry = OfHeading(to)) Take(*entry, name, FoundBy::kSupplementary);
    });
  }

  void AddPosition(std::string_view code) {
    for (Entry& entry : entries_) {
      for (const SearchedTerm::Position& position : entry.term.positions) {
        if (position.node.code == code) Take(entry, TreeNumber(code), FoundBy::kPosition);
      }
    }
  }

  std::vector<SearchedTerm> Found() {
    std::vector<SearchedTerm> found;
    for (Entry& entry : entries_) {
      if (entry.is_found) found.push_back(std::move(entry.term));
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const SearchedTerm& a, const SearchedTerm& b) { return a.found_by < b.found_by; });
    return found;
  }

 private:
  struct Entry {
    SearchedTerm term;
    bool is_found = false;
  };

  Entry* OfHeading(std::string_view id) {
    const auto place = by_id_.find(id);
    return place == by_id_.end() ? nullptr : &entries_[place->second];
  }

  // Keeps the best way, and of equal ones the first.
  static void Take(Entry& entry, std::string_view found, FoundBy by) {
    if (entry.is_found && entry.term.found_by <= by) return;
    entry.is_found = true;
    entry.term.found_by = by;
    entry.term.found = found;
  }

  void TakePart(Entry& entry, std::string_view text, FoundBy whole, FoundBy part) const {
    const std::string folded = Folded(text);
    const std::size_t at = folded.find(wanted_);
    if (at == std::string::npos) return;
    Take(entry, text, folded.size() == wanted_.size() ? whole : part);
  }

  std::string wanted_;
  std::vector<Entry> entries_;
  TextMap<std::size_t> by_term_;
  TextMap<std::size_t> by_id_;
};

}  // namespace

std::vector<SearchedTerm> SearchTerms(const TaxonomyStore& taxonomy, std::string_view text) {
  text = Trimmed(text);
  if (text.empty()) throw InputError("there is nothing to look for; name a part of a term");
  TermSearch search(text);
  search.AddNodes(taxonomy);
  search.AddHeadings(taxonomy.headings());
  std::string position(text);
  if (position[0] >= 'a' && position[0] <= 'z') position[0] = static_cast<char>(position[0] - 'a' + 'A');
  for (const std::string& named : {std::string(text), position}) {
    if (const auto code = taxonomy.source().FindPosition(named)) search.AddPosition(*code);
  }
  return search.Found();
}

}  // namespace selvane
