#include "apriori/generalized_apriori.h"

#include <algorithm>

#include "base/file.h"
#include "support/random_tables.h"

namespace selvane::tests {

// The search by tid-lists, pair by pair, every subset looked up and nothing kept.
class PlainApriori {
 public:
  PlainApriori(TransactionSource& source, const TaxonomyStore& taxonomy, float support, bool generalize)
      : source_(source), taxonomy_(taxonomy), support_(support), generalize_(generalize) {}

  void Run() {
    CountSingles();
    Write();
    const std::size_t registered = nodes.size();
    for (std::size_t k = 2; !level_.empty() && k < registered; ++k) {
      std::vector<Set> candidates = Joins();
      if (k == 2 && generalize_) {
        std::erase_if(candidates, [this](const Set& set) {
          const std::string a = taxonomy_.working().PositionOf(static_cast<NodeNumber>(set.items[0]));
          const std::string b = taxonomy_.working().PositionOf(static_cast<NodeNumber>(set.items[1]));
          return a.find(b) != std::string::npos || b.find(a) != std::string::npos;
        });
      }
      std::erase_if(candidates, [this](const Set& set) { return !Frequent(set); });
      level_ = std::move(candidates);
      Write();
    }
  }

  std::vector<NodeNumber> nodes, direct, generalized;
  std::uint32_t rows = 0, written = 0, singles = 0;
  std::string bytes;  // of the itemset file

 private:
  struct Set {
    std::vector<std::uint32_t> items;
    TidList tids;
  };

  bool Frequent(const Set& set) const {
    return static_cast<float>(set.tids.size()) / static_cast<float>(rows) >= support_;
  }
  bool Before(std::uint32_t a, std::uint32_t b) const {
    return taxonomy_.working().FindTerm(static_cast<NodeNumber>(a)) <
           taxonomy_.working().FindTerm(static_cast<NodeNumber>(b));
  }
  static TidList Meet(const Set& a, const Set& b) {
    TidList both;
    std::set_intersection(a.tids.begin(), a.tids.end(), b.tids.begin(), b.tids.end(),
                          std::back_inserter(both));
    std::erase(both, 0U);
    return both;
  }

  void CountSingles() {
    Texts names;
    source_.ListItemFields("T", names);
    std::vector<TidList> tids;
    RowValues row;
    for (bool more = source_.OpenReader("T", row); more; more = source_.NextRow(row), ++rows) {
      taxonomy_.RecordItems(row, names, nodes, direct, tids);
      if (generalize_) taxonomy_.RecordAncestors(row, names, nodes, generalized, tids);
    }
    for (std::size_t i = 0; i < nodes.size(); ++i)
      level_.push_back({{static_cast<std::uint32_t>(nodes[i])}, tids[i]});
    std::erase_if(level_, [this](const Set& set) { return !Frequent(set); });
    singles = static_cast<std::uint32_t>(level_.size());
  }

  std::vector<Set> Joins() const {
    std::vector<Set> candidates;
    for (std::size_t i = 0; i < level_.size(); ++i) {
      for (std::size_t j = i + 1; j < level_.size(); ++j) {
        const Set& a = level_[i];
        const Set& b = level_[j];
        if (!std::equal(a.items.begin(), a.items.end() - 1, b.items.begin())) continue;
        const bool in_order = Before(a.items.back(), b.items.back());
        Set joined{in_order ? a.items : b.items, Meet(a, b)};
        joined.items.push_back(in_order ? b.items.back() : a.items.back());
        candidates.push_back(std::move(joined));
      }
    }
    std::erase_if(candidates, [this](const Set& set) { return !AllSubsetsKnown(set.items); });
    return candidates;
  }

  bool AllSubsetsKnown(const std::vector<std::uint32_t>& items) const {
    for (std::size_t left_out = 0; left_out < items.size(); ++left_out) {
      std::vector<std::uint32_t> subset = items;
      subset.erase(subset.begin() + static_cast<std::ptrdiff_t>(left_out));
      if (std::none_of(level_.begin(), level_.end(), [&](const Set& set) { return set.items == subset; }))
        return false;
    }
    return true;
  }

  void Put(std::uint32_t value, int width) {
    for (int i = 0; i < width; ++i) bytes += static_cast<char>(value >> (8 * i));
  }
  void Write() {
    for (const Set& set : level_) {
      Put(static_cast<std::uint32_t>(set.items.size()), 2);
      for (const std::uint32_t item : set.items) Put(item, 4);
      Put(static_cast<std::uint32_t>(set.tids.size()), 4);
      ++written;
    }
  }

  TransactionSource& source_;
  const TaxonomyStore& taxonomy_;
  float support_;
  bool generalize_;
  std::vector<Set> level_;
};

class GeneralizedAprioriTest : public FolderTest {};

TEST_F(GeneralizedAprioriTest, EqualsThePlainSearchByteForByte) {
  std::uint64_t large = 0;
  for (unsigned seed = 0; seed < 160; ++seed) {
    RandomInput input(seed);
    const float support = std::vector<float>{0.05F, 0.2F, 0.3F, 0.5F}[seed % 4];
    const bool generalize = seed % 3 != 0;
    const ItemHierarchy hierarchy(input.taxonomy, ItemKind::kPositions);
    GeneralizedApriori engine(input.source, "T", input.taxonomy, hierarchy,
                              {.minimum_support = support, .generalize = generalize}, "ItemSets.dat");
    SilentProgress progress;
    const AprioriSummary found = engine.Run(progress);
    if (found.itemsets_written > 500) continue;  // the plain way is quadratic
    PlainApriori plain(input.source, input.taxonomy, support, generalize);
    plain.Run();
    ASSERT_EQ(found.direct_items, plain.direct) << input.text;
    ASSERT_EQ(found.generalized_items, plain.generalized) << input.text;
    ASSERT_EQ(found.row_count, plain.rows);
    ASSERT_EQ(found.single_items, plain.singles);
    ASSERT_EQ(found.itemsets_written, plain.written) << input.text;
    ASSERT_TRUE(ReadFile("ItemSets.dat") == plain.bytes) << input.text;
    large += plain.written - plain.singles;
  }
  EXPECT_GT(large, 5000U);  // the cases are worth comparing
  EXPECT_TRUE(fs::exists("frequentItemset2.dat"));
}

}  // namespace selvane::tests
