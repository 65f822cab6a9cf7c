#include "mining/row_bits.h"

#include <gtest/gtest.h>

#include <random>

namespace selvane::tests {

TEST(RowBits, FastOperationsCountWhatPlainOnesCount) {
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
    }
  }
}

}  // namespace selvane::tests
