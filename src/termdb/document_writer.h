// Stores documents beside a term table, in tables of our own (docs/formats/term-database.md).
#pragma once

#include <deque>
#include <future>
#include <span>
#include <string>
#include <string_view>

#include "data/bulk_insert.h"
#include "data/database.h"
#include "termdb/document.h"

namespace selvane {

// What the note that names the table of the documents is called.
inline constexpr std::string_view kDocumentsNote = "documents of";

// Takes the documents of a term table as a stream. Texts are packed many together, since one alone is too
// short to be packed well, and in another thread, since packing takes longer than all else. Use it inside a
// Transaction. Throws DatabaseError.
class DocumentWriter {
 public:
  // Makes the tables in `database`, which must outlive this.
  explicit DocumentWriter(Database& database);

  // Documents come in the order of their rows, 1, 2, 3, ...
  void Add(const Document& document);
  // Writes what is left; `terms` are those that marks name by their places. Without it nothing is complete.
  void Finish(std::string_view table, std::span<const std::string> terms);

 private:
  void AddMarks(const Document& document);
  void PackBlock();
  void StoreOldest();

  Database& database_;
  BulkInsert documents_;
  BulkInsert texts_;
  BulkInsert marks_;
  std::string block_;
  std::int64_t blocks_ = 0;  // that are packed, or are being packed
  std::deque<std::future<std::string>> packing_;
  std::string mark_text_;
};

}  // namespace selvane
