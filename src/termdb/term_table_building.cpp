#include "termdb/term_table_building.h"

#include <fmt/format.h>

#include <chrono>
#include <functional>
#include <system_error>

#include "base/error.h"
#include "data/new_database.h"
#include "data/set_table_writer.h"
#include "literature/record_reading.h"
#include "termdb/record_collector.h"
#include "termdb/row_table_writer.h"
#include "termdb/term_table.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

void CheckYears(const TermTableRequest& request) {
  if (!request.from_year || !request.to_year || *request.from_year <= *request.to_year) return;
  throw InputError(fmt::format("no record is from {} and to {}: the first year must not be behind the last",
                               *request.from_year, *request.to_year));
}

std::uint64_t SizeOf(const std::vector<fs::path>& files) {
  std::uint64_t bytes = 0;
  for (const fs::path& file : files) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    if (!error) bytes += size;  // what is wrong with it is told when it is read
  }
  return bytes;
}

// Rows, where these suffice and nothing else was asked for.
TermTableForm FormOf(const TermTableRequest& request, std::size_t columns, std::uint32_t rows) {
  const bool fits = columns <= kMostTermColumns && rows <= static_cast<std::uint32_t>(kMostNumberedRows);
  const TermTableForm form = request.form.value_or(fits ? TermTableForm::kRows : TermTableForm::kSets);
  if (form == TermTableForm::kSets || fits) return form;
  throw InputError(fmt::format(
      "there are {} records with terms and {} terms, and a table in the form of rows holds {} rows "
      "and {} terms; choose the form of sets, or fewer of them",
      rows, columns, kMostNumberedRows, kMostTermColumns));
}

// Calls `add` with the columns of each row of the spool, as places in `columns`.
void ForEachRow(RowSpool& spool, std::span<const std::uint32_t> columns, std::size_t terms,
                std::uint32_t rows, Progress& progress,
                const std::function<void(std::span<const std::uint32_t>)>& add) {
  constexpr std::uint32_t kNoColumn = UINT32_MAX;
  // By the number of the term, since this is asked for each term of each row.
  std::vector<std::uint32_t> column_of(terms, kNoColumn);
  for (std::uint32_t i = 0; i < columns.size(); ++i) column_of[columns[i]] = i;
  HundredthSteps steps(progress, rows);
  std::uint64_t done = 0;
  std::vector<std::uint32_t> row;
  spool.ForEach([&](std::span<const std::uint32_t> row_terms) {
    row.clear();
    for (const std::uint32_t term : row_terms) {
      if (column_of[term] != kNoColumn) row.push_back(column_of[term]);
    }
    add(row);
    steps.Reached(++done);
  });
}

void WriteTable(Database& database, const BuildingReport& report, RowSpool& spool,
                std::span<const std::uint32_t> columns, Progress& progress) {
  const auto write = [&](auto& writer) {
    ForEachRow(spool, columns, report.terms, report.rows, progress,
               [&writer](std::span<const std::uint32_t> row) { writer.AddRow(row); });
  };
  if (report.form == TermTableForm::kSets) {
    SetTableWriter writer(database, report.table, report.columns);
    write(writer);
    writer.Finish();
    return;
  }
  CheckColumnNames(report.columns);
  RowTableWriter writer(database, report.table, report.columns);
  write(writer);
}

// Everything up to the commit of the database.
class TableBuilder {
 public:
  TableBuilder(const TermTableRequest& request, const TaxonomyStore& taxonomy, const TellNotices& tell,
               Progress& progress, BuildingReport& report)
      : request_(request), taxonomy_(taxonomy), tell_(tell), progress_(progress), report_(report) {}

  void Build(const std::vector<fs::path>& files, const fs::path& path) {
    Database database = Database::Create(path);
    // One for the table and its documents: a transaction for each row would cost far more than the row.
    Transaction transaction(database);
    RowSpool spool(path.parent_path());
    DocumentWriter documents(database);
    HundredthSteps steps(progress_, SizeOf(files));
    RecordCollector collector(request_, taxonomy_, spool, documents, steps);
    Read(files, collector);
    const std::vector<std::uint32_t> columns =
        ChooseColumns(request_.columns, collector.terms(), collector.counts(), taxonomy_);
    if (columns.empty()) {
      throw InputError(
          fmt::format("none of {} terms can be a column: all are in too few rows, or left out; lower the "
                      "rows that a term must have, or leave out less",
                      collector.terms().size()));
    }
    for (const std::uint32_t term : columns) report_.columns.push_back(collector.terms()[term]);
    report_.form = FormOf(request_, columns.size(), report_.rows);
    progress_.SetStatus("Writing term table ....");
    WriteTable(database, report_, spool, columns, progress_);
    documents.Finish(report_.table, collector.terms());
    transaction.Commit();
  }

 private:
  void Read(const std::vector<fs::path>& files, RecordCollector& collector) {
    const auto start = std::chrono::steady_clock::now();
    progress_.SetStatus("Reading records ....");
    for (const fs::path& file : files) {
      collector.BeginFile(file);
      const std::uint64_t before = collector.records();
      ReadRecords(file, collector, progress_);
      ++(collector.records() > before ? report_.files : report_.passed_over);
    }
    report_.read_seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    report_.rows = collector.rows();
    report_.terms = collector.terms().size();
    report_.records = collector.records();
    report_.bytes = collector.bytes();
    // Told before a run without rows is refused, since the notices say why there are none.
    tell_(collector.notices());
    if (collector.rows() == 0) throw NoTerms();
  }

  const TermTableRequest& request_;
  const TaxonomyStore& taxonomy_;
  const TellNotices& tell_;
  Progress& progress_;
  BuildingReport& report_;
};

}  // namespace

BuildingReport BuildTermTable(const TermTableRequest& request, const TaxonomyStore& taxonomy,
                              const Clock& clock, const TellNotices& tell, Progress& progress) {
  // What can be refused without reading comes before the files, which may take long.
  CheckYears(request);
  CheckLeaveOut(request.columns, taxonomy);
  const std::vector<fs::path> files = LiteratureFiles(request.paths);
  BuildingReport report;
  report.table = TermTableName(clock);
  MakeDatabase(request.output, request.existing, [&](const fs::path& temporary) {
    TableBuilder(request, taxonomy, tell, progress, report).Build(files, temporary);
  });
  return report;
}

}  // namespace selvane
