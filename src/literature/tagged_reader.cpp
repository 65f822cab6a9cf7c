#include "literature/tagged_reader.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "base/text.h"
#include "base/utf8_source.h"
#include "literature/field_text.h"
#include "literature/medline_reader.h"
#include "literature/tagged_abstract.h"

namespace selvane {

namespace {

constexpr auto kNone = std::string_view::npos;

// The whole file, up to a byte more than a record may have; its bytes as they are, but for UTF-16.
std::string FileBytes(ByteSource& source) {
  const std::string_view head = source.Head();
  const bool is_utf16 = head.starts_with("\xFF\xFE") || head.starts_with("\xFE\xFF");
  std::string bytes;
  Utf8Source text(source);
  const auto next = [&] { return is_utf16 ? text.Next() : source.Next(); };
  for (std::string_view piece = next(); !piece.empty() && bytes.size() <= kLargestRecord; piece = next()) {
    bytes += piece;
  }
  // The marks are looked for in the bytes, and each text is decoded when it is taken, as the term table has
  // always done it: a form in the middle of a wrong byte stays what it was.
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
  return bytes;
}

// Where the text of an abstract ends: at the next line that begins with something else than blanks.
std::size_t EndOfText(std::string_view bytes, std::size_t from) {
  std::size_t line = bytes.find('\n', from);
  while (line != kNone && line + 1 < bytes.size() && (bytes[line + 1] == ' ' || bytes[line + 1] == '\r')) {
    line = bytes.find('\n', line + 1);
  }
  return std::min(line, bytes.size());
}

class TaggedReader {
 public:
  explicit TaggedReader(std::string_view bytes) : bytes_(bytes), is_utf8_(IsUtf8(bytes)) {}

  Record Read(RecordSink& sink) {
    std::vector<Mention> mentions;
    std::string text;
    const std::size_t begin = std::min(TaggedAbstractBegin(bytes_), bytes_.size());
    std::size_t at = begin;
    ForEachTaggedMark(bytes_, [&](const TaggedMark& mark) {
      Append(text, at, mark.begin);
      Mention mention = TakeMark(text, mark);
      if (!mention.name.empty()) mentions.push_back(std::move(mention));
      at = mark.end;
    });
    const std::size_t end = EndOfText(bytes_, at);
    Append(text, at, end);
    TrimEnd(text);
    Record record = Fields(begin, end, sink);
    // Offsets were counted in the abstract; the title is known only now.
    for (Mention& mention : mentions) mention.offset += static_cast<std::uint32_t>(record.title.size() + 1);
    record.text = std::move(text);
    record.mentions = std::move(mentions);
    return record;
  }

 private:
  std::string Decoded(std::size_t from, std::size_t to) const {
    const std::string_view part = bytes_.substr(from, to - from);
    return is_utf8_ ? std::string(part) : FromCodePage1252(part);
  }

  void Append(std::string& text, std::size_t from, std::size_t to) const {
    if (from < to) AppendFolded(text, Decoded(from, to));
  }

  // Appends the marked words. The offset is that in the abstract.
  Mention TakeMark(std::string& text, const TaggedMark& mark) const {
    const std::string decoded = Decoded(mark.words, mark.words_end);
    const std::string_view words = Trimmed(decoded);
    const auto leading = static_cast<std::size_t>(words.data() - decoded.data());
    // A mark without blanks around it stands close to the words beside it.
    if (!words.empty() && leading > 0) AppendFolded(text, " ");
    Mention mention;
    mention.name = mark.form;
    mention.offset = static_cast<std::uint32_t>(text.size());
    AppendFolded(text, words);
    mention.length = static_cast<std::uint32_t>(text.size()) - mention.offset;
    if (leading + words.size() < decoded.size()) AppendFolded(text, " ");
    return mention;
  }

  // Title, year and the like from the lines around the abstract, up to the next record.
  Record Fields(std::size_t abstract, std::size_t end, RecordSink& sink) const {
    MedlineFields fields;
    const std::string before = Decoded(0, abstract);
    for (std::string_view rest = before; !rest.empty();) fields.TakeLine(NextLine(rest));
    const std::string behind = Decoded(end, bytes_.size());
    for (std::string_view rest = behind; !rest.empty();) {
      const std::string_view line = NextLine(rest);
      if (fields.HasPmid() && MedlineField(line) == "PMID") break;
      // What is marked counts, and nothing else, or tables would change that people know.
      const bool is_substance = MedlineField(line) == "RN  " || MedlineField(line) == "NM  ";
      if (!is_substance) fields.TakeLine(line);
    }
    return fields.Finish(sink);
  }

  std::string_view bytes_;
  bool is_utf8_;
};

}  // namespace

void ReadTagged(ByteSource& source, RecordSink& sink) {
  const std::string bytes = FileBytes(source);
  if (bytes.size() > kLargestRecord) return sink.Tell(problems::kTooLarge, "the whole file is one record");
  sink.Take(TaggedReader(bytes).Read(sink));
}

}  // namespace selvane
