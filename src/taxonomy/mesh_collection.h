// What was read of MeSH files, made ready to be a taxonomy.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/text.h"
#include "taxonomy/heading_tables.h"
#include "taxonomy/mesh_record.h"
#include "taxonomy/source_rows.h"

namespace selvane {

// What was passed over, of one kind.
struct MeshProblem {
  long count = 0;
  std::string example;  // the first
};

// The kind of those that check tags would take.
inline constexpr std::string_view kWithoutTreeNumber = "headings without a tree number left out";

struct MeshCounts {
  long headings = 0;  // that have a position
  long entry_terms = 0;
  long positions = 0;      // without categories
  long categories = 0;     // of one letter, named by us: MeSH files have no names for them
  long supplementary = 0;  // records
  long mapped = 0;         // of them to a heading of the taxonomy
};

// Collects records of any layout; then gives rows and fills tables, always in the same order: positions by
// their codes, headings by identifier, entry terms by text. So each layout of one MeSH gives one database.
class MeshCollection final : public MeshVisitor {
 public:
  // With check tags, headings without a tree number get a position in a category of their own.
  explicit MeshCollection(bool check_tags) : check_tags_(check_tags) {}

  void OnHeading(MeshHeading&& heading) override;
  void OnSupplementary(MeshSupplementary&& record) override;
  void OnProblem(std::string_view kind, std::string_view example) override;

  // To be called once, when all is read. Throws InputError for more children than a table has columns.
  SourceRows MakeRows();
  // Then this. Throws DatabaseError.
  void FillTables(HeadingWriter& writer);

  const MeshCounts& counts() const { return counts_; }
  // By what they are called.
  const std::map<std::string, MeshProblem, std::less<>>& problems() const { return problems_; }

 private:
  struct Position {
    std::string code;
    std::size_t heading = 0;
  };

  void SetName(MeshHeading& heading);
  void SetEntryTerms(MeshHeading& heading);
  std::vector<Position> Positions();
  void AddCheckTag(std::size_t heading, std::vector<Position>& positions);
  void DropClaimedTwice(std::vector<Position>& positions);
  std::string CategoryName(std::string_view letter) const;
  std::optional<std::size_t> FindHeading(std::string_view named) const;
  std::vector<std::string_view> HeadingsOf(const MeshSupplementary& record);

  bool check_tags_;
  std::vector<MeshHeading> headings_;
  std::vector<std::string> terms_;  // of the headings, as in `Canonical`
  std::vector<bool> has_position_;
  long check_tag_count_ = 0;
  TextMap<std::size_t> by_id_;
  TextMap<std::size_t> by_name_;
  std::vector<MeshSupplementary> supplementary_;
  MeshCounts counts_;
  std::map<std::string, MeshProblem, std::less<>> problems_;
};

}  // namespace selvane
