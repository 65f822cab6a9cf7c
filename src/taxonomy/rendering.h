// How an itemset is written as text: its terms, each with an AND behind it.
#pragma once

#include <string>
#include <string_view>

namespace selvane {

// Appends the term and " AND ".
void AppendWithAnd(std::string_view term, std::string& text);

// Deletes three characters at the last capital A, so that "Asthma AND Fever AND " keeps its two blanks only.
void CutLastAnd(std::string& text);

}  // namespace selvane
