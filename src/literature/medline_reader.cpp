#include "literature/medline_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

#include "base/line_source.h"
#include "base/text.h"
#include "literature/field_text.h"

namespace selvane {

namespace {

// "*Term/qualifier/*qualifier": a star makes the heading a major topic, wherever it stands.
Mention HeadingMention(std::string_view heading) {
  Mention mention;
  mention.is_heading = true;
  mention.is_major = heading.starts_with('*') || heading.find("/*") != std::string_view::npos;
  if (heading.starts_with('*')) heading.remove_prefix(1);
  mention.name = Trimmed(heading.substr(0, heading.find('/')));
  return mention;
}

// "9035-51-2 (Cytochrome P-450 Enzyme System)": a number and the name, which may hold brackets itself.
Mention SubstanceMention(std::string_view substance) {
  Mention mention;
  mention.is_substance = true;
  const std::size_t open = substance.find('(');
  const std::size_t close = substance.rfind(')');
  if (open != std::string_view::npos && close != std::string_view::npos && open < close) {
    mention.name = Trimmed(substance.substr(open + 1, close - open - 1));
  }
  return mention;
}

bool IsFieldCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == ' ';
}

void FinishRecord(MedlineFields& fields, RecordSink& sink) {
  if (fields.IsEmpty()) return;
  // Asked before, since finishing begins anew.
  const bool is_too_large = fields.IsTooLarge();
  const bool has_pmid = fields.HasPmid();
  Record record = fields.Finish(sink);
  const std::string place = has_pmid ? "PMID " + record.pmid : fmt::format("record {}", sink.records() + 1);
  if (is_too_large) return sink.Tell(problems::kTooLarge, place);
  if (!has_pmid) sink.Tell(problems::kNoPmid, place);
  sink.Take(std::move(record));
}

}  // namespace

std::string_view MedlineField(std::string_view line) {
  constexpr std::size_t kLength = 4;
  const bool is_field = line.size() > kLength && line[kLength] == '-' && line[0] != ' ' &&
                        (line.size() == kLength + 1 || line[kLength + 1] == ' ') &&
                        std::all_of(line.begin(), line.begin() + kLength, IsFieldCharacter);
  return is_field ? line.substr(0, kLength) : std::string_view();
}

bool MedlineFields::TakeLine(std::string_view line) {
  constexpr std::size_t kValue = 6;
  const std::string_view field = MedlineField(line);
  if (!field.empty()) {
    begun_ = true;
    // The rest of a huge record is passed over, so that it needs no memory.
    target_ = IsTooLarge() ? nullptr : Target(field);
    line.remove_prefix(std::min(kValue, line.size()));
  } else if (line.empty() || (line[0] != ' ' && line[0] != '\t')) {
    return false;
  }
  if (target_ == nullptr) return true;
  const std::string_view text = Trimmed(line);
  // Headings without a text need memory as well.
  size_ += text.size() + sizeof(Mention);
  if (text.empty() || IsTooLarge()) return true;
  if (!target_->empty()) *target_ += ' ';
  *target_ += text;
  return true;
}

std::string* MedlineFields::Target(std::string_view field) {
  // A field that stands twice, as that of a second title, counts once.
  const auto first = [](std::string& text) { return text.empty() ? &text : nullptr; };
  // The field of headings first: there are most of them.
  if (field == "MH  ") return &headings_.emplace_back();
  if (field == "RN  " || field == "NM  ") return &substances_.emplace_back();
  if (field == "AB  ") return first(record_.text);
  if (field == "TI  ") return first(record_.title);
  if (field == "PMID") return first(record_.pmid);
  if (field == "DP  ") return first(date_);
  if (field == "JT  ") return first(record_.journal);
  if (field == "TA  ") return first(short_journal_);
  if (field == "BTI ") return first(book_title_);
  return nullptr;
}

Record MedlineFields::Finish(RecordSink& sink) {
  Record record = std::move(record_);
  // Books have their title in a field of its own, and chapters have both.
  if (record.title.empty()) record.title = std::move(book_title_);
  if (record.journal.empty()) record.journal = std::move(short_journal_);
  record.year = YearOf(date_);
  record.mentions.reserve(headings_.size() + substances_.size());
  for (const std::string& heading : headings_) {
    Mention mention = HeadingMention(heading);
    if (!mention.name.empty()) record.mentions.push_back(std::move(mention));
  }
  for (const std::string& substance : substances_) {
    Mention mention = SubstanceMention(substance);
    if (mention.name.empty()) {
      sink.Tell(problems::kNoName, fmt::format("PMID {}: \"{}\"", record.pmid, substance));
    } else {
      record.mentions.push_back(std::move(mention));
    }
  }
  *this = MedlineFields();
  return record;
}

void ReadMedline(ByteSource& source, RecordSink& sink) {
  LineSource lines(source);
  MedlineFields fields;
  for (std::string_view line; lines.Next(line); sink.Advance()) {
    if (Trimmed(line).empty()) {
      FinishRecord(fields, sink);
      continue;
    }
    // Files put together by hand lack the empty line between records.
    if (fields.HasPmid() && MedlineField(line) == "PMID") FinishRecord(fields, sink);
    if (!fields.TakeLine(line))
      sink.Tell(problems::kUnknownLine, fmt::format("line {}", lines.line_number()));
  }
  FinishRecord(fields, sink);
  sink.TellRecoded(lines.bytes_recoded());
}

}  // namespace selvane
