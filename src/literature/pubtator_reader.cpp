#include "literature/pubtator_reader.h"

#include <fmt/format.h>

#include <array>
#include <charconv>
#include <optional>
#include <string>
#include <utility>

#include "base/line_source.h"
#include "base/text.h"
#include "literature/field_text.h"
#include "literature/mark_places.h"

namespace selvane {

namespace {

// The columns of a row: PMID, begin, end, words, type, identifiers.
using Columns = std::array<std::string_view, 6>;

Columns ColumnsOf(std::string_view row) {
  Columns columns;
  for (std::string_view& column : columns) {
    const std::size_t end = row.find('\t');
    column = row.substr(0, end);
    if (end == std::string_view::npos) break;
    row.remove_prefix(end + 1);
  }
  return columns;
}

std::optional<std::uint64_t> OffsetOf(std::string_view text) {
  std::uint64_t value = 0;
  const auto [end, status] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (status != std::errc{} || end != text.data() + text.size()) return std::nullopt;
  return value;
}

class PubtatorReader {
 public:
  PubtatorReader(LineSource& lines, RecordSink& sink) : lines_(lines), sink_(sink) {}

  void TakeLine(std::string_view line) {
    // Texts have bars behind their number, rows have tabs; texts may hold tabs, and rows bars.
    const std::size_t end = line.find_first_of("|\t");
    if (end == std::string_view::npos) return Tell(problems::kUnknownLine);
    const std::string_view pmid = line.substr(0, end);
    // Some files have no empty lines between documents.
    if (pmid != record_.pmid) Finish();
    size_ += line.size() + sizeof(Mention);
    if (IsPubtatorText(line)) return TakeText(pmid, line[end + 1], line.substr(end + 3));
    if (line[end] != '\t' || !(has_title_ || has_text_)) return Tell(problems::kUnknownLine);
    // The rest of a huge record is passed over.
    if (size_ < kLargestRecord) TakeRow(ColumnsOf(line));
  }

  void Finish() {
    if (has_title_ || has_text_) {
      if (size_ < kLargestRecord) {
        sink_.Take(std::move(record_));
      } else {
        sink_.Tell(problems::kTooLarge, "PMID " + record_.pmid);
      }
    }
    record_ = Record();
    has_title_ = has_text_ = is_indexed_ = false;
    size_ = 0;
  }

 private:
  void Tell(std::string_view kind) { sink_.Tell(kind, fmt::format("line {}", lines_.line_number())); }

  void TakeText(std::string_view pmid, char part, std::string_view text) {
    bool& has_part = part == 't' ? has_title_ : has_text_;
    // Behind a row it would move the places of the marks before it.
    if (is_indexed_ || std::exchange(has_part, true)) return Tell(problems::kUnknownLine);
    record_.pmid = pmid;
    // As they stand, blanks at the ends too: offsets count them.
    if (size_ < kLargestRecord) (part == 't' ? record_.title : record_.text) = text;
  }

  void TakeRow(const Columns& columns) {
    const auto& [pmid, begin, end, words, type, ids] = columns;
    // Relations have a word where marks have their begin.
    if (!begin.empty() && (begin[0] < '0' || begin[0] > '9') && begin[0] != '-')
      return Tell(problems::kRelation);
    Identifiers found = IdentifiersOf(ids);
    if (found.ids.empty() && (found.is_none || found.is_other)) {
      return sink_.Tell(found.is_other ? problems::kOtherVocabulary : problems::kNoIdentifier,
                        fmt::format("line {}: {}, {}", lines_.line_number(), type, ids));
    }
    Mention mention;
    mention.ids = std::move(found.ids);
    // Words are a name only where there is nothing better: they are what the author wrote.
    if (mention.ids.empty()) mention.name = words;
    const auto [from, to] = std::pair(OffsetOf(begin), OffsetOf(end));
    if (!from || !to) return Tell(problems::kOutside);
    Index();
    const Mark mark = {*from, *to, words, lines_.line_number()};
    if (PlaceMark(places_, mark, mention, sink_)) record_.mentions.push_back(std::move(mention));
  }

  void Index() {
    // Once for all rows, which stand behind both texts.
    if (std::exchange(is_indexed_, true)) return;
    document_ = DocumentText(record_);
    places_.Begin(document_);
  }

  LineSource& lines_;
  RecordSink& sink_;
  Record record_;
  std::string document_;
  CharacterPlaces places_;
  std::size_t size_ = 0;
  bool has_title_ = false;
  bool has_text_ = false;
  bool is_indexed_ = false;
};

}  // namespace

bool IsPubtatorText(std::string_view line) {
  const std::size_t end = line.find_first_of("|\t");
  return end != std::string_view::npos && end > 0 && line.size() > end + 2 && line[end] == '|' &&
         (line[end + 1] == 't' || line[end + 1] == 'a') && line[end + 2] == '|';
}

void ReadPubtator(ByteSource& source, RecordSink& sink) {
  LineSource lines(source);
  PubtatorReader reader(lines, sink);
  for (std::string_view line; lines.Next(line); sink.Advance()) {
    if (Trimmed(line).empty()) {
      reader.Finish();
    } else {
      reader.TakeLine(line);
    }
  }
  reader.Finish();
  sink.TellRecoded(lines.bytes_recoded());
}

}  // namespace selvane
