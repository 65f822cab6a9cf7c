#include "itemsets/row_bits.h"

#include <gtest/gtest.h>

#include <random>

namespace selvane::tests {

TEST(RowBits, FastOperationsGiveWhatPlainOnesGive) {
  std::mt19937_64 random(1);
  const RowBitsOperations fast = FastRowBitsOperations();
  const RowBitsOperations plain = PlainRowBitsOperations();
  for (std::size_t rows = 1; rows < 6000; rows = rows * 5 / 4 + 37) {
    for (const int density : {0, 1, 2, 3}) {
      RowBits bits(4, rows);
      for (std::size_t set = 0; set < 2; ++set) {
        for (std::size_t row = 0; row < rows; ++row) {
          if (density == 3 || static_cast<int>(random() % 3) < density) bits.Set(set, row);
        }
      }
      const std::size_t words = bits.words();
      EXPECT_EQ(fast.count_and(bits[0], bits[1], words), plain.count_and(bits[0], bits[1], words));
      plain.store_and(bits[0], bits[1], bits[2], words);
      fast.store_and(bits[0], bits[1], bits[3], words);
      EXPECT_TRUE(std::equal(bits[2], bits[2] + words, bits[3]));
      for (std::size_t c = 0; c < 4; ++c) {
        EXPECT_EQ(fast.any_outside(bits[0], bits[1], bits[c], words),
                  plain.any_outside(bits[0], bits[1], bits[c], words));
      }
      RowBits packed(3, rows);
      fast.pack(bits[0], bits[1], packed[0], words);
      plain.pack(bits[0], bits[1], packed[1], words);
      std::size_t place = 0;
      for (std::size_t row = 0; row < rows; ++row) {
        const auto has = [&](std::size_t set) { return (bits[set][row / 64] >> row % 64 & 1U) != 0; };
        if (has(1) && has(0)) packed.Set(2, place);
        place += has(1) ? 1 : 0;
      }
      EXPECT_TRUE(std::equal(packed[0], packed[0] + words, packed[1]));
      EXPECT_TRUE(std::equal(packed[0], packed[0] + words, packed[2]));
    }
  }
}

}  // namespace selvane::tests
