#include "termdb/accepted_terms.h"

#include <algorithm>

#include "taxonomy/position_code.h"

namespace selvane {

std::uint32_t AcceptedTerms::NumberOf(std::string_view term) {
  const auto found = numbers_.find(term);
  if (found != numbers_.end()) return found->second;
  std::uint32_t number = kRejected;
  if (IsAccepted(term)) {
    number = static_cast<std::uint32_t>(terms_.size());
    terms_.emplace_back(term);
  }
  // Refused terms are kept too: literature repeats them as often as others, and each answer costs queries.
  numbers_.emplace(std::string(term), number);
  return number;
}

bool AcceptedTerms::IsAccepted(std::string_view term) {
  const std::vector<std::string> codes = taxonomy_.working().PositionsOfTerm(term);
  // The category of every position must still be there. A term is refused as soon as one of them has gone,
  // though its other positions would count.
  return !codes.empty() && std::all_of(codes.begin(), codes.end(), [this](const std::string& code) {
    const std::string category(CategoryOf(code));
    const auto found = categories_.find(category);
    if (found != categories_.end()) return found->second;
    return categories_.emplace(category, taxonomy_.working().HasPosition(category)).first->second;
  });
}

}  // namespace selvane
