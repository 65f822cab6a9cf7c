#include "measures/measures.h"

#include <cmath>

namespace selvane {

namespace {

// Damaged tables hold figures that are no numbers; so would be what is computed of them.
std::optional<double> IfNumber(double value) {
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<double> Lift(const RuleFigures& figures) {
  if (!(figures.consequent > 0)) return std::nullopt;
  return IfNumber(figures.confidence / figures.consequent);
}

std::optional<double> Leverage(const RuleFigures& figures) {
  return IfNumber(figures.support - figures.antecedent * figures.consequent);
}

std::optional<double> Conviction(const RuleFigures& figures) {
  return IfNumber((1 - figures.consequent) / (1 - figures.confidence));
}

}  // namespace selvane
