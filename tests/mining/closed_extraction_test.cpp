#include "mining/closed_extraction.h"

#include <optional>

#include "mining/extraction_fixture.h"

namespace selvane::tests {

using Set = std::set<std::uint32_t>;
const std::string kShown = "SELECT ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE";
const std::string kRules = kShown + ",PA,PC,ASPEC,CSPEC FROM Extracted";
const Texts kMade = {"ApproxRules.dat", "ExactRules.dat", "FCI.dat", "Generator.dat", "InfoRun.dat",
                     "Rules.dat",       "Run.mdb",        "state",   "tax.mdb",       "terms.mdb"};

// All records of a file: the items of each in their order, and the number of its rows.
std::vector<ItemsetRecord> Records(const std::string& path) {
  std::vector<ItemsetRecord> records;
  ItemsetFile file;
  file.OpenForReading(path);
  for (auto left = fs::file_size(path); left > 0;) {
    file.ReadNext(records.emplace_back());
    left -= 6 + 4 * records.back().items.size();
  }
  return records;
}

Set SetOf(const ItemsetRecord& record) {
  return {record.items.begin(), record.items.end()};
}

bool Contains(const Set& all, const Set& some) {
  return std::ranges::includes(all, some);
}

class ClosedExtractionTest : public ExtractionTest {
 protected:
  ClosedReport Extract() { return ExtractBases(progress_); }
  void MakeTaxonomy(const Texts& terms) {
    std::string lines;
    for (const std::string& term : terms) lines += NodeLine(term, fmt::format("C{}", lines.size() + 1));
    LoadText(lines, "tax.mdb");
  }
  // Terms N1, N2, ... of the numbers 4, 5, ...: all of them in one row, or at random in many rows.
  void MakeManyTerms(int count, int rows) {
    Texts terms = {"Before", "Also before"};
    std::string columns;
    for (int i = 1; i <= count; ++i)
      columns += fmt::format(", {} SMALLINT", terms.emplace_back(fmt::format("N{}", i)));
    std::string sql = "CREATE TABLE T(\"Index\"" + columns + ");";
    std::mt19937 random(9);
    for (int row = 1; row <= rows; ++row) {
      sql += fmt::format("INSERT INTO T VALUES ({}", row);
      for (int i = 1; i <= count; ++i) sql += rows == 1 || random() % 4 != 0 ? ",1" : ",0";
      sql += ");";
    }
    MakeTaxonomy(terms);
    MakeTerms(sql);
  }
};

// Derives rules from the bases as the guide tells how to.
class Derivation {
 public:
  Derivation(float rows, float confidence) : rows_(rows), confidence_(confidence) {
    exact_ = RulesIn("ExactRules.dat");
    for (const BaseRule& rule : RulesIn("ApproxRules.dat")) from_[ClosureOf(rule.left)].push_back(rule);
    for (const ItemsetRecord& closed : Records("FCI.dat"))
      closed_.emplace_back(SetOf(closed), closed.support_count);
  }

  // The rule as a line of the table, empty when it is none.
  std::string Rule(const Texts& sides, const Set& antecedent, const Set& consequent) const {
    Set both = antecedent;
    both.insert(consequent.begin(), consequent.end());
    const Set start = ClosureOf(antecedent);
    const auto way = Contains(start, both) ? *std::ranges::find(exact_, start, &BaseRule::both)
                                           : Way(start, ClosureOf(both));
    if (!way) return {};
    const auto all = static_cast<float>(way->both_rows);
    const auto left = static_cast<float>(way->left_rows);
    if (all / left < confidence_) return {};
    const auto figure = [](float value) { return std::stod(fmt::format("{:.6f}", value)); };
    return fmt::format("{}|{}|{}|{}|{}|{}|{}|{}", sides[0], sides[1], figure(all / rows_), figure(all / left),
                       figure(left / rows_), figure(RowsOf(consequent) / rows_), antecedent.size(),
                       consequent.size());
  }

