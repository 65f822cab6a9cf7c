// MEDLINE layout (docs/formats/pubmed-nbib.md).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "literature/record_sink.h"

namespace selvane {

// Reads all records of a file. Throws FileError.
void ReadMedline(ByteSource& source, RecordSink& sink);

// The four characters, filled up by blanks, that name the field which a line begins: "TI  " of "TI  -
// Asthma". Empty for a line that begins none.
std::string_view MedlineField(std::string_view line);

// Collects the lines of one record in MEDLINE layout.
class MedlineFields {
 public:
  // Takes a line that begins a field or goes on with one; fields that are not wanted are passed over. False
  // for a line that does neither.
  bool TakeLine(std::string_view line);
  bool IsEmpty() const { return !begun_; }
  bool HasPmid() const { return !record_.pmid.empty(); }
  bool IsTooLarge() const { return size_ >= kLargestRecord; }
  // The record of these lines, with its headings and substances. Begins anew.
  Record Finish(RecordSink& sink);

 private:
  std::string* Target(std::string_view field);

  Record record_;
  std::string book_title_;
  std::string short_journal_;
  std::string date_;
  std::vector<std::string> headings_;
  std::vector<std::string> substances_;
  std::string* target_ = nullptr;  // where the field at hand goes, when it is wanted
  std::size_t size_ = 0;
  bool begun_ = false;
};

}  // namespace selvane
