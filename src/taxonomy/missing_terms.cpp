#include "taxonomy/missing_terms.h"

#include <algorithm>

namespace selvane {

namespace {

// A position that was just read can be absent only if its code holds a quote, which no lookup finds.
bool IsMissing(const TaxonomyTable& working, std::string_view term) {
  const std::vector<std::string> codes = working.PositionsOfTerm(term);
  return codes.empty() || std::any_of(codes.begin(), codes.end(), [&working](const std::string& code) {
           return !working.HasPosition(code);
         });
}

// Each goes to the front: terms are restored in this order, so the rows of the one missing first come last
// into `Taxonomy`, and mining numbers items by the order of rows.
void AddTermsAtPositionsOf(const TaxonomyTable& source, std::string_view term,
                           std::vector<std::string>& missing) {
  for (const std::string& code : source.PositionsOfTerm(term)) {
    for (std::string& found : source.TermsAtPosition(code)) {
      if (std::find(missing.begin(), missing.end(), found) == missing.end()) {
        missing.insert(missing.begin(), std::move(found));
      }
    }
  }
}

}  // namespace

std::vector<std::string> FindMissingTerms(const TaxonomyStore& taxonomy, std::span<const std::string> terms,
                                          Progress& progress) {
  progress.SetStatus("Checking items presence ...");
  progress.SetRange(0, static_cast<int>(terms.size()));
  progress.SetPosition(0);
  std::vector<std::string> missing;
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (IsMissing(taxonomy.working(), terms[i])) AddTermsAtPositionsOf(taxonomy.source(), terms[i], missing);
    progress.SetPosition(static_cast<int>(i));
    progress.Pulse();
  }
  return missing;
}

RestoredTerms::RestoredTerms(TaxonomyStore& taxonomy, std::vector<std::string> terms, Progress& progress)
    : terms_(std::move(terms)), change_(taxonomy.BeginChange()) {
  for (const std::string& term : terms_) {
    taxonomy.RestoreTerm(term);
    progress.Pulse();
  }
}

void RestoredTerms::Keep(const std::function<void(const std::string& term)>& tell) {
  change_.Commit();
  for (const std::string& term : terms_) {
    if (tell) tell(term);
  }
}

}  // namespace selvane
