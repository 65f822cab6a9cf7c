#include <gtest/gtest.h>

#include <random>

#include "filters/rule_measures.h"
#include "mining/plain_selection.h"
#include "rules/rules_info.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane {

namespace {

// A random taxonomy whose terms stand at several positions, and rows of its terms.
struct SelectionInput {
  explicit SelectionInput(unsigned seed) : random(seed) {
    text = RandomTaxonomy(random, 6 + static_cast<int>(random() % 10));
    LoadText(text, "tax.mdb");
    const std::vector<std::string> names = {"Zoster",  "Fever",      "A",   "Asthma",
                                            "Crohn s", "Lung, left", "AIDS"};
    std::string sql = "CREATE TABLE T(\"Index\" SMALLINT";
    for (const std::string& name : names) sql += ", \"" + name + "\" SMALLINT";
    sql += ");";
    for (auto count = 8 + random() % 30; count > 0; --count) {
      std::set<std::string>& row = rows.emplace_back();
      sql += "INSERT INTO T VALUES (" + std::to_string(rows.size());
      for (const std::string& name : names) {
        const bool has = random() % 5 < 2;
        if (has) row.insert(name);
        sql += has ? ",1" : ",0";
      }
      sql += ");";
    }
    fs::remove("terms.mdb");
    MakeForeignDatabase("terms.mdb", sql);
    text = "seed " + std::to_string(seed) + "\n" + text + sql;
  }
  std::mt19937 random;
  std::vector<std::set<std::string>> rows;
  std::string text;
};

class SelectionTest : public FolderTest {
 protected:
  std::vector<PlainRule> Extract(const AprioriRequest& request, TaxonomyStore& taxonomy) {
    TransactionSource source;
    source.Open("terms.mdb");
    ItemsetFileHold hold(folder());
    ExtractionHooks hooks;
    hooks.choose_output = [] { return RulesOutput{"rules.mdb", ExistingFile::kReplace}; };
    fs::remove("rules.mdb");
    SilentProgress progress;
    report_ = ExtractRules(source, taxonomy, hold, request, hooks, progress);
    if (!fs::exists("rules.mdb")) return {};
    RulesStore store;
    store.OpenRulesDatabase("rules.mdb");
    store.OpenRulesTable("Extracted");
    const RuleList list(store, progress);
    const RuleMeasures measures(list, report_.run.rows);
    std::vector<PlainRule> rules;
    for (RuleNumber i = 1; i <= list.size(); ++i) {
      const Rule& rule = list[i];
      rules.push_back({{rule.antecedent.begin(), rule.antecedent.end()},
                       {rule.consequent.begin(), rule.consequent.end()},
                       measures.CountsOf(i).value_or(RuleCounts{})});
    }
    return rules;
  }

