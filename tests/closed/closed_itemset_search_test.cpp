#include "closed/closed_itemset_search.h"

#include <fmt/ranges.h>

#include "closed/itemset_sorter.h"
#include "support/test_support.h"

namespace selvane::tests {

using Items = std::vector<std::uint32_t>;
// Generator, larger itemset, support.
using Found = std::set<std::tuple<Items, Items, std::uint32_t>>;

struct Findings final : ClosedItemsetSink {
  void OnGenerator(std::span<const std::uint32_t> g, std::span<const std::uint32_t> closure,
                   std::uint32_t support_count, bool is_first) override {
    generator.assign(g.begin(), g.end());
    Items items(closure.begin(), closure.end());
    EXPECT_TRUE(!is_first || closed.insert(items).second);
    EXPECT_TRUE(generators.emplace(generator, std::move(items), support_count).second);
  }
  void OnLarger(std::span<const std::uint32_t> items, std::uint32_t support_count) override {
    EXPECT_TRUE(larger.emplace(generator, Items(items.begin(), items.end()), support_count).second);
  }
  Items generator;
  std::set<Items> closed;
  Found generators;
  Found larger;
};

// Every set of items, by its bits, with the number of its rows: all that there is to know.
class PlainItemsets {
 public:
  PlainItemsets(const std::vector<unsigned>& rows, unsigned items) : all_((1U << items) - 1) {
    for (unsigned set = 0; set <= all_; ++set) {
      support_.push_back(static_cast<std::uint32_t>(
          std::count_if(rows.begin(), rows.end(), [set](unsigned row) { return (row & set) == set; })));
    }
  }

  void Fill(const ClosedItemsetSearch::Options& options, Findings& findings) const {
    for (unsigned set = 1; set <= all_; ++set) {
      if (support_[set] < options.least_rows) continue;
      if (IsClosed(set)) findings.closed.insert(ItemsOf(set));
      if (!IsGenerator(set)) continue;
      const unsigned closure = ClosureOf(set);
      findings.generators.emplace(ItemsOf(set), ItemsOf(closure), support_[set]);
      for (unsigned larger = 1; larger <= all_; ++larger) {
        if (IsLarger(closure, larger, options)) {
          findings.larger.emplace(ItemsOf(set), ItemsOf(larger), support_[larger]);
        }
      }
    }
  }

 private:
  static Items ItemsOf(unsigned set) {
    Items items;
    for (unsigned i = 0; set >> i != 0; ++i) {
      if ((set >> i & 1U) != 0) items.push_back(i);
    }
    return items;
  }
  unsigned ClosureOf(unsigned set) const {
    unsigned closure = set;
    for (unsigned item = 1; item <= all_; item <<= 1U) {
      if (support_[set | item] == support_[set]) closure |= item;
    }
    return closure;
  }
  bool IsClosed(unsigned set) const { return ClosureOf(set) == set; }
  bool IsGenerator(unsigned set) const {
    for (unsigned less = (set - 1) & set; less != 0; less = (less - 1) & set) {
      if (support_[less] == support_[set]) return false;
    }
    return true;
  }
  bool IsLarger(unsigned closure, unsigned larger, const ClosedItemsetSearch::Options& options) const {
    if ((larger & closure) != closure || larger == closure || !IsClosed(larger)) return false;
    const float confidence = static_cast<float>(support_[larger]) / static_cast<float>(support_[closure]);
    if (support_[larger] < options.least_rows || confidence < options.min_confidence) return false;
    for (unsigned between = 1; options.covers_only && between <= all_; ++between) {
      if (between != closure && between != larger && (between & closure) == closure &&
          (between & larger) == between && IsClosed(between)) {
        return false;
      }
    }
    return true;
  }

  unsigned all_;
  std::vector<std::uint32_t> support_;
};

TEST(ClosedItemsetSearch, EqualsPlainEnumeration) {
  std::mt19937 engine(1);
  const auto random = [&engine] { return static_cast<unsigned>(engine()); };
  std::size_t larger = 0;
  for (int run = 0; run < 600; ++run) {
    const unsigned items = 1 + random() % 7;
    // What tells minimal generators apart may stand far behind the rows that are looked at first.
    std::vector<unsigned> rows(run % 10 == 0 ? 1100 : 0, (1U << items) - 1);
    const unsigned full = random() % 3 == 0 ? random() % (1U << items) : 0;  // columns of only ones
    for (unsigned left = random() % 24; left > 0; --left) {
      const unsigned drawn = random();
      const bool sparse = random() % 3 == 0;
      unsigned row = (sparse ? drawn : drawn | random()) % (1U << items) | full;
      if (items > 3 && run % 2 == 0) row = (row & ~8U) | (row & 1U) << 3U;  // a column like another
      rows.push_back(row);
    }
    RowBits bits(items, rows.size());
    for (std::size_t i = 0; i < rows.size() * items; ++i) {
      if ((rows[i / items] >> i % items & 1U) != 0) bits.Set(i % items, i / items);
    }
    const float confidences[] = {0.001F, 0.25F, 0.5F, 0.75F, 1};
    const ClosedItemsetSearch::Options options{1 + random() % 4, confidences[random() % 5], run % 3 != 0,
                                               run % 2 * 5 + 1};
    Findings plain;
    PlainItemsets(rows, items).Fill(options, plain);
    Findings found;
    SilentProgress progress;
    ClosedItemsetSearch(bits, options, found, progress).Run();
    const std::string input = fmt::format("{} items, rows {}, run {}", items, fmt::join(rows, ","), run);
    ASSERT_EQ(found.closed, plain.closed) << input;
    ASSERT_EQ(found.generators, plain.generators) << input;
    ASSERT_EQ(found.larger, plain.larger) << input;
    larger += found.larger.size();
  }
  EXPECT_GT(larger, 5000U);
}

class ItemsetSorterTest : public FolderTest {};

TEST_F(ItemsetSorterTest, OrdersMoreRecordsThanItHolds) {
  {
    ItemsetSorter sorter("sorted.dat");
    std::map<std::size_t, std::vector<std::pair<Items, std::uint32_t>>> expected;
    std::mt19937 random(1);
    for (std::uint32_t i = 0; i < 60000; ++i) {
      const Items items(random() % 6, i);
      const std::size_t key = random() % 5 * random() % 3;
      std::string record;
      AppendRecord(items, i, record);
      sorter.Add(key, {record});
      expected[key].emplace_back(items, i);
    }
    auto bucket = expected.begin();
    std::size_t next = 0;
    sorter.ForEachBlock([&](std::string_view records) {
      while (!records.empty()) {
        if (next == bucket->second.size()) {
          ++bucket;
          next = 0;
        }
        const EncodedRecord record = TakeRecord(records);
        Items items;
        record.CopyItems(items);
        ASSERT_EQ(std::pair(items, record.support_count), bucket->second[next++]);
      }
    });
    EXPECT_TRUE(std::next(bucket) == expected.end() && next == bucket->second.size());
    EXPECT_GT(fs::file_size("sorted.dat"), 500000U);
  }
  EXPECT_FALSE(fs::exists("sorted.dat"));
}

}  // namespace selvane::tests
