// The rules of a table, in memory.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "base/progress.h"
#include "rules/rules_store.h"

namespace selvane {

// A rule's number in its table, from 1.
using RuleNumber = long;

// The rules 1..N of a store's source table, in memory. N is the number of rows when it was made. Where the
// numbers have a gap, a rule has no items and the figures of the one before.
class RuleList {
 public:
  RuleList() = default;
  // Moves the bar from 0 to N. Throws DatabaseError and Interrupted.
  RuleList(const RulesStore& store, Progress& progress) : rules_(store.LoadRules(progress)) {}
  // Of rules that are in memory already.
  explicit RuleList(std::vector<Rule> rules) : rules_(std::move(rules)) {}

  RuleNumber size() const { return static_cast<RuleNumber>(rules_.size()); }
  // Of 1..size().
  const Rule& operator[](RuleNumber number) const { return rules_[static_cast<std::size_t>(number) - 1]; }

 private:
  std::vector<Rule> rules_;
};

}  // namespace selvane
