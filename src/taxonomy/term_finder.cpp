#include "taxonomy/term_finder.h"

#include <algorithm>

namespace selvane {

TermFinder::TermFinder(const TaxonomyStore& taxonomy) {
  AddTerms(taxonomy.working());
  kept_ = static_cast<TermNumber>(terms_.size());
  AddTerms(taxonomy.source());
  AddHeadings(taxonomy.headings());
  AddSupplementary(taxonomy.headings());
}

void TermFinder::AddTerms(const TaxonomyTable& table) {
  table.ForEachNode([this](const TaxonomyNode& node) {
    if (node.term.empty()) return;
    const auto number = static_cast<TermNumber>(terms_.size());
    if (!by_text_.try_emplace(node.term, Targets{number, 1}).second) return;
    terms_.push_back(node.term);
    targets_.push_back(number);
  });
}

void TermFinder::AddHeadings(const HeadingTables& headings) {
  headings.ForEachHeading([this](const HeadingRow& row) {
    const auto term = by_text_.find(row.term);
    if (term != by_text_.end()) by_id_.try_emplace(std::string(row.id), term->second);
  });
  // A text that is a name too means what it names; of headings that share an entry term, the first has it.
  headings.ForEachEntryTerm([this](std::string_view id, std::string_view entry_term) {
    const auto heading = by_id_.find(id);
    if (heading != by_id_.end()) by_text_.try_emplace(WithoutQuotes(entry_term), heading->second);
  });
}

void TermFinder::AddSupplementary(const HeadingTables& headings) {
  std::string id;
  std::string name;
  Targets targets;
  const auto finish = [&] {
    if (!id.empty() && by_id_.try_emplace(id, targets).second) by_text_.try_emplace(name, targets);
  };
  headings.ForEachSupplementary([&](std::string_view row_id, std::string_view row_name, std::string_view to) {
    if (row_id != id) {
      finish();
      id = row_id;
      name = WithoutQuotes(row_name);
      targets = {static_cast<std::uint32_t>(targets_.size()), 0};
    }
    const auto heading = by_id_.find(to);
    // Not to another supplementary record: those begin behind the terms.
    if (heading == by_id_.end() || heading->second.first >= terms_.size()) return;
    targets_.push_back(heading->second.first);
    ++targets.count;
  });
  finish();
}

bool TermFinder::Take(Targets targets) {
  bool all = true;
  for (const TermNumber term : std::span(targets_).subspan(targets.first, targets.count)) {
    if (IsPruned(term)) {
      all = false;
    } else if (std::find(found_.begin(), found_.end(), term) == found_.end()) {
      found_.push_back(term);
    }
  }
  return all;
}

FoundTerms TermFinder::Find(std::span<const std::string> ids, std::string_view name) {
  found_.clear();
  bool known = false;
  bool pruned = false;
  for (const std::string& id : ids) {
    const auto record = by_id_.find(id);
    if (record == by_id_.end()) continue;
    known = true;
    if (!Take(record->second)) pruned = true;
  }
  if (!known) {
    const bool quoted = name.find('\'') != std::string_view::npos;
    const auto record = quoted ? by_text_.find(WithoutQuotes(name)) : by_text_.find(name);
    known = record != by_text_.end();
    if (known && !Take(record->second)) pruned = true;
  }
  if (!found_.empty()) return {found_, TermMiss::kNone};
  if (known) return {{}, pruned ? TermMiss::kPruned : TermMiss::kNoHeading};
  return {{}, ids.empty() ? TermMiss::kUnknownName : TermMiss::kUnknownId};
}

}  // namespace selvane
