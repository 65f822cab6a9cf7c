#include "filters/kept_rules.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/error.h"

namespace selvane {

namespace {

constexpr RuleNumber kPulseRules = 256;

std::string TableName(const Clock& clock) {
  const std::tm time = clock.LocalTime();
  std::array<char, 32> text{};
  return "Filtered" +
         std::string(text.data(), std::strftime(text.data(), text.size(), "_%d_%m_%H_%M_%S", &time));
}

}  // namespace

bool KeepMask::IsEmpty() const {
  return std::find(kept_.begin(), kept_.end(), true) == kept_.end();
}

std::string SaveFilteredRules(RulesStore& store, const RuleList& rules, const KeepMask& kept,
                              const Clock& clock, Progress& progress) {
  std::string name = TableName(clock);
  // The name has no year and no fraction of a second; the engine's words for a table that is there say
  // nothing of what to do.
  const std::vector<std::string> tables = store.ListRulesTables();
  if (std::find(tables.begin(), tables.end(), name) != tables.end()) {
    throw InputError(fmt::format("the table {} was saved within this second; save once more", name));
  }
  store.SaveRulesTable(name, [&](RuleBatch& batch) {
    for (RuleNumber number = 1; number <= rules.size(); ++number) {
      if (kept.IsKept(number)) batch.Insert(rules[number]);
      if (number % kPulseRules == 0) progress.Pulse();
    }
  });
  return name;
}

}  // namespace selvane
