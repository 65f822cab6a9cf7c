// Deleting branches from the working taxonomy.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "base/progress.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Deletes from `Taxonomy`, all or nothing. Upward: the node and everything whose code occurs in the node's
// code. Downward: everything whose code holds the node's code, and the node's term from its parent's SON
// columns. Both are plain substring tests: C.2 also goes with C.23. A number that is not in `Taxonomy` (any
// more) is passed over. Throws DatabaseError.
void PruneTaxonomy(TaxonomyStore& store, std::span<const NodeNumber> upward,
                   std::span<const NodeNumber> downward, Progress& progress);

// The code under which a table has the position that a user names, as C.23.888 or as C23.888; nothing when it
// has neither.
std::optional<std::string> FindPosition(const TaxonomyTable& table, std::string_view code);

}  // namespace selvane
