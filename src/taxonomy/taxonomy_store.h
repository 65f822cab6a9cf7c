// The taxonomy database: which term generalizes which.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "data/database.h"
#include "data/transaction_source.h"

namespace selvane {

// A node's number, the `Index` column.
using NodeNumber = std::int32_t;
// The ids of the rows that hold an item, each once, in the order in which they were met.
using TidList = std::vector<std::uint32_t>;

// A taxonomy database, opened exclusively and writable. A node is a row of `Taxonomy`: its number, its
// position code (the column `FatherId`, in spite of its name) and its term (the column `Canonical`). `Source`
// holds the taxonomy as it was loaded, `Taxonomy` what pruning has left of it. One term may stand at several
// positions.
//
// Single quotes in texts become blanks before any lookup. Every failure is a DatabaseError.
class TaxonomyStore {
 public:
  struct Node {
    NodeNumber number;
    std::string code;
    std::string term;
  };

  // Makes a new, empty taxonomy database, with room for this many children a node, and closes it.
  static void Create(const std::filesystem::path& path, int son_columns = 0);
  // The fields of every table but the SON columns, and the description of a SON column.
  static std::vector<Field> NodeFields();
  static Field SonField(int number);
  // The names that lookups over any table use, by number; empty for another number.
  static std::string_view FieldName(int number);
  static std::string_view TableName(int number);

  // Opens an existing one.
  explicit TaxonomyStore(const std::filesystem::path& path);

  // The greatest number in `Taxonomy` when the store was opened, 0 for an empty table.
  NodeNumber largest_index() const { return largest_index_; }
  // One mark a node for callers to use, of the numbers 1..largest_index(), all false at first. Another number
  // is never marked.
  bool IsMarked(NodeNumber node) const;
  void Mark(NodeNumber node, bool marked);
  // A number greater than every antecedent or consequent size: where a search for the smallest may start.
  std::int32_t SpecificityBound() const;

  // Lookups over `Taxonomy`.
  // Nothing when there is no such node; a node without a term has an empty one.
  std::optional<std::string> FindTerm(NodeNumber node) const;
  // Fails when there is no such node.
  std::string PositionOf(NodeNumber node) const;
  std::vector<NodeNumber> NodesOfTerm(std::string_view term) const;
  std::vector<std::string> PositionsOfTerm(std::string_view term) const;
  std::vector<NodeNumber> NodesAtPosition(std::string_view code) const;
  bool HasTerm(std::string_view term) const;
  bool HasPosition(std::string_view code) const;
  void ForEachNode(const std::function<void(const Node&)>& visit) const;
  void ForEachSourceNode(const std::function<void(const Node&)>& visit) const;
  // The children that the node's SON columns name: a term that stands twice below the node is named twice and
  // found twice each time.
  std::vector<Node> Children(NodeNumber node) const;
  // The names of the taxonomies in use: the terms of the nodes of one letter, in row order.
  std::vector<std::string> TaxonomiesInUse() const;

  // Lookups over `Source`. Both texts are empty when there is no such node.
  Node SourceNode(NodeNumber node) const;
  bool SourceHasPosition(std::string_view code) const;
  // The greatest number of a node whose code occurs anywhere in the text, 0 when there is none.
  NodeNumber LargestNodeNamedIn(std::string_view text) const;
  // True when `Taxonomy` lacks the term, as pruning leaves it.
  bool IsMissing(std::string_view term) const;
  // The terms that `Source` has at the positions of the term.
  std::vector<std::string> SourceTermsAtPositionsOf(std::string_view term) const;

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

  // Whether the file has a table `TaxonomyOrnex`, which other programs make; and a walk over its rows. The
  // number is a text that may be anything.
  bool HasOrnex() const;
  using VisitOrnexNode = std::function<void(const std::string& number, std::string code, std::string term)>;
  void ForEachOrnexNode(const VisitOrnexNode& visit) const;

  // Appends the terms of the nodes to `text`, each followed by " AND ". Unknown nodes are left out.
  void RenderWithAnd(std::span<const NodeNumber> nodes, std::string& text) const;
  // The same, then deletes three characters at the last capital A: the last AND goes and its two blanks stay.
  void Render(std::span<const NodeNumber> nodes, std::string& text) const;
  // The same by position codes, over the table `TaxonomyOrnex`; collects the numbers too.
  void RenderOrnex(std::span<const std::string> codes, std::string& text,
                   std::vector<NodeNumber>& numbers) const;

  // Empties `Taxonomy` and fills it from `Source`, each row up to its first empty value.
  void Rebuild(Progress& progress);
  // The same in one statement, for a `Source` in which no row has a value behind an empty one.
  void CopyWholeSource(Progress& progress);
  // Brings everything at and below the positions of a term back into `Taxonomy`. Codes are compared as texts:
  // C.2 also brings back C.23.
  void RestoreTerm(std::string_view term);

  const std::filesystem::path& path() const { return database_.path(); }
  // The open file, for loading and pruning.
  Database& database() { return database_; }

 private:
  Recordset Select(std::string_view sql, std::string_view value) const;
  std::vector<NodeNumber> Numbers(std::string_view sql, std::string_view value) const;
  std::vector<std::string> Texts(std::string_view sql, std::string_view value) const;
  NodeNumber FindLargestIndex() const;
  void SetInsertQuery(std::string_view statement);

  mutable Database database_;
  NodeNumber largest_index_ = 0;
  std::vector<char> marks_;
};

// Deletes three characters at the last capital A, so that "Asthma AND Fever AND " keeps its two blanks only.
void CutLastAnd(std::string& text);

}  // namespace selvane
