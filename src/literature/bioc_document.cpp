#include "literature/bioc_document.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "base/text.h"

namespace selvane {

namespace {

// Where a text of the document went in the text of the record, in characters.
struct Placed {
  std::uint64_t offset = 0;  // in the document
  std::uint64_t length = 0;
  std::uint64_t place = 0;  // in the record
};

// Joins the texts of a kind, and says where each of them begins, counted from `place` on.
std::string Joined(const std::vector<BiocText>& texts, BiocText::Kind kind, std::uint64_t place,
                   std::vector<Placed>& placed) {
  std::string joined;
  for (const BiocText& text : texts) {
    if (text.kind != kind) continue;
    if (!joined.empty()) {
      joined += ' ';
      ++place;
    }
    const std::uint64_t length = CharacterCount(text.text);
    placed.push_back({text.offset, length, place});
    joined += text.text;
    place += length;
  }
  return joined;
}

// `placed` is in the order of offsets.
Mark MarkOf(const BiocAnnotation& annotation, const std::vector<Placed>& placed) {
  // What lies in none of the texts gets a place behind all of them.
  Mark mark = {UINT64_MAX, UINT64_MAX, annotation.words, annotation.line};
  // The words of several places are no words of the text.
  if (annotation.locations > 1) mark.words = {};
  const auto behind =
      std::upper_bound(placed.begin(), placed.end(), annotation.offset,
                       [](std::uint64_t offset, const Placed& text) { return offset < text.offset; });
  if (behind == placed.begin()) return mark;
  const Placed& text = *(behind - 1);
  const std::uint64_t begin = annotation.offset - text.offset;
  if (begin > text.length || annotation.length > text.length - begin) return mark;
  mark.begin = text.place + begin;
  mark.end = mark.begin + annotation.length;
  return mark;
}

}  // namespace

Record BiocDocument::ToRecord(RecordSink& sink) {
  Record record;
  record.pmid = std::move(id);
  record.year = YearOf(year);
  // "Nature; 2003 Jan 1; 23(4)" is how one exporter writes it.
  record.journal = Trimmed(std::string_view(journal).substr(0, journal.find(';')));
  std::vector<Placed> placed;
  record.title = Joined(texts, BiocText::Kind::kTitle, 0, placed);
  record.text = Joined(texts, BiocText::Kind::kAbstract, CharacterCount(record.title) + 1, placed);
  for (const BiocText& text : texts) {
    if (text.kind == BiocText::Kind::kOther) sink.Tell(problems::kPassage, "document " + record.pmid);
  }
  // They nearly always are in order; looking for each mark among all texts could take the square of both.
  std::stable_sort(placed.begin(), placed.end(),
                   [](const Placed& a, const Placed& b) { return a.offset < b.offset; });
  const std::string document = DocumentText(record);
  CharacterPlaces places;
  places.Begin(document);
  for (BiocAnnotation& annotation : annotations) {
    const Identifiers& found = annotation.identifiers;
    if (found.ids.empty() && (found.is_none || found.is_other)) {
      sink.Tell(found.is_other ? problems::kOtherVocabulary : problems::kNoIdentifier,
                fmt::format("line {}: \"{}\"", annotation.line, annotation.words));
      continue;
    }
    Mention mention;
    mention.ids = std::move(annotation.identifiers.ids);
    if (mention.ids.empty()) mention.name = annotation.words;
    if (PlaceMark(places, MarkOf(annotation, placed), mention, sink))
      record.mentions.push_back(std::move(mention));
  }
  return record;
}

}  // namespace selvane
