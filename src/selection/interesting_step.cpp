// Rules that say more than the more general rules beside them lead to expect.
#include <algorithm>
#include <numeric>
#include <unordered_map>
#include <unordered_set>

#include "selection/passed_rules.h"

namespace selvane {

namespace {

// What tells rules apart whatever the order of the items in their sides.
std::string KeyOf(std::vector<std::uint32_t> antecedent, std::vector<std::uint32_t> consequent) {
  std::sort(antecedent.begin(), antecedent.end());
  std::sort(consequent.begin(), consequent.end());
  std::string key;
  const auto append = [&key](const std::vector<std::uint32_t>& side) {
    key.append(reinterpret_cast<const char*>(side.data()), side.size() * sizeof(std::uint32_t));
  };
  append(antecedent);
  key.append(sizeof(std::uint32_t), '\xff');  // no node has this number
  append(consequent);
  return key;
}

class Judge {
 public:
  Judge(const PassedRules& rules, const RunItems& items, const ItemsetTrie& itemsets, double factor)
      : rules_(rules), items_(items), itemsets_(itemsets), factor_(factor) {}

  // Rules come with those more general than they before them.
  bool Keeps(const PassedRule& rule) {
    const auto own = rules_.Items(rule);
    choices_.resize(own.size());
    for (std::size_t i = 0; i < own.size(); ++i) {
      choices_[i] = {own[i]};
      for (const NodeNumber above : items_.hierarchy().Above(static_cast<NodeNumber>(own[i]))) {
        const auto item = static_cast<std::uint32_t>(above);
        if (used_.contains(item)) choices_[i].push_back(item);
      }
    }
    general_.assign(own.begin(), own.end());
    if (!IsInterestingFrom(0, rule, 1, 1)) return false;
    kept_.emplace(KeyOf(General(rule, true), General(rule, false)), &rule);
    used_.insert(own.begin(), own.end());
    for (std::size_t i = 0; i < own.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) pairs_.insert(Pair(rule, j, i));
    }
    return true;
  }

 private:
  std::vector<std::uint32_t> General(const PassedRule& rule, bool antecedent) const {
    const auto middle = general_.begin() + rule.antecedent_size;
    return antecedent ? std::vector(general_.begin(), middle) : std::vector(middle, general_.end());
  }

  // The items that are at two places now, with the sides they stand on.
  std::uint64_t Pair(const PassedRule& rule, std::size_t a, std::size_t b) const {
    const auto at = [&](std::size_t place) {
      return std::uint64_t{general_[place]} * 2 + (place < rule.antecedent_size ? 0 : 1);
    };
    return std::min(at(a), at(b)) << 32 | std::max(at(a), at(b));
  }

  // Whether a rule that was kept may hold the items up to this place. All pairs of its items are known; with
  // many items each, most ways to replace them end here, and going through all would never end.
  bool CanBeKept(const PassedRule& rule, std::size_t place) const {
    for (std::size_t i = 0; i < place; ++i) {
      if (!pairs_.contains(Pair(rule, i, place))) return false;
    }
    return true;
  }

  double CountOf(std::uint32_t item) const {
    return static_cast<double>(itemsets_.Find(std::span(&item, 1)).value_or(0));
  }

  // Goes through the ways to replace the items from this place on. The shares are those of the replaced items
  // so far: of all, and of those of the consequent.
  bool IsInterestingFrom(std::size_t place, const PassedRule& rule, double share, double consequent_share) {
    if (place == choices_.size()) return IsInteresting(rule, share, consequent_share);
    const std::uint32_t own = choices_[place].front();
    bool keeps = true;
    for (std::size_t i = 0; i < choices_[place].size() && keeps; ++i) {
      general_[place] = choices_[place][i];
      if (!CanBeKept(rule, place)) continue;
      const double part = i == 0 ? 1 : CountOf(own) / CountOf(general_[place]);
      keeps = IsInterestingFrom(place + 1, rule, share * part,
                                place < rule.antecedent_size ? consequent_share : consequent_share * part);
    }
    general_[place] = own;
    return keeps;
  }

  // Against the general rule at hand, when that is one that was kept.
  bool IsInteresting(const PassedRule& rule, double share, double consequent_share) const {
    const auto own = rules_.Items(rule);
    if (std::equal(own.begin(), own.end(), general_.begin())) return true;
    const auto found = kept_.find(KeyOf(General(rule, true), General(rule, false)));
    // A rule that was dropped sets no expectation: those that led to expect it are more general than this
    // one, too, and are compared with it in their turn.
    if (found == kept_.end()) return true;
    const PassedRule& general = *found->second;
    const double confidence = static_cast<double>(rule.both) / rule.antecedent;
    const double expected = static_cast<double>(general.both) / general.antecedent * consequent_share;
    // The products are rounded, and a rule that is just as much as was asked for must pass.
    return rule.both >= factor_ * general.both * share - 1e-9 || confidence >= factor_ * expected - 1e-12;
  }

  const PassedRules& rules_;
  const RunItems& items_;
  const ItemsetTrie& itemsets_;
  double factor_;
  // The items of rules that were kept, and their pairs.
  std::unordered_set<std::uint32_t> used_;
  std::unordered_set<std::uint64_t> pairs_;
  std::unordered_map<std::string, const PassedRule*> kept_;
  std::vector<std::vector<std::uint32_t>> choices_;
  std::vector<std::uint32_t> general_;
};

}  // namespace

std::vector<bool> InterestingRules(const PassedRules& rules, const RunItems& items,
                                   const ItemsetTrie& itemsets, double factor, Progress& progress) {
  // An item is deeper than those above it, so the sum puts every more general rule first.
  std::vector<std::size_t> depth;
  for (const PassedRule& rule : rules.rules()) {
    std::size_t sum = 0;
    for (const std::uint32_t item : rules.Items(rule)) {
      sum += items.hierarchy().DepthOf(static_cast<NodeNumber>(item));
    }
    depth.push_back(sum);
  }
  std::vector<std::size_t> order(rules.size());
  std::iota(order.begin(), order.end(), std::size_t{0});
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return depth[a] < depth[b]; });
  Judge judge(rules, items, itemsets, factor);
  std::vector<bool> kept(rules.size(), false);
  for (std::size_t i = 0; i < order.size(); ++i) {
    kept[order[i]] = judge.Keeps(rules.rules()[order[i]]);
    if (i % 64 == 0) progress.Pulse();
  }
  return kept;
}

}  // namespace selvane
