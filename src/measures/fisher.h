// Fisher's exact test of a rule.
#pragma once

#include "measures/rule_counts.h"

namespace selvane {

// The natural logarithm of the probability that at least as many rows as counted would hold both sides if the
// sides were drawn independently, each with its number of rows: the upper tail of the hypergeometric
// distribution, one-sided. At most 0, and finite however small the probability is; the logarithm is what
// tells apart rules whose probabilities are below what a double can hold. Good to some ten digits at a
// million rows.
// The counts must be possible; where they do not fit the rows, more rows with both sides are certain. R. A.
// Fisher, Statistical Methods for Research Workers, 5th edition, 1934.
double LogFisher(const RuleCounts& counts);

}  // namespace selvane
