// filters/: keeps some of the rules of a table: by templates, by a statistical rating, by specificity, or as
// a cover of the rows. Each filter is a class that knows no window.
#pragma once

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

#include "base/clock.h"
#include "base/progress.h"
#include "rules/rules_store.h"

namespace selvane {

// A rule's number in its table, from 1.
using RuleNumber = long;

// Which rules of a table are kept. Number 0 is never kept.
class KeepMask {
 public:
  explicit KeepMask(RuleNumber rules = 0) : kept_(static_cast<std::size_t>(rules) + 1, false) {}
  void Keep(RuleNumber number, bool keep = true) { kept_[static_cast<std::size_t>(number)] = keep; }
  bool IsKept(RuleNumber number) const { return kept_[static_cast<std::size_t>(number)]; }
  // True when no rule is kept.
  bool IsEmpty() const;

 private:
  std::vector<bool> kept_;
};

// The rules 1..N of a store's source table, in memory. N is the number of rows when it was made. Where the
// numbers have a gap, a rule has no items and the figures of the one before.
class RuleList {
 public:
  RuleList() = default;
  // Moves the bar from 0 to N. Throws DatabaseError and Interrupted.
  RuleList(const RulesStore& store, Progress& progress);
  // Of rules that are in memory already.
  explicit RuleList(std::vector<Rule> rules) : rules_(std::move(rules)) {}

  RuleNumber size() const { return static_cast<RuleNumber>(rules_.size()); }
  // Of 1..size().
  const Rule& operator[](RuleNumber number) const { return rules_[static_cast<std::size_t>(number) - 1]; }

 private:
  std::vector<Rule> rules_;
};

enum class RuleOrder { kDecreasingSupport, kDecreasingConfidence };

// Puts the rules in order; those with equal figures stay as they are, and those with a figure that is not
// above 0 come last.
void OrderRules(const RuleList& rules, RuleOrder order, std::vector<RuleNumber>& numbers);

// Copies the kept rules, in the order of their numbers, into a new table named by the time, and makes it the
// store's target. Returns its name. Throws DatabaseError, and InputError when there is a table of that name
// already; nothing is changed then.
std::string SaveFilteredRules(RulesStore& store, const RuleList& rules, const KeepMask& kept,
                              const Clock& clock, Progress& progress);

// In a cascade, what the store has saved becomes the source of the next filter.
void HandOverFilteredRules(RulesStore& store);

}  // namespace selvane
