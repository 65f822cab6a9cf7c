#include "literature/record_reading.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <system_error>

#include "base/error.h"
#include "base/file.h"
#include "base/text.h"
#include "base/utf8_source.h"
#include "literature/bioc_reader.h"
#include "literature/medline_reader.h"
#include "literature/pubmed_xml_reader.h"
#include "literature/pubtator_reader.h"
#include "literature/record_sink.h"
#include "literature/tagged_reader.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

// Tagged texts have always been told by their name, too: one that is named otherwise is not read as such.
bool IsNamedText(const fs::path& name) {
  std::string lower = LowerCase(name.filename().string());
  if (lower.ends_with(".gz")) lower.resize(lower.size() - 3);
  const std::size_t dot = lower.rfind('.');
  return dot != std::string::npos && lower.find("txt", dot) != std::string::npos;
}

// True when a line of the text begins so.
bool HasLine(std::string_view text, std::string_view beginning) {
  if (text.starts_with(beginning)) return true;
  return text.find("\n" + std::string(beginning)) != std::string_view::npos;
}

// The first line that is not blank.
std::string_view FirstLine(std::string_view text) {
  std::string_view line;
  while (!text.empty() && line.empty()) line = Trimmed(NextLine(text));
  return line;
}

bool IsMedline(std::string_view text) {
  // Other programs write references with fields of two letters, of which some are the same.
  if (FirstLine(text).starts_with("TY  -")) return false;
  return HasLine(text, "PMID- ") || HasLine(text, "MH  - ") || HasLine(text, "AB  - ");
}

// The name of the first element, behind declarations and comments.
std::string_view RootElement(std::string_view text) {
  for (;;) {
    text = text.substr(std::min(text.find('<'), text.size()));
    if (text.size() < 2) return {};
    if (text[1] != '?' && text[1] != '!') break;
    const std::string_view end = text.starts_with("<!--") ? "-->" : ">";
    text.remove_prefix(std::min(text.find(end), text.size()));
  }
  return text.substr(1, text.find_first_of(" \t\r\n/>") - 1);
}

RecordFormat FormatOfXml(std::string_view text) {
  const std::string_view root = RootElement(text);
  const auto is_one_of = [root](auto... names) { return ((root == names) || ...); };
  if (is_one_of("PubmedArticleSet", "PubmedBookArticleSet", "PubmedArticle", "PubmedBookArticle",
                "MedlineCitationSet", "MedlineCitation")) {
    return RecordFormat::kPubmedXml;
  }
  // Others call theirs so, too.
  const bool is_bioc = root == "collection" && text.find("<document") != std::string_view::npos;
  return is_bioc ? RecordFormat::kBioc : RecordFormat::kUnknown;
}

RecordFormat FormatOfText(std::string_view text, const fs::path& name) {
  // The layouts share lines, so the order matters: a tagged text is MEDLINE layout too.
  const std::string_view first = FirstLine(text);
  if (first.starts_with('<')) return FormatOfXml(text);
  if (HasLine(text, "AB  - ") && text.find("<DictTerm") != std::string_view::npos) {
    return IsNamedText(name) ? RecordFormat::kTagged : RecordFormat::kUnknown;
  }
  if (IsPubtatorText(first)) return RecordFormat::kPubtator;
  return IsMedline(text) ? RecordFormat::kMedline : RecordFormat::kUnknown;
}

void ReadAs(RecordFormat format, ByteSource& source, RecordSink& sink) {
  switch (format) {
    case RecordFormat::kTagged:
      return ReadTagged(source, sink);
    case RecordFormat::kMedline:
      return ReadMedline(source, sink);
    case RecordFormat::kPubmedXml:
      return ReadPubmedXml(source, sink);
    case RecordFormat::kPubtator:
      return ReadPubtator(source, sink);
    case RecordFormat::kBioc:
      return ReadBioc(source, sink);
    case RecordFormat::kUnknown:
      return sink.Tell(problems::kUnknownFormat, "no reader knows its content");
  }
}

RecordFormat ReadSource(ByteSource& source, RecordVisitor& visitor, Progress& progress) {
  RecordSink sink(source, visitor, progress);
  RecordFormat format = RecordFormat::kUnknown;
  try {
    format = RecognizeFormat(source.Head(), source.path());
    visitor.OnFormat(format);
    ReadAs(format, source, sink);
    if (sink.records() == 0 && format != RecordFormat::kUnknown) sink.Tell(problems::kNoRecords, "");
  } catch (const Error& error) {
    // Only the file's own faults come here: those of the visitor travel as VisitorFault.
    sink.TellUnreadable(error);
  }
  sink.Finish();
  return format;
}

}  // namespace

RecordFormat RecognizeFormat(std::string_view first_bytes, const fs::path& name) {
  // Decoded as a whole, so that a byte order mark is not cut.
  ByteSource head(name, first_bytes, first_bytes.size() + 1);
  return FormatOfText(Utf8Source(head).Next(), name);
}

RecordFormat ReadRecords(ByteSource& source, RecordVisitor& visitor, Progress& progress) {
  try {
    return ReadSource(source, visitor, progress);
  } catch (const VisitorFault& fault) {
    std::rethrow_exception(fault.cause);
  }
}

RecordFormat ReadRecords(const fs::path& file, RecordVisitor& visitor, Progress& progress) {
  std::unique_ptr<ByteSource> source;
  try {
    source = std::make_unique<ByteSource>(file);
  } catch (const FileError& error) {
    visitor.OnProblem(problems::kUnreadable, error.what());
    return RecordFormat::kUnknown;
  }
  return ReadRecords(*source, visitor, progress);
}

std::vector<fs::path> LiteratureFiles(std::span<const fs::path> names) {
  std::vector<fs::path> files;
  for (const fs::path& name : names) {
    std::error_code error;
    if (!fs::exists(name, error)) {
      throw InputError(fmt::format("{}: there is no such file or folder", name.string()));
    }
    if (!fs::is_directory(name, error)) {
      files.push_back(name);
      continue;
    }
    const auto before = static_cast<std::ptrdiff_t>(files.size());
    for (const std::string& entry : NamesInFolder(name)) {
      // What programs of the desktop leave in folders is nobody's literature.
      if (!entry.starts_with('.') && fs::is_regular_file(name / entry, error)) files.push_back(name / entry);
    }
    if (files.begin() + before == files.end()) {
      throw InputError(fmt::format("{}: the folder holds no files", name.string()));
    }
    std::sort(files.begin() + before, files.end(),
              [](const fs::path& a, const fs::path& b) { return a.native() < b.native(); });
  }
  return files;
}

}  // namespace selvane
