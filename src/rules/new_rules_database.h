// A rules database and its information file as one thing.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

#include "base/new_file.h"
#include "data/new_database.h"
#include "rules/rules_info.h"
#include "rules/rules_store.h"

namespace selvane {

// Both in the making, with one rules table. They get their names together, and the database notes the hash of
// the file that belongs to it, so that a pair which does not belong together is recognised.
//
// An information file is named by the title of its database alone: rules.mdb and rules.db would share one.
// One that may belong to another database than the one that is replaced is never touched.
class NewRulesDatabase {
 public:
  // Tries whether both can be made, and leaves nothing: for a run that takes long to say so before. Throws as
  // making them does.
  static void Check(const std::filesystem::path& path, ExistingFile existing);

  // Throws as NewDatabase does, and InputError when the information file may be another database's.
  NewRulesDatabase(const std::filesystem::path& path, ExistingFile existing, std::string_view table);

  // Lets the table, which is the store's target, be filled. Errors of the database name the path that it is
  // to have. Throws also what `fill` throws.
  void Fill(const std::function<void(RulesStore& store)>& fill);
  // Closes the store and gives all files their names: the information file, the others, then the database. A
  // database without information leaves none beside it. Throws FileError and DatabaseError. For `last_step`
  // see CommitTogether.
  void Commit(const std::optional<RulesInfo>& info, std::span<NewFile* const> others = {},
              const std::function<void()>& last_step = {});

 private:
  std::filesystem::path path_;
  NewDatabase database_;
  RulesStore store_;
};

// How the rules of an open database were made. Throws as ReadRulesInfo does, and InputError, naming both
// files, when the information file is not the one that was made with this database.
RulesInfo ReadInfoOf(const RulesStore& store);

}  // namespace selvane
