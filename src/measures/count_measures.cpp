#include "measures/count_measures.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "base/text.h"
#include "measures/fisher.h"
#include "measures/measures.h"
#include "measures/ratings.h"

namespace selvane {

namespace {

constexpr std::array<MeasureInfo, 22> kMeasures = {{
    {Measure::kCount, "count", "b", "0..n", ""},
    {Measure::kSupport, "support", "b / n", "0..1", "Agrawal, Imielinski and Swami 1993"},
    {Measure::kConfidence, "confidence", "b / a", "0..1", "Agrawal, Imielinski and Swami 1993"},
    {Measure::kCoverage, "coverage", "a / n", "0..1", ""},
    {Measure::kLift, "lift", "P / (PA PC)", "0..n, 1 when independent",
     "Brin, Motwani, Ullman and Tsur 1997"},
    {Measure::kLeverage, "leverage", "P - PA PC", "-0.25..0.25", "Piatetsky-Shapiro 1991"},
    {Measure::kConviction, "conviction", "(1 - PC) / (1 - confidence)", "0 and above",
     "Brin, Motwani, Ullman and Tsur 1997"},
    {Measure::kCosine, "cosine", "b / sqrt(a c)", "0..1", "Tan, Kumar and Srivastava 2002"},
    {Measure::kJaccard, "jaccard", "b / (a + c - b)", "0..1", "Jaccard 1901"},
    {Measure::kKulczynski, "kulczynski", "(b/a + b/c) / 2", "0..1", "Kulczynski 1927"},
    {Measure::kOddsRatio, "odds_ratio", "b (n-a-c+b) / ((a-b) (c-b))", "0 and above, 1 when independent",
     "Cornfield 1951"},
    {Measure::kOddsRatioLow, "odds_low", "lower end of the 95 % interval of the odds ratio", "0 and above",
     "Woolf 1955"},
    {Measure::kOddsRatioHigh, "odds_high", "upper end of the same", "0 and above", "Woolf 1955"},
    {Measure::kPhi, "phi", "(P - PA PC) / sqrt(PA PC (1-PA) (1-PC))", "-1..1", "Pearson 1904"},
    {Measure::kCertaintyFactor, "certainty", "(confidence - PC) / (1 - PC) above independence, / PC below it",
     "-1..1", "Shortliffe and Buchanan 1975"},
    {Measure::kImbalanceRatio, "imbalance", "|a - c| / (a + c - b)", "0..1", "Wu, Chen and Han 2010"},
    {Measure::kInformationGain, "information_gain", "mutual information of the sides, in bits", "0..1",
     "Quinlan 1986"},
    {Measure::kChiSquared, "chi_squared", "n phi^2", "0..n", "Pearson 1900"},
    {Measure::kFisher, "p", "Fisher's exact test, one-sided: P(at least b rows)", "0..1", "Fisher 1934"},
    {Measure::kStandardisedLift, "standardised_lift",
     "(lift - least) / (greatest - least lift that PA and PC allow)", "0..1",
     "McNicholas, Murphy and O'Regan 2008"},
    {Measure::kDependency, "dependency", "the rating filter's dependency at threshold 0.5", "0..1", ""},
    {Measure::kSurprise, "surprise", "(2 P - PA) / PC", "-n..n", ""},
}};

// The counts as numbers to compute with.
struct Shares {
  explicit Shares(const RuleCounts& counts)
      : n(static_cast<double>(counts.rows)),
        a(static_cast<double>(counts.antecedent)),
        c(static_cast<double>(counts.consequent)),
        b(static_cast<double>(counts.both)) {}
  double n, a, c, b;
  double only_a() const { return a - b; }
  double only_c() const { return c - b; }
  double neither() const { return n - a - c + b; }
  RuleFigures figures() const {
    return {.support = b / n, .confidence = b / a, .antecedent = a / n, .consequent = c / n};
  }
  // Of probabilities, the same as the difference of the products of the cells, without a rounded difference.
  double determinant() const { return b * n - a * c; }
};

double OddsRatio(const Shares& s) {
  if (s.neither() < 0) return std::nan("");
  return s.b * s.neither() / (s.only_a() * s.only_c());
}

// The end of the interval in the direction of `sign`: the logarithm of the odds ratio is nearly normal with
// this error. Beside an empty cell it is not, and there is no interval.
double OddsRatioEnd(const Shares& s, double sign) {
  constexpr double kNormal95 = 1.959963984540054;
  const double error = std::sqrt(1 / s.b + 1 / s.only_a() + 1 / s.only_c() + 1 / s.neither());
  if (!std::isfinite(error)) return std::nan("");
  return std::exp(std::log(OddsRatio(s)) + sign * kNormal95 * error);
}

double Phi(const Shares& s) {
  return s.determinant() / std::sqrt(s.a * s.c * (s.n - s.a) * (s.n - s.c));
}

double CertaintyFactor(const Shares& s) {
  const double difference = s.b / s.a - s.c / s.n;
  if (difference == 0) return 0;
  return difference > 0 ? difference / (1 - s.c / s.n) : difference / (s.c / s.n);
}

double InformationGain(const Shares& s) {
  if (s.neither() < 0) return std::nan("");
  const auto part = [&s](double cell, double row, double column) {
    return cell == 0 ? 0 : cell / s.n * std::log2(cell * s.n / (row * column));
  };
  const double sum = part(s.b, s.a, s.c) + part(s.only_a(), s.a, s.n - s.c) +
                     part(s.only_c(), s.n - s.a, s.c) + part(s.neither(), s.n - s.a, s.n - s.c);
  return std::max(0.0, sum);
}

// A rule is at least in one row, which raises the least lift where the sides need not overlap.
double StandardisedLift(const Shares& s) {
  const double scale = s.n / (s.a * s.c);
  const double least = std::max(s.a + s.c - s.n, 1.0) * scale;
  const double greatest = std::min(s.a, s.c) * scale;
  return greatest == least ? 1 : std::max(0.0, (s.b * scale - least) / (greatest - least));
}

double Compute(Measure measure, const Shares& s, const RuleCounts& counts) {
  const auto none = std::nan("");
  const SideProbabilities<double> p = {s.b / s.n, s.a / s.n, s.c / s.n};
  switch (measure) {
    case Measure::kCount:
      return s.b;
    case Measure::kSupport:
      return s.b / s.n;
    case Measure::kConfidence:
      return s.b / s.a;
    case Measure::kCoverage:
      return s.a / s.n;
    case Measure::kLift:
      return s.b * s.n / (s.a * s.c);
    case Measure::kLeverage:
      return s.determinant() / (s.n * s.n);
    case Measure::kConviction:
      return Conviction(s.figures()).value_or(none);
    case Measure::kCosine:
      return s.b / std::sqrt(s.a * s.c);
    case Measure::kJaccard:
      return s.b / (s.a + s.c - s.b);
    case Measure::kKulczynski:
      return (s.b / s.a + s.b / s.c) / 2;
    case Measure::kOddsRatio:
      return OddsRatio(s);
    case Measure::kOddsRatioLow:
      return OddsRatioEnd(s, -1);
    case Measure::kOddsRatioHigh:
      return OddsRatioEnd(s, 1);
    case Measure::kPhi:
      return Phi(s);
    case Measure::kCertaintyFactor:
      return CertaintyFactor(s);
    case Measure::kImbalanceRatio:
      return std::abs(s.a - s.c) / (s.a + s.c - s.b);
    case Measure::kInformationGain:
      return InformationGain(s);
    case Measure::kChiSquared:
      return s.n * Phi(s) * Phi(s);
    case Measure::kFisher:
      return std::exp(LogFisher(counts));
    case Measure::kStandardisedLift:
      return StandardisedLift(s);
    case Measure::kDependency:
      return DependencyRating(p, 0.5).value_or(none);
    case Measure::kSurprise:
      return SurpriseRating(p);
  }
  return none;
}

}  // namespace

std::span<const MeasureInfo> AllMeasures() {
  return kMeasures;
}

const MeasureInfo& InfoOf(Measure measure) {
  return kMeasures[static_cast<std::size_t>(measure)];
}

std::optional<Measure> MeasureNamed(std::string_view name) {
  const std::string wanted = LowerCase(name);
  for (const MeasureInfo& info : kMeasures) {
    if (info.name == wanted) return info.measure;
  }
  return std::nullopt;
}

std::optional<double> ValueOf(Measure measure, const RuleCounts& counts) {
  if (counts.rows == 0 || !counts.IsPossible()) return std::nullopt;
  // Divisions by 0 give infinities and not-a-number on purpose: all of them mean that there is no value.
  const double value = Compute(measure, Shares(counts), counts);
  return std::isfinite(value) ? std::optional(value + 0.0) : std::nullopt;
}

bool IsSmallerStronger(Measure measure) {
  return measure == Measure::kFisher || measure == Measure::kImbalanceRatio;
}

}  // namespace selvane
