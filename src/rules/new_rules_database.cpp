#include "rules/new_rules_database.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "base/content_hash.h"
#include "base/error.h"
#include "base/file.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

// Whether another database of the folder has the same title, and so the same information file.
bool HasNamesake(const fs::path& path) {
  const fs::path folder = path.has_parent_path() ? path.parent_path() : ".";
  for (const fs::path name : NamesInFolder(folder)) {
    const bool same_title = name.stem() == path.stem() && name != path.filename();
    if (same_title && Database::IsOne(folder / name)) return true;
  }
  return false;
}

void CheckInfoIsFree(const fs::path& path, const Database* replaced) {
  const fs::path info = RulesInfoPath(path);
  if (!IsTaken(info) || !HasNamesake(path)) return;
  const auto noted = replaced != nullptr ? replaced->FindNote(kInfoNote) : std::nullopt;
  if (noted && *noted == ContentHash(ReadFile(info))) return;
  throw InputError(
      fmt::format("{}: {} may belong to another rules database of the same title; choose another name",
                  path.string(), info.string()));
}

}  // namespace

void NewRulesDatabase::Check(const fs::path& path, ExistingFile existing) {
  // Under no lock: the run of another user that is just giving the names would fail on it.
  const NewFile database(path, existing);
  const fs::path info_path = RulesInfoPath(path);
  const NewFile info(info_path, ExistingFile::kReplace);
  if (!IsTaken(database.path())) CheckSideFiles(database.path());
  std::optional<Database> replaced;
  if (IsTaken(info_path) && HasNamesake(path) && Database::IsOne(path)) {
    replaced = Database::OpenToReplace(path);
  }
  CheckInfoIsFree(path, replaced ? &*replaced : nullptr);
}

NewRulesDatabase::NewRulesDatabase(const fs::path& path, ExistingFile existing, std::string_view table)
    : path_(path), database_(path, existing) {
  CheckInfoIsFree(path_, database_.replaced());
  Fill([&](RulesStore& store) {
    store.CreateRulesDatabase(database_.temporary(), table);
    store.SetTargetTable(table);
  });
}

void NewRulesDatabase::Fill(const std::function<void(RulesStore& store)>& fill) {
  database_.Make([&](const fs::path&) { fill(store_); });
}

void NewRulesDatabase::Commit(const std::optional<RulesInfo>& info, std::span<NewFile* const> others,
                              const std::function<void()>& last_step) {
  const fs::path info_path = RulesInfoPath(path_);
  std::vector<NewFile*> files;
  std::optional<NewFile> info_file;
  std::string hash;
  if (info) {
    info_file.emplace(info_path, ExistingFile::kReplace);
    WriteRulesInfo(*info, *info_file);
    hash = ContentHash(info_file->Content());
    files.push_back(&*info_file);
  }
  // From the first name to the last the information is not the database's, and whatever a crash in between
  // leaves is told of.
  files.insert(files.end(), others.begin(), others.end());
  Fill([&](RulesStore& store) {
    store.NoteInfo(hash);
    store.Close();  // the file is complete before it gets its name
  });
  database_.Commit(files, last_step);
  // What a replaced database was made of says nothing of the new one.
  std::error_code not_there;
  if (!info) fs::remove(info_path, not_there);
}

RulesInfo ReadInfoOf(const RulesStore& store) {
  RulesInfo info = ReadRulesInfo(store.path());
  const std::optional<std::string> noted = store.NotedInfo();
  const fs::path info_path = RulesInfoPath(store.path());
  // Databases of earlier versions and of other programs have no note.
  if (!noted || *noted == ContentHash(ReadFile(info_path))) return info;
  throw InputError(
      fmt::format("{} and {} do not belong together: one of them was replaced without the other; extract the "
                  "rules again, or take both from one copy",
                  store.path().string(), info_path.string()));
}

}  // namespace selvane
