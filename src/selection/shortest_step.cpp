// One antecedent for the same rows.
#include <algorithm>
#include <string>
#include <string_view>
#include <unordered_map>

#include "base/content_hash.h"
#include "selection/passed_rules.h"

namespace selvane {

namespace {

std::string_view BytesOf(std::span<const std::uint32_t> numbers) {
  return {reinterpret_cast<const char*>(numbers.data()), numbers.size_bytes()};
}

// Rules of one key compete. A hash of 128 bits stands for the rows: sets that are not alike have the same one
// never in practice.
std::string KeyOf(const PassedRules& rules, const PassedRule& rule, std::span<const RowWord> rows) {
  const auto consequent = rules.Consequent(rule);
  std::vector<std::uint32_t> sorted(consequent.begin(), consequent.end());
  std::sort(sorted.begin(), sorted.end());
  std::string key = ContentHash({reinterpret_cast<const char*>(rows.data()), rows.size_bytes()});
  key += BytesOf(sorted);
  return key;
}

}  // namespace

std::vector<bool> ShortestRules(const PassedRules& rules, const RunItems& items, Progress& progress) {
  struct Best {
    std::size_t rule;
    std::size_t depth;
  };
  std::unordered_map<std::string, Best> best;
  std::vector<std::uint32_t> places;
  std::vector<RowWord> rows;
  for (std::size_t i = 0; i < rules.size(); ++i) {
    const PassedRule& rule = rules.rules()[i];
    const auto antecedent = rules.Antecedent(rule);
    items.PlacesOf(antecedent, places);
    items.SupportingRows(places, rows);
    std::size_t depth = 0;
    for (const std::uint32_t item : antecedent) {
      depth += items.hierarchy().DepthOf(static_cast<NodeNumber>(item));
    }
    const auto [found, is_new] = best.emplace(KeyOf(rules, rule, rows), Best{i, depth});
    const std::uint16_t shortest = rules.rules()[found->second.rule].antecedent_size;
    // Of equally short ones the more special is kept, which says more of the same rows; of equally special
    // ones the earlier.
    if (rule.antecedent_size < shortest ||
        (rule.antecedent_size == shortest && depth > found->second.depth)) {
      found->second = {i, depth};
    }
    if (i % 64 == 0) progress.Pulse();
  }
  std::vector<bool> kept(rules.size(), false);
  for (const auto& [key, winner] : best) kept[winner.rule] = true;
  return kept;
}

}  // namespace selvane
