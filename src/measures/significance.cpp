#include "measures/significance.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace selvane {

namespace {

constexpr std::size_t kLeastToCompact = std::size_t{1} << 16;

}  // namespace

std::string_view CorrectionName(Correction correction) {
  constexpr std::array<std::string_view, 4> kNames = {"none", "bonferroni", "holm", "bh"};
  return kNames[static_cast<std::size_t>(correction)];
}

SignificanceTally::SignificanceTally(double level) : log_level_(std::log(level)) {}

void SignificanceTally::Add(double log_p) {
  ++tested_;
  if (!(log_p <= log_level_)) return;
  groups_.push_back({log_p, 1});
  // Sorted when it has doubled, so that each value is sorted a few times only.
  if (groups_.size() >= std::max(kLeastToCompact, 2 * sorted_)) Compact();
}

// Equal counts give equal values to the last bit, so rules of small tables fall into few groups.
void SignificanceTally::Compact() {
  std::sort(groups_.begin(), groups_.end(), [](const Group& a, const Group& b) { return a.log_p < b.log_p; });
  std::size_t last = 0;
  for (std::size_t i = 1; i < groups_.size(); ++i) {
    if (groups_[i].log_p == groups_[last].log_p) {
      groups_[last].tests += groups_[i].tests;
    } else {
      groups_[++last] = groups_[i];
    }
  }
  if (!groups_.empty()) groups_.resize(last + 1);
  sorted_ = groups_.size();
}

std::optional<double> SignificanceTally::GreatestSignificant(Correction correction) {
  Compact();
  const auto tests = static_cast<double>(tested_);
  std::uint64_t before = 0;
  std::optional<double> greatest;
  for (const Group& group : groups_) {
    double share = 1;
    if (correction == Correction::kBonferroni) share = 1 / tests;
    // The first of equal values has the hardest step to take, and the steps go on only while all are taken.
    if (correction == Correction::kHolm) share = 1 / static_cast<double>(tested_ - before);
    before += group.tests;
    // The last of equal values has the easiest, and one that is taken carries all smaller values with it.
    if (correction == Correction::kBenjaminiHochberg) share = static_cast<double>(before) / tests;
    if (group.log_p <= log_level_ + std::log(share)) {
      greatest = group.log_p;
    } else if (correction != Correction::kBenjaminiHochberg) {
      break;
    }
  }
  return greatest;
}

}  // namespace selvane
