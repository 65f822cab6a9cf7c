// Reads the documents that a term database remembers.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/progress.h"
#include "data/database.h"
#include "termdb/document.h"

namespace selvane {

// The documents of a term table. Throws DatabaseError, also for documents that are damaged.
class DocumentReader {
 public:
  // Throws InputError when the database remembers no documents, as one of an earlier version or of another
  // program, or none of this table.
  DocumentReader(const std::filesystem::path& path, std::string_view table);

  // Calls `visit` with the documents of these rows, which must ascend. The document is valid during the call
  // only. A row without a document is passed over.
  void ForEach(std::span<const std::uint32_t> rows, const std::function<void(const Document&)>& visit,
               Progress& progress);
  // What the marks of documents name by its place.
  const std::vector<std::string>& terms() const { return terms_; }

 private:
  [[noreturn]] void Damaged() const;
  void ReadMarks(std::string_view text, std::vector<DocumentMark>& marks) const;

  Database database_;
  std::vector<std::string> terms_;
};

}  // namespace selvane
