#include "taxonomy/ornex_table.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/text.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "taxonomy/rendering.h"
#include "taxonomy/taxonomy_schema.h"

namespace selvane {

bool OrnexTable::Exists() const {
  return database_.HasTable(TableName(kOrnexTable));
}

void OrnexTable::ForEachRow(const VisitRow& visit) const {
  constexpr std::array kColumns = {kIndexField, kFatherIdField, kCanonicalField};
  const std::vector<Field> fields = database_.Fields(TableName(kOrnexTable));
  // Asked for beforehand: the engine would only say that there is no such column.
  for (const FieldNumber column : kColumns) {
    const auto is_it = [column](const Field& field) {
      return LowerCase(field.name) == LowerCase(FieldName(column));
    };
    if (std::any_of(fields.begin(), fields.end(), is_it)) continue;
    throw DatabaseError(database_.path(),
                        fmt::format("the table {} has no column {}; complete it, or drop it to "
                                    "use Taxonomy instead",
                                    TableName(kOrnexTable), FieldName(column)));
  }
  Recordset rows = database_.OpenRecordset(fmt::format("SELECT {},{},{} FROM {} ", FieldName(kColumns[0]),
                                                       FieldName(kColumns[1]), FieldName(kColumns[2]),
                                                       TableName(kOrnexTable)));
  for (; !rows.AtEnd(); rows.MoveNext()) {
    visit(std::string(rows.Text(0)), std::string(rows.Text(1)), std::string(rows.Text(2)));
  }
}

void OrnexTable::Render(std::span<const std::string> codes, std::string& text,
                        std::vector<NodeNumber>& numbers) const {
  for (const std::string& code : codes) {
    const Recordset rows = database_.OpenRecordset(
        fmt::format("SELECT {},{} FROM {} WHERE {}='{}'", FieldName(kCanonicalField), FieldName(kIndexField),
                    TableName(kOrnexTable), FieldName(kFatherIdField), WithoutQuotes(code)));
    if (rows.AtEnd()) continue;
    AppendWithAnd(rows.Text(0), text);
    numbers.push_back(rows.Int32(1));
  }
}

}  // namespace selvane
