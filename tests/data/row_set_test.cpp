#include "data/row_set.h"

#include <algorithm>

#include "base/error.h"
#include "support/test_support.h"

namespace selvane::tests {

namespace {

using Ids = std::vector<std::uint32_t>;

// `count` rows of a block: side by side at its end, or spread over it.
Ids RowsOf(std::uint32_t block, std::uint32_t count, bool side_by_side) {
  const std::uint32_t step = side_by_side ? 1 : kRowsOfBlock / count;
  Ids rows;
  for (std::uint32_t i = kRowsOfBlock - count * step; i < kRowsOfBlock; i += step)
    rows.push_back(block * kRowsOfBlock + i);
  return rows;
}

TEST(RowSetTest, GivesBackWhatWasStored) {
  for (const std::uint32_t block : {0U, 1U, 65535U}) {
    for (const std::uint32_t count : {1U, 4096U, 4097U, 30000U, 65536U}) {
      for (const bool side_by_side : {false, true}) {
        const Ids rows = RowsOf(block, count, side_by_side);
        const std::string bytes = EncodeRows(rows);
        EXPECT_LE(bytes.size(), side_by_side ? 18U : std::min(16 + 2 * count, 16U + 8192));
        Ids found = {7};
        AppendRows(bytes, block, found);
        found.erase(found.begin());
        EXPECT_EQ(found, rows) << block << " " << count << " " << side_by_side;
      }
    }
  }
}

TEST(RowSetTest, RefusesWhatIsNotOneSetOfTheBlock) {
  const std::string list = EncodeRows(Ids{65536, 65539, 65541});
  const std::string runs = EncodeRows(RowsOf(1, 100, true));
  const std::string bits = EncodeRows(RowsOf(1, 30000, false));
  const auto with = [](std::string bytes, std::size_t place, const std::string& other) {
    return bytes.replace(place, other.size(), other);
  };
  using namespace std::string_literals;
  const std::pair<std::string, std::string> damaged[] = {
      {"ends too early", ""},
      {"ends too early", list.substr(0, list.size() - 1)},
      {"ends too early", bits.substr(0, 5000)},
      {"portable Roaring format", with(list, 0, "\x3c")},
      {"exactly one block", with(list, 4, "\2")},
      {"exactly one block", with(runs, 2, "\1")},
      {"another block", EncodeRows(Ids{1, 2})},
      {"at another place", with(list, 12, "\x11")},
      {"do not ascend", with(list, 20, "\3"s)},
      {"runs of rows do not ascend", with(runs, 13, "\x64"s)},                 // beyond the end of the block
      {"runs of rows do not ascend", with(runs, 9, "\2"s) + "\xff\xff\0\0"s},  // the same row again
      {"another number of rows", with(bits, 16, "\xff"s)},
      {"another number of rows", with(runs, 7, "\1"s)},
      {"bytes follow", list + "x"},
  };
  for (const auto& [reason, bytes] : damaged) {
    Ids rows = {7};
    ExpectFault<InputError>(reason, [&, &bytes = bytes] { AppendRows(bytes, 1, rows); });
    EXPECT_EQ(rows, Ids{7}) << reason;
  }
}

}  // namespace

}  // namespace selvane::tests
