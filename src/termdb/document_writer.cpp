#include "termdb/document_writer.h"

#include <fmt/format.h>

#include <vector>

#include "base/packing.h"

namespace selvane {

namespace {

// The texts of so many bytes are packed together. Much larger blocks pack no better, and whoever wants one
// text unpacks its whole block.
constexpr std::size_t kBlockBytes = std::size_t{256} << 10;
// So many blocks wait for their turn, so that a busy processor does not keep the reading.
constexpr std::size_t kMostPacking = 4;
// Wider than any field of a record, so the check of the file never refuses what a reader took.
constexpr int kWidth = 100'000'000;

BulkInsert MakeTable(Database& database, std::string_view table, std::vector<Field> fields) {
  database.CreateTable(table, fields);
  std::vector<std::string> names;
  names.reserve(fields.size());
  for (Field& field : fields) names.push_back(std::move(field.name));
  return database.OpenBulkInsert(table, names);
}

void AppendNumber(std::uint32_t number, std::string& text) {
  const fmt::format_int digits(number);
  text.append(digits.data(), digits.size());
}

}  // namespace

DocumentWriter::DocumentWriter(Database& database)
    : database_(database),
      documents_(MakeTable(database, "sys_Documents",
                           {{"Row", FieldType::kInt32},
                            {"Pmid", FieldType::kText, kWidth},
                            {"Title", FieldType::kText, kWidth},
                            {"Year", FieldType::kInt32},
                            {"Journal", FieldType::kText, kWidth},
                            {"Block", FieldType::kInt32},
                            {"Begin", FieldType::kInt32},
                            {"Length", FieldType::kInt32}})),
      texts_(MakeTable(database, "sys_Texts", {{"Block", FieldType::kInt32}, {"Packed", FieldType::kBytes}})),
      marks_(MakeTable(database, "sys_Marks",
                       {{"Row", FieldType::kInt32}, {"Marks", FieldType::kText, kWidth}})) {}

void DocumentWriter::Add(const Document& document) {
  documents_.Set(0, std::int64_t{document.row});
  documents_.Set(1, document.pmid);
  documents_.Set(2, document.title);
  documents_.Set(3, std::int64_t{document.year});
  documents_.Set(4, document.journal);
  documents_.Set(5, blocks_);
  documents_.Set(6, static_cast<std::int64_t>(block_.size()));
  documents_.Set(7, static_cast<std::int64_t>(document.text.size()));
  documents_.Insert();
  AddMarks(document);
  block_ += document.text;
  if (block_.size() >= kBlockBytes) PackBlock();
}

// One text for all marks of a document: a row for each would cost more than the term table itself.
void DocumentWriter::AddMarks(const Document& document) {
  mark_text_.clear();
  for (const DocumentMark& mark : document.marks) {
    if (!mark_text_.empty()) mark_text_ += ' ';
    AppendNumber(mark.term, mark_text_);
    mark_text_ += "@hHs"[static_cast<int>(mark.place)];
    if (mark.place != MarkPlace::kText) continue;
    AppendNumber(mark.offset, mark_text_);
    mark_text_ += '+';
    AppendNumber(mark.length, mark_text_);
  }
  marks_.Set(0, std::int64_t{document.row});
  marks_.Set(1, mark_text_);
  marks_.Insert();
}

void DocumentWriter::PackBlock() {
  if (packing_.size() == kMostPacking) StoreOldest();
  ++blocks_;
  // Where the system gives no thread, the text is packed when it is wanted.
  packing_.push_back(std::async(std::launch::async | std::launch::deferred,
                                [block = std::move(block_)] { return Pack(block); }));
  block_.clear();
}

void DocumentWriter::StoreOldest() {
  // In the order of their numbers, whichever was packed first: the reader walks the blocks once and does not
  // go back.
  texts_.Set(0, blocks_ - static_cast<std::int64_t>(packing_.size()));
  texts_.SetBytes(1, packing_.front().get());
  packing_.pop_front();
  texts_.Insert();
}

void DocumentWriter::Finish(std::string_view table, std::span<const std::string> terms) {
  PackBlock();
  while (!packing_.empty()) StoreOldest();
  BulkInsert insert = MakeTable(database_, "sys_MarkTerms",
                                {{"Number", FieldType::kInt32}, {"Term", FieldType::kText, kWidth}});
  std::int64_t number = 0;
  for (const std::string& term : terms) {
    insert.Set(0, number++);
    insert.Set(1, term);
    insert.Insert();
  }
  database_.SetNote(kDocumentsNote, table);
}

}  // namespace selvane
