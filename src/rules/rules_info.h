// The rules information file beside a rules database: how its rules were made
// (docs/formats/rules-information.md).
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

namespace selvane {

// Both maps have room for the items 0..99,999.
inline constexpr std::int32_t kMostItems = 100000;

// What the file holds when it is read: an entry for each item number, 10 for an item of the run and 0 for any
// other, for the direct items and for those that generalization added; and the texts: the term table's name,
// the number of rows, the minimum support, the minimum confidence and, after a run that generalized, the
// names of the taxonomies in use.
struct RulesInfo {
  std::vector<std::int32_t> first_map;
  std::vector<std::int32_t> second_map;
  std::vector<std::string> texts;
};

// The path of a database's information file but for its ".dat": "Info" and the file's title, in its folder.
std::filesystem::path RulesInfoBasePath(const std::filesystem::path& database);

// Throws InputError when a number is outside 0..99,999.
void CheckInfoItems(std::span<const std::int32_t> items);

// Writes base_path + ".dat", in place of one that is there. Throws InputError, before anything is written,
// when an item is outside 0..99,999, and FileError.
void WriteRulesInfo(std::span<const std::int32_t> first_items, std::span<const std::int32_t> second_items,
                    std::span<const std::string> texts, const std::filesystem::path& base_path);

// Reads the information file that belongs to a database. `file_name` is the last part of `database_path`.
// Throws EndOfProgram when the name has no "mdb" behind its last "." (in small letters), FileError when the
// file is missing, damaged or cannot be read. The outputs are cleared first.
void ReadRulesInfo(const std::string& database_path, const std::string& file_name,
                   std::vector<std::int32_t>& first_map, std::vector<std::int32_t>& second_map,
                   std::vector<std::string>& texts);
RulesInfo ReadRulesInfo(const std::filesystem::path& database);

}  // namespace selvane
