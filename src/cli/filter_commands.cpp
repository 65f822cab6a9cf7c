// selvane-cli rules filter rating|template|specificity|cover|measures
#include <fmt/format.h>
#include <fmt/ostream.h>

#include <memory>
#include <ostream>
#include <span>

#include "cli/cli.h"
#include "cli/rules_output.h"
#include "filters/cover_filter.h"
#include "filters/rating_filter.h"
#include "filters/rule_measures.h"
#include "filters/rules_opening.h"
#include "filters/specificity_filter.h"
#include "filters/template_filter.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr int kMostSteps = 1000;

// What all filters take.
struct FilterOptions {
  fs::path database;
  fs::path taxonomy;
  std::string table;
  RuleLayout layout;
  bool save = false;
};

// The rules of a table, and what is done with those that a filter keeps.
class FilterRun {
 public:
  FilterRun(const FilterOptions& options, const CliContext& context)
      : taxonomy(options.taxonomy, OpenMode::kShared),
        names(taxonomy),
        pulse_(taxonomy.PulseDuring(context.progress)),
        options_(options),
        context_(context) {
    // Locked for writing only where a table will be added: others may go on reading otherwise.
    info = OpenRulesForFiltering(store_, taxonomy, options.database,
                                 options.save ? OpenMode::kWritable : OpenMode::kShared);
    store_.OpenRulesTable(ChooseTable(store_.ListRulesTables(), options.table, options.database));
    record = store_.RunOfSource();
    context.progress.SetStatus("Loading rules ....");
    rules = RuleList(store_, context.progress);
  }

  // Prints rules in this order and, where that was asked for, saves them.
  void Finish(std::span<const ListedRule> kept, std::string_view nothing_kept) {
    Finish(kept, PrintRules(rules, kept, options_.layout, names, RowsOf(info.rows)), nothing_kept);
  }
  // The same with the rules as text already.
  void Finish(std::span<const ListedRule> kept, std::string_view text, std::string_view nothing_kept) {
    KeepMask mask(rules.size());
    for (const ListedRule& rule : kept) mask.Keep(rule.number);
    // Saved and named first, as nobody may read the output to its end.
    if (options_.save && !kept.empty()) {
      fmt::print(context_.err, "Filtered rules saved in database table:\n{}\n",
                 SaveFilteredRules(store_, rules, mask, context_.clock, context_.progress));
    }
    context_.progress.SetStatus("Completed!!");
    WriteOut(context_, text);
    if (!kept.empty()) return;
    fmt::print(context_.err, "{}\n", nothing_kept);
    if (options_.save) fmt::print(context_.err, "Nothing was kept, so no table was saved\n");
  }

  // The names and the pulse refer to the taxonomy, which therefore comes first and goes last.
  TaxonomyStore taxonomy;
  NodeNames names;
  RulesInfo info;
  RunRecord record;
  RuleList rules;

 private:
  PulseScope pulse_;
  const FilterOptions& options_;
  const CliContext& context_;
  RulesStore store_;
};

void AddCommonOptions(CLI::App& command, FilterOptions& options) {
  command.add_option("RULESDB", options.database, "Rules database")->required();
  command.add_option("--taxonomy", options.taxonomy, "Taxonomy database")->required()->type_name("TAXDB");
  command.add_option("--table", options.table, "Rules table, where there are several")->type_name("T");
  AddRuleLayout(command, options.layout);
  command.add_flag("--save", options.save,
                   "Save the kept rules as a new table of the database and print its name");
}

void AddOrder(CLI::App& command, RuleOrder& order) {
  AddChoice<RuleOrder>(
      command, "--order", order,
      {{"support", RuleOrder::kDecreasingSupport}, {"confidence", RuleOrder::kDecreasingConfidence}},
      "What the rules are ordered by, the greatest first");
}

// An option that may be given several times, and takes several values each time.
CLI::Option* AddTexts(CLI::App& command, const std::string& name, std::vector<std::string>& texts,
                      const std::string& help) {
  // With extra arguments allowed, [A, B] would be read as a list.
  return command.add_option(name, texts, help)
      ->expected(1, static_cast<int>(kMostRules))
      ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
      ->allow_extra_args(false);
}

struct RatingOptions : FilterOptions {
  RatingFilter::Options rating;
};

void Rate(RatingOptions& options, const CliContext& context) {
  FilterRun run(options, context);
  // The least surprise that is looked for follows from the minimum support of the run, which only the
  // information file knows.
  options.rating.minimum_support = MinimumSupportOf(run.info);
  RatingFilter filter(run.rules.size());
  const std::vector<RuleNumber> numbers = filter.Run(run.rules, options.rating, context.progress);
  if (run.rules.size() > 0) {
    const RatingFilter::Statistics& of = filter.statistics();
    fmt::print(context.err, "mean {:g}, standard deviation {:g}, limit {:g}\n", of.mean, of.deviation,
               of.limit);
  }
  run.Finish(ListedRules(numbers), "No satisfying rule ");
}

