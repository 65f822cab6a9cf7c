// Rates rules by their support and the probabilities of their sides.
#pragma once

#include <vector>

#include "filters/kept_rules.h"

namespace selvane {

enum class RatingViewpoint { kDependency, kSurprise };
// Standard rules are rated at most mean plus standard deviation, rare ones above it.
enum class RatingBehaviour { kStandard, kRare };

inline constexpr float kDefaultProbabilityThreshold = 0.5F;

// Ratings live as long as the filter: what one run does not rate keeps the rating of an earlier one, and 0 at
// first.
class RatingFilter {
 public:
  struct Options {
    RatingViewpoint viewpoint = RatingViewpoint::kDependency;
    // Which probabilities are great, for the dependency viewpoint; in (0, 1].
    float probability_threshold = kDefaultProbabilityThreshold;
    RatingBehaviour behaviour = RatingBehaviour::kStandard;
    float minimum_support = 0.05F;  // of the extraction, as a fraction of the rows
  };
  struct Statistics {
    float mean = 0;
    float deviation = 0;  // of the whole population
    float limit = 0;      // their sum
  };

  explicit RatingFilter(RuleNumber rules) : ratings_(static_cast<std::size_t>(rules), 0.0F) {}

  // The kept rules by decreasing rating; of equal ratings the earlier rule. With the dependency viewpoint
  // each kept rule whose rating is not above 0 gives the table's first rule in its place. `rules` must be as
  // many as the filter was made for.
  std::vector<RuleNumber> Run(const RuleList& rules, const Options& options, Progress& progress);

  const std::vector<float>& ratings() const { return ratings_; }  // of rule i at i - 1
  const Statistics& statistics() const { return statistics_; }    // of the last run

 private:
  void RateAll(const RuleList& rules, const Options& options, Progress& progress);
  void ComputeStatistics();

  std::vector<float> ratings_;
  Statistics statistics_;
};

}  // namespace selvane
