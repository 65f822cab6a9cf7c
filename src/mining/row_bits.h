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
  void Set(std::size_t set, std::size_t row) { (*this)[set][row / 64] |= RowWord{1} << (row % 64); }
  void Clear(std::size_t set, std::size_t row) { (*this)[set][row / 64] &= ~(RowWord{1} << (row % 64)); }

  static constexpr std::size_t kBlockWords = 4;

 private:
  static constexpr std::size_t kBlockRows = 64 * kBlockWords;
  std::size_t words_ = 0;
  std::vector<RowWord> bits_;
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
};

// For this processor; and the plain form, which every processor has.
RowBitsOperations FastRowBitsOperations();
RowBitsOperations PlainRowBitsOperations();

}  // namespace selvane