 private:
  struct BaseRule {
    Set left;
    Set both;
    std::uint32_t left_rows, both_rows;
  };
  static std::vector<BaseRule> RulesIn(const std::string& path) {
    std::vector<BaseRule> rules;
    const std::vector<ItemsetRecord> records = Records(path);
    for (std::size_t i = 0; i < records.size(); i += 2) {
      rules.push_back(
          {SetOf(records[i]), SetOf(records[i + 1]), records[i].support_count, records[i + 1].support_count});
      EXPECT_EQ(path == "ExactRules.dat", records[i].support_count == records[i + 1].support_count);
    }
    return rules;
  }
  Set ClosureOf(const Set& items) const {
    const auto rule = std::ranges::find_if(exact_, [&items](const BaseRule& exact) {
      return Contains(items, exact.left) && Contains(exact.both, items);
    });
    return rule == exact_.end() ? items : rule->both;
  }
  // The steps from one closure to a larger one, as one rule: confidences multiply.
  std::optional<BaseRule> Way(const Set& from, const Set& to) const {
    const auto steps = from_.find(from);
    if (steps == from_.end()) return std::nullopt;
    for (const BaseRule& step : steps->second) {
      if (step.both == to) return step;
      if (!Contains(to, step.both)) continue;
      if (auto rest = Way(step.both, to)) return BaseRule{step.left, to, step.left_rows, rest->both_rows};
    }
    return std::nullopt;
  }
  // The probability of the right side alone is in no rule: it is that of the smallest closed itemset around
  // it.
  float RowsOf(const Set& items) const {
    std::uint32_t rows = 0;
    for (const auto& [closed, support] : closed_) {
      if (Contains(closed, items)) rows = std::max(rows, support);
    }
    return static_cast<float>(rows);
  }

  float rows_, confidence_;
  std::vector<BaseRule> exact_;
  std::map<Set, std::vector<BaseRule>> from_;
  std::vector<std::pair<Set, std::uint32_t>> closed_;
};

TEST_F(ClosedExtractionTest, AllRulesOfTheOtherExtractionFollowFromTheBases) {
  // Node 1 is their category. The last term is in one row only: no itemset has all terms there are.
  MakeTaxonomy({"Cough", "Zoster", "Asthma", "Fever", "AIDS", "Rare"});
  const std::vector<std::uint32_t> order = {6, 4, 2, 5, 3};  // by name
  std::mt19937 random(4);
  std::size_t total = 0, fewer = 0;
  for (int run = 0; run < 60; ++run) {
    const int rows = 6 + static_cast<int>(random() % 30);
    std::string sql = R"(CREATE TABLE T("Index", Cough SMALLINT, Zoster VARCHAR(3), Asthma SMALLINT,
        Fever SMALLINT, AIDS SMALLINT, Rare SMALLINT);)";
    for (int i = 1; i <= rows; ++i) {
      const bool asthma = random() % 3 != 0;
      const bool cough = asthma || random() % 4 == 0;  // follows from Asthma
      const bool aids = run % 4 == 0 || random() % 2 == 0;
      sql += fmt::format("INSERT INTO T VALUES ({},{:d},{},{:d},{},{:d},{:d});", i, cough, random() % 2,
                         asthma, random() % 2 + random() % 2, aids, i == 1);
    }
    MakeTerms(sql);
    request_.min_support = 1.5F / static_cast<float>(rows) + static_cast<float>(random() % 3) / 10;
    request_.min_confidence = static_cast<float>(1 + random() % 10) / 10;
    if (ExtractAll(progress_, false).run.end == ExtractionEnd::kOnlySingleItems) continue;
    Texts all = Rows("Run.mdb", kRules);
    const ClosedReport report = Extract();
    const Derivation derivation(static_cast<float>(rows), request_.min_confidence);
    Texts derived;
    for (unsigned code = 0; code < 243; ++code) {
      Set items[3];
      Texts sides(3);
      for (unsigned i = 0, left = code; i < order.size(); ++i, left /= 3) {
        items[left % 3].insert(order[i]);
        sides[left % 3] += fmt::format("{}-", order[i]);
      }
      if (items[0].empty() || items[1].empty()) continue;
      const std::string rule = derivation.Rule(sides, items[0], items[1]);
      if (!rule.empty()) derived.push_back(rule);
    }
    std::ranges::sort(all);
    std::ranges::sort(derived);
    ASSERT_EQ(derived, all) << sql;
    // The bases are among these rules, and are what the files hold.
    Texts stored = Rows("Run.mdb", kRules);
    std::ranges::sort(stored);
    EXPECT_TRUE(std::ranges::includes(all, stored)) << sql;
    EXPECT_EQ(Records("Rules.dat").size(), 2 * stored.size());
    EXPECT_EQ(stored.size(), lines_.size());
    EXPECT_EQ(Records("FCI.dat").size(), report.closed_itemsets);
    EXPECT_EQ(Records("Generator.dat").size(), report.generators);
    total += all.size();
    fewer += all.size() - stored.size();
  }
  EXPECT_GT(total, 2000U);
  EXPECT_GT(fewer, total / 2);
}

