#include "rules/rules_store.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

#include "base/error.h"
#include "base/shown_text.h"
#include "base/text.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "data/sql_dialect.h"

namespace selvane {

namespace {

const std::array<Field, 9>& RulesFields() {
  static const std::array<Field, 9> kFields = {{{"INDEX", FieldType::kInt16},
                                                {"ANTECEDENT", FieldType::kText, kLongestItemsetText},
                                                {"CONSEQUENT", FieldType::kText, kLongestItemsetText},
                                                {"SUPPORT", FieldType::kSingle},
                                                {"CONFIDENCE", FieldType::kSingle},
                                                {"PA", FieldType::kSingle},
                                                {"PC", FieldType::kSingle},
                                                {"ASPEC", FieldType::kInt16},
                                                {"CSPEC", FieldType::kInt16}}};
  return kFields;
}

constexpr const char* kRuleColumns = "ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC";

// Reads the rule columns, of which the first is at `column`.
void TakeRule(const Recordset& row, int column, Rule& rule) {
  rule.antecedent = TextToItemset(row.Text(column++));
  rule.consequent = TextToItemset(row.Text(column++));
  rule.support = row.Value(column++).ToSingle();
  rule.confidence = row.Value(column++).ToSingle();
  rule.pa = row.Value(column++).ToSingle();
  rule.pc = row.Value(column++).ToSingle();
  rule.aspec = row.Int16(column++);
  rule.cspec = row.Int16(column++);
}

std::string RunNote(std::string_view table) {
  return "run of " + std::string(table);
}

}  // namespace

Database& RulesStore::database() const {
  if (!database_) throw DatabaseError({}, "no rules database is open");
  return *database_;
}

void RulesStore::CreateRulesDatabase(const std::filesystem::path& path, std::string_view table) {
  Close();
  database_.emplace(Database::Create(path));
  database_->CreateTable(table, RulesFields());
  database_->CreateQuery("SQLstatement");
}

void RulesStore::OpenRulesDatabase(const std::filesystem::path& path, OpenMode mode) {
  Close();
  database_.emplace(Database::Open(path, mode));
}

void RulesStore::Close() {
  // All that is remembered belongs to the open file, so none of it may outlive it.
  *this = RulesStore();
}

void RulesStore::CreateRulesTable(std::string_view name) {
  database().CreateTable(name, RulesFields());
  target_.inserted = 0;
  target_.created = true;
}

void RulesStore::OpenRulesTable(std::string_view name) {
  SetSourceTable(name);
  BeginCascade();
  const std::vector<Field> fields = database().Fields(name);
  for (const Field& wanted : RulesFields()) {
    const bool found = std::any_of(fields.begin(), fields.end(), [&wanted](const Field& field) {
      return LowerCase(field.name) == LowerCase(wanted.name);
    });
    if (found) continue;
    throw DatabaseError(database().path(),
                        fmt::format("\"{}\" is no rules table, it has no column {}; choose "
                                    "another table",
                                    name, wanted.name));
  }
}

void RulesStore::SetSourceTable(std::string_view name) {
  source_table_ = name;
  rows_.reset();
}

// The insert counter goes on: it counts since the last table was created.
void RulesStore::BeginCascade() {
  target_.table.clear();
  target_.created = false;
}

void RulesStore::ContinueCascade() {
  if (target_.created) SetSourceTable(target_.table);
}

void RulesStore::InsertRule(const Rule& rule) {
  ++target_.inserted;
  if (target_.table == source_table_) rows_.reset();
  CheckFigures(database().path(), target_.table, target_.inserted, rule);
  database().Execute(InsertionText(target_.table, target_.inserted, rule));
}

void RulesStore::InsertRules(const std::function<void(RuleBatch& batch)>& fill) {
  if (target_.table == source_table_) rows_.reset();
  Transaction transaction(database());
  long inserted = target_.inserted;
  RuleBatch batch(database(), target_.table, inserted);
  fill(batch);
  transaction.Commit();
  // The numbers go on only behind what was committed; a batch that failed leaves no gap.
  target_.inserted = inserted;
}

void RulesStore::SaveRulesTable(std::string_view name, const std::function<void(RuleBatch& batch)>& fill) {
  Target target{std::string(name), 0, true};
  Transaction transaction(database());
  database().CreateTable(name, RulesFields());
  RuleBatch batch(database(), name, target.inserted);
  fill(batch);
  // Rules that were kept are still those of the run, and must be looked up in the way in which it counted.
  if (const RunRecord run = RunOfSource(); !run.entries().empty()) NoteRun(name, run);
  transaction.Commit();
  // Only when all is in the file, so that a failure leaves the cascade as it was.
  target_ = std::move(target);
}

void RulesStore::NoteRun(std::string_view table, const RunRecord& run) {
  database().SetNote(RunNote(table), run.ToText());
}

RunRecord RulesStore::RunOf(std::string_view table) const {
  return RunRecord::FromText(database().FindNote(RunNote(table)).value_or(""));
}

long RulesStore::CountRules() const {
  return database().RecordCount(source_table_);
}

void RulesStore::FindRows() const {
  std::vector<std::int64_t> rows;  // kept only when the whole table could be walked
  Recordset all = database().OpenRecordset("SELECT rowid,INDEX FROM " + SqlDialect::NameText(source_table_));
  for (; !all.AtEnd(); all.MoveNext()) {
    if (all.Value(1).IsNull()) continue;
    const std::int16_t number = all.Int16(1);
    if (number < 1) continue;
    const auto place = static_cast<std::size_t>(number);
    if (rows.size() <= place) rows.resize(place + 1, 0);
    if (rows[place] == 0) rows[place] = *all.Value(0).AsInteger();
  }
  rows_ = std::move(rows);
}

void RulesStore::LoadRule(long number, Rule& rule) const {
  rule.antecedent.clear();
  rule.consequent.clear();
  if (!rows_) FindRows();
  if (number < 1 || static_cast<std::size_t>(number) >= rows_->size()) return;
  const std::int64_t row = (*rows_)[static_cast<std::size_t>(number)];
  if (row == 0) return;
  const Recordset found = database().OpenRecordset(fmt::format(
      "SELECT {} FROM {} WHERE rowid={}", kRuleColumns, SqlDialect::NameText(source_table_), row));
  if (found.AtEnd()) return;
  try {
    TakeRule(found, 0, rule);
  } catch (const InputError& error) {
    throw DatabaseError(database().path(),
                        fmt::format("rule {} of {}: {}", number, source_table_, error.what()));
  }
}

// The first rule of a number counts; where a number is missing, the rule has the figures of the one before.
void RulesStore::WalkRules(std::vector<Rule>& rules, Progress& progress) const {
  std::vector<bool> found(rules.size(), false);
  Recordset row = database().OpenRecordset(
      fmt::format("SELECT INDEX,{} FROM {}", kRuleColumns, SqlDialect::NameText(source_table_)));
  for (int walked = 1; !row.AtEnd(); row.MoveNext(), ++walked) {
    progress.SetPosition(walked);
    if (walked % 256 == 0) progress.Pulse();
    if (row.Value(0).IsNull()) continue;
    const auto place = static_cast<std::size_t>(row.Int16(0)) - 1;  // of a number below 1: beyond all
    if (place >= rules.size() || found[place]) continue;
    found[place] = true;
    TakeRule(row, 1, rules[place]);
  }
  for (std::size_t place = 0; place < rules.size(); ++place) {
    if (found[place]) continue;
    if (place > 0) rules[place] = rules[place - 1];
    rules[place].antecedent.clear();
    rules[place].consequent.clear();
  }
}

std::vector<Rule> RulesStore::LoadRules(Progress& progress) const {
  const PulseScope pulse = PulseDuring(progress);
  std::vector<Rule> rules(static_cast<std::size_t>(CountRules()));
  progress.SetRange(0, static_cast<int>(rules.size()));
  progress.SetPosition(0);
  if (rules.empty()) return rules;
  try {
    WalkRules(rules, progress);
    return rules;
  } catch (const InputError&) {
  } catch (const DatabaseError&) {
  }
  // A row that cannot be read. Rule after rule tells which one it is, by its number; or it is one that no
  // number leads to.
  Rule rule;
  for (std::size_t place = 0; place < rules.size(); ++place) {
    LoadRule(static_cast<long>(place) + 1, rule);
    rules[place] = rule;
  }
  return rules;
}

std::vector<std::string> RulesStore::ListRulesTables() const {
  std::vector<std::string> names;
  for (TableDefinition& table : database().Tables()) {
    if (table.attributes == 0) names.push_back(std::move(table.name));
  }
  return names;
}

std::string ItemsetToText(std::span<const std::int32_t> itemset) {
  std::string text;
  for (const std::int32_t item : itemset) fmt::format_to(std::back_inserter(text), "{}-", item);
  return text;
}

std::vector<std::int32_t> TextToItemset(std::string_view text) {
  std::vector<std::int32_t> itemset;
  for (std::size_t dash = text.find('-'); dash != std::string_view::npos; dash = text.find('-')) {
    const std::string_view piece = text.substr(0, dash);
    const std::optional<std::int32_t> item = Int32Of(piece);
    if (!item) throw InputError(fmt::format("\"{}\" in an itemset is not a number", Shortened(piece)));
    itemset.push_back(*item);
    text.remove_prefix(dash + 1);
  }
  return itemset;
}

}  // namespace selvane