void AddRating(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("rating", "Keep rules by a statistical rating");
  auto options = std::make_shared<RatingOptions>();
  AddCommonOptions(*command, *options);
  AddChoice<RatingViewpoint>(
      *command, "--viewpoint", options->rating.viewpoint,
      {{"dependency", RatingViewpoint::kDependency}, {"surprise", RatingViewpoint::kSurprise}},
      "What a rule is rated for: how far its sides depend on each other (the default), or how surprising it "
      "is");
  AddFraction(*command, "--threshold", options->rating.probability_threshold,
              "From which fraction on a side is frequent, for the dependency");
  AddChoice<RatingBehaviour>(
      *command, "--behaviour", options->rating.behaviour,
      {{"standard", RatingBehaviour::kStandard}, {"rare", RatingBehaviour::kRare}},
      "Rules rated at most mean plus standard deviation (the default), or those above");
  command->footer(
      "Example:\n  selvane-cli rules filter rating rules.mdb --taxonomy tax.mdb --viewpoint surprise "
      "--behaviour rare");
  command->callback([options, &context] { Rate(*options, context); });
}

struct TemplateOptions : FilterOptions {
  std::vector<std::string> inclusive;
  std::vector<std::string> restrictive;
  RuleOrder order = RuleOrder::kDecreasingSupport;
};

void Fit(const TemplateOptions& options, const CliContext& context) {
  FilterRun run(options, context);
  TemplateFilter filter(run.names);
  // An item that was counted as a term stands at all its positions, and any of them may put it into a class.
  filter.all_positions = run.record.CountsTerms();
  for (const std::string& text : options.inclusive) {
    filter.inclusive.push_back(ParseTemplate(text, run.taxonomy));
  }
  for (const std::string& text : options.restrictive) {
    filter.restrictive.push_back(ParseTemplate(text, run.taxonomy));
  }
  std::vector<RuleNumber> numbers = filter.Run(run.rules, context.progress);
  OrderRules(run.rules, options.order, numbers);
  run.Finish(ListedRules(numbers), "No satisfying rule ");
}

void AddTemplate(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("template", "Keep rules that fit templates");
  auto options = std::make_shared<TemplateOptions>();
  AddCommonOptions(*command, *options);
  AddTexts(*command, "--inclusive", options->inclusive, "A rule must fit one of these")
      ->type_name("TEMPLATE");
  AddTexts(*command, "--restrictive", options->restrictive, "A rule must fit none of these")
      ->type_name("TEMPLATE");
  AddOrder(*command, options->order);
  command->footer(
      "A template is SIDE => SIDE, a side is parts with ; between them: an item (Fever, or #17 by its\n"
      "number), a class of which an item must be there ([Drugs]1), the same with more allowed ([Drugs]+), a\n"
      "class of which none need be there ([Drugs]*), or [Any]. Other items may stand beside them.\n"
      "Example:\n  selvane-cli rules filter template rules.mdb --taxonomy tax.mdb --inclusive "
      "\"[Any] => [Respiratory Tract Diseases]+\"");
  command->callback([options, &context] { Fit(*options, context); });
}

struct WalkOptions : FilterOptions {
  std::vector<std::string> ground;
  SpecificityOptions specificity;
  int depth = 0;
};

void Walk(const WalkOptions& options, const CliContext& context) {
  FilterRun run(options, context);
  std::vector<NodeNumber> ground;
  for (const std::string& text : options.ground) ground.push_back(ParseItem(text, run.taxonomy));
  SpecificityFilter filter(run.rules, run.taxonomy.SpecificityBound());
  std::vector<ListedRule> kept;
  for (const SpecificityStep& step :
       filter.Walk(ground, options.specificity, options.depth, context.progress)) {
    kept.push_back({step.rule, step.depth});
  }
  run.Finish(kept, "No rule with ground items");
}

void AddSpecificity(CLI::App& group, const CliContext& context) {
  CLI::App* command =
      group.add_subcommand("specificity", "Find the most general rules with some items, and those below");
  auto options = std::make_shared<WalkOptions>();
  AddCommonOptions(*command, *options);
  AddTexts(*command, "--ground", options->ground, "Items that a rule must hold, such as Fever or #17")
      ->required()
      ->type_name("ITEM");
  AddChoice<RuleSide>(*command, "--on", options->specificity.side,
                      {{"antecedent", RuleSide::kAntecedent}, {"consequent", RuleSide::kConsequent}},
                      "The side that must hold them");
  AddOrder(*command, options->specificity.order);
  command
      ->add_option("--depth", options->depth,
                   "So many steps to more specific rules, from every rule; in text they stand below it")
      ->type_name("N")
      ->check(CLI::Range(0, kMostSteps));
  command->footer(
      "Example:\n  selvane-cli rules filter specificity rules.mdb --taxonomy tax.mdb --ground Smoking "
      "--depth 1");
  command->callback([options, &context] { Walk(*options, context); });
}

