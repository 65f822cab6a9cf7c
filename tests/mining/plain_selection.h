// Selecting rules the plain way: everything enumerated, each step as it is described.
#pragma once

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "measures/fisher.h"
#include "mining/apriori_extraction.h"
#include "taxonomy/position_code.h"

namespace selvane {

using PlainSet = std::set<NodeNumber>;

struct PlainRule {
  PlainSet antecedent;
  PlainSet consequent;
  RuleCounts counts;
  bool operator==(const PlainRule&) const = default;
  bool operator<(const PlainRule& other) const {
    return std::tie(antecedent, consequent) < std::tie(other.antecedent, other.consequent);
  }
  PlainSet Items() const {
    PlainSet items = antecedent;
    items.insert(consequent.begin(), consequent.end());
    return items;
  }
  double Confidence() const {
    return static_cast<double>(counts.both) / static_cast<double>(counts.antecedent);
  }
};

class PlainSelection {
 public:
  PlainSelection(const TaxonomyStore& taxonomy, const std::vector<std::set<std::string>>& rows,
                 const AprioriRequest& request)
      : request_(request) {
    taxonomy.working().ForEachNode([this](const TaxonomyNode& node) { nodes_.push_back(node); });
    for (const TaxonomyNode& node : nodes_) items_.insert(ItemOf(node));
    for (const NodeNumber item : items_) above_[item] = AboveOf(item);
    for (const std::set<std::string>& terms : rows) {
      auto& witnesses = witnesses_.emplace_back();
      for (const std::string& term : terms) {
        for (const TaxonomyNode& node : nodes_) {
          if (node.term != term) continue;
          witnesses[ItemOf(node)].insert(term);
          for (const NodeNumber item : above_[ItemOf(node)]) witnesses[item].insert(term);
        }
      }
    }
  }

  // After all steps that are asked for but the shortest antecedents.
  std::vector<PlainRule> Rules() {
    std::vector<PlainRule> rules = Confident();
    const SelectionOptions& steps = request_.choices.selection;
    std::erase_if(
        rules, [&](const PlainRule& rule) { return steps.min_lift && Lift(rule) < *steps.min_lift - 1e-12; });
    std::erase_if(rules, [&](const PlainRule& rule) { return steps.improvement && !Improves(rule); });
    if (steps.significance) KeepHolm(rules, *steps.significance);
    std::erase_if(rules, [&](const PlainRule& rule) { return steps.specific && !IsSpecific(rule.Items()); });
    if (steps.interesting) KeepInteresting(rules, *steps.interesting);
    return rules;
  }

  // The rows that support an itemset.
  std::set<std::size_t> RowsOf(const PlainSet& items, bool distinct) const {
    std::set<std::size_t> rows;
    for (std::size_t row = 0; row < witnesses_.size(); ++row) {
      if (Supports(row, {items.begin(), items.end()}, distinct)) rows.insert(row);
    }
    return rows;
  }
  std::size_t Depth(NodeNumber item) const {
    std::size_t depth = 0;
    for (const NodeNumber above : above_.at(item)) depth = std::max(depth, Depth(above) + 1);
    return depth;
  }
  // Whether terms stand above each other in a circle, where "more general first" has no meaning.
  bool HasCircle() const {
    return std::any_of(items_.begin(), items_.end(), [this](NodeNumber item) {
      return std::any_of(above_.at(item).begin(), above_.at(item).end(),
                         [&](NodeNumber above) { return Reaches(above, item, items_.size()); });
    });
  }

 private:
  bool Distinct() const { return request_.choices.distinct_witnesses; }
  std::uint64_t Count(const PlainSet& items) {
    const auto [found, is_new] = counts_.emplace(items, 0);
    if (is_new) found->second = RowsOf(items, Distinct()).size();
    return found->second;
  }
  bool Reaches(NodeNumber from, NodeNumber to, std::size_t steps) const {
    if (from == to) return true;
    return steps > 0 && std::any_of(above_.at(from).begin(), above_.at(from).end(),
                                    [&](NodeNumber above) { return Reaches(above, to, steps - 1); });
  }

