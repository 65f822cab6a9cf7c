#include "apriori/level.h"

#include <algorithm>
#include <numeric>

namespace selvane {

namespace {

// A frequent union of an itemset with a later one of its group.
struct Join {
  std::uint32_t partner;
  std::uint32_t support_count;
};

// The joins of each itemset, kept in the order of the groups.
struct Joins {
  struct Range {
    std::size_t begin = 0;
    std::size_t end = 0;
  };
  std::vector<Join> all;
  std::vector<Range> of;  // by itemset

  std::span<const Join> Of(std::size_t itemset) const {
    return std::span(all).subspan(of[itemset].begin, of[itemset].end - of[itemset].begin);
  }
};

// The rows of a sequence of items: stack_[i] holds those of its first i + 1 items, for i above 0. What the
// next sequence shares at its beginning is not computed again.
class PrefixRows {
 public:
  PrefixRows(const LevelItems& known, const RowBitsOperations& bits, std::size_t longest)
      : known_(known), bits_(bits), stack_(longest, known.rows.words() * 64) {}

  // Null for no items, which stands for all rows.
  const RowWord* Of(std::span<const std::uint32_t> items) {
    if (items.empty()) return nullptr;
    std::size_t same = 0;
    while (same < items.size() && same < items_.size() && items_[same] == items[same]) ++same;
    for (std::size_t i = std::max<std::size_t>(same, 1); i < items.size(); ++i) {
      bits_.store_and(RowsUpTo(i - 1, items), known_.rows[items[i]], stack_[i], stack_.words());
    }
    items_.assign(items.begin(), items.end());
    return RowsUpTo(items.size() - 1, items);
  }

 private:
  const RowWord* RowsUpTo(std::size_t i, std::span<const std::uint32_t> items) const {
    return i == 0 ? known_.rows[items[0]] : stack_[i];
  }

  const LevelItems& known_;
  const RowBitsOperations& bits_;
  RowBits stack_;
  std::vector<std::uint32_t> items_;
};

// Finds the joins of one level. The rows of a group's shared beginning are intersected once; each candidate
// then costs one more intersection, whose result is only counted.
class Joiner {
 public:
  Joiner(const Level& level, const LevelItems& known, const PairTable* allowed)
      : level_(level),
        known_(known),
        allowed_(allowed),
        bits_(FastRowBitsOperations()),
        prefix_rows_(known, bits_, level.set_size),
        rows_(2, known.rows.words() * 64) {
    joins_.of.resize(level.size());
  }

  Joins Run(SearchWork& work, Progress& progress) {
    for (std::size_t g = 0; g + 1 < level_.group_begin.size(); ++g) {
      const std::size_t begin = level_.group_begin[g];
      JoinGroup(std::span(level_.members).subspan(begin, level_.group_begin[g + 1] - begin), progress);
    }
    work.candidates += counted_;
    work.words += counted_ * known_.rows.words();
    return std::move(joins_);
  }

 private:
  // The first level is one group with the empty beginning, for which the items' own rows serve.
  void JoinGroup(std::span<const std::uint32_t> group, Progress& progress) {
    if (group.size() < 2) return;
    const auto first = level_.Set(group[0]);
    const RowWord* const prefix = prefix_rows_.Of(first.first(first.size() - 1));
    for (std::size_t i = 0; i + 1 < group.size(); ++i) {
      const std::size_t begin = joins_.all.size();
      JoinOne(group[i], group.subspan(i + 1), prefix);
      joins_.of[group[i]] = {begin, joins_.all.size()};
      if (counted_ - pulsed_ > 50000) {
        pulsed_ = counted_;
        progress.Pulse();
      }
    }
  }

  void JoinOne(std::uint32_t itemset, std::span<const std::uint32_t> later, const RowWord* prefix) {
    const std::size_t words = known_.rows.words();
    const std::uint32_t last = level_.Last(itemset);
    const RowWord* rows = prefix == nullptr ? known_.rows[last] : nullptr;
    for (const std::uint32_t partner : later) {
      const std::uint32_t other = level_.Last(partner);
      if (allowed_ != nullptr && !allowed_->Contains(last, other)) continue;
      if (rows == nullptr) {  // only where some partner may join at all
        bits_.store_and(prefix, known_.rows[last], rows_[0], words);
        rows = rows_[0];
      }
      ++counted_;
      std::uint32_t support_count = bits_.count_and(rows, known_.rows[other], words);
      if (support_count < known_.least_rows) continue;
      if (known_.witnesses != nullptr) support_count -= Unsupporting(itemset, other, rows);
      if (support_count >= known_.least_rows) joins_.all.push_back({partner, support_count});
    }
  }

