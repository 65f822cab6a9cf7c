#include "taxonomy/taxonomy_pruning.h"

#include <fmt/format.h>

#include "data/recordset.h"

namespace selvane {

namespace {

std::optional<std::string> CodeOf(Database& database, NodeNumber node) {
  const Recordset rows =
      database.OpenRecordset(fmt::format("select FatherId from Taxonomy where Index='{}'", node));
  if (rows.AtEnd()) return std::nullopt;
  return std::string(rows.Text(0));
}

void PruneUpward(Database& database, NodeNumber node) {
  const std::optional<std::string> code = CodeOf(database, node);
  if (!code) return;
  database.Execute(fmt::format("DELETE * FROM Taxonomy WHERE instr('{}', FatherId) > 0", *code));
  database.Execute(fmt::format("DELETE * FROM Taxonomy WHERE Index='{}'", node));
}

// Empties the SON columns of the parent that name the pruned node.
void ForgetSon(Database& database, const std::string& code, const std::string& canonical) {
  const std::string parent(code.size() > 1 ? ParentCode(code) : std::string_view(code));
  Recordset row = database.OpenRecordset("SELECT * FROM Taxonomy WHERE FatherId='" + parent + "'");
  if (row.AtEnd() || row.FieldCount() <= 3) return;
  row.Edit();
  for (int field = 3; field < row.FieldCount(); ++field) {
    if (!canonical.empty() && row.Text(field) == canonical) row.SetField(field, "");
  }
  row.Update();
}

void PruneDownward(Database& database, NodeNumber node) {
  const std::optional<std::string> code = CodeOf(database, node);
  if (!code) return;
  const Recordset named =
      database.OpenRecordset(fmt::format("select FatherId,Canonical from Taxonomy where Index='{}'", node));
  ForgetSon(database, *code, std::string(named.Text(1)));
  database.Execute(fmt::format("DELETE * FROM Taxonomy WHERE instr(FatherId, '{}') > 0", *code));
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

std::optional<std::string> FindPosition(const TaxonomyStore& store, std::string_view code, bool in_source) {
  const auto has = [&](const std::string& position) {
    return in_source ? store.SourceHasPosition(position) : store.HasPosition(position);
  };
  std::string position(code);
  if (has(position)) return position;
  if (position.size() < 2) return std::nullopt;
  position.insert(1, ".");
  if (has(position)) return position;
  return std::nullopt;
}

}  // namespace selvane
