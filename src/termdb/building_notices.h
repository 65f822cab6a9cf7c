// What is told of records and identifiers that gave nothing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "base/text.h"
#include "termdb/term_table_building.h"

namespace selvane {

// The kinds beside those of the readers (literature/record_reading.h).
namespace notices {
inline constexpr std::string_view kNoKnownTerm = "records without a term of the taxonomy";
inline constexpr std::string_view kNoMajorTerm = "records without a major topic that the taxonomy has";
inline constexpr std::string_view kTwice = "records that stand twice";
inline constexpr std::string_view kOtherYear = "records of other years";
inline constexpr std::string_view kNoYear = "records without a year, which are of no wanted year";
inline constexpr std::string_view kUnknownId = "identifiers that the taxonomy does not have";
inline constexpr std::string_view kUnknownName = "names that are no terms of the taxonomy";
inline constexpr std::string_view kNoHeading = "supplementary records without a heading in the taxonomy";
inline constexpr std::string_view kPruned = "terms that were pruned from the taxonomy";
}  // namespace notices

// Counts what comes up by its kind and keeps the first example of each.
class BuildingNotices {
 public:
  // `example` is a text, or what makes one: it is called for the first of a kind only.
  template <typename Example>
  void Add(std::string_view kind, const Example& example) {
    BuildingNotice& notice = NoticeOf(kind);
    if (notice.count++ > 0) return;
    if constexpr (std::is_convertible_v<Example, std::string_view>) {
      notice.example = std::string_view(example);
    } else {
      notice.example = example();
    }
  }
  // The same for something with a name, of which the different ones are counted too.
  template <typename Example>
  void AddNamed(std::string_view kind, std::string_view name, const Example& example) {
    Add(kind, example);
    Names& names = names_[kind];
    if (!names.contains(name)) {
      ++NoticeOf(kind).distinct;
      // Beyond this many, names that come again count again: they must not fill the memory.
      if (names.size() < kMostNames) names.emplace(name);
    }
  }
  const std::vector<BuildingNotice>& all() const { return notices_; }

 private:
  using Names = std::unordered_set<std::string, TextHash, std::equal_to<>>;
  static constexpr std::size_t kMostNames = 1'000'000;

  // There are few kinds.
  BuildingNotice& NoticeOf(std::string_view kind) {
    for (BuildingNotice& notice : notices_) {
      if (notice.kind == kind) return notice;
    }
    return notices_.emplace_back(BuildingNotice{std::string(kind), 0, 0, {}});
  }

  std::vector<BuildingNotice> notices_;
  std::unordered_map<std::string_view, Names> names_;  // by the constants above
};

}  // namespace selvane
