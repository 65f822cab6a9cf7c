// filters/: keeps some of the rules of a table: by templates, by a statistical rating, by specificity, or as
// a cover of the rows. Each filter is a class that knows no window.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/progress.h"
#include "rules/rule_list.h"
#include "rules/rule_order.h"
#include "rules/rules_store.h"

namespace selvane {

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

// Copies the kept rules, in the order of their numbers, into a new table named by the time, and makes it the
// store's target. Returns its name. Throws DatabaseError, and InputError when there is a table of that name
// already; nothing is changed then.
std::string SaveFilteredRules(RulesStore& store, const RuleList& rules, const KeepMask& kept,
                              const Clock& clock, Progress& progress);

}  // namespace selvane
