// measures/: how much a rule tells, computed of its figures alone. Knows no rules table and no database.
#pragma once

#include <optional>

namespace selvane {

// Fractions of the rows: of those that hold both sides, the antecedent and the consequent; and the first as a
// fraction of the second.
struct RuleFigures {
  double support = 0;
  double confidence = 0;
  double antecedent = 0;
  double consequent = 0;
};

// How often the sides stand together, divided by how often they would if they knew nothing of each other.
// Nothing where no row has the consequent.
// S. Brin, R. Motwani, J. Ullman and S. Tsur, Dynamic itemset counting and implication rules for market
// basket data, 1997.
std::optional<double> Lift(const RuleFigures& figures);

// The same as a difference.
// G. Piatetsky-Shapiro, Discovery, analysis, and presentation of strong rules, 1991.
std::optional<double> Leverage(const RuleFigures& figures);

// How often the antecedent would stand without the consequent if they knew nothing of each other, divided by
// how often it does. Nothing where it never does. From the paper that lift is from.
std::optional<double> Conviction(const RuleFigures& figures);

}  // namespace selvane
