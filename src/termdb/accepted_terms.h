// The terms that count for a term table.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Gives terms their numbers, from 0 on in the order in which they are met: those that the working taxonomy
// knows at positions whose categories are all there. The taxonomy is asked once for each.
class AcceptedTerms {
 public:
  static constexpr std::uint32_t kRejected = UINT32_MAX;

  // The taxonomy must outlive it.
  explicit AcceptedTerms(const TaxonomyStore& taxonomy) : taxonomy_(taxonomy) {}

  // kRejected for a term that does not count. Throws DatabaseError.
  std::uint32_t NumberOf(std::string_view term);
  // By their numbers.
  const std::vector<std::string>& terms() const { return terms_; }

 private:
  bool IsAccepted(std::string_view term);

  const TaxonomyStore& taxonomy_;
  std::vector<std::string> terms_;
  TextMap<std::uint32_t> numbers_;
  TextMap<bool> categories_;  // whether they are there
};

}  // namespace selvane
