// Taxonomy files and tagged abstracts, against the plainest way to move the same bytes.
#include <fmt/format.h>

#include <cstdlib>
#include <fstream>

#include "base/file.h"
#include "bench_input.h"
#include "data/database.h"
#include "data/recordset.h"
#include "literature/tagged_abstract.h"
#include "taxonomy/taxonomy_loading.h"
#include "taxonomy/taxonomy_store.h"
#include "termdb/term_table.h"

namespace selvane {
namespace {

namespace fs = std::filesystem;

int Shell(const std::string& command) {
  return std::system(command.c_str());
}

// The finished rows as comma-separated values, for the engine's shell.
void WriteRows(const fs::path& database, const fs::path& csv) {
  Database source = Database::Open(database, OpenMode::kReadOnly);
  std::ofstream file(csv);
  for (Recordset rows = source.OpenRecordset("SELECT * FROM Source"); !rows.AtEnd(); rows.MoveNext()) {
    for (int i = 0; i < rows.FieldCount(); ++i) file << (i == 0 ? "\"" : ",\"") << rows.Text(i) << '"';
    file << '\n';
  }
}

// Loading a taxonomy, against the engine's shell importing the finished rows into two tables with their
// indexes.
void LoadTaxonomyFile(benchmark::State& state) {
  const BenchFolder folder;
  const fs::path xml = TaxonomyInput(folder);
  SilentProgress progress;
  for ([[maybe_unused]] auto _ : state) {
    long rows = 0;
    const double seconds = SecondsOf(
        [&] { rows = LoadTaxonomy(xml, folder / "tax.mdb", ExistingFile::kReplace, progress).rows; });
    WriteRows(folder / "tax.mdb", folder / "rows.csv");
    const std::string shell = fmt::format("sqlite3 {0}/shell.mdb", (folder / "").string());
    Shell(fmt::format(
        "rm -f {0}/shell.mdb; sqlite3 {0}/tax.mdb '.schema Source' '.schema Taxonomy' > {0}/schema.sql",
        (folder / "").string()));
    const double yardstick = SecondsOf([&] {
      Shell(fmt::format("{} '.read {}' '.mode csv' '.import {} Source' '.import {} Taxonomy'", shell,
                        (folder / "schema.sql").string(), (folder / "rows.csv").string(),
                        (folder / "rows.csv").string()));
    });
    state.counters["rows"] = static_cast<double>(rows);
    state.counters["load_s"] = seconds;
    state.counters["shell_import_s"] = yardstick;
    state.counters["ratio_to_shell"] = seconds / yardstick;
  }
}

// Building a term table, against reading the files with cat and parsing their bytes once.
void BuildTermTable(benchmark::State& state) {
  const BenchFolder folder;
  SilentProgress progress;
  LoadTaxonomy(TaxonomyInput(folder), folder / "tax.mdb", ExistingFile::kReplace, progress);
  const std::vector<fs::path> folders = {AbstractsInput(folder)};
  std::string all;
  std::vector<std::string> texts;
  for (const fs::path& file : QueryFiles(folders)) texts.push_back(ReadFile(file));
  for ([[maybe_unused]] auto _ : state) {
    fs::remove(folder / "terms.mdb");
    std::uint64_t bytes = 0;
    const double seconds = SecondsOf([&] {
      const std::vector<fs::path> files = QueryFiles(folders);
      const TaxonomyStore taxonomy(folder / "tax.mdb");
      const TermCollection terms = CollectTerms(
          taxonomy, files, [](const auto&, const auto&) {}, progress);
      bytes = terms.bytes;
      WriteTermTable(terms, folder / "terms.mdb", ExistingFile::kRefuse, SystemClock(), progress);
    });
    const double cat = SecondsOf([&] {
      Shell(fmt::format("find {} -name '*.txt' -print0 | xargs -0 cat > /dev/null", folders[0].string()));
    });
    std::size_t marks = 0;
    const double parse = SecondsOf([&] {
      for (const std::string& text : texts) ForEachTaggedTerm(text, [&marks](std::string_view) { ++marks; });
    });
    state.counters["build_s"] = seconds;
    state.counters["cat_s"] = cat;
    state.counters["parse_MB_per_s"] = static_cast<double>(bytes) / 1e6 / parse;
    state.counters["build_MB_per_s"] = static_cast<double>(bytes) / 1e6 / seconds;
    state.counters["marks"] = static_cast<double>(marks);
    state.counters["ratio_to_cat_and_parse"] = seconds / (cat + parse);
  }
}

BENCHMARK(LoadTaxonomyFile)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BuildTermTable)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
