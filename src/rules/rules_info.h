// The rules information file beside a rules database: how its rules were made
// (docs/formats/rules-information.md).
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/new_file.h"

namespace selvane {

// Both maps have room for the items 0..99,999.
inline constexpr std::int32_t kMostItems = 100000;

// How rules were made. Figures are the texts that stand in the file; what it lacks is empty.
struct RulesInfo {
  std::string term_table;
  std::string rows;
  std::string min_support;
  std::string min_confidence;
  std::vector<std::string> taxonomies;  // in use, of a run that generalized
  // An entry for each item number, 10 for an item of the run and 0 for any other: the direct items, and those
  // that generalization added.
  std::vector<std::int32_t> first_map;
  std::vector<std::int32_t> second_map;
  bool operator==(const RulesInfo&) const = default;
};

// A text as an information file gives it back: what code page 1252 does not have is a question mark.
std::string HeldByInfo(std::string_view text);

// The path of a database's information file: "Info", the database's title and ".dat", in its folder.
std::filesystem::path RulesInfoPath(const std::filesystem::path& database);

// The map of these items. Throws InputError when one is outside 0..99,999.
std::vector<std::int32_t> MapOfItems(std::span<const std::int32_t> items);
// The places of all entries above 0, which are the numbers of the items.
std::vector<std::int32_t> ItemsOfMap(std::span<const std::int32_t> map);

// The thresholds as numbers; 0 where there is none.
float MinimumSupportOf(const RulesInfo& info);
float MinimumConfidenceOf(const RulesInfo& info);

// Throws InputError when a number is outside 0..99,999.
void CheckInfoItems(std::span<const std::int32_t> items);

// Writes base_path + ".dat", in place of one that is there: the two maps of these items, and the texts in the
// order of the members of `RulesInfo`. Throws InputError, before anything is written,
// when an item is outside 0..99,999, and FileError.
void WriteRulesInfo(std::span<const std::int32_t> first_items, std::span<const std::int32_t> second_items,
                    std::span<const std::string> texts, const std::filesystem::path& base_path);
// Writes what is to be the information file of a database. Throws FileError.
void WriteRulesInfo(const RulesInfo& info, const NewFile& file);

// Reads the information file that belongs to a database. `file_name` is the last part of `database_path`.
// Throws EndOfProgram when the name has no "mdb" behind its last "." (in small letters), FileError when the
// file is missing, damaged or cannot be read. The outputs are cleared first.
void ReadRulesInfo(const std::string& database_path, const std::string& file_name,
                   std::vector<std::int32_t>& first_map, std::vector<std::int32_t>& second_map,
                   std::vector<std::string>& texts);
RulesInfo ReadRulesInfo(const std::filesystem::path& database);

}  // namespace selvane
