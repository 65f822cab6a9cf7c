// Term tables in both forms, and a million rows of sets.
#include <cmath>
#include <random>

#include "bench_input.h"
#include "closed/column_items.h"
#include "data/bulk_insert.h"
#include "data/set_table_writer.h"
#include "itemsets/item_registry.h"
#include "taxonomy/taxonomy_loading.h"

namespace selvane {
namespace {

namespace fs = std::filesystem;

struct Input {
  Input() {
    SilentProgress progress;
    LoadTaxonomy(TaxonomyInput(folder), folder / "tax.mdb", ExistingFile::kRefuse, progress);
    terms = LeafTerms(folder / "tax.mdb", 1500);
  }
  BenchFolder folder;
  std::vector<std::string> terms;
};

const Input& TheInput() {
  static const Input kInput;
  return kInput;
}

// Rows of some thirty terms, of which few are common and most are rare.
class RowMaker {
 public:
  explicit RowMaker(std::size_t terms) : terms_(static_cast<double>(terms)) {}
  const std::vector<std::uint32_t>& Next() {
    row_.clear();
    for (auto count = 20 + random_() % 21; count > 0; --count) {
      row_.push_back(static_cast<std::uint32_t>(terms_ * std::pow(chance_(random_), 3.0)));
    }
    return row_;
  }

 private:
  double terms_;
  std::mt19937 random_{11};
  std::uniform_real_distribution<double> chance_{0, 1};
  std::vector<std::uint32_t> row_;
};

void WriteSets(const fs::path& path, const std::vector<std::string>& terms, int rows) {
  fs::remove(path);
  Database database = Database::Create(path);
  Transaction transaction(database);
  SetTableWriter writer(database, "T", terms);
  RowMaker maker(terms.size());
  for (int row = 0; row < rows; ++row) writer.AddRow(maker.Next());
  writer.Finish();
  transaction.Commit();
}

void WriteRows(const fs::path& path, const std::vector<std::string>& terms, int rows) {
  fs::remove(path);
  Database database = Database::Create(path);
  std::vector<Field> fields = {{"Index", FieldType::kInt16}};
  std::vector<std::string> names = {"Index"};
  for (const std::string& term : terms) {
    fields.push_back({term, FieldType::kInt16});
    names.push_back(term);
  }
  database.CreateTable("T", fields);
  Transaction transaction(database);
  BulkInsert insert = database.OpenBulkInsert("T", names);
  RowMaker maker(terms.size());
  for (int row = 1; row <= rows; ++row) {
    insert.Set(0, std::int64_t{row});
    for (std::size_t i = 1; i < names.size(); ++i) insert.Set(static_cast<int>(i), std::int64_t{0});
    for (const std::uint32_t term : maker.Next()) insert.Set(static_cast<int>(term) + 1, std::int64_t{1});
    insert.Insert();
  }
  transaction.Commit();
}

struct Seconds {
  double write = 0;
  double list = 0;    // the rows of each term
  double closed = 0;  // reading the items as closed itemsets are searched in
  double read = 0;    // reading the items and their ancestors in a twentieth of the rows
  double megabytes = 0;
};

Seconds Measure(const Input& input, const fs::path& path, const auto& write) {
  Seconds seconds;
  seconds.write = SecondsOf(write);
  seconds.megabytes = static_cast<double>(fs::file_size(path)) / 1e6;
  TransactionSource source;
  source.Open(path);
  const TaxonomyStore taxonomy(input.folder / "tax.mdb");
  std::vector<std::uint32_t> ids;
  std::string name;
  SilentProgress progress;
  seconds.list = SecondsOf([&] {
    for (int i = 1; i <= static_cast<int>(input.terms.size()); ++i) source.ItemRowIds("T", i, ids, name);
  });
  seconds.closed =
      SecondsOf([&] { benchmark::DoNotOptimize(ReadColumnItems(source, "T", taxonomy, 0.05F, progress)); });
  const ItemHierarchy hierarchy(taxonomy, ItemKind::kPositions);
  seconds.read = SecondsOf([&] {
    benchmark::DoNotOptimize(
        ReadItems(source, "T", input.terms, hierarchy, {.minimum_support = 0.05F}, progress));
  });
  return seconds;
}

void Forms(benchmark::State& state) {
  const Input& input = TheInput();
  const fs::path rows_path = input.folder / "rows.mdb";
  const fs::path sets_path = input.folder / "sets.mdb";
  for ([[maybe_unused]] auto _ : state) {
    const Seconds rows = Measure(input, rows_path, [&] { WriteRows(rows_path, input.terms, 20000); });
    const Seconds sets = Measure(input, sets_path, [&] { WriteSets(sets_path, input.terms, 20000); });
    state.counters["rows_MB"] = rows.megabytes;
    state.counters["sets_MB"] = sets.megabytes;
    state.counters["rows_write_s"] = rows.write;
    state.counters["rows_list_s"] = rows.list;
    state.counters["rows_read_s"] = rows.read;
    state.counters["ratio_write_to_rows"] = sets.write / rows.write;
    state.counters["ratio_list_to_rows"] = sets.list / rows.list;
    state.counters["ratio_closed_to_rows"] = sets.closed / rows.closed;
    state.counters["ratio_read_to_rows"] = sets.read / rows.read;
  }
}
BENCHMARK(Forms)->Iterations(1)->Unit(benchmark::kMillisecond);

void ManyRows(benchmark::State& state) {
  const Input& input = TheInput();
  const auto count = static_cast<int>(state.range(0));
  const fs::path path = input.folder / "many.mdb";
  for ([[maybe_unused]] auto _ : state) {
    // The rows themselves are random numbers, which take their time.
    RowMaker maker(input.terms.size());
    const double making = SecondsOf([&] {
      for (int row = 0; row < count; ++row) benchmark::DoNotOptimize(maker.Next().data());
    });
    const Seconds sets = Measure(input, path, [&] { WriteSets(path, input.terms, count); });
    state.counters["MB"] = sets.megabytes;
    state.counters["making_rows_s"] = making;
    state.counters["write_s"] = sets.write - making;
    state.counters["list_s"] = sets.list;
    state.counters["closed_items_s"] = sets.closed;
    state.counters["items_s"] = sets.read;
    state.counters["ratio_write_to_making_rows"] = (sets.write - making) / making;
  }
}
BENCHMARK(ManyRows)->Arg(100000)->Arg(1000000)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
