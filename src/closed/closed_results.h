// What an extraction by closed itemsets finds, on its way from the search to files and to the rules database.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "base/file.h"
#include "base/progress.h"
#include "closed/closed_itemset_search.h"
#include "closed/column_items.h"
#include "closed/itemset_sorter.h"
#include "data/database.h"
#include "itemsets/itemset_file.h"
#include "rules/rule_line.h"
#include "rules/rule_tally.h"
#include "rules/rules_store.h"

namespace selvane {

// Puts what the search finds into the working files, sorted by size, and counts it. Throws FileError.
class FoundItemsets final : public ClosedItemsetSink {
 public:
  // `nodes` are the numbers of the items, which the files hold, and must outlive this.
  FoundItemsets(const std::filesystem::path& folder, std::span<const NodeNumber> nodes,
                std::uint32_t row_count);

  void OnGenerator(std::span<const std::uint32_t> generator, std::span<const std::uint32_t> closure,
                   std::uint32_t support, bool is_first) override;
  void OnLarger(std::span<const std::uint32_t> larger, std::uint32_t support) override;

  std::uint64_t closed_itemsets() const { return closed_count_; }
  std::uint64_t generators() const { return generator_count_; }
  std::uint64_t exact_rules() const { return exact_count_; }
  // Items of the largest closed itemset.
  std::size_t largest_size() const { return largest_size_; }
  // Rules of which one side does not fit its column in a rules table; and all that fit.
  std::uint64_t too_long_rules() const { return too_long_count_; }
  const RuleTally& tally() const { return tally_; }

  // By ascending size.
  void ForEachBlockOfClosed(const std::function<void(std::string_view records)>& visit) {
    closed_.ForEachBlock(visit);
  }
  // Generators with their closures and with the larger closed itemsets they lead to, by the ascending size of
  // the second. Moves the bar from 0 to 100.
  using VisitPair = std::function<void(const EncodedRecord& generator, const EncodedRecord& larger)>;
  void ForEachPair(Progress& progress, const VisitPair& visit);

 private:
  void Encode(std::span<const std::uint32_t> items, std::uint32_t support, std::string& bytes);
  int TextSize(std::span<const std::uint32_t> items) const;
  void AddPair(std::span<const std::uint32_t> larger, std::uint32_t support);

  std::span<const NodeNumber> nodes_;
  std::vector<int> text_sizes_;  // of each item, in the text of an itemset
  ItemsetSorter closed_;
  ItemsetSorter pairs_;
  RuleTally tally_;
  std::size_t generator_size_ = 0;
  std::uint32_t generator_support_ = 0;
  int generator_text_size_ = 0;
  std::string generator_;  // encoded
  std::string larger_;
  std::vector<std::uint32_t> numbers_;
  std::uint64_t closed_count_ = 0;
  std::uint64_t generator_count_ = 0;
  std::uint64_t exact_count_ = 0;
  std::uint64_t pair_count_ = 0;
  std::uint64_t too_long_count_ = 0;
  std::size_t largest_size_ = 0;
};

// The files that stay in the current folder. They appear, all together, at the commit. Throws FileError,
// which names the folder when it takes no files.
class ClosedResultFiles {
 public:
  static constexpr std::array<const char*, 5> kNames = {"FCI.dat", "Generator.dat", "ExactRules.dat",
                                                        "ApproxRules.dat", "Rules.dat"};
  ClosedResultFiles();

  void AddClosedItemsets(std::string_view records) { files_[kClosed]->records.WriteEncoded(records); }
  // A generator with its closure, or with a larger closed itemset, which stands behind it in memory.
  void AddPair(const EncodedRecord& generator, const EncodedRecord& larger);
  // What was added is complete when this returns; to be called before the rest.
  void Close();
  // The file of closed itemsets before the commit.
  const std::filesystem::path& closed_itemsets() const { return files_[kClosed]->made.temporary(); }
  void Commit();

 private:
  // Places in kNames.
  enum Place : std::size_t { kClosed, kGenerators, kExact, kApproximate, kAllRules };
  struct File {
    explicit File(const char* name) : made(name, ExistingFile::kReplace) {
      records.OpenForWriting(made.temporary());
    }
    NewFile made;
    ItemsetFile records;
  };
  std::array<std::optional<File>, kNames.size()> files_;
};

// Stores the first rules in the target table of a rules database, in one transaction.
class ClosedRuleStorer {
 public:
  // `line` receives the display line of each stored rule, unless it is empty. All must outlive the storer.
  ClosedRuleStorer(const ColumnItems& items, const TaxonomyStore& taxonomy, RulesStore& rules,
                   const RuleLine& line, long most_rules);

  // generator => the other items of `larger`, unless a side is too long. Throws DatabaseError.
  void Store(const EncodedRecord& generator, const EncodedRecord& larger);
  void Finish() { transaction_.Commit(); }
  long stored() const { return stored_; }

 private:
  std::uint32_t SupportOf(std::span<const std::uint32_t> items);
  std::vector<std::uint32_t> ItemsOf(const EncodedRecord& record) const;
  std::vector<NodeNumber> NodesOf(std::span<const std::uint32_t> items) const;
  std::string Rendered(std::span<const std::uint32_t> items);
  const std::string& RenderedItem(std::uint32_t item);

  const ColumnItems& items_;
  const TaxonomyStore& taxonomy_;
  RulesStore& rules_;
  const RuleLine& line_;
  const long most_rules_;
  Transaction transaction_;
  const RowBitsOperations operations_ = FastRowBitsOperations();
  std::unordered_map<NodeNumber, std::uint32_t> item_of_;
  std::vector<RowWord> rows_;
  Rule rule_;
  std::vector<std::string> rendered_;  // the name of each item with its AND, once it was asked for
  long stored_ = 0;
};

}  // namespace selvane