TEST_F(ClosedExtractionTest, TellsOfTheRunAsTheOtherExtractionDoes) {
  MakeTaxonomy({"Asthma", "Steroid", "Smoking"});
  MakeTerms(R"(CREATE TABLE T("Index", Smoking SMALLINT, Asthma SMALLINT, "My note" BLOB, Steroid SMALLINT);
      INSERT INTO T VALUES (1,0,1,0,1),(2,0,1,0,1),(3,1,1,0,0),(4,1,1,0,1);)");
  request_ = {.table = "T", .min_support = 0.5F, .min_confidence = 0.75F, .decimal_sign = ','};
  request_.itemset_copy = "copy.dat";
  const ClosedReport report = Extract();
  EXPECT_EQ(report.unknown_columns, Texts{"My note"});
  EXPECT_EQ(Rows("Run.mdb", "SELECT * FROM Extracted"),
            (Texts{"1|2-|3-|0.75|0.75|1|0.75|1|1", "2|4-|2-|0.5|1|0.5|1|1|1", "3|3-|2-|0.75|1|0.75|1|1|1"}));
  EXPECT_EQ(lines_.front(), "Asthma   => Steroid  ");
  EXPECT_EQ(progress_.statuses, (Texts{"Checking items presence ...", "Searching for closed itemsets...",
                                       "Completed!!", "Generating rules ....", "Completed!!"}));
  EXPECT_EQ(ReadRulesInfo("Run.mdb"),
            (RulesInfo{"T", "4", "0,5", "0,75", {}, MapOfItems(Items{2, 3, 4}), MapOfItems(Items{})}));
  EXPECT_EQ(ReadFile("copy.dat"), ReadFile("FCI.dat"));
  fs::remove("copy.dat");
  EXPECT_EQ(FileNames("."), kMade);
  EXPECT_EQ(FileNames("state"), Texts{"ItemSets.lock"});
}

TEST_F(ClosedExtractionTest, NamesItemsByTheOtherTaxonomyWhereThereIsOne) {
  MakeTaxonomy({"Asthma", "Cough", "Other"});
  // Fever is not the first at its position, nor is the first row of Asthma that with its number in Taxonomy.
  MakeForeignDatabase("tax.mdb", R"(CREATE TABLE TaxonomyOrnex(Canonical, "Index", FatherId, More);
      INSERT INTO TaxonomyOrnex VALUES ('Other', '3', 'X.2', ''), ('Fever', '7.0', 'X.2', ''),
      ('Odd', 'one', 'X.1', ''), ('Asthma', '2', 'X.1', ''), ('Asthma', '1', 'X.0', ''),
      ('Zoster', '7', 'X.3', ''), ('Odd', 'two', NULL, '');)");
  MakeTerms(R"(CREATE TABLE T("Index", Fever SMALLINT, Asthma SMALLINT, Cough SMALLINT, Zoster NUMERIC);
      INSERT INTO T VALUES (1,1,1,1,0),(2,1,1,1,0),(3,0,1,1,0),(4,0,1,1,1);)");
  const ClosedReport report = Extract();
  EXPECT_EQ(lines_, (Texts{"Asthma   => Fever  ", "Fever   => Asthma  "}));
  EXPECT_EQ(Rows("Run.mdb", "SELECT ANTECEDENT,SUPPORT FROM Extracted"), (Texts{"2-|0.75", "7-|0.75"}));
  EXPECT_EQ(report.unknown_columns, Texts{"Cough"});
  EXPECT_EQ(report.joined_columns, Texts{"Zoster"});
  EXPECT_EQ(report.renumbered, (Texts{"Fever", "Zoster"}));
  MakeTerms(R"(CREATE TABLE T("Index", Odd SMALLINT); INSERT INTO T VALUES (1,1);)");
  ExpectFault<DatabaseError>("gives \"Odd\" the Index \"one\"", [this] { Extract(); });
}

