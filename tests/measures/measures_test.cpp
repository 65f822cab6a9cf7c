#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "measures/count_measures.h"
#include "measures/fisher.h"
#include "measures/significance.h"

namespace selvane {

namespace {

// Products of plain factors: no logarithms, no cancelling.
long double Choose(std::uint64_t n, std::uint64_t k) {
  long double result = 1;
  for (std::uint64_t i = 1; i <= k; ++i)
    result = result * static_cast<long double>(n - k + i) / static_cast<long double>(i);
  return result;
}

long double PlainTail(const RuleCounts& counts) {
  long double sum = 0;
  for (std::uint64_t k = counts.both; k <= std::min(counts.antecedent, counts.consequent); ++k) {
    sum += Choose(counts.consequent, k) * Choose(counts.rows - counts.consequent, counts.antecedent - k);
  }
  return sum / Choose(counts.rows, counts.antecedent);
}

TEST(FisherTest, IsTheTailOfTheHypergeometricDistribution) {
  std::mt19937 random(3);
  for (int i = 0; i < 2000; ++i) {
    const std::uint64_t n = 1 + random() % 60;
    const std::uint64_t a = random() % (n + 1);
    const std::uint64_t c = random() % (n + 1);
    const std::uint64_t least = a + c > n ? a + c - n : 0;
    const RuleCounts counts = {n, a, c, least + random() % (std::min(a, c) - least + 1)};
    const auto plain = static_cast<double>(std::log(PlainTail(counts)));
    EXPECT_NEAR(LogFisher(counts), plain, 1e-9 * std::max(1.0, -plain)) << n << ' ' << a << ' ' << c;
  }
}

// Where all rows of the one side are those of the other, the tail is one term: 1 of all choices of rows.
TEST(FisherTest, IsExactFarIntoTheTail) {
  for (const auto& [n, a] : {std::pair<std::uint64_t, std::uint64_t>{1000, 400}, {1'000'000, 5000}}) {
    double log_choices = 0;
    for (std::uint64_t i = 1; i <= a; ++i)
      log_choices += std::log(static_cast<double>(n - a + i) / static_cast<double>(i));
    EXPECT_NEAR(LogFisher({n, a, a, a}) / -log_choices, 1, 1e-11);
  }
}

TEST(CountMeasuresTest, HaveTheValuesOfTheirFormulas) {
  const RuleCounts counts = {100, 20, 30, 15};
  const std::pair<const char*, double> wanted[] = {
      {"count", 15},
      {"support", 0.15},
      {"confidence", 0.75},
      {"coverage", 0.2},
      {"lift", 2.5},
      {"leverage", 0.09},
      {"conviction", 2.8},
      {"cosine", 15 / std::sqrt(600.0)},
      {"jaccard", 15.0 / 35},
      {"kulczynski", 0.625},
      {"odds_ratio", 13},
      {"odds_low", 13 * std::exp(-1.959963984540054 * std::sqrt(1.0 / 15 + 1.0 / 5 + 1.0 / 15 + 1.0 / 65))},
      {"odds_high", 13 * std::exp(1.959963984540054 * std::sqrt(1.0 / 15 + 1.0 / 5 + 1.0 / 15 + 1.0 / 65))},
      {"phi", 0.09 / std::sqrt(0.2 * 0.3 * 0.8 * 0.7)},
      {"certainty", 0.45 / 0.7},
      {"imbalance", 10.0 / 35},
      // Entropy of the consequent, less what is left of it on either side of the antecedent.
      {"information_gain", -(0.3 * std::log2(0.3) + 0.7 * std::log2(0.7)) +
                               0.2 * (0.75 * std::log2(0.75) + 0.25 * std::log2(0.25)) +
                               0.8 * (0.1875 * std::log2(0.1875) + 0.8125 * std::log2(0.8125))},
      {"chi_squared", 100 * 0.0081 / 0.0336},
      {"p", static_cast<double>(PlainTail(counts))},
      {"standardised_lift", (2.5 - 100.0 / 600) / (20 * 100.0 / 600 - 100.0 / 600)},
      {"dependency", 0.45},
      {"surprise", 1.0 / 3},
  };
  ASSERT_EQ(std::size(wanted), AllMeasures().size());
  for (std::size_t i = 0; i < std::size(wanted); ++i) {
    const MeasureInfo& info = AllMeasures()[i];
    EXPECT_EQ(info.name, wanted[i].first);
    EXPECT_EQ(static_cast<std::size_t>(info.measure), i);
    ASSERT_TRUE(ValueOf(info.measure, counts)) << info.name;
    EXPECT_NEAR(*ValueOf(info.measure, counts), wanted[i].second, 1e-12) << info.name;
  }
  EXPECT_NEAR(*ValueOf(Measure::kCertaintyFactor, {100, 20, 30, 3}), -0.5, 1e-12);
  EXPECT_EQ(MeasureNamed("Odds_Ratio"), Measure::kOddsRatio);
  EXPECT_EQ(MeasureNamed("odds"), std::nullopt);
}

TEST(CountMeasuresTest, AreEmptyRatherThanWrong) {
  const auto empty = [](Measure measure, const RuleCounts& counts) { return !ValueOf(measure, counts); };
  EXPECT_TRUE(empty(Measure::kConviction, {10, 4, 5, 4}));  // confidence 1
  EXPECT_TRUE(empty(Measure::kOddsRatio, {10, 4, 5, 4}));
  EXPECT_TRUE(empty(Measure::kOddsRatioLow, {10, 4, 5, 0}));
  EXPECT_TRUE(empty(Measure::kLift, {10, 4, 0, 0}));
  EXPECT_TRUE(empty(Measure::kPhi, {10, 10, 5, 5}));
  // Sides that overlap in rows which do not count for both.
  EXPECT_TRUE(empty(Measure::kOddsRatio, {10, 8, 8, 5}));
  EXPECT_TRUE(empty(Measure::kInformationGain, {10, 8, 8, 5}));
  EXPECT_EQ(*ValueOf(Measure::kFisher, {10, 8, 8, 5}), 1);
  for (const MeasureInfo& info : AllMeasures()) {
    EXPECT_TRUE(empty(info.measure, {})) << info.name;
    EXPECT_TRUE(empty(info.measure, {10, 4, 5, 6})) << info.name;
  }
}

// Each correction as its paper has it, one value at a time.
std::size_t PlainSignificant(std::vector<double> values, double level, Correction correction) {
  std::sort(values.begin(), values.end());
  const auto m = static_cast<double>(values.size());
  std::size_t significant = 0;
  for (std::size_t i = 0; i < values.size(); ++i) {
    const auto rank = static_cast<double>(i + 1);
    const double bound = correction == Correction::kNone         ? level
                         : correction == Correction::kBonferroni ? level / m
                         : correction == Correction::kHolm       ? level / (m - rank + 1)
                                                                 : level * rank / m;
    if (values[i] <= bound) {
      significant = i + 1;
    } else if (correction == Correction::kHolm) {
      break;
    }
  }
  return significant;
}

TEST(SignificanceTest, CorrectsAsThePlainProcedures) {
  std::mt19937 random(5);
  for (int i = 0; i < 400; ++i) {
    std::vector<double> values;
    SignificanceTally tally(0.05);
    for (auto count = random() % 200; count > 0; --count) {
      values.push_back(std::pow(0.71, static_cast<double>(random() % 40)) * 0.9);
      tally.Add(std::log(values.back()));
    }
    for (const Correction correction :
         {Correction::kNone, Correction::kBonferroni, Correction::kHolm, Correction::kBenjaminiHochberg}) {
      const std::optional<double> greatest = tally.GreatestSignificant(correction);
      const auto significant = std::count_if(values.begin(), values.end(),
                                             [&](double p) { return greatest && std::log(p) <= *greatest; });
      EXPECT_EQ(static_cast<std::size_t>(significant), PlainSignificant(values, 0.05, correction));
    }
  }
}

}  // namespace

}  // namespace selvane
