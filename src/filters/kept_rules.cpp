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
  if (store.database().HasTable(name)) {
    throw InputError(fmt::format("the table {} was saved within this second; save once more", name));
  }
  const std::string target_before = store.target_table();
  const bool created_before = store.target_created();
  try {
    Transaction transaction(store.database());
    store.CreateRulesTable(name);
    store.SetTargetTable(name);
    for (RuleNumber number = 1; number <= rules.size(); ++number) {
      if (kept.IsKept(number)) store.InsertRule(rules[number]);
      if (number % kPulseRules == 0) progress.Pulse();
    }
    transaction.Commit();
  } catch (...) {
    store.SetTargetTable(target_before);
    if (!created_before) store.ForgetTargetCreated();
    throw;
  }
  return name;
}

void HandOverFilteredRules(RulesStore& store) {
  if (store.target_created()) store.SetSourceTable(store.target_table());
}

}  // namespace selvane