  AprioriReport report_;
};

AprioriRequest RandomRequest(std::mt19937& random) {
  AprioriRequest request;
  request.run.table = "T";
  request.run.min_support = std::vector<float>{0.05F, 0.1F, 0.2F}[random() % 3];
  request.run.min_confidence = std::vector<float>{0.1F, 0.5F, 0.8F}[random() % 3];
  request.choices.items = random() % 4 == 0 ? ItemKind::kPositions : ItemKind::kTerms;
  request.choices.distinct_witnesses = random() % 3 != 0;
  request.choices.max_size = 2 + random() % 3;
  SelectionOptions& steps = request.choices.selection;
  if (random() % 3 == 0) steps.min_lift = 1.1;
  if (random() % 3 == 0) steps.improvement = 0.01;
  if (random() % 3 == 0) steps.significance = 0.5;
  if (random() % 3 == 0) steps.specific = 0.9;
  if (random() % 3 == 0) steps.interesting = 1.1;
  return request;
}

TEST_F(SelectionTest, KeepsWhatThePlainStepsKeep) {
  std::size_t total = 0;
  std::size_t shortened = 0;
  for (unsigned seed = 0; seed < 60; ++seed) {
    SelectionInput input(seed);
    TaxonomyStore taxonomy("tax.mdb");
    AprioriRequest request = RandomRequest(input.random);
    PlainSelection plain(taxonomy, input.rows, request);
    // Of positions, codes that occur in unrelated ones drop pairs too; only runs without such are compared.
    if (plain.HasCircle() || request.choices.items == ItemKind::kPositions) continue;
    std::vector<PlainRule> wanted = plain.Rules();
    std::vector<PlainRule> rules = Extract(request, taxonomy);
    std::sort(wanted.begin(), wanted.end());
    std::sort(rules.begin(), rules.end());
    ASSERT_TRUE(rules == wanted) << input.text << rules.size() << " of " << wanted.size();
    total += rules.size();

    // One of each group with the same rows and consequent: the shortest, and of these the most special.
    request.choices.selection.shortest = true;
    request.choices.selection.keep = KeptRules::kStrongest;
    std::map<std::pair<std::set<std::size_t>, PlainSet>, std::vector<PlainRule>> groups;
    const auto rank = [&](const PlainRule& rule) {
      std::size_t depth = 0;
      for (const NodeNumber item : rule.antecedent) depth += plain.Depth(item);
      return std::make_pair(rule.antecedent.size(), SIZE_MAX - depth);
    };
    for (const PlainRule& rule : wanted) {
      groups[{plain.RowsOf(rule.antecedent, request.choices.distinct_witnesses), rule.consequent}].push_back(
          rule);
    }
    const std::vector<PlainRule> shortest = Extract(request, taxonomy);
    ASSERT_EQ(shortest.size(), groups.size()) << input.text;
    double lift = HUGE_VAL;
    for (const PlainRule& rule : shortest) {
      auto& group =
          groups[{plain.RowsOf(rule.antecedent, request.choices.distinct_witnesses), rule.consequent}];
      ASSERT_TRUE(std::find(group.begin(), group.end(), rule) != group.end()) << input.text;
      for (const PlainRule& other : group) ASSERT_LE(rank(rule), rank(other)) << input.text;
      group.clear();  // so that no group has two
      ASSERT_LE(*ValueOf(Measure::kLift, rule.counts), lift);
      lift = *ValueOf(Measure::kLift, rule.counts);
    }
    shortened += wanted.size() - shortest.size();
  }
  EXPECT_GT(total, 100U);
  EXPECT_GT(shortened, 2U);
}

// Where each term has one position and no code occurs in an unrelated one, terms are positions.
TEST_F(SelectionTest, TermsOfOnePositionAreCountedAsPositions) {
  LoadText(NodeLine("Fever", "C1") + NodeLine("Zoster", "C1.5") + NodeLine("Asthma", "C1.6") +
               NodeLine("C", "C") + NodeLine("AIDS", "D3") + NodeLine("Cough", "D3.8"),
           "tax.mdb");
  std::mt19937 random(7);
  std::string sql = "CREATE TABLE T(\"Index\" SMALLINT, Zoster SMALLINT, Asthma SMALLINT, Cough SMALLINT);";
  for (int row = 1; row <= 40; ++row) {
    sql += fmt::format("INSERT INTO T VALUES ({},{},{},{});", row, random() % 2, random() % 2, random() % 2);
  }
  MakeForeignDatabase("terms.mdb", sql);
  TaxonomyStore taxonomy("tax.mdb");
  AprioriRequest request{.run = {.table = "T", .min_support = 0.1F, .min_confidence = 0.1F}};
  const std::vector<PlainRule> positions = Extract(request, taxonomy);
  request.choices.items = ItemKind::kTerms;
  EXPECT_TRUE(Extract(request, taxonomy) == positions);
  EXPECT_GT(positions.size(), 10U);

  // Sides made of what is named only, and nothing of what is left out; in the order of plain generation.
  request.choices.consequent = {"D3"};
  request.choices.left_out = {"Asthma"};
  std::vector<PlainRule> wanted;
  const NodeNumber asthma = taxonomy.working().NodesOfTerm("Asthma").front();
  for (const PlainRule& rule : positions) {
    const bool fits = std::all_of(rule.consequent.begin(), rule.consequent.end(), [&](NodeNumber item) {
      return taxonomy.working().PositionOf(item).starts_with("D.3");
    });
    if (fits && !rule.Items().contains(asthma)) wanted.push_back(rule);
  }
  EXPECT_TRUE(Extract(request, taxonomy) == wanted);
  EXPECT_FALSE(wanted.empty());
}

}  // namespace

}  // namespace selvane