  NodeNumber ItemOf(const TaxonomyNode& node) const {
    if (request_.choices.items == ItemKind::kPositions || node.term.empty()) return node.number;
    return std::find_if(nodes_.begin(), nodes_.end(),
                        [&](const TaxonomyNode& other) { return other.term == node.term; })
        ->number;
  }
  PlainSet AboveOf(NodeNumber item) const {
    PlainSet above;
    for (const TaxonomyNode& node : nodes_) {
      if (ItemOf(node) != item) continue;
      for (std::string code = node.code; code.size() > 1;) {
        code = std::string(ParentCode(code));
        for (const TaxonomyNode& other : nodes_) {
          if (other.code == code) above.insert(ItemOf(other));
        }
      }
    }
    above.erase(item);
    return above;
  }

  // Tries all ways to give each item a term of its own.
  bool Supports(std::size_t row, const std::vector<NodeNumber>& items, bool distinct, std::size_t place = 0,
                std::set<std::string> taken = {}) const {
    if (place == items.size()) return true;
    const auto found = witnesses_[row].find(items[place]);
    if (found == witnesses_[row].end()) return false;
    if (!distinct) return Supports(row, items, distinct, place + 1);
    return std::any_of(found->second.begin(), found->second.end(), [&](const std::string& term) {
      if (taken.contains(term)) return false;
      std::set<std::string> more = taken;
      more.insert(term);
      return Supports(row, items, distinct, place + 1, more);
    });
  }

  void Extend(const PlainSet& itemset, std::vector<PlainRule>& rules) {
    if (itemset.size() >= 2) Divide(itemset, rules);
    if (itemset.size() == request_.choices.max_size) return;
    for (const NodeNumber item : items_) {
      if (!itemset.empty() && item <= *itemset.rbegin()) continue;
      if (std::any_of(itemset.begin(), itemset.end(), [&](NodeNumber other) {
            return above_.at(item).contains(other) || above_.at(other).contains(item);
          })) {
        continue;
      }
      PlainSet larger = itemset;
      larger.insert(item);
      if (static_cast<float>(Count(larger)) / static_cast<float>(witnesses_.size()) >=
              request_.run.min_support &&
          Count(larger) > 0) {
        Extend(larger, rules);
      }
    }
  }
  void Divide(const PlainSet& itemset, std::vector<PlainRule>& rules) {
    const std::vector<NodeNumber> items(itemset.begin(), itemset.end());
    for (unsigned part = 1; part + 1 < 1U << items.size(); ++part) {
      PlainRule rule;
      for (std::size_t i = 0; i < items.size(); ++i)
        ((part >> i & 1U) != 0 ? rule.antecedent : rule.consequent).insert(items[i]);
      rule.counts = {witnesses_.size(), Count(rule.antecedent), Count(rule.consequent), Count(itemset)};
      if (static_cast<float>(rule.counts.both) / static_cast<float>(rule.counts.antecedent) >=
          request_.run.min_confidence) {
        rules.push_back(rule);
      }
    }
  }
  std::vector<PlainRule> Confident() {
    std::vector<PlainRule> rules;
    Extend({}, rules);
    return rules;
  }

  static double Lift(const PlainRule& rule) {
    return rule.Confidence() * static_cast<double>(rule.counts.rows) /
           static_cast<double>(rule.counts.consequent);
  }
  bool Improves(const PlainRule& rule) {
    const std::vector<NodeNumber> items(rule.antecedent.begin(), rule.antecedent.end());
    for (unsigned part = 0; part + 1 < 1U << items.size(); ++part) {
      PlainSet fewer;
      for (std::size_t i = 0; i < items.size(); ++i) {
        if ((part >> i & 1U) != 0) fewer.insert(items[i]);
      }
      PlainSet both = fewer;
      both.insert(rule.consequent.begin(), rule.consequent.end());
      const double of =
          fewer.empty() ? static_cast<double>(witnesses_.size()) : static_cast<double>(Count(fewer));
      if (rule.Confidence() - static_cast<double>(Count(both)) / of <
          *request_.choices.selection.improvement - 1e-12) {
        return false;
      }
    }
    return true;
  }
  static void KeepHolm(std::vector<PlainRule>& rules, double level) {
    std::vector<double> values;
    for (const PlainRule& rule : rules) values.push_back(LogFisher(rule.counts));
    std::sort(values.begin(), values.end());
    std::size_t kept = 0;
    while (kept < values.size() &&
           values[kept] <= std::log(level) + std::log(1 / static_cast<double>(values.size() - kept))) {
      ++kept;
    }
    std::erase_if(
        rules, [&](const PlainRule& rule) { return kept == 0 || LogFisher(rule.counts) > values[kept - 1]; });
  }

