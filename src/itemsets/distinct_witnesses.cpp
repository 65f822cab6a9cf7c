#include "itemsets/distinct_witnesses.h"

#include <algorithm>
#include <bit>

namespace selvane {

namespace {

// Finds a system of distinct representatives by augmenting paths (H. W. Kuhn, The Hungarian method for the
// assignment problem, 1955). Items are few, and one with as many witnesses as there are items never lacks
// one, so no list needs to be longer.
class Assignment {
 public:
  bool Exists(const std::vector<std::vector<std::uint32_t>>& witnesses) {
    owners_.clear();
    for (std::size_t item = 0; item < witnesses.size(); ++item) {
      asked_.clear();
      if (!Give(item, witnesses)) return false;
    }
    return true;
  }

 private:
  struct Owner {
    std::uint32_t term;
    std::size_t item;
  };

  bool Give(std::size_t item, const std::vector<std::vector<std::uint32_t>>& witnesses) {
    for (const std::uint32_t term : witnesses[item]) {
      if (std::find(asked_.begin(), asked_.end(), term) != asked_.end()) continue;
      asked_.push_back(term);
      const auto owner = std::find_if(owners_.begin(), owners_.end(),
                                      [term](const Owner& other) { return other.term == term; });
      if (owner == owners_.end()) {
        owners_.push_back({term, item});
        return true;
      }
      // By place: giving its owner another term may add owners.
      const auto place = static_cast<std::size_t>(owner - owners_.begin());
      if (Give(owners_[place].item, witnesses)) {
        owners_[place].item = item;
        return true;
      }
    }
    return false;
  }

  std::vector<Owner> owners_;
  std::vector<std::uint32_t> asked_;
};

}  // namespace

bool HaveDistinctRepresentatives(const std::vector<std::vector<std::uint32_t>>& sets) {
  return Assignment().Exists(sets);
}

DistinctWitnesses::DistinctWitnesses(std::span<const std::vector<std::uint32_t>> item_columns,
                                     std::size_t columns, const RowTerms& terms)
    : items_(item_columns.size()),
      terms_(terms),
      entangled_(items_ * items_, false),
      below_(columns * items_, false) {
  std::vector<std::vector<std::uint32_t>> items_of(columns);
  for (std::uint32_t item = 0; item < items_; ++item) {
    for (const std::uint32_t column : item_columns[item]) {
      if (below_[std::size_t{column} * items_ + item]) continue;
      below_[std::size_t{column} * items_ + item] = true;
      items_of[column].push_back(item);
    }
  }
  for (const std::vector<std::uint32_t>& together : items_of) {
    for (const std::uint32_t a : together) {
      for (const std::uint32_t b : together) entangled_[a * items_ + b] = a != b;
    }
  }
  const std::size_t rows = terms.begin.empty() ? 0 : terms.begin.size() - 1;
  few_.assign(kFewest, RowBits(items_, rows));
  std::vector<std::uint32_t> count(items_, 0);
  std::vector<std::uint32_t> met;
  for (std::size_t row = 0; row < rows; ++row) {
    met.clear();
    for (const std::uint32_t column : terms.Of(row)) {
      for (const std::uint32_t item : items_of[column]) {
        if (count[item]++ == 0) met.push_back(item);
      }
    }
    for (const std::uint32_t item : met) {
      for (std::size_t k = count[item]; k <= kFewest; ++k) few_[k - 1].Set(item, row);
      count[item] = 0;
    }
  }
}

bool DistinctWitnesses::HasEntangled(std::span<const std::uint32_t> items) const {
  for (std::size_t i = 0; i < items.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (AreEntangled(items[i], items[j])) return true;
    }
  }
  return false;
}

bool DistinctWitnesses::IsSupported(std::span<const std::uint32_t> items, std::size_t row) const {
  std::vector<std::vector<std::uint32_t>> witnesses(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    for (const std::uint32_t column : terms_.Of(row)) {
      if (!Witnesses(column, items[i])) continue;
      witnesses[i].push_back(column);
      if (witnesses[i].size() == items.size()) break;
    }
  }
  return HaveDistinctRepresentatives(witnesses);
}

// By Hall's theorem a row fails through some of the items that have, all together, fewer witnesses than they
// are. Two of these share a witness, and each has fewer witnesses than the itemset has items; only rows where
// some pair is so are looked at.
std::uint32_t DistinctWitnesses::ClearUnsupporting(std::span<const std::uint32_t> items,
                                                   std::span<RowWord> rows) const {
  std::vector<std::pair<std::uint32_t, std::uint32_t>> pairs;
  for (std::size_t i = 0; i < items.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (AreEntangled(items[i], items[j])) pairs.emplace_back(items[i], items[j]);
    }
  }
  if (pairs.empty()) return 0;
  const RowBits* const few = items.size() - 2 < kFewest ? &few_[items.size() - 2] : nullptr;
  std::uint32_t cleared = 0;
  for (std::size_t word = 0; word < rows.size(); ++word) {
    if (rows[word] == 0) continue;
    RowWord suspect = few == nullptr ? ~RowWord{0} : 0;
    if (few != nullptr) {
      for (const auto& [a, b] : pairs) suspect |= (*few)[a][word] & (*few)[b][word];
    }
    for (suspect &= rows[word]; suspect != 0; suspect &= suspect - 1) {
      const auto bit = static_cast<std::size_t>(std::countr_zero(suspect));
      if (IsSupported(items, word * 64 + bit)) continue;
      rows[word] &= ~(RowWord{1} << bit);
      ++cleared;
    }
  }
  return cleared;
}

}  // namespace selvane
