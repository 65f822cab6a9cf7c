// Sets of rows as bitsets, and the counting of their intersections.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace selvane {

using RowWord = std::uint64_t;

// Equally long bitsets over the rows of a table, side by side. A bit beyond the rows is 0.
class RowBits {
 public:
  RowBits() = default;
  RowBits(std::size_t sets, std::size_t rows)
      : words_((rows + kBlockRows - 1) / kBlockRows * kBlockWords), bits_(sets * words_) {}

  // Words of one set; a multiple of kBlockWords.
  std::size_t words() const { return words_; }
  std::size_t size() const { return words_ == 0 ? 0 : bits_.size() / words_; }
  const RowWord* operator[](std::size_t set) const { return bits_.data() + set * words_; }
  RowWord* operator[](std::size_t set) { return bits_.data() + set * words_; }
  // Leaves the first sets only.
  void Shrink(std::size_t sets) {
    bits_.resize(sets * words_);
    bits_.shrink_to_fit();
  }
  void Set(std::size_t set, std::size_t row) { (*this)[set][row / 64] |= RowWord{1} << (row % 64); }
  void Clear(std::size_t set, std::size_t row) { (*this)[set][row / 64] &= ~(RowWord{1} << (row % 64)); }

  static constexpr std::size_t kBlockWords = 4;

 private:
  static constexpr std::size_t kBlockRows = 64 * kBlockWords;
  std::size_t words_ = 0;
  std::vector<RowWord> bits_;
};

// The rows of items, or the part of these rows that is left in a smaller space of rows.
class ItemRows {
 public:
  // Item i has the set i. `bits` must outlive this.
  explicit ItemRows(const RowBits& bits) : bits_(&bits) {}
  // The item at place i of `items` has the set i.
  ItemRows(const RowBits& bits, std::span<const std::uint32_t> items, std::size_t item_count)
      : bits_(&bits), places_(item_count) {
    for (std::size_t i = 0; i < items.size(); ++i) places_[items[i]] = static_cast<std::uint32_t>(i);
  }

  const RowWord* operator[](std::uint32_t item) const {
    return (*bits_)[places_.empty() ? item : places_[item]];
  }
  std::size_t words() const { return bits_->words(); }

 private:
  const RowBits* bits_;
  std::vector<std::uint32_t> places_;
};

// Operations on sets of the same number of words, a multiple of RowBits::kBlockWords, in the fastest form
// that the processor has.
struct RowBitsOperations {
  // The number of rows in both sets.
  std::uint32_t (*count_and)(const RowWord* a, const RowWord* b, std::size_t words);
  // result = a and b; the result may be one of them.
  void (*store_and)(const RowWord* a, const RowWord* b, RowWord* result, std::size_t words);
  // True when a row of both sets is not in `c`. Ends at the first block with such a row.
  bool (*any_outside)(const RowWord* a, const RowWord* b, const RowWord* c, std::size_t words);
  // Puts the bits of `a` that stand where `mask` has one side by side into `result`, and nothing behind them.
  void (*pack)(const RowWord* a, const RowWord* mask, RowWord* result, std::size_t words);
};

// For this processor; and the plain form, which every processor has.
RowBitsOperations FastRowBitsOperations();
RowBitsOperations PlainRowBitsOperations();

}  // namespace selvane
