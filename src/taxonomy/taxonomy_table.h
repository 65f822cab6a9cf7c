// Lookups over the nodes of a taxonomy.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "data/database.h"

namespace selvane {

// A node's number, the `Index` column.
using NodeNumber = std::int32_t;

// A node is a row: a term at one position. A term may stand at several positions, and is several nodes then.
struct TaxonomyNode {
  NodeNumber number = 0;
  std::string code;  // its position code: the column `FatherId`, in spite of its name
  std::string term;  // the column `Canonical`
};

// One of the two tables of nodes, `Taxonomy` or `Source`, as TaxonomyStore hands it out. It is a view: the
// store must outlive it. Nodes come in the order of the rows. Single quotes in texts that are looked up
// become blanks, as they did in the terms when these entered. Every failure is a DatabaseError.
class TaxonomyTable {
 public:
  using VisitNode = std::function<void(const TaxonomyNode&)>;

  TaxonomyTable(Database& database, std::string_view name) : database_(database), name_(name) {}

  // Nothing when there is no such node; a node without a term has an empty one.
  std::optional<TaxonomyNode> FindNode(NodeNumber node) const;
  std::optional<std::string> FindTerm(NodeNumber node) const;
  // Fails when there is no such node.
  std::string PositionOf(NodeNumber node) const;

  std::vector<NodeNumber> NodesOfTerm(std::string_view term) const;
  std::vector<std::string> PositionsOfTerm(std::string_view term) const;
  std::vector<NodeNumber> NodesAtPosition(std::string_view code) const;
  std::vector<std::string> TermsAtPosition(std::string_view code) const;
  bool HasTerm(std::string_view term) const;
  bool HasPosition(std::string_view code) const;
  // The code of the position that a user names, as C.23.888 or as C23.888; nothing when neither is there.
  std::optional<std::string> FindPosition(std::string_view named) const;

  long Count() const;
  void ForEachNode(const VisitNode& visit) const;
  // The node at a position and those below it, so many levels of them; all levels when that is 0, all nodes
  // when the code is empty.
  void ForEachBelow(std::string_view code, int levels, const VisitNode& visit) const;
  // The nodes of one letter, with a term or without.
  std::vector<TaxonomyNode> Categories() const;
  // The greatest number of a node whose code occurs anywhere in the text, 0 when there is none.
  NodeNumber LargestNodeNamedIn(std::string_view text) const;

 private:
  // The columns of the rows in which a column has a value.
  Recordset Select(std::string_view columns, std::string_view where, std::string_view value) const;
  // The code in a field of a row. Throws when it is too long to be one.
  std::string CodeAt(const Recordset& row, int field) const;
  std::vector<NodeNumber> Numbers(std::string_view where, std::string_view value) const;
  std::vector<std::string> Texts(std::string_view column, std::string_view where,
                                 std::string_view value) const;

  Database& database_;
  std::string_view name_;
};

}  // namespace selvane
