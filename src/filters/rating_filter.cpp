#include "filters/rating_filter.h"

#include <algorithm>
#include <cmath>

#include "measures/ratings.h"

namespace selvane {

namespace {

constexpr RuleNumber kPulseRules = 4096;

SideProbabilities<float> ProbabilitiesOf(const Rule& rule) {
  return {.support = rule.support, .antecedent = rule.pa, .consequent = rule.pc};
}

}  // namespace

void RatingFilter::RateAll(const RuleList& rules, const Options& options, Progress& progress) {
  for (RuleNumber number = 1; number <= rules.size(); ++number) {
    const Rule& rule = rules[number];
    float& rating = ratings_[static_cast<std::size_t>(number) - 1];
    if (options.viewpoint == RatingViewpoint::kDependency) {
      // Probabilities that compare with nothing leave the rating as it is.
      rating = DependencyRating(ProbabilitiesOf(rule), options.probability_threshold).value_or(rating);
    } else if (rule.pc > 0) {
      rating = SurpriseRating(ProbabilitiesOf(rule));
    }
    if (number % kPulseRules == 0) {
      progress.SetPosition(static_cast<int>(number));
      progress.Pulse();
    }
  }
  progress.SetPosition(static_cast<int>(rules.size()));
}

void RatingFilter::ComputeStatistics() {
  // Sums are doubles, as small ratings would be lost in a large sum of floats. The mean becomes a float
  // before distances are taken from it; the limit depends on that.
  const auto count = static_cast<double>(ratings_.size());
  double sum = 0;
  for (const float rating : ratings_) sum += double{rating};
  statistics_.mean = static_cast<float>(sum / count);
  double squares = 0;
  for (const float rating : ratings_) {
    const double distance = double{rating} - double{statistics_.mean};
    squares += distance * distance;
  }
  statistics_.deviation = static_cast<float>(std::sqrt(squares / count));
  statistics_.limit = statistics_.mean + statistics_.deviation;
}

std::vector<RuleNumber> RatingFilter::Run(const RuleList& rules, const Options& options, Progress& progress) {
  progress.SetStatus("Filtering rules with statistics rating ...");
  progress.SetRange(0, static_cast<int>(rules.size()));
  progress.SetPosition(0);
  RateAll(rules, options, progress);
  ComputeStatistics();
  progress.SetStatus("Ordering extracted rules ...");
  const bool rare = options.behaviour == RatingBehaviour::kRare;
  std::vector<RuleNumber> kept;
  for (std::size_t place = 0; place < ratings_.size(); ++place) {
    // Not-a-number is kept by neither.
    if (rare ? ratings_[place] > statistics_.limit : ratings_[place] <= statistics_.limit) {
      kept.push_back(static_cast<RuleNumber>(place) + 1);
    }
  }
  // The maximum is looked for from this value on. A rule rated no higher is never found, and the first rule
  // of the table stands in its place.
  const float floor =
      options.viewpoint == RatingViewpoint::kDependency ? 0 : -1 / options.minimum_support - 1;
  const auto rating = [this](RuleNumber number) { return ratings_[static_cast<std::size_t>(number) - 1]; };
  const auto found = std::stable_partition(kept.begin(), kept.end(),
                                           [&](RuleNumber number) { return rating(number) > floor; });
  std::stable_sort(kept.begin(), found, [&](RuleNumber a, RuleNumber b) { return rating(a) > rating(b); });
  std::fill(found, kept.end(), 1);
  return kept;
}

}  // namespace selvane
