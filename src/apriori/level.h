// One level of the search: the frequent itemsets of one size, and the step to the next.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "base/progress.h"
#include "itemsets/distinct_witnesses.h"
#include "itemsets/row_bits.h"

namespace selvane {

// What the search knows of the frequent single items. They are named by their place in the first level.
struct LevelItems {
  RowBits rows;                     // without the row whose id is 0
  std::vector<std::uint32_t> rank;  // place in canonical order
  std::uint32_t least_rows = 1;     // how many rows make an itemset frequent
  // Where only rows with distinct witnesses count: these, and the number that each item has there.
  const DistinctWitnesses* witnesses = nullptr;
  std::span<const std::uint32_t> witnessed{};
};

// How much work a run was.
struct SearchWork {
  std::uint64_t candidates = 0;  // itemsets whose rows were counted
  std::uint64_t words = 0;       // pairs of words that were intersected for it
};

// Pairs of items that may stand together in an itemset, as a table of bits. Holds n * n of them.
class PairTable {
 public:
  // Without any pair at first.
  explicit PairTable(std::size_t items) : items_(items), bits_(items * items, false) {}
  void Insert(std::uint32_t a, std::uint32_t b) { bits_[a * items_ + b] = bits_[b * items_ + a] = true; }
  bool Contains(std::uint32_t a, std::uint32_t b) const { return bits_[a * items_ + b]; }

 private:
  std::size_t items_;
  std::vector<bool> bits_;
};

// Itemsets of one size in the order in which plain pairwise joining of the level before gives them. For
// finding joins they are grouped by all items but the last; a group keeps that order, and groups stand in
// lexicographic order so that neighbours share most of their items.
struct Level {
  std::size_t set_size = 0;
  std::vector<std::uint32_t> items;           // set_size for each itemset, in canonical order
  std::vector<std::uint32_t> support_counts;  // rows of each itemset
  std::vector<std::uint32_t> members;         // itemsets, group by group
  std::vector<std::size_t> group_begin;       // where each group begins in `members`, and its end

  std::size_t size() const { return support_counts.size(); }
  std::span<const std::uint32_t> Set(std::size_t i) const {
    return std::span(items).subspan(i * set_size, set_size);
  }
  std::uint32_t Last(std::size_t i) const { return items[i * set_size + set_size - 1]; }
};

// The first level: all items of `known`, each with its number of rows, in one group.
Level FirstLevel(const LevelItems& known, std::vector<std::uint32_t> support_counts);

// The next level: every two itemsets of one group whose last items are a pair of `allowed`, or any two where
// that is nullptr, when their union is frequent.
//
// That a union is frequent and that no two of its items form a dropped pair already implies that each of its
// subsets is in the level, since canonical order is total: among equal texts the item met later comes first,
// which is what joining two of them gives. So no subset is looked up.
// R. Agrawal and R. Srikant, Fast algorithms for mining association rules, 1994; the sets of rows are those
// of M. J. Zaki, Scalable algorithms for association mining, 2000, computed anew from the items' own for each
// group, so that only one level's itemsets are held and none of their rows.
Level NextLevel(const Level& level, const LevelItems& known, const PairTable* allowed, SearchWork& work,
                Progress& progress);

}  // namespace selvane
