#include "measures/fisher.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace selvane {

namespace {

// Terms this much smaller than the sum no longer change it.
constexpr double kNegligible = 1e-18;

// std::lgamma writes a global sign, which threads would share; the reentrant form is not in every library.
// Stirling's series is exact to the last bit from 16 on, and smaller ones are brought there.
double LogFactorial(std::uint64_t n) {
  double x = static_cast<double>(n) + 1;
  double product = 1;
  while (x < 16) product *= x++;
  constexpr double kHalfLogTwoPi = 0.91893853320467274178;
  const double inverse = 1 / x;
  const double square = inverse * inverse;
  const double series =
      inverse * (1.0 / 12 - square * (1.0 / 360 - square * (1.0 / 1260 - square * (1.0 / 1680))));
  return (x - 0.5) * std::log(x) - x + kHalfLogTwoPi + series - std::log(product);
}

double LogChoose(std::uint64_t n, std::uint64_t k) {
  return LogFactorial(n) - LogFactorial(k) - LogFactorial(n - k);
}

// The logarithm of the probability of exactly this many rows with both sides.
double LogPoint(const RuleCounts& counts, std::uint64_t both) {
  return LogChoose(counts.consequent, both) +
         LogChoose(counts.rows - counts.consequent, counts.antecedent - both) -
         LogChoose(counts.rows, counts.antecedent);
}

// The sum of the probabilities from `both` upwards, as a multiple of that of `both`.
double UpperSum(const RuleCounts& counts) {
  const std::uint64_t most = std::min(counts.antecedent, counts.consequent);
  double sum = 1;
  double term = 1;
  for (std::uint64_t k = counts.both; k < most && term > sum * kNegligible; ++k) {
    term *= static_cast<double>(counts.consequent - k) * static_cast<double>(counts.antecedent - k) /
            (static_cast<double>(k + 1) *
             static_cast<double>(counts.rows - counts.consequent - counts.antecedent + k + 1));
    sum += term;
  }
  return sum;
}

// The sum of the probabilities below `both`, as a multiple of that of `both`.
double LowerSum(const RuleCounts& counts) {
  const std::uint64_t taken = counts.antecedent + counts.consequent;
  const std::uint64_t least = taken > counts.rows ? taken - counts.rows : 0;
  double sum = 0;
  double term = 1;
  for (std::uint64_t k = counts.both; k > least && term > sum * kNegligible; --k) {
    term *= static_cast<double>(k) * static_cast<double>(counts.rows + k - taken) /
            (static_cast<double>(counts.consequent - k + 1) * static_cast<double>(counts.antecedent - k + 1));
    sum += term;
  }
  return sum;
}

}  // namespace

double LogFisher(const RuleCounts& rule) {
  // The test does not know left from right; a rule and its mirror get one value to the last bit.
  RuleCounts counts = rule;
  if (counts.antecedent > counts.consequent) std::swap(counts.antecedent, counts.consequent);
  if (counts.rows == 0 || !counts.FitRows()) return 0;
  const double point = LogPoint(counts, counts.both);
  const double expected = static_cast<double>(counts.antecedent) * static_cast<double>(counts.consequent) /
                          static_cast<double>(counts.rows);
  // From the middle outwards terms only fall, so either tail is short to sum on its own side of it; below the
  // middle the probability is near 1 and loses nothing by being told as the rest.
  if (static_cast<double>(counts.both) > expected) return std::min(0.0, point + std::log(UpperSum(counts)));
  const double lower = std::exp(point) * LowerSum(counts);
  return std::log1p(-std::min(lower, 1 - 1e-16));
}

}  // namespace selvane
