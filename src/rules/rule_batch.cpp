#include "rules/rule_batch.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <cmath>
#include <iterator>

#include "data/database_error.h"
#include "data/sql_dialect.h"
#include "rules/rules_store.h"

namespace selvane {

namespace {

const std::array<std::string, 9>& FieldNames() {
  static const std::array<std::string, 9> kNames = {
      "INDEX", "ANTECEDENT", "CONSEQUENT", "SUPPORT", "CONFIDENCE", "PA", "PC", "ASPEC", "CSPEC"};
  return kNames;
}

// The number that the six decimals of the text say. It is read from them, since no arithmetic on the figure
// gives the same last bit for all figures.
double SixDecimals(float figure) {
  fmt::memory_buffer text;
  fmt::format_to(std::back_inserter(text), "{:.6f}", double{figure});
  double value = 0;
  std::from_chars(text.data(), text.data() + text.size(), value);
  return value;
}

}  // namespace

RuleBatch::RuleBatch(Database& database, std::string_view table, long& inserted)
    : database_(database),
      table_(table),
      inserted_(inserted),
      insert_(database.OpenBulkInsert(table, FieldNames())) {}

void RuleBatch::Insert(const Rule& rule) {
  ++inserted_;
  CheckFigures(database_.path(), table_, inserted_, rule);
  int field = 0;
  insert_.Set(field++, std::int64_t{inserted_});
  insert_.Set(field++, ItemsetToText(rule.antecedent));
  insert_.Set(field++, ItemsetToText(rule.consequent));
  for (const float figure : {rule.support, rule.confidence, rule.pa, rule.pc}) {
    insert_.Set(field++, SixDecimals(figure));
  }
  insert_.Set(field++, std::int64_t{rule.aspec});
  insert_.Set(field++, std::int64_t{rule.cspec});
  try {
    insert_.Insert();
  } catch (const DatabaseError& error) {
    throw DatabaseError(error.file(), error.reason(), InsertionText(table_, inserted_, rule));
  }
}

void CheckFigures(const std::filesystem::path& file, std::string_view table, long number, const Rule& rule) {
  for (const float figure : {rule.support, rule.confidence, rule.pa, rule.pc}) {
    if (std::isfinite(figure)) continue;
    throw DatabaseError(
        file, fmt::format("rule {} of table {} has the figure {}, which cannot be stored; correct it where "
                          "the rule comes from, or leave the rule out",
                          number, table, figure));
  }
}

std::string InsertionText(std::string_view table, long number, const Rule& rule) {
  return fmt::format(
      "insert into {} (INDEX,ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC) values"
      "({},'{}','{}',{:.6f},{:.6f},{:.6f},{:.6f},{},{})",
      SqlDialect::NameText(table), number, ItemsetToText(rule.antecedent), ItemsetToText(rule.consequent),
      double{rule.support}, double{rule.confidence}, double{rule.pa}, double{rule.pc}, rule.aspec,
      rule.cspec);
}

}  // namespace selvane
