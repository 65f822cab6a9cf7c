// Filters over full tables of 32,767 rules, against one walk over the rows of the table: random rules over
// every node of a large taxonomy, and rules that were mined from a full term table.
#include <fmt/format.h>

#include <random>

#include "apriori/generalized_apriori.h"
#include "apriori/rule_generator.h"
#include "bench_input.h"
#include "data/recordset.h"
#include "filters/cover_filter.h"
#include "filters/rating_filter.h"
#include "filters/rules_opening.h"
#include "filters/specificity_filter.h"
#include "filters/template_filter.h"
#include "taxonomy/taxonomy_loading.h"

namespace selvane {
namespace {

constexpr float kSupport = 0.145F;

// Another second each time, so that every save has a name of its own.
struct NextSecond final : Clock {
  std::tm LocalTime() const override {
    std::tm time{};
    time.tm_sec = ++second;
    return time;
  }
  mutable int second = 0;
};

struct Input {
  Input() {
    LoadTaxonomy(TaxonomyInput(folder), folder / "tax.mdb", ExistingFile::kRefuse, progress);
    MakeTermTable(folder / "terms.mdb", LeafTerms(folder / "tax.mdb", 100), 32767, 16);
    store.CreateRulesDatabase(folder / "rules.mdb", "Mined");
    const TaxonomyStore taxonomy(folder / "tax.mdb");
    MineRules(taxonomy);
    MakeWideRules(taxonomy);
  }

  void MineRules(const TaxonomyStore& taxonomy) {
    TransactionSource source;
    source.Open(folder / "terms.mdb");
    const ItemHierarchy hierarchy(taxonomy, ItemKind::kPositions);
    GeneralizedApriori engine(source, "T", taxonomy, hierarchy, {.minimum_support = kSupport},
                              folder / "ItemSets.dat");
    const AprioriSummary found = engine.Run(progress);
    store.SetTargetTable("Mined");
    RuleGenerator generator(
        0.5F, taxonomy, found.row_count,
        {folder / "ItemSets.dat", found.itemsets_written, 512 << 20, 64 << 20, kMostRules});
    generator.Generate(store, {}, progress);
  }

  void MakeWideRules(const TaxonomyStore& taxonomy) {
    std::vector<NodeNumber> nodes;
    taxonomy.working().ForEachNode([&nodes](const TaxonomyNode& node) { nodes.push_back(node.number); });
    std::mt19937 random(5);
    std::uniform_real_distribution<float> chance(0.01F, 1);
    const auto some = [&](std::size_t most) {
      std::vector<NodeNumber> items(1 + random() % most);
      for (NodeNumber& item : items) item = nodes[random() % nodes.size()];
      return items;
    };
    store.CreateRulesTable("Wide");
    store.SetTargetTable("Wide");
    store.InsertRules([&](RuleBatch& batch) {
      for (long i = 0; i < kMostRules; ++i) {
        Rule rule{some(4), some(2), chance(random), chance(random), chance(random), chance(random)};
        rule.aspec = static_cast<std::int32_t>(rule.antecedent.size());
        rule.cspec = static_cast<std::int32_t>(rule.consequent.size());
        batch.Insert(rule);
      }
    });
  }

