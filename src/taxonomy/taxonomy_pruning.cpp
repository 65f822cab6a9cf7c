// The part of TaxonomyStore that deletes branches from `Taxonomy`.
#include <fmt/format.h>

#include "data/recordset.h"
#include "data/sql_dialect.h"
#include "taxonomy/position_code.h"
#include "taxonomy/taxonomy_schema.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

// Codes are compared as texts, not by levels: what C.2 takes along depends on it, and so do the results of
// runs over a pruned taxonomy.
void TaxonomyStore::PruneUpward(NodeNumber number) {
  const std::optional<TaxonomyNode> node = working().FindNode(number);
  if (!node) return;
  database_.Execute(
      fmt::format("DELETE * FROM Taxonomy WHERE instr({}, FatherId) > 0", SqlDialect::ValueText(node->code)));
  database_.Execute(fmt::format("DELETE * FROM Taxonomy WHERE Index='{}'", number));
}

// Empties the SON columns of the parent that name the pruned node.
void TaxonomyStore::ForgetSon(const TaxonomyNode& node) {
  // A category is looked up as its own parent: it has none, and its row goes anyway.
  const std::string parent(node.code.size() > 1 ? ParentCode(node.code) : std::string_view(node.code));
  Recordset row =
      database_.OpenEditable("SELECT * FROM Taxonomy WHERE FatherId=" + SqlDialect::ValueText(parent));
  if (row.AtEnd() || row.FieldCount() <= kFirstSonField) return;
  row.Edit();
  for (int field = kFirstSonField; field < row.FieldCount(); ++field) {
    if (!node.term.empty() && row.Text(field) == node.term) row.SetField(field, "");
  }
  row.Update();
}

void TaxonomyStore::PruneDownward(NodeNumber number) {
  const std::optional<TaxonomyNode> node = working().FindNode(number);
  if (!node) return;
  ForgetSon(*node);
  database_.Execute(
      fmt::format("DELETE * FROM Taxonomy WHERE instr(FatherId, {}) > 0", SqlDialect::ValueText(node->code)));
}

long TaxonomyStore::Prune(std::span<const NodeNumber> upward, std::span<const NodeNumber> downward,
                          Progress& progress) {
  const PulseScope pulse = PulseDuring(progress);
  progress.SetStatus("Deleting selected taxonomies...");
  progress.SetRange(0, static_cast<int>(upward.size() + downward.size()));
  progress.SetStep(1);
  progress.SetPosition(0);
  LargestIndex();
  const long before = working().Count();
  Transaction transaction(database_);
  // Each node is looked up when its turn comes: one that went with another is passed over then.
  for (const NodeNumber node : upward) {
    PruneUpward(node);
    progress.StepIt();
    progress.Pulse();
  }
  for (const NodeNumber node : downward) {
    PruneDownward(node);
    progress.StepIt();
    progress.Pulse();
  }
  transaction.Commit();
  return before - working().Count();
}

}  // namespace selvane
