#include "selection/rule_candidates.h"

#include <algorithm>

namespace selvane {

namespace {

double Ratio(std::uint64_t part, std::uint64_t of) {
  return static_cast<double>(part) / static_cast<double>(of);
}

// Thresholds are decimal fractions: a difference of 0.01 must count as one, whatever its last bit says.
constexpr double kRounding = 1e-12;

class CandidateWalk {
 public:
  CandidateWalk(std::uint32_t row_count, const SelectionOptions& options,
                const std::function<void(const RuleCandidate&)>& visit)
      : rows_(row_count), options_(options), visit_(visit) {}

  void VisitItemset(std::span<const std::uint32_t> items, std::span<const std::uint32_t> counts) {
    // A subset is a mask with a bit for each place of an item, and `counts` has a figure for each mask. The
    // last is that of the whole itemset.
    const auto whole = static_cast<std::uint32_t>(counts.size() - 1);
    const std::uint32_t left = AllowedPart(items, options_.antecedent_items);
    const std::uint32_t right = AllowedPart(items, options_.consequent_items);
    RuleCandidate candidate{.items = items, .counts = counts, .rule = {}};
    for (std::uint32_t antecedent = 1; antecedent < whole; ++antecedent) {
      if ((antecedent & ~left) != 0 || ((whole ^ antecedent) & ~right) != 0) continue;
      candidate.antecedent = antecedent;
      candidate.rule = {rows_, counts[antecedent], counts[whole ^ antecedent], counts[whole]};
      if (Passes(candidate)) visit_(candidate);
    }
  }

  const CandidateCounts& passed() const { return passed_; }

 private:
  // The items that may stand on a side, as a subset.
  static std::uint32_t AllowedPart(std::span<const std::uint32_t> items,
                                   const std::vector<NodeNumber>& allowed) {
    if (allowed.empty()) return UINT32_MAX;
    std::uint32_t part = 0;
    for (std::size_t i = 0; i < items.size(); ++i) {
      if (std::binary_search(allowed.begin(), allowed.end(), static_cast<NodeNumber>(items[i]))) {
        part |= 1U << i;
      }
    }
    return part;
  }

  bool Passes(const RuleCandidate& candidate) {
    const RuleCounts& rule = candidate.rule;
    // As 32-bit floats, like every confidence that is compared with this threshold.
    if (!(static_cast<float>(rule.both) / static_cast<float>(rule.antecedent) >= options_.min_confidence))
      return false;
    // Counted test by test, as the user is told what each of them took away.
    ++passed_.confident;
    if (options_.min_lift &&
        Ratio(rule.both, rule.antecedent) / Ratio(rule.consequent, rows_) + kRounding < *options_.min_lift) {
      return false;
    }
    ++passed_.lifted;
    if (options_.improvement && !Improves(candidate)) return false;
    ++passed_.improving;
    return true;
  }

  // Goes through all proper subsets of the antecedent, down to the empty one, whose confidence is the
  // consequent's share of all rows.
  bool Improves(const RuleCandidate& candidate) const {
    const double most = Ratio(candidate.rule.both, candidate.rule.antecedent) - *options_.improvement;
    if (Ratio(candidate.rule.consequent, rows_) > most + kRounding) return false;
    const std::uint32_t consequent = candidate.consequent();
    for (std::uint32_t part = (candidate.antecedent - 1) & candidate.antecedent; part != 0;
         part = (part - 1) & candidate.antecedent) {
      if (Ratio(candidate.counts[part | consequent], candidate.counts[part]) > most + kRounding) return false;
    }
    return true;
  }

  std::uint64_t rows_;
  const SelectionOptions& options_;
  const std::function<void(const RuleCandidate&)>& visit_;
  CandidateCounts passed_;
};

}  // namespace

CandidateCounts ForEachCandidate(const ItemsetTrie& itemsets, std::uint32_t row_count,
                                 const SelectionOptions& options,
                                 const std::function<void(const RuleCandidate&)>& visit, Progress& progress) {
  CandidateWalk walk(row_count, options, visit);
  itemsets.ForEachWithSubsets(
      [&walk](std::span<const std::uint32_t> items, std::span<const std::uint32_t> counts) {
        walk.VisitItemset(items, counts);
      },
      progress);
  return walk.passed();
}

}  // namespace selvane
