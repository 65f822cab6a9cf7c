// Rules databases and their tables (docs/formats/rules-database.md).
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
#include "data/pulse_scope.h"
#include "rules/rule.h"
#include "rules/rule_batch.h"
#include "rules/run_record.h"

namespace selvane {

// The most rules that one table holds: they are numbered by its INDEX column.
inline constexpr long kMostRules = kMostNumberedRows;
// The most characters that the text of an itemset may have in a rules table.
inline constexpr int kLongestItemsetText = 255;

// What the hash of the information file is noted under.
inline constexpr std::string_view kInfoNote = "information file";

// An open rules database, with the table that rules are read from and the table that they are written to. A
// rule is addressed by its number, the INDEX column: its place of insertion, from 1.
//
// Writing: create or open the database, create the table, SetTargetTable, then InsertRule for each rule, or
// InsertRules for many.
// Reading: open the database, OpenRulesTable, CountRules, then LoadRule for 1..N, or LoadRules for all.
// Every failure is a DatabaseError.
class RulesStore {
 public:
  // Makes a new database with one empty rules table. Sets no table name.
  void CreateRulesDatabase(const std::filesystem::path& path, std::string_view table);
  void OpenRulesDatabase(const std::filesystem::path& path, OpenMode mode = OpenMode::kWritable);
  // Lets this work be stopped while the engine is busy.
  PulseScope PulseDuring(Progress& progress) const { return {database(), progress}; }
  // Frees the file.
  void Close();

  // Makes an empty rules table and starts numbering at 1. Does not make it the target.
  void CreateRulesTable(std::string_view name);
  // Makes the table the source and clears the target. Fails when there is no such table or it is no rules
  // table.
  void OpenRulesTable(std::string_view name);
  void SetSourceTable(std::string_view name);
  void SetTargetTable(std::string_view name) { target_.table = name; }
  const std::string& source_table() const { return source_table_; }
  const std::string& target_table() const { return target_.table; }

  // Begins a chain of filters: what was saved before is no longer what the next one reads.
  void BeginCascade();
  // Goes on to the next filter of a chain, which reads the table that was made last, if there is one.
  void ContinueCascade();

  // Adds the rule to the target table under the next number. Figures are stored with six decimals. A failure
  // leaves the number used up.
  void InsertRule(const Rule& rule);
  // The same for the many rules that `fill` inserts, in one transaction and several times faster. When `fill`
  // throws, the table is as before.
  void InsertRules(const std::function<void(RuleBatch& batch)>& fill);
  // Makes a rules table, has it filled in the same way and makes it the target. When anything throws, neither
  // the database nor the target has changed.
  void SaveRulesTable(std::string_view name, const std::function<void(RuleBatch& batch)>& fill);
  // The number of rows of the source table.
  long CountRules() const;
  // Reads the first rule of this number. When there is none, both itemsets are empty and the figures stay as
  // they were.
  void LoadRule(long number, Rule& rule) const;
  // What LoadRule gives for 1..N into one Rule, N being the number of rows, by one walk over the table. Moves
  // the bar from 0 to N. Throws also Interrupted.
  std::vector<Rule> LoadRules(Progress& progress) const;
  // The ordinary tables, in the database's own order.
  std::vector<std::string> ListRulesTables() const;
  const std::filesystem::path& path() const { return database().path(); }

  // The hash of the information file that belongs to this database, empty when none does; nothing where that
  // was not noted.
  void NoteInfo(std::string_view hash) { database().SetNote(kInfoNote, hash); }
  std::optional<std::string> NotedInfo() const { return database().FindNote(kInfoNote); }

  // What made a rules table; empty where that was not noted. Copied to the table that a filter saves.
  void NoteRun(std::string_view table, const RunRecord& run);
  RunRecord RunOf(std::string_view table) const;
  RunRecord RunOfSource() const { return RunOf(source_table_); }

 private:
  struct Target {
    std::string table;
    long inserted = 0;     // the number that was given last
    bool created = false;  // by this store, since the source was opened
  };

  Database& database() const;
  void FindRows() const;
  void WalkRules(std::vector<Rule>& rules, Progress& progress) const;

  mutable std::optional<Database> database_;
  std::string source_table_;
  Target target_;
  // For each number of the source table, the row where it stands first; found by one walk over the table,
  // since the table has no index. Empty until it is needed.
  mutable std::optional<std::vector<std::int64_t>> rows_;
};

// Each item in decimal followed by "-", as 12-345-; the empty text for no item.
std::string ItemsetToText(std::span<const std::int32_t> itemset);
// The items of such a text; what follows the last "-" is ignored. Throws InputError for a piece that is no
// number.
std::vector<std::int32_t> TextToItemset(std::string_view text);

}  // namespace selvane
