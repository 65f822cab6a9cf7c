// Rules of the bases on their way into a rules table.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

#include "closed/column_items.h"
#include "itemsets/itemset_file.h"
#include "rules/rule_line.h"
#include "rules/rules_store.h"

namespace selvane {

// Stores the first rules in a rules table.
class ClosedRuleStorer {
 public:
  // `line` receives the display line of each stored rule, unless it is empty. All must outlive the storer.
  ClosedRuleStorer(const ColumnItems& items, const TaxonomyStore& taxonomy, RuleBatch& batch,
                   const RuleLine& line, long most_rules);

  // generator => the other items of `larger`, unless a side is too long. Throws DatabaseError.
  void Store(const EncodedRecord& generator, const EncodedRecord& larger);
  long stored() const { return stored_; }

 private:
  std::uint32_t SupportOf(std::span<const std::uint32_t> items);
  std::vector<std::uint32_t> ItemsOf(const EncodedRecord& record) const;
  std::vector<NodeNumber> NodesOf(std::span<const std::uint32_t> items) const;
  std::string Rendered(std::span<const std::uint32_t> items);
  const std::string& RenderedItem(std::uint32_t item);

  const ColumnItems& items_;
  const TaxonomyStore& taxonomy_;
  RuleBatch& batch_;
  const RuleLine& line_;
  const long most_rules_;
  const RowBitsOperations operations_ = FastRowBitsOperations();
  std::unordered_map<NodeNumber, std::uint32_t> item_of_;
  std::vector<RowWord> rows_;
  Rule rule_;
  std::vector<std::string> rendered_;  // the name of each item with its AND, once it was asked for
  long stored_ = 0;
};

}  // namespace selvane
