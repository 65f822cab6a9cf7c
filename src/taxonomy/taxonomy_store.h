// The taxonomy database: which term generalizes which.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "base/progress.h"
#include "data/database.h"
#include "data/pulse_scope.h"
#include "data/transaction_source.h"
#include "taxonomy/heading_tables.h"
#include "taxonomy/ornex_table.h"
#include "taxonomy/taxonomy_table.h"

namespace selvane {

// The ids of the rows that hold an item, each once, in the order in which they were met.
using TidList = std::vector<std::uint32_t>;

// A taxonomy database, opened exclusively and writable where nothing else is asked for. A node is a row of
// `Taxonomy`: its number, its position code (the column `FatherId`, in spite of its name) and its term (the
// column `Canonical`). `Source` holds the taxonomy as it was loaded, `Taxonomy` what pruning has left of it.
// One term may stand at several positions.
//
// Single quotes in texts become blanks before any lookup. Every failure is a DatabaseError.
class TaxonomyStore {
 public:
  // Makes a new, empty taxonomy database, with room for this many children a node, and closes it.
  static void Create(const std::filesystem::path& path, int son_columns = 0);
  // Opens an existing one.
  explicit TaxonomyStore(const std::filesystem::path& path, OpenMode mode = OpenMode::kWritable);
  // Lets this work be stopped while the engine is busy.
  PulseScope PulseDuring(Progress& progress) const { return {database_, progress}; }

  // The greatest number in `Taxonomy` when the store was opened, 0 for an empty table.
  NodeNumber LargestIndex() const;
  // One mark a node for callers to use, of the numbers 1..LargestIndex(), all false at first. Another number
  // is never marked.
  bool IsMarked(NodeNumber node) const { return marked_.contains(node); }
  void Mark(NodeNumber node, bool marked);
  // A number greater than every antecedent or consequent size: where a search for the smallest may start.
  std::int32_t SpecificityBound() const;

  // Lookups over `Taxonomy`, over `Source`, over `TaxonomyOrnex`, which a file may have, and over our own
  // tables of headings.
  TaxonomyTable working() const { return {database_, "Taxonomy"}; }
  TaxonomyTable source() const { return {database_, "Source"}; }
  OrnexTable ornex() const { return OrnexTable(database_); }
  HeadingTables headings() const { return HeadingTables(database_); }

  // The children that the node's SON columns name: a term that stands twice below the node is named twice and
  // found twice each time.
  std::vector<TaxonomyNode> Children(NodeNumber node) const;
  // The same, each node once.
  std::vector<TaxonomyNode> DistinctChildren(NodeNumber node) const;
  // The names of the taxonomies in use: the terms of the nodes of one letter, in row order.
  std::vector<std::string> TaxonomiesInUse() const;

  // Records a row's items: every node named like an item that is present. A number seen for the first time is
  // appended to `nodes` and to `added`; its tid-list, at the same place as in `nodes`, receives the row id
  // once.
  void RecordItems(const RowValues& row, std::span<const std::string> item_names,
                   std::vector<NodeNumber>& nodes, std::vector<NodeNumber>& added,
                   std::vector<TidList>& tid_lists) const;
  // The same for every ancestor of these nodes. A pruned level is passed over.
  void RecordAncestors(const RowValues& row, std::span<const std::string> item_names,
                       std::vector<NodeNumber>& nodes, std::vector<NodeNumber>& added,
                       std::vector<TidList>& tid_lists) const;
  // The nodes that RecordAncestors would visit for one term, in its order and as often.
  std::vector<NodeNumber> AncestorsOfTerm(std::string_view term) const;

  // Appends the terms of the nodes to `text`, each followed by " AND ", then deletes three characters at the
  // last capital A: the last AND goes and its two blanks stay. Unknown nodes are left out.
  void Render(std::span<const NodeNumber> nodes, std::string& text) const;

  // Empties `Taxonomy` and fills it from `Source`, each row up to its first empty value. Fails where `Source`
  // is empty, as nothing would be left.
  void Rebuild(Progress& progress);
  // The same in one statement, for a `Source` in which no row has a value behind an empty one.
  void CopyWholeSource(Progress& progress);
  // Makes of all changes until its end one, which is undone unless it is committed.
  Transaction BeginChange() { return Transaction(database_); }
  // Brings everything at and below the positions of a term back into `Taxonomy`. Codes are compared as texts:
  // C.2 also brings back C.23. Needs a BeginChange: what fails halfway is undone with it.
  void RestoreTerm(std::string_view term);
  // Deletes from `Taxonomy`, all or nothing. Upward: the node and everything whose code occurs in the node's
  // code. Downward: everything whose code holds the node's code, and the node's term from its parent's SON
  // columns. Both are plain substring tests: C.2 also goes with C.23. A number that is not in `Taxonomy` (any
  // more) is passed over. Returns how many nodes were deleted.
  long Prune(std::span<const NodeNumber> upward, std::span<const NodeNumber> downward, Progress& progress);

  const std::filesystem::path& path() const { return database_.path(); }

 private:
  void SetInsertQuery(std::string_view statement);
  void PruneUpward(NodeNumber node);
  void PruneDownward(NodeNumber node);
  void ForgetSon(const TaxonomyNode& node);

  mutable Database database_;  // lookups run statements, which a database counts as a change of itself
  // Found when it is first wanted, and before the store changes `Taxonomy` itself: nobody else can, the file
  // is held. So opening costs no walk over the table.
  mutable std::optional<NodeNumber> largest_index_;
  // Of few nodes: flags for all numbers up to the greatest could fill the memory.
  std::unordered_set<NodeNumber> marked_;
};

}  // namespace selvane