TEST_F(ClosedExtractionTest, OddTables) {
  MakeTaxonomy({"A", "B", "D"});
  using End = ExtractionEnd;
  const std::tuple<const char*, float, End, std::string> cases[] = {
      {", A SMALLINT);", 0.05F, End::kEmptyTable, ""},
      {");INSERT INTO T VALUES (1);", 0.05F, End::kNoKnownTerm, ""},
      {", A SMALLINT, B SMALLINT);INSERT INTO T VALUES (1,0,1),(2,1,0);", 0.05F, End::kOnlySingleItems, ""},
      // Only ones: the closure of the empty set is not empty, and rules have two sides nevertheless.
      {", A SMALLINT, B SMALLINT);INSERT INTO T VALUES (1,1,1),(2,1,1);", 1, End::kRules,
       "2-|3-|1|1 3-|2-|1|1"},
      // Columns alike, and a row id of 0.
      {", A INT, B INT, D TEXT);INSERT INTO T VALUES (0,1,1,'1'),(1,1,1,'1'),(2,0,0,'1'),(3,0,0,'01');", 0.5F,
       End::kRules, "2-|3-4-|0.5|1 3-|2-4-|0.5|1 4-|2-3-|0.5|0.666667"},
      {", A SMALLINT, B SMALLINT);INSERT INTO T VALUES (1,1,1),(2,1,0),(3,1,0),(4,0,1),(5,0,1);", 0.2F,
       End::kNoRules, ""}};
  for (const auto& [table, min_support, end, rules] : cases) {
    fs::remove("Run.mdb");
    MakeTerms(std::string("CREATE TABLE T(\"Index\"") + table);
    request_.min_support = min_support;
    EXPECT_EQ(Extract().run.end, end) << table;
    EXPECT_EQ(fs::exists("Run.mdb"), end == End::kRules || end == End::kNoRules) << table;
    EXPECT_EQ(Records("Rules.dat").empty(), rules.empty()) << table;  // never that of the run before
    if (end != End::kRules) continue;
    const Texts stored = Rows("Run.mdb", kShown + " FROM Extracted");
    EXPECT_EQ(fmt::format("{}", fmt::join(stored, " ")), rules);
  }
  MakeTerms(R"(CREATE TABLE T("Index", A SMALLINT, B BLOB);INSERT INTO T VALUES (1,1,1);)");
  ExpectFault<DatabaseError>("neither numbers nor text", [this] { Extract(); });
}

// Each column implies all others, and their numbers begin at 4. Of 88 columns, the others of a number of one
// figure take 256 characters and those of a number of two 255; of 90 all take more.
TEST_F(ClosedExtractionTest, StoresSidesOf255Characters) {
  for (const auto& [count, stored] : {std::pair(88, 82), std::pair(90, 0)}) {
    MakeManyTerms(count, 1);
    const ClosedReport report = Extract();
    EXPECT_EQ(report.run.rules_stored, stored);
    EXPECT_EQ(report.too_long_rules, static_cast<std::uint64_t>(count - stored));
    EXPECT_EQ(report.run.end, stored > 0 ? ExtractionEnd::kRules : ExtractionEnd::kOnlyTooLongRules);
    EXPECT_EQ(Records("Rules.dat").size(), 2U * static_cast<std::size_t>(count));
  }
}

TEST_F(ClosedExtractionTest, StoresTheShortestRulesWhenNotAllFit) {
  MakeManyTerms(10, 60);
  covers_only_ = false;
  request_ = {.table = "T", .min_support = 0.3F, .min_confidence = 0.01F, .most_rules = 1000};
  std::uint64_t told = 0;
  hooks_.will_not_fit = [&told](const TooManyRules& rules) { told = rules.found; };
  const ClosedReport report = Extract();
  EXPECT_EQ(report.run.rules_stored, 1000);
  EXPECT_EQ(report.run.rules_found, told);
  EXPECT_EQ(Records("Rules.dat").size(), 2 * told);
  EXPECT_GT(told, 2000U);
  const Texts sizes = Rows("Run.mdb", "SELECT ASPEC+CSPEC FROM Extracted");
  EXPECT_TRUE(std::ranges::is_sorted(sizes, {}, [](const std::string& text) { return std::stoi(text); }));
}

TEST_F(ClosedExtractionTest, InterruptionsAndWrongNamesLeaveNothingHalfMade) {
  MakeManyTerms(10, 60);
  request_.min_support = 0.02F;
  request_.min_confidence = 0.01F;
  EXPECT_EQ(StagesInterrupted([this](Progress& stopping) { ExtractBases(stopping); }),
            (std::set<std::string>{"Checking items presence ...", "Searching for closed itemsets...",
                                   "Generating rules ...."}));
  EXPECT_EQ(FileNames("."), kMade);
  const auto extract = [this] { Extract(); };
  output_.path = "Rules.dat";
  ExpectFault<InputError>("would replace", extract);
  fs::rename("terms.mdb", "FCI.dat");
  fs::create_symlink("FCI.dat", "terms.mdb");
  ExpectFault<InputError>("would replace this file", extract);
  fs::rename("FCI.dat", "terms.mdb");
  fs::remove("Generator.dat");
  fs::create_directory("Generator.dat");
  ExpectFault<FileError>("cannot take Generator.dat", extract);
}

}  // namespace selvane::tests
