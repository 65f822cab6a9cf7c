// From records to the rows and documents of a term table.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "literature/record_reading.h"
#include "taxonomy/term_finder.h"
#include "termdb/accepted_terms.h"
#include "termdb/building_notices.h"
#include "termdb/document_writer.h"
#include "termdb/row_spool.h"
#include "termdb/seen_pmids.h"

namespace selvane {

// Takes records as they are read. Each that counts becomes a row of term numbers in a spool and a document in
// the database; each that does not becomes a notice.
class RecordCollector final : public RecordVisitor {
 public:
  // What is passed must outlive this.
  RecordCollector(const TermTableRequest& request, const TaxonomyStore& taxonomy, RowSpool& spool,
                  DocumentWriter& documents, HundredthSteps& steps);

  // What comes is of this file.
  void BeginFile(const std::filesystem::path& file) { file_ = &file; }
  void OnFormat(RecordFormat format) override { format_ = format; }
  void OnRecord(Record&& record) override;
  void OnProblem(std::string_view kind, std::string_view example) override { notices_.Add(kind, example); }
  void OnBytes(std::uint64_t bytes) override { steps_.Reached(bytes_ += bytes); }

  // Terms by their numbers, and the rows of each.
  const std::vector<std::string>& terms() const { return accepted_.terms(); }
  const std::vector<std::uint32_t>& counts() const { return counts_; }
  std::uint32_t rows() const { return rows_; }
  std::uint64_t records() const { return records_; }
  std::uint64_t bytes() const { return bytes_; }
  const std::vector<BuildingNotice>& notices() const { return notices_.all(); }

 private:
  bool IsOfWantedYear(const Record& record);
  void CollectTerms(const Record& record);
  // Puts the terms that a mention stands for into `found_`.
  void FindTerms(const Mention& mention, const Record& record);
  void TellOfMiss(TermMiss miss, const Mention& mention, const Record& record);
  void AddRow(Record&& record);
  std::string PlaceOf(const Record& record) const;

  const TermTableRequest& request_;
  const TaxonomyStore& taxonomy_;
  RowSpool& spool_;
  DocumentWriter& documents_;
  HundredthSteps& steps_;
  AcceptedTerms accepted_;
  std::optional<TermFinder> finder_;      // made when the first record comes that needs it
  std::vector<std::uint32_t> by_finder_;  // the numbers of the finder's terms, where they were asked for
  BuildingNotices notices_;
  SeenPmids seen_;
  const std::filesystem::path* file_ = nullptr;
  RecordFormat format_ = RecordFormat::kUnknown;
  std::vector<std::uint32_t> counts_;
  std::vector<std::uint32_t> last_row_;  // of each term, to know it again within a record
  std::vector<std::uint32_t> found_;
  std::vector<std::uint32_t> row_terms_;
  Document document_;
  std::uint32_t rows_ = 0;
  std::uint64_t records_ = 0;
  std::uint64_t bytes_ = 0;
};

}  // namespace selvane
