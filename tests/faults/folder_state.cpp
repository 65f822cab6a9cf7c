#include "faults/folder_state.h"

#include <sqlite3.h>

#include <cstdlib>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "base/content_hash.h"
#include "support/test_support.h"

namespace selvane::faults {

namespace {

// The definitions and rows of a copy of a database and its journal, or what is wrong with it.
std::string ContentOf(const fs::path& database) {
  const ScratchFolder scratch;
  const fs::path copy = scratch.path() / "copy";
  for (const char* const side : {"", "-journal", "-wal"}) {
    if (fs::exists(database.string() + side)) fs::copy_file(database.string() + side, copy.string() + side);
  }
  sqlite3* raw = nullptr;
  sqlite3_open(copy.c_str(), &raw);
  const std::unique_ptr<sqlite3, decltype(&sqlite3_close)> connection(raw, &sqlite3_close);
  const auto rows = [raw](const std::string& sql) {
    std::string text;
    const auto take = [](void* to, int count, char** values, char**) {
      for (int i = 0; i < count; ++i)
        *static_cast<std::string*>(to) += values[i] ? values[i] + std::string(1, '\0') : "-";
      *static_cast<std::string*>(to) += '\n';
      return 0;
    };
    if (sqlite3_exec(raw, sql.c_str(), take, &text, nullptr) != SQLITE_OK) text += sqlite3_errmsg(raw);
    return text;
  };
  std::string content = rows("SELECT type, name, sql FROM sqlite_master");
  std::istringstream tables(
      rows("SELECT replace(name, '\"', '\"\"') FROM sqlite_master WHERE type = 'table'"));
  for (std::string name; std::getline(tables, name);)
    content += rows("SELECT * FROM \"" + name.substr(0, name.size() - 1) + '"');
  return content;
}

// A journal whose beginning was overwritten is done with; nobody reads it.
bool IsFinishedJournal(const std::string& name, const std::string& bytes) {
  return name.ends_with("-journal") && (bytes.empty() || bytes[0] == '\0');
}

// NAME.PID-DIGITS.part and what stands behind it, as NAME.part
std::string WithoutRandomPart(const std::string& name) {
  const std::size_t end = name.rfind(".part");
  const std::size_t begin =
      end == std::string::npos || end == 0 ? std::string::npos : name.rfind('.', end - 1);
  return begin == std::string::npos ? name : name.substr(0, begin) + name.substr(end);
}

}  // namespace

ScratchFolder::ScratchFolder() {
  std::string name = (ScratchRoot() / "selvane-faults-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error(name + ": cannot make this folder");
  path_ = name;
}

ScratchFolder::~ScratchFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

FolderState::FolderState(fs::path folder) : folder_(std::move(folder)) {
  for (const auto& entry : fs::recursive_directory_iterator(folder_)) {
    const std::string name = entry.path().string().substr(folder_.string().size() + 1);
    if (!entry.is_regular_file() || name.ends_with("frequentItemset2.dat") || name.ends_with("ItemSets.lock"))
      continue;
    const std::string known = WithoutRandomPart(name);
    const std::string bytes = known == name ? ReadFile(entry.path()) : "";
    if (known != name || !IsFinishedJournal(name, bytes)) files_[known] = ContentHash(bytes);
  }
}

bool FolderState::HasSame(const FolderState& other, const std::string& name) const {
  const auto here = files_.find(name);
  const auto there = other.files_.find(name);
  if (here == files_.end() || there == other.files_.end()) return false;
  if (here->second == there->second && !files_.contains(name + "-journal")) return true;
  return Database::IsOne(folder_ / name) && ContentOf(folder_ / name) == ContentOf(other.folder_ / name);
}

bool FolderState::Is(const FolderState& state, const FolderState& other, std::string_view left_out) const {
  for (const auto& [name, hash] : other.files_) {
    if (files_.contains(name) && !state.files_.contains(name)) return false;
  }
  return std::all_of(state.files_.begin(), state.files_.end(),
                     [&](const auto& file) { return file.first == left_out || HasSame(state, file.first); });
}

FolderState::Names FolderState::NamesBeyond(const FolderState& a, const FolderState& b) const {
  Names names;
  for (const auto& [name, hash] : files_) {
    if (!a.files_.contains(name) && !b.files_.contains(name)) names.push_back(name);
  }
  return names;
}

FolderState::Names FolderState::NamesSharedWith(const FolderState& other) const {
  Names names;
  for (const auto& [name, hash] : files_) {
    const auto there = other.files_.find(name);
    if (there != other.files_.end() && there->second == hash) names.push_back(name);
  }
  return names;
}

}  // namespace selvane::faults