struct CoverOptions : FilterOptions {
  fs::path terms;
  std::size_t clusters = 0;  // none asked for
};

// The rules of a cover cluster by cluster, appended to `kept` and, with a line for each cluster, to `text`.
void AddClusters(FilterRun& run, const CoverFilter& filter, const CoverFilter::Cover& cover,
                 std::size_t clusters, std::vector<ListedRule>& kept, std::string& text, Progress& progress) {
  int number = 0;
  for (const std::vector<RuleNumber>& cluster : filter.Cluster(cover, clusters, progress)) {
    fmt::format_to(std::back_inserter(text), "# cluster {}: {}\n", ++number,
                   run.names.Joined(cover.consequent));
    const std::vector<ListedRule> listed = ListedRules(cluster);
    text += PrintRules(run.rules, listed, {}, run.names);
    kept.insert(kept.end(), listed.begin(), listed.end());
  }
}

void Cover(const CoverOptions& options, const CliContext& context) {
  FilterRun run(options, context);
  const ItemRegistry items =
      ReadTermTable(options.terms, run.info, run.record, run.taxonomy, context.progress, OpenMode::kShared);
  CoverFilter filter(run.rules, items);
  const std::vector<CoverFilter::Cover> covers = filter.Run(context.progress);
  std::vector<ListedRule> kept;
  std::string text;
  if (options.clusters == 0) kept = ListedRules(RulesOf(covers));
  const std::string warning = options.clusters == 0 ? std::string() : ClusteringWarning(covers);
  // Said before the clustering begins, as its memory grows with the square of the rules.
  if (!warning.empty()) fmt::print(context.err, "selvane-cli: {}\n", warning);
  for (const CoverFilter::Cover& cover : covers) {
    if (options.clusters > 0) {
      AddClusters(run, filter, cover, options.clusters, kept, text, context.progress);
    }
  }
  fmt::print(context.err, "{} covers, {} of {} rules kept\n", covers.size(), kept.size(), run.rules.size());
  // A line for each cluster would spoil csv and json. These list the same rules in the same order.
  const bool in_clusters = options.clusters > 0 && options.layout.format == RuleFormat::kText;
  run.Finish(
      kept,
      in_clusters ? text : PrintRules(run.rules, kept, options.layout, run.names, RowsOf(run.info.rows)),
      "No rule matches a row of the term table");
}

void AddCover(CLI::App& group, const CliContext& context) {
  CLI::App* command =
      group.add_subcommand("cover", "Keep a few rules for each consequent that hold in the rows of all");
  auto options = std::make_shared<CoverOptions>();
  AddCommonOptions(*command, *options);
  command->add_option("--terms", options->terms, "Term database that the rules were extracted from")
      ->required()
      ->type_name("TERMDB");
  command
      ->add_option("--clusters", options->clusters,
                   "Group the rules of each consequent, by the rows in which they differ, into so many")
      ->type_name("N")
      ->check(CLI::Range(1L, kMostRules));
  command->footer(
      "Example:\n  selvane-cli rules filter cover rules.mdb --taxonomy tax.mdb --terms terms.mdb --clusters "
      "2");
  command->callback([options, &context] { Cover(*options, context); });
}

struct MeasureOptions : FilterOptions {
  std::string where;
  std::optional<Measure> sort;
};

void KeepMeasured(const MeasureOptions& options, const CliContext& context) {
  FilterRun run(options, context);
  const RuleMeasures measures(run.rules, RowsOf(run.info.rows));
  std::vector<RuleNumber> numbers = measures.Where(options.where, run.names);
  if (options.sort) measures.Order(*options.sort, numbers);
  run.Finish(ListedRules(numbers), "No satisfying rule ");
}

void AddMeasures(CLI::App& group, const CliContext& context) {
  CLI::App* command = group.add_subcommand("measures", "Keep rules by what their measures are");
  auto options = std::make_shared<MeasureOptions>();
  AddCommonOptions(*command, *options);
  AddWhere(*command, options->where)->required();
  std::vector<std::pair<std::string, std::optional<Measure>>> names;
  for (const MeasureInfo& info : AllMeasures()) names.emplace_back(info.name, info.measure);
  AddChoice<std::optional<Measure>>(*command, "--sort", options->sort, names, "The strongest first by this");
  command->footer(
      "Example:\n  selvane-cli rules filter measures rules.mdb --taxonomy tax.mdb --where \"lift > 2 and p < "
      "0.01\" --sort lift --save");
  command->callback([options, &context] { KeepMeasured(*options, context); });
}

}  // namespace

void AddFilterCommands(CLI::App& rules, const CliContext& context) {
  CLI::App* group = rules.add_subcommand("filter", "Keep some of the rules of a table, and print them");
  group->require_subcommand(1);
  AddRating(*group, context);
  AddTemplate(*group, context);
  AddSpecificity(*group, context);
  AddCover(*group, context);
  AddMeasures(*group, context);
}

}  // namespace selvane