  // Of the rows that hold an itemset and another item, those without distinct witnesses.
  std::uint32_t Unsupporting(std::uint32_t itemset, std::uint32_t other, const RowWord* rows) {
    union_.clear();
    for (const std::uint32_t item : level_.Set(itemset)) union_.push_back(known_.witnessed[item]);
    union_.push_back(known_.witnessed[other]);
    if (!known_.witnesses->HasEntangled(union_)) return 0;
    const std::size_t words = known_.rows.words();
    bits_.store_and(rows, known_.rows[other], rows_[1], words);
    return known_.witnesses->ClearUnsupporting(union_, {rows_[1], words});
  }

  const Level& level_;
  const LevelItems& known_;
  const PairTable* allowed_;
  const RowBitsOperations bits_;
  PrefixRows prefix_rows_;
  RowBits rows_;                      // of the itemset, and of its union with another item
  std::vector<std::uint32_t> union_;  // by the numbers of the witnesses
  Joins joins_;
  std::uint64_t counted_ = 0;
  std::uint64_t pulsed_ = 0;
};

// Groups the new itemsets by the itemset of `level` that is all of their items but the last.
void Group(const Level& level, const LevelItems& known, std::span<const std::uint32_t> beginnings,
           Level& next) {
  // A counting sort: `place` is first how many new itemsets each beginning has, then where the next of them
  // goes. It is stable, so that a group keeps the order of the joins.
  std::vector<std::size_t> place(level.size(), 0);
  for (const std::uint32_t beginning : beginnings) ++place[beginning];
  std::vector<std::uint32_t> sorted;
  std::size_t end = 0;
  for (std::size_t g = 0; g + 1 < level.group_begin.size(); ++g) {
    sorted.assign(level.members.begin() + static_cast<std::ptrdiff_t>(level.group_begin[g]),
                  level.members.begin() + static_cast<std::ptrdiff_t>(level.group_begin[g + 1]));
    // All members share all items but the last, so the order of these is that of the whole itemsets.
    std::sort(sorted.begin(), sorted.end(), [&](std::uint32_t a, std::uint32_t b) {
      return known.rank[level.Last(a)] < known.rank[level.Last(b)];
    });
    for (const std::uint32_t beginning : sorted) {
      const std::size_t count = place[beginning];
      place[beginning] = end;
      if (count == 0) continue;
      next.group_begin.push_back(end);
      end += count;
    }
  }
  next.group_begin.push_back(end);
  next.members.resize(end);
  for (std::size_t i = 0; i < beginnings.size(); ++i) {
    next.members[place[beginnings[i]]++] = static_cast<std::uint32_t>(i);
  }
}

}  // namespace

Level FirstLevel(const LevelItems& known, std::vector<std::uint32_t> support_counts) {
  Level level;
  level.set_size = 1;
  level.items.resize(known.rank.size());
  std::iota(level.items.begin(), level.items.end(), 0U);
  level.members = level.items;
  level.group_begin = {0, level.members.size()};
  level.support_counts = std::move(support_counts);
  return level;
}

Level NextLevel(const Level& level, const LevelItems& known, const PairTable* allowed, SearchWork& work,
                Progress& progress) {
  const Joins joins = Joiner(level, known, allowed).Run(work, progress);
  Level next;
  next.set_size = level.set_size + 1;
  next.items.reserve(joins.all.size() * next.set_size);
  next.support_counts.reserve(joins.all.size());
  std::vector<std::uint32_t> beginnings;
  beginnings.reserve(joins.all.size());
  // By the first itemset of each join in the level's own order, and by its partner in the same: this is the
  // order of plain pairwise joining, which the groups were only a way to.
  for (std::size_t i = 0; i < level.size(); ++i) {
    for (const Join& join : joins.Of(i)) {
      const bool in_order = known.rank[level.Last(i)] < known.rank[level.Last(join.partner)];
      const auto first = static_cast<std::uint32_t>(in_order ? i : join.partner);
      const std::size_t second = in_order ? join.partner : i;
      const auto begin = level.Set(first);
      next.items.insert(next.items.end(), begin.begin(), begin.end());
      next.items.push_back(level.Last(second));
      next.support_counts.push_back(join.support_count);
      beginnings.push_back(first);
    }
  }
  Group(level, known, beginnings, next);
  return next;
}

}  // namespace selvane
