#include "taxonomy/taxonomy_pruning.h"

#include <fmt/format.h>

#include "data/recordset.h"
#include "taxonomy/position_code.h"

namespace selvane {

namespace {

// The row of a node; at its end when the node is not there (any more).
Recordset FindNode(Database& database, NodeNumber node) {
  return database.OpenRecordset(
      fmt::format("select FatherId,Canonical from Taxonomy where Index='{}'", node));
}

void PruneUpward(Database& database, NodeNumber node) {
  const Recordset row = FindNode(database, node);
  if (row.AtEnd()) return;
  database.Execute(fmt::format("DELETE * FROM Taxonomy WHERE instr('{}', FatherId) > 0", row.Text(0)));
  database.Execute(fmt::format("DELETE * FROM Taxonomy WHERE Index='{}'", node));
}

// Empties the SON columns of the parent that name the pruned node.
void ForgetSon(Database& database, const std::string& code, const std::string& term) {
  const std::string parent(code.size() > 1 ? ParentCode(code) : std::string_view(code));
  Recordset row = database.OpenRecordset("SELECT * FROM Taxonomy WHERE FatherId='" + parent + "'");
  if (row.AtEnd() || row.FieldCount() <= 3) return;
  row.Edit();
  for (int field = 3; field < row.FieldCount(); ++field) {
    if (!term.empty() && row.Text(field) == term) row.SetField(field, "");
  }
  row.Update();
}

void PruneDownward(Database& database, NodeNumber node) {
  const Recordset row = FindNode(database, node);
  if (row.AtEnd()) return;
  const std::string code(row.Text(0));
  ForgetSon(database, code, std::string(row.Text(1)));
  database.Execute(fmt::format("DELETE * FROM Taxonomy WHERE instr(FatherId, '{}') > 0", code));
}

}  // namespace

void PruneTaxonomy(TaxonomyStore& store, std::span<const NodeNumber> upward,
                   std::span<const NodeNumber> downward, Progress& progress) {
  progress.SetStatus("Deleting selected taxonomies...");
  progress.SetRange(0, static_cast<int>(upward.size() + downward.size()));
  progress.SetStep(1);
  progress.SetPosition(0);
  Transaction transaction(store.database());
  for (const NodeNumber node : upward) {
    PruneUpward(store.database(), node);
    progress.StepIt();
    progress.Pulse();
  }
  for (const NodeNumber node : downward) {
    PruneDownward(store.database(), node);
    progress.StepIt();
    progress.Pulse();
  }
  transaction.Commit();
}

std::optional<std::string> FindPosition(const TaxonomyTable& table, std::string_view code) {
  for (std::string position : {std::string(code), PositionCode(code)}) {
    if (table.HasPosition(position)) return position;
  }
  return std::nullopt;
}

}  // namespace selvane
