// The two ratings of the rating filter, for its 32-bit figures and for counts alike.
#pragma once

#include <cmath>
#include <optional>

namespace selvane {

// Probabilities of both sides together, of the antecedent and of the consequent.
template <typename Real>
struct SideProbabilities {
  Real support;
  Real antecedent;
  Real consequent;
};

// How surprising the rule is. The consequent's probability must be above 0.
template <typename Real>
Real SurpriseRating(const SideProbabilities<Real>& p) {
  return (2 * p.support - p.antecedent) / p.consequent;
}

// How far the consequent depends on the antecedent: the deviation of the rule's confidence from the
// consequent's probability, weighted by how probable the sides are; `threshold` says which probabilities are
// great. Nothing for probabilities that compare with nothing.
template <typename Real>
std::optional<Real> DependencyRating(const SideProbabilities<Real>& p, Real threshold) {
  const Real a = p.antecedent;
  const Real c = p.consequent;
  const Real deviation = a > 0 ? std::abs(p.support / a - c) : 0;
  const Real weighted = deviation * a;
  const Real normalised = c == 1 ? 0 : deviation / (1 - c);
  if (a >= threshold && c < threshold) return weighted;
  if (c >= threshold && a < threshold) return normalised;
  if (c < threshold && a < threshold) return deviation;
  if (c >= threshold && a >= threshold) return (normalised + weighted) * static_cast<Real>(0.5);
  return std::nullopt;
}

}  // namespace selvane
