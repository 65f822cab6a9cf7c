#include "termdb/column_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <unordered_set>

#include "base/error.h"
#include "base/file.h"
#include "base/text.h"
#include "taxonomy/term_finder.h"

namespace selvane {

namespace {

using TextSet = std::unordered_set<std::string, TextHash, std::equal_to<>>;

// The terms that a user wants left out.
class LeftOut {
 public:
  explicit LeftOut(const TaxonomyStore& taxonomy) : taxonomy_(taxonomy) {}

  void Add(const std::string& named) {
    if (!named.starts_with('@')) return AddOne(named);
    const std::string text = DecodeInput(ReadFile(named.substr(1)));
    for (std::string_view rest = text; !rest.empty();) {
      const std::string_view line = Trimmed(NextLine(rest));
      if (!line.empty() && !line.starts_with('#')) AddOne(std::string(line));
    }
  }
  bool Has(std::string_view term) const { return terms_.contains(term); }

 private:
  // A pruned branch is known, too: that it is left out already is no fault.
  void AddOne(const std::string& named) {
    if (const auto position = taxonomy_.source().FindPosition(named)) {
      taxonomy_.source().ForEachBelow(*position, 0,
                                      [this](const TaxonomyNode& node) { terms_.insert(node.term); });
    } else if (taxonomy_.source().HasTerm(named)) {
      // Terms have blanks for single quotes wherever they come from, so that both sides compare.
      terms_.insert(WithoutQuotes(named));
    } else {
      AddFound(named);
    }
  }

  // Filling a finder takes a while, and most users name terms as the taxonomy does.
  void AddFound(const std::string& named) {
    if (!finder_) finder_.emplace(taxonomy_);
    const FoundTerms found = finder_->Find(std::span(&named, 1), WithoutQuotes(named));
    if (found.terms.empty() && found.miss != TermMiss::kPruned) {
      throw InputError(fmt::format(
          "{}: the taxonomy has no term and no position \"{}\", which is to be left out; taxonomy list "
          "shows what it has",
          taxonomy_.path().string(), named));
    }
    for (const TermNumber term : found.terms) terms_.insert(finder_->Text(term));
  }

  const TaxonomyStore& taxonomy_;
  std::optional<TermFinder> finder_;
  TextSet terms_;
};

LeftOut LeftOutBy(const ColumnChoice& choice, const TaxonomyStore& taxonomy) {
  LeftOut left_out(taxonomy);
  for (const std::string& named : choice.leave_out) left_out.Add(named);
  return left_out;
}

}  // namespace

std::vector<std::uint32_t> MostFrequent(std::span<const std::uint32_t> counts, std::size_t most) {
  std::vector<std::uint32_t> places(counts.size());
  std::iota(places.begin(), places.end(), 0U);
  // Where all become columns, they stay in the order in which they were met.
  if (places.size() <= most) return places;
  // Stable, so that of equally frequent ones the first met comes first.
  std::stable_sort(places.begin(), places.end(),
                   [&counts](std::uint32_t a, std::uint32_t b) { return counts[a] > counts[b]; });
  places.resize(most);
  return places;
}

std::vector<std::uint32_t> ChooseColumns(const ColumnChoice& choice, std::span<const std::string> terms,
                                         std::span<const std::uint32_t> counts,
                                         const TaxonomyStore& taxonomy) {
  const LeftOut left_out = LeftOutBy(choice, taxonomy);
  std::vector<std::uint32_t> columns;
  std::vector<std::uint32_t> column_counts;
  for (std::uint32_t term = 0; term < terms.size(); ++term) {
    if (counts[term] < choice.min_rows || left_out.Has(terms[term])) continue;
    columns.push_back(term);
    column_counts.push_back(counts[term]);
  }
  std::vector<std::uint32_t> chosen = MostFrequent(column_counts, choice.most.value_or(columns.size()));
  for (std::uint32_t& place : chosen) place = columns[place];
  return chosen;
}

void CheckLeaveOut(const ColumnChoice& choice, const TaxonomyStore& taxonomy) {
  // Only for what it throws: a name that is not known must be told before the literature is read, not after.
  LeftOutBy(choice, taxonomy);
}

}  // namespace selvane
