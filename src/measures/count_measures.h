// All measures of a rule that its four counts give.
#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "measures/rule_counts.h"

namespace selvane {

enum class Measure {
  kCount,
  kSupport,
  kConfidence,
  kCoverage,
  kLift,
  kLeverage,
  kConviction,
  kCosine,
  kJaccard,
  kKulczynski,
  kOddsRatio,
  kOddsRatioLow,
  kOddsRatioHigh,
  kPhi,
  kCertaintyFactor,
  kImbalanceRatio,
  kInformationGain,
  kChiSquared,
  kFisher,
  kStandardisedLift,
  kDependency,
  kSurprise,
};

// What a measure is called and says. Formulas speak of n rows, of a, c and b rows with the antecedent, the
// consequent and both; of their shares PA, PC, P; and of the four cells b, a-b, c-b, n-a-c+b.
struct MeasureInfo {
  Measure measure;
  std::string_view name;  // as options, columns and expressions have it
  std::string_view formula;
  std::string_view range;
  std::string_view source;
};

// In the order of the enumeration.
std::span<const MeasureInfo> AllMeasures();
const MeasureInfo& InfoOf(Measure measure);
// The measure of this name, letter case apart; nothing when there is none.
std::optional<Measure> MeasureNamed(std::string_view name);

// The value for these counts. Nothing where the formula has none, such as a lift when no row has the
// consequent, and for counts that are not possible; never a guess.
std::optional<double> ValueOf(Measure measure, const RuleCounts& counts);

// True for measures of which a smaller value is stronger: p-values and the imbalance ratio.
bool IsSmallerStronger(Measure measure);

}  // namespace selvane
