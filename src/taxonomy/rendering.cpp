#include "taxonomy/rendering.h"

namespace selvane {

void AppendWithAnd(std::string_view term, std::string& text) {
  text.append(term).append(" AND ");
}

void CutLastAnd(std::string& text) {
  // The last A is that of the last AND unless nothing was appended to a text that has an A. Stored rules hold
  // the two blanks that stay, and rules are compared by their texts, so neither may change.
  const std::size_t last = text.rfind('A');
  if (last != std::string::npos) text.erase(last, 3);
}

}  // namespace selvane
