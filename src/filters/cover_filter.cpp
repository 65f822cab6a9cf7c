#include "filters/cover_filter.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <map>
#include <queue>

#include "filters/mean_linkage.h"

namespace selvane {

namespace {

// Rows in `rows` and not in `covered`.
std::uint32_t CountNew(std::span<const RowWord> rows, std::span<const RowWord> covered) {
  std::uint32_t count = 0;
  for (std::size_t word = 0; word < rows.size(); ++word) {
    count += static_cast<std::uint32_t>(std::popcount(rows[word] & ~covered[word]));
  }
  return count;
}

// A rule with the rows that it added when this was last counted; it cannot add more now.
struct Candidate {
  std::uint32_t adds;
  RuleNumber rule;
  // Of rules that add as many rows the earlier one is better.
  bool operator<(const Candidate& other) const {
    return adds != other.adds ? adds < other.adds : rule > other.rule;
  }
};

}  // namespace

CoverFilter::CoverFilter(const RuleList& rules, const ItemRegistry& items) : rules_(rules), items_(items) {
  for (std::size_t set = 0; set < items.frequent.size(); ++set)
    places_.emplace(items.nodes[items.frequent[set]], set);
}

bool CoverFilter::MatchedRows(const Rule& rule, std::vector<RowWord>& rows) const {
  bool first = true;
  for (const NodeNumber item : rule.antecedent) {
    const auto place = places_.find(item);
    if (place == places_.end()) return false;
    const RowWord* const bits = items_.rows[place->second];
    if (first) {
      rows.assign(bits, bits + items_.rows.words());
      first = false;
    } else {
      operations_.store_and(rows.data(), bits, rows.data(), items_.rows.words());
    }
  }
  return !first;
}

CoverFilter::Cover CoverFilter::CoverOf(std::span<const RuleNumber> group) const {
  Cover cover;
  cover.consequent = rules_[group.front()].consequent;
  cover.of = static_cast<RuleNumber>(group.size());
  std::vector<RowWord> covered(items_.rows.words(), 0);
  std::vector<RowWord> rows;
  std::priority_queue<Candidate> candidates;
  for (const RuleNumber rule : group) {
    if (MatchedRows(rules_[rule], rows)) candidates.push({CountNew(rows, covered), rule});
  }
  // The covered rows only grow, so what a rule adds can only fall, and the counts in the queue are never too
  // small. A rule at the top whose count is still right is therefore the best of all, and the others need not
  // be counted again. One that was counted lower goes back into the queue and comes up in its turn.
  while (!candidates.empty() && candidates.top().adds > 0) {
    const Candidate best = candidates.top();
    candidates.pop();
    MatchedRows(rules_[best.rule], rows);
    const std::uint32_t adds = CountNew(rows, covered);
    if (adds < best.adds) {
      if (adds > 0) candidates.push({adds, best.rule});
      continue;
    }
    cover.rules.push_back(best.rule);
    cover.adds.push_back(adds);
    cover.rows += adds;
    for (std::size_t word = 0; word < rows.size(); ++word) covered[word] |= rows[word];
  }
  return cover;
}

std::vector<CoverFilter::Cover> CoverFilter::Run(Progress& progress) {
  progress.SetStatus("Filtering rules with covers ...");
  progress.SetRange(0, static_cast<int>(rules_.size()));
  progress.SetPosition(0);
  std::vector<std::vector<RuleNumber>> groups;
  std::map<std::vector<NodeNumber>, std::size_t> group_of;
  // Sorted, since the order of the items of a side is that of the extraction and says nothing.
  for (RuleNumber number = 1; number <= rules_.size(); ++number) {
    std::vector<NodeNumber> consequent = rules_[number].consequent;
    std::sort(consequent.begin(), consequent.end());
    const auto [group, is_new] = group_of.emplace(std::move(consequent), groups.size());
    if (is_new) groups.emplace_back();
    groups[group->second].push_back(number);
  }
  std::vector<Cover> covers;
  std::size_t done = 0;
  for (const std::vector<RuleNumber>& group : groups) {
    Cover cover = CoverOf(group);
    if (!cover.rules.empty()) covers.push_back(std::move(cover));
    done += group.size();
    progress.SetPosition(static_cast<int>(done));
    progress.Pulse();
  }
  progress.SetStatus("Completed!!");
  return covers;
}

std::vector<std::vector<RuleNumber>> CoverFilter::Cluster(const Cover& cover, std::size_t clusters,
                                                          Progress& progress) const {
  const std::size_t count = cover.rules.size();
  const std::size_t words = items_.rows.words();
  std::vector<std::vector<RowWord>> rows(count);
  std::vector<std::uint32_t> matched(count);
  PairDistances distances(count);
  for (std::size_t i = 0; i < count; ++i) {
    MatchedRows(rules_[cover.rules[i]], rows[i]);
    matched[i] = operations_.count_and(rows[i].data(), rows[i].data(), words);
    for (std::size_t j = 0; j < i; ++j) {
      // Rows that only one of the two has: both counts less twice the common ones.
      distances(i, j) =
          matched[i] + matched[j] - 2 * operations_.count_and(rows[i].data(), rows[j].data(), words);
    }
    progress.Pulse();
  }
  std::vector<std::vector<RuleNumber>> result;
  for (const std::vector<std::size_t>& members :
       ClusterByMeanDistance(std::move(distances), clusters, progress)) {
    std::vector<RuleNumber>& cluster = result.emplace_back();
    for (const std::size_t place : members) cluster.push_back(cover.rules[place]);
  }
  return result;
}

std::string ClusteringWarning(std::span<const CoverFilter::Cover> covers) {
  constexpr std::uint64_t kMebibyte = 1 << 20;
  std::size_t rules = 0;  // one cover is clustered at a time
  for (const CoverFilter::Cover& cover : covers) rules = std::max(rules, cover.rules.size());
  const std::uint64_t bytes = PairDistances::Bytes(rules);
  if (bytes < 512 * kMebibyte) return {};
  return fmt::format("clustering the {} rules of one consequent takes {} MB of memory", rules,
                     bytes / kMebibyte);
}

std::vector<RuleNumber> RulesOf(std::span<const CoverFilter::Cover> covers) {
  std::vector<RuleNumber> rules;
  for (const CoverFilter::Cover& cover : covers) {
    rules.insert(rules.end(), cover.rules.begin(), cover.rules.end());
  }
  return rules;
}

}  // namespace selvane
