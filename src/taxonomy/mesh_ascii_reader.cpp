// MeSH in ASCII: records of lines `FIELD = value`, each begun by *NEWRECORD.
#include <fmt/format.h>

#include <charconv>
#include <optional>

#include "base/line_source.h"
#include "base/text.h"
#include "taxonomy/mesh_readers.h"

namespace selvane {

namespace {

// One record while its lines are read: a descriptor or a supplementary record.
class AsciiRecord {
 public:
  explicit AsciiRecord(MeshVisitor& visitor) : visitor_(visitor) {}

  void Begin(std::uint64_t line) {
    Finish();
    begun_at_ = line;
  }

  void Take(std::string_view field, std::string_view value) {
    // A file that was cut off at its beginning must not give its rest to the record behind it.
    if (!begun_at_) return visitor_.OnProblem("fields before the first record, which are left out", field);
    if (field == "RECTYPE") {
      type_ = value;
    } else if (field == "UI") {
      heading_.id = value;
    } else if (field == "MH" || field == "NM") {
      heading_.name = value;
    } else if (field == "MN") {
      heading_.tree_numbers.emplace_back(value);
    } else if (field == "ENTRY" || field == "PRINT ENTRY") {
      // What follows the bars is about the text: semantic types, the thesaurus that it comes from, dates.
      heading_.entry_terms.emplace_back(Trimmed(value.substr(0, value.find('|'))));
    } else if (field == "DC") {
      std::from_chars(value.data(), value.data() + value.size(), heading_.descriptor_class);
    } else if (field == "HM") {
      headings_.emplace_back(value);
    }
  }

  void Finish() {
    if (!begun_at_) return;
    if (type_ == "C") {
      visitor_.OnSupplementary({std::move(heading_.id), std::move(heading_.name), std::move(headings_)});
    } else if (type_ == "D" || type_.empty()) {
      visitor_.OnHeading(std::move(heading_));
    } else {
      visitor_.OnProblem("records that are neither descriptors nor supplementary",
                         fmt::format("RECTYPE = {} at line {}", type_, *begun_at_));
    }
    begun_at_.reset();
    type_.clear();
    heading_ = {};
    headings_ = {};
  }

 private:
  MeshVisitor& visitor_;
  std::optional<std::uint64_t> begun_at_;
  std::string type_;
  MeshHeading heading_;
  std::vector<std::string> headings_;
};

}  // namespace

void ReadMeshAscii(ByteSource& source, MeshVisitor& visitor, const MeshPulse& pulse) {
  LineSource lines(source);
  AsciiRecord record(visitor);
  std::string_view line;
  while (lines.Next(line)) {
    if (lines.line_number() % 1024 == 0) pulse();
    if (Trimmed(line) == "*NEWRECORD") {
      record.Begin(lines.line_number());
      continue;
    }
    const std::size_t sign = line.find(" = ");
    if (sign == std::string_view::npos) continue;  // an empty line, or more of a note
    record.Take(Trimmed(line.substr(0, sign)), Trimmed(line.substr(sign + 3)));
  }
  record.Finish();
}

}  // namespace selvane
