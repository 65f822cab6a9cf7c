#include "rules/rules_info.h"

#include <fmt/format.h>

#include "base/error.h"
#include "base/text.h"
#include "data/object_archive.h"

namespace selvane {

namespace {

constexpr std::uint32_t kInTheRun = 10;

std::vector<std::uint32_t> MapOf(std::span<const std::int32_t> items) {
  std::vector<std::uint32_t> map(kMostItems, 0);
  for (const std::int32_t item : items) map[static_cast<std::size_t>(item)] = kInTheRun;
  return map;
}

void ReadMap(ArchiveReader& archive, std::vector<std::int32_t>& map) {
  std::vector<std::uint32_t> raw;
  archive.ReadValues(archive.ReadCount(), raw);
  map.assign(raw.begin(), raw.end());
}

}  // namespace

std::filesystem::path RulesInfoBasePath(const std::filesystem::path& database) {
  return database.parent_path() / ("Info" + database.stem().string());
}

void CheckInfoItems(std::span<const std::int32_t> items) {
  for (const std::int32_t item : items) {
    if (item >= 0 && item < kMostItems) continue;
    throw InputError(
        fmt::format("item number {} is outside 0..{}, the most that a run can record; load a smaller "
                    "taxonomy, or prune the branches that are not needed",
                    item, kMostItems - 1));
  }
}

void WriteRulesInfo(std::span<const std::int32_t> first_items, std::span<const std::int32_t> second_items,
                    std::span<const std::string> texts, const std::filesystem::path& base_path) {
  CheckInfoItems(first_items);
  CheckInfoItems(second_items);
  std::filesystem::path path = base_path;
  path += ".dat";
  NewFile file(path, ExistingFile::kReplace);
  ArchiveWriter archive(file.temporary());
  for (const auto& items : {first_items, second_items}) {
    archive.WriteCount(kMostItems);
    archive.WriteValues(MapOf(items));
  }
  archive.WriteCount(static_cast<std::uint32_t>(texts.size()));
  for (const std::string& text : texts) archive.WriteText(ToCodePage1252(text));
  archive.Close();
  file.Commit();
}

void ReadRulesInfo(const std::string& database_path, const std::string& file_name,
                   std::vector<std::int32_t>& first_map, std::vector<std::int32_t>& second_map,
                   std::vector<std::string>& texts) {
  first_map.clear();
  second_map.clear();
  texts.clear();
  const std::size_t dot = file_name.rfind('.');
  if (dot == std::string::npos || file_name.find("mdb", dot) == std::string::npos) {
    throw EndOfProgram("Loading Rules", "Selected file is not containing rules");
  }
  // The folder is what stays of the path without the first occurrence of the name in it.
  std::string folder = database_path;
  if (const std::size_t name = folder.find(file_name); name != std::string::npos) {
    folder.erase(name, file_name.size());
  }
  std::string title = file_name;
  title.erase(dot, 4);
  ArchiveReader archive(folder + "Info" + title + ".dat");
  ReadMap(archive, first_map);
  ReadMap(archive, second_map);
  for (std::uint32_t left = archive.ReadCount(); left > 0; --left) {
    texts.push_back(FromCodePage1252(archive.ReadText()));
  }
}

RulesInfo ReadRulesInfo(const std::filesystem::path& database) {
  RulesInfo info;
  ReadRulesInfo(database.string(), database.filename().string(), info.first_map, info.second_map, info.texts);
  return info;
}

}  // namespace selvane