  bool IsSpecific(const PlainSet& items) {
    const std::set<std::size_t> holding = RowsOf(items, false);
    const std::set<std::size_t> supporting = RowsOf(items, Distinct());
    const auto enough = [this](const std::set<std::size_t>& rows, const std::set<std::size_t>& of) {
      std::size_t common = 0;
      for (const std::size_t row : rows) common += of.count(row);
      return static_cast<double>(common) >=
             *request_.choices.selection.specific * static_cast<double>(of.size()) - 1e-9;
    };
    for (const NodeNumber item : items) {
      for (const NodeNumber special : items_) {
        if (!above_.at(special).contains(item)) continue;
        PlainSet replaced = items;
        replaced.erase(item);
        PlainSet with_both = items;
        with_both.insert(special);
        replaced.insert(special);
        if (enough(RowsOf(with_both, false), holding)) return false;
        if (enough(RowsOf(replaced, Distinct()), supporting)) return false;
      }
    }
    return true;
  }

  // Pairs the items of a side with those of a more general one in every way.
  void Pair(std::vector<NodeNumber> special, const std::vector<NodeNumber>& general, double& least_share,
            bool& any) {
    std::sort(special.begin(), special.end());
    do {
      double share = 1;
      bool fits = true;
      for (std::size_t i = 0; i < special.size() && fits; ++i) {
        fits = special[i] == general[i] || above_.at(special[i]).contains(general[i]);
        if (fits)
          share *= static_cast<double>(Count({special[i]})) / static_cast<double>(Count({general[i]}));
      }
      if (fits) {
        least_share = any ? std::max(least_share, share) : share;
        any = true;
      }
    } while (std::next_permutation(special.begin(), special.end()));
  }
  bool IsInteresting(const PlainRule& rule, const PlainRule& general, double factor) {
    const auto list = [](const PlainSet& side) { return std::vector<NodeNumber>(side.begin(), side.end()); };
    if (rule.antecedent.size() != general.antecedent.size() ||
        rule.consequent.size() != general.consequent.size())
      return true;
    double left = 0;
    double right = 0;
    bool any_left = false;
    bool any_right = false;
    Pair(list(rule.antecedent), list(general.antecedent), left, any_left);
    Pair(list(rule.consequent), list(general.consequent), right, any_right);
    if (!any_left || !any_right) return true;
    return static_cast<double>(rule.counts.both) >=
               factor * static_cast<double>(general.counts.both) * left * right - 1e-9 ||
           rule.Confidence() >= factor * general.Confidence() * right - 1e-12;
  }
  void KeepInteresting(std::vector<PlainRule>& rules, double factor) {
    const auto depth = [this](const PlainRule& rule) {
      std::size_t sum = 0;
      for (const NodeNumber item : rule.Items()) sum += Depth(item);
      return sum;
    };
    std::stable_sort(rules.begin(), rules.end(),
                     [&](const PlainRule& a, const PlainRule& b) { return depth(a) < depth(b); });
    std::vector<PlainRule> kept;
    for (const PlainRule& rule : rules) {
      if (std::all_of(kept.begin(), kept.end(),
                      [&](const PlainRule& general) { return IsInteresting(rule, general, factor); })) {
        kept.push_back(rule);
      }
    }
    rules = kept;
  }

  const AprioriRequest& request_;
  std::vector<TaxonomyNode> nodes_;
  PlainSet items_;
  std::map<NodeNumber, PlainSet> above_;
  std::vector<std::map<NodeNumber, std::set<std::string>>> witnesses_;  // by row and item, the terms
  std::map<PlainSet, std::uint64_t> counts_;
};

}  // namespace selvane
