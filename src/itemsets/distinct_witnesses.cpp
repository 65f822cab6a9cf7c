#include "itemsets/distinct_witnesses.h"

#include <algorithm>
#include <bit>
#include <utility>

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
      columns_(columns),
      terms_(terms),
      entangled_(items_ * items_, false),
      below_(columns * items_, false),
      single_(items_) {
  std::vector<std::vector<std::uint32_t>> items_of(columns);
  for (std::uint32_t item = 0; item < items_; ++item) {
    for (const std::uint32_t column : item_columns[item]) {
      if (Witnesses(column, item)) continue;
      below_[std::size_t{item} * columns_ + column] = true;
      items_of[column].push_back(item);
    }
  }
  for (const std::vector<std::uint32_t>& together : items_of) {
    for (const std::uint32_t a : together) {
      for (const std::uint32_t b : together) {
        if (a != b) entangled_[a * items_ + b] = true;
      }
    }
  }
  FindFew(items_of);
}

void DistinctWitnesses::FindFew(std::span<const std::vector<std::uint32_t>> items_of) {
  const std::size_t rows = terms_.begin.empty() ? 0 : terms_.begin.size() - 1;
  few_.assign(kFewest, RowBits(items_, rows));
  std::vector<std::uint32_t> count(items_, 0);
  std::vector<std::uint32_t> last(items_, 0);
  std::vector<std::uint32_t> met;
  for (std::size_t row = 0; row < rows; ++row) {
    met.clear();
    for (const std::uint32_t column : terms_.Of(row)) {
      for (const std::uint32_t item : items_of[column]) {
        if (count[item]++ == 0) met.push_back(item);
        last[item] = column;
      }
    }
    for (const std::uint32_t item : met) {
      for (std::size_t k = count[item]; k <= kFewest; ++k) few_[k - 1].Set(item, row);
      if (count[item] == 1) single_[item].push_back(last[item]);
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

// Found by one walk over the rows in which each has one witness, counting along which witness belongs to the
// row. Larger itemsets ask again and again for the same pairs.
const DistinctWitnesses::RowList& DistinctWitnesses::FailingRows(std::uint32_t a, std::uint32_t b) const {
  if (a > b) std::swap(a, b);
  const auto [found, is_new] = failing_.try_emplace(std::uint64_t{a} << 32 | b);
  if (!is_new) return found->second;
  std::size_t before_a = 0;
  std::size_t before_b = 0;
  for (std::size_t word = 0; word < few_[0].words(); ++word) {
    const RowWord with_a = few_[0][a][word];
    const RowWord with_b = few_[0][b][word];
    for (RowWord both = with_a & with_b; both != 0; both &= both - 1) {
      const RowWord lower = (both & (~both + 1)) - 1;
      const auto rank = [lower](RowWord rows) {
        return static_cast<std::size_t>(std::popcount(rows & lower));
      };
      if (single_[a][before_a + rank(with_a)] != single_[b][before_b + rank(with_b)]) continue;
      found->second.push_back(
          static_cast<std::uint32_t>(word * 64 + static_cast<std::size_t>(std::countr_zero(both))));
    }
    before_a += static_cast<std::size_t>(std::popcount(with_a));
    before_b += static_cast<std::size_t>(std::popcount(with_b));
  }
  return found->second;
}

bool DistinctWitnesses::IsSupported(std::span<const std::uint32_t> items, std::size_t row) const {
  witnesses_.resize(items.size());
  for (std::size_t i = 0; i < items.size(); ++i) {
    witnesses_[i].clear();
    for (const std::uint32_t column : terms_.Of(row)) {
      if (!Witnesses(column, items[i])) continue;
      witnesses_[i].push_back(column);
      if (witnesses_[i].size() == items.size()) break;
    }
  }
  return HaveDistinctRepresentatives(witnesses_);
}

// By Hall's theorem a row fails through some of the items that have, all together, fewer witnesses than they
// are; take as few items as do. Two of them fail with one witness, the same. Three or more fail with at most
// as many witnesses each as the itemset has items but one, and not all with one, since two of these would
// fail by themselves. Only such rows are looked at.
std::uint32_t DistinctWitnesses::ClearUnsupporting(std::span<const std::uint32_t> items,
                                                   std::span<RowWord> rows) const {
  std::uint32_t cleared = 0;
  std::size_t entangled = 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      if (!AreEntangled(items[i], items[j])) continue;
      ++entangled;
      for (const std::uint32_t row : FailingRows(items[i], items[j])) {
        RowWord& word = rows[row / 64];
        const RowWord bit = RowWord{1} << (row % 64);
        cleared += (word & bit) != 0 ? 1 : 0;
        word &= ~bit;
      }
    }
  }
  // Three that fail together are held together by two pairs at least.
  return entangled < 2 ? cleared : cleared + ClearFailing(items, rows);
}

std::uint32_t DistinctWitnesses::ClearFailing(std::span<const std::uint32_t> items,
                                              std::span<RowWord> rows) const {
  const RowBits* const few = items.size() - 2 < kFewest ? &few_[items.size() - 2] : nullptr;
  std::uint32_t cleared = 0;
  for (std::size_t word = 0; word < rows.size(); ++word) {
    if (rows[word] == 0) continue;
    // Counts up to three, for 64 rows at once.
    RowWord one = 0;
    RowWord two = 0;
    RowWord three = 0;
    RowWord several = 0;
    for (const std::uint32_t item : items) {
      const RowWord in = few == nullptr ? ~RowWord{0} : (*few)[item][word];
      three |= two & in;
      two |= one & in;
      one |= in;
      several |= in & ~few_[0][item][word];
    }
    for (RowWord suspect = rows[word] & three & several; suspect != 0; suspect &= suspect - 1) {
      const auto bit = static_cast<std::size_t>(std::countr_zero(suspect));
      if (IsSupported(items, word * 64 + bit)) continue;
      rows[word] &= ~(RowWord{1} << bit);
      ++cleared;
    }
  }
  return cleared;
}

}  // namespace selvane