  BenchFolder folder;
  SilentProgress progress;
  RulesStore store;
  NextSecond clock;
};

Input& TheInput() {
  static Input input;
  return input;
}

// The store gives the file up for it, and opens it again.
double RowWalkSeconds(Input& input, const std::string& table) {
  const std::filesystem::path path = input.store.path();
  input.store.Close();
  double seconds = 0;
  {
    Database database = Database::Open(path, OpenMode::kReadOnly);
    seconds = SecondsOf([&] {
      Recordset rows = database.OpenRecordset("SELECT * FROM " + table);
      for (; !rows.AtEnd(); rows.MoveNext()) {
        for (int field = 0; field < rows.FieldCount(); ++field) benchmark::DoNotOptimize(rows.Value(field));
      }
    });
  }
  input.store.OpenRulesDatabase(path);
  return seconds;
}

RuleList LoadRules(Input& input, const char* table, benchmark::State& state) {
  const double walk = RowWalkSeconds(input, table);
  input.store.OpenRulesTable(table);
  RuleList rules;
  const double seconds = SecondsOf([&] { rules = RuleList(input.store, input.progress); });
  state.counters["rules"] = static_cast<double>(rules.size());
  state.counters["load_s"] = seconds;
  state.counters["load_ratio_to_row_walk"] = seconds / walk;
  return rules;
}

// Rating in both viewpoints, a template with two classes and an item-free side, ordering, saving, and every
// line as the windows show it; names are looked up for the first time.
void WholeTaxonomy(benchmark::State& state) {
  Input& input = TheInput();
  const TaxonomyStore taxonomy(input.folder / "tax.mdb");
  for ([[maybe_unused]] auto _ : state) {
    const RuleList rules = LoadRules(input, "Wide", state);
    RatingFilter rating(rules.size());
    state.counters["rating_s"] = SecondsOf([&] {
      rating.Run(rules, {}, input.progress);
      rating.Run(rules, {RatingViewpoint::kSurprise}, input.progress);
    });
    NodeNames names(taxonomy);
    TemplateFilter filter(names);
    filter.inclusive.push_back(ParseTemplate("[#1]1 ; [#2]+ => [Any]", taxonomy));
    filter.restrictive.push_back(ParseTemplate("[Any] => [#2]1", taxonomy));
    std::vector<RuleNumber> kept;
    state.counters["template_s"] = SecondsOf([&] { kept = filter.Run(rules, input.progress); });
    state.counters["template_again_s"] = SecondsOf([&] { kept = filter.Run(rules, input.progress); });
    state.counters["template_kept"] = static_cast<double>(kept.size());
    KeepMask mask(rules.size());
    for (RuleNumber number = 1; number <= rules.size(); ++number) mask.Keep(number);
    std::vector<RuleNumber> all(static_cast<std::size_t>(rules.size()));
    for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<RuleNumber>(i) + 1;
    state.counters["order_s"] = SecondsOf([&] { OrderRules(rules, RuleOrder::kDecreasingSupport, all); });
    std::size_t bytes = 0;
    state.counters["lines_s"] = SecondsOf([&] {
      for (const RuleNumber number : all) {
        bytes += (names.WithAnd(rules[number].antecedent) + " => " + names.WithAnd(rules[number].consequent))
                     .size();
      }
    });
    state.counters["lines_MB"] = static_cast<double>(bytes) / 1e6;
    state.counters["save_s"] =
        SecondsOf([&] { SaveFilteredRules(input.store, rules, mask, input.clock, input.progress); });
  }
}

// A walk of two steps from the item that stands in most antecedents, and the cover with its clusters.
void MinedRules(benchmark::State& state) {
  Input& input = TheInput();
  const TaxonomyStore taxonomy(input.folder / "tax.mdb");
  const RulesInfo info{"T", "32767", "0.145", "0.5", {"generalized"}, {}, {}};
  for ([[maybe_unused]] auto _ : state) {
    const RuleList rules = LoadRules(input, "Mined", state);
    std::unordered_map<NodeNumber, int> uses;
    std::vector<NodeNumber> ground(1);
    for (RuleNumber number = 1; number <= rules.size(); ++number) {
      for (const NodeNumber item : rules[number].antecedent) {
        if (++uses[item] > uses[ground[0]]) ground[0] = item;
      }
    }
    SpecificityFilter specificity(rules, taxonomy.SpecificityBound());
    std::vector<SpecificityStep> steps;
    state.counters["specificity_depth_2_s"] =
        SecondsOf([&] { steps = specificity.Walk(ground, {}, 2, input.progress); });
    state.counters["specificity_shown"] = static_cast<double>(steps.size());
    ItemRegistry items;
    state.counters["read_terms_s"] = SecondsOf(
        [&] { items = ReadTermTable(input.folder / "terms.mdb", info, {}, taxonomy, input.progress); });
    CoverFilter filter(rules, items);
    std::vector<CoverFilter::Cover> covers;
    state.counters["cover_s"] = SecondsOf([&] { covers = filter.Run(input.progress); });
    state.counters["covers"] = static_cast<double>(covers.size());
    state.counters["cover_kept"] = static_cast<double>(RulesOf(covers).size());
    state.counters["clusters_s"] = SecondsOf([&] {
      for (const CoverFilter::Cover& cover : covers) filter.Cluster(cover, 3, input.progress);
    });
  }
}

// One cover of so many rules into three clusters: each antecedent matches the rows of one of ten themes, with
// some rows turned, so that many pairs are equally near.
void ClusterCover(benchmark::State& state) {
  constexpr std::size_t kThemes = 10;
  constexpr std::size_t kRows = 2000;
  const auto count = static_cast<std::size_t>(state.range(0));
  std::mt19937 random(7);
  ItemRegistry items;
  items.rows = RowBits(count, kRows);
  items.row_count = kRows;
  std::vector<Rule> rules(count);
  CoverFilter::Cover cover;
  for (std::size_t i = 0; i < count; ++i) {
    items.nodes.push_back(static_cast<NodeNumber>(i));
    items.frequent.push_back(i);
    for (std::size_t row = 0; row < kRows; ++row) {
      if ((row % kThemes == i % kThemes) != (random() % 200 == 0)) items.rows.Set(i, row);
    }
    rules[i].antecedent = {static_cast<NodeNumber>(i)};
    cover.rules.push_back(static_cast<RuleNumber>(i) + 1);
  }
  SilentProgress progress;
  const RuleList list(std::move(rules));
  const CoverFilter filter(list, items);
  for ([[maybe_unused]] auto _ : state) benchmark::DoNotOptimize(filter.Cluster(cover, 3, progress));
}

BENCHMARK(WholeTaxonomy)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);
BENCHMARK(MinedRules)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond);
BENCHMARK(ClusterCover)->Arg(560)->Arg(1124)->Arg(2263)->Iterations(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
