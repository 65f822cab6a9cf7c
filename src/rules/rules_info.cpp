#include "rules/rules_info.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "base/error.h"
#include "base/new_file.h"
#include "base/text.h"
#include "data/object_archive.h"

namespace selvane {

namespace {

constexpr std::int32_t kInTheRun = 10;

// The texts before the names of the taxonomies, in their order in the file. Readers and writers of the file
// agree on it here and nowhere else.
constexpr std::array kFirstTexts = {&RulesInfo::term_table, &RulesInfo::rows, &RulesInfo::min_support,
                                    &RulesInfo::min_confidence};

std::vector<std::string> TextsOf(const RulesInfo& info) {
  std::vector<std::string> texts;
  texts.reserve(kFirstTexts.size() + info.taxonomies.size());
  for (const auto text : kFirstTexts) texts.push_back(info.*text);
  texts.insert(texts.end(), info.taxonomies.begin(), info.taxonomies.end());
  return texts;
}

void TakeTexts(std::vector<std::string> texts, RulesInfo& info) {
  const std::size_t first = std::min(kFirstTexts.size(), texts.size());
  for (std::size_t i = 0; i < first; ++i) info.*kFirstTexts[i] = std::move(texts[i]);
  texts.erase(texts.begin(), texts.begin() + static_cast<std::ptrdiff_t>(first));
  info.taxonomies = std::move(texts);
}

void WriteFile(std::span<const std::int32_t> first_map, std::span<const std::int32_t> second_map,
               std::span<const std::string> texts, const NewFile& file) {
  ArchiveWriter archive(file.temporary(), file.path());
  for (const auto& map : {first_map, second_map}) {
    archive.WriteCount(static_cast<std::uint32_t>(map.size()));
    archive.WriteValues(std::vector<std::uint32_t>(map.begin(), map.end()));
  }
  archive.WriteCount(static_cast<std::uint32_t>(texts.size()));
  for (const std::string& text : texts) archive.WriteText(ToCodePage1252(text));
  archive.Close();
}

void ReadMap(ArchiveReader& archive, std::vector<std::int32_t>& map) {
  std::vector<std::uint32_t> raw;
  archive.ReadValues(archive.ReadCount(), raw);
  map.assign(raw.begin(), raw.end());
}

}  // namespace

std::string HeldByInfo(std::string_view text) {
  // What the code page of the file lacks comes back changed, so names are compared in the form that they have
  // behind it.
  return FromCodePage1252(ToCodePage1252(text));
}

std::filesystem::path RulesInfoPath(const std::filesystem::path& database) {
  return database.parent_path() / ("Info" + database.stem().string() + ".dat");
}

std::vector<std::int32_t> MapOfItems(std::span<const std::int32_t> items) {
  CheckInfoItems(items);
  std::vector<std::int32_t> map(kMostItems, 0);
  for (const std::int32_t item : items) map[static_cast<std::size_t>(item)] = kInTheRun;
  return map;
}

std::vector<std::int32_t> ItemsOfMap(std::span<const std::int32_t> map) {
  std::vector<std::int32_t> items;
  for (std::size_t place = 0; place < map.size(); ++place) {
    if (map[place] > 0) items.push_back(static_cast<std::int32_t>(place));
  }
  return items;
}

float MinimumSupportOf(const RulesInfo& info) {
  return static_cast<float>(NumberOf(info.min_support).value_or(0));
}

float MinimumConfidenceOf(const RulesInfo& info) {
  return static_cast<float>(NumberOf(info.min_confidence).value_or(0));
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
  std::filesystem::path path = base_path;
  path += ".dat";
  const std::vector<std::int32_t> first_map = MapOfItems(first_items);
  const std::vector<std::int32_t> second_map = MapOfItems(second_items);
  NewFile file(path, ExistingFile::kReplace);
  WriteFile(first_map, second_map, texts, file);
  file.Commit();
}

void WriteRulesInfo(const RulesInfo& info, const NewFile& file) {
  WriteFile(info.first_map, info.second_map, TextsOf(info), file);
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
  std::vector<std::string> texts;
  ReadRulesInfo(database.string(), database.filename().string(), info.first_map, info.second_map, texts);
  TakeTexts(std::move(texts), info);
  return info;
}

}  // namespace selvane
