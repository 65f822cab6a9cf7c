#include "termdb/document_reader.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>

#include "base/error.h"
#include "base/packing.h"
#include "base/text.h"
#include "data/database_error.h"
#include "data/recordset.h"
#include "termdb/document_writer.h"

namespace selvane {

namespace {

// No block that was packed is as long, so a file that was tampered with cannot fill the memory.
constexpr std::size_t kMostBlockBytes = std::size_t{512} << 20;

// Blocks of texts in their order; documents stand in the same order, so each is unpacked once.
class TextBlocks {
 public:
  explicit TextBlocks(Database& database)
      : rows_(database.OpenRecordset("SELECT Block,Packed FROM sys_Texts")) {}

  // The text, valid until the next call; nothing where the block is too short, or is gone.
  std::optional<std::string_view> Find(std::int32_t block, std::size_t begin, std::size_t length) {
    if (block != block_) {
      while (!rows_.AtEnd() && rows_.Int32(0) != block) rows_.MoveNext();
      if (rows_.AtEnd()) return std::nullopt;
      text_ = Unpack(rows_.Bytes(1), kMostBlockBytes);
      block_ = block;
    }
    if (begin > text_.size() || length > text_.size() - begin) return std::nullopt;
    return std::string_view(text_).substr(begin, length);
  }

 private:
  Recordset rows_;
  std::int32_t block_ = -1;
  std::string text_;
};

std::vector<std::string> ReadTerms(Database& database) {
  std::vector<std::string> terms;
  for (Recordset rows = database.OpenRecordset("SELECT Term FROM sys_MarkTerms"); !rows.AtEnd();
       rows.MoveNext()) {
    terms.emplace_back(rows.Text(0));
  }
  return terms;
}

Database OpenWithDocuments(const std::filesystem::path& path, std::string_view table) {
  Database database = Database::Open(path, OpenMode::kShared);
  const std::optional<std::string> noted = database.FindNote(kDocumentsNote);
  if (!noted) {
    throw InputError(
        fmt::format("{}: this database remembers no documents: an earlier version, a window or another "
                    "program made it; build it again with terms build",
                    path.string()));
  }
  if (LowerCase(*noted) != LowerCase(table)) {
    throw InputError(fmt::format("{}: the documents of this database belong to its table {}, not to {}",
                                 path.string(), *noted, table));
  }
  return database;
}

}  // namespace

DocumentReader::DocumentReader(const std::filesystem::path& path, std::string_view table)
    : database_(OpenWithDocuments(path, table)), terms_(ReadTerms(database_)) {}

void DocumentReader::Damaged() const {
  throw DatabaseError(database_.path(), "its documents are damaged; build the term database again");
}

// The form that DocumentWriter gives them: 3@12+6 for a mark in the text, 3h, 3H and 3s for the others.
void DocumentReader::ReadMarks(std::string_view text, std::vector<DocumentMark>& marks) const {
  constexpr std::string_view kPlaces = "@hHs";
  marks.clear();
  const char* at = text.data();
  const char* const end = at + text.size();
  const auto number = [&] {
    std::uint32_t value = 0;
    const auto [behind, error] = std::from_chars(at, end, value);
    if (error != std::errc()) Damaged();
    at = behind;
    return value;
  };
  while (at != end) {
    DocumentMark mark{.term = number()};
    const std::size_t place = at == end ? std::string_view::npos : kPlaces.find(*at++);
    if (place == std::string_view::npos || mark.term >= terms_.size()) Damaged();
    mark.place = static_cast<MarkPlace>(place);
    if (mark.place == MarkPlace::kText) {
      mark.offset = number();
      if (at == end || *at++ != '+') Damaged();
      mark.length = number();
    }
    marks.push_back(mark);
    if (at != end && *at++ != ' ') Damaged();
  }
}

void DocumentReader::ForEach(std::span<const std::uint32_t> rows,
                             const std::function<void(const Document&)>& visit, Progress& progress) {
  // Documents, marks and blocks were written in the order of the rows. So they are walked side by side, and
  // none of the tables needs an index.
  TextBlocks blocks(database_);
  Recordset documents =
      database_.OpenRecordset("SELECT Row,Pmid,Title,Year,Journal,Block,Begin,Length FROM sys_Documents");
  Recordset marks = database_.OpenRecordset("SELECT Row,Marks FROM sys_Marks");
  Document document;  // its texts keep their memory
  for (std::size_t i = 0; i < rows.size() && !documents.AtEnd(); documents.MoveNext(), marks.MoveNext()) {
    document.row = static_cast<std::uint32_t>(documents.Int32(0));
    if (document.row % 1024 == 0) progress.Pulse();
    // The rows ascend; one that has no document is passed over.
    while (i < rows.size() && rows[i] < document.row) ++i;
    if (i == rows.size() || rows[i] != document.row) continue;
    document.pmid = documents.Text(1);
    document.title = documents.Text(2);
    document.year = documents.Int32(3);
    document.journal = documents.Text(4);
    if (marks.AtEnd() || marks.Int32(0) != documents.Int32(0)) Damaged();
    ReadMarks(marks.Text(1), document.marks);
    try {
      const auto text = blocks.Find(documents.Int32(5), static_cast<std::size_t>(documents.Int32(6)),
                                    static_cast<std::size_t>(documents.Int32(7)));
      if (!text) Damaged();
      document.text = *text;
    } catch (const InputError&) {
      Damaged();
    }
    visit(document);
  }
}

}  // namespace selvane
