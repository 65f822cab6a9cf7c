#include "mining/closed_extraction.h"

#include <fmt/format.h>

#include <map>
#include <random>
#include <set>

#include "data/database_error.h"
#include "rules/rules_info.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

using Texts = std::vector<std::string>;
using Set = std::set<std::uint32_t>;
constexpr const char* kRules =
    "SELECT ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC FROM Extracted";
const Texts kMade = {"ApproxRules.dat", "ExactRules.dat", "FCI.dat", "Generator.dat", "InfoRun.dat",
                     "Rules.dat",       "Run.mdb",        "state",   "tax.mdb",       "terms.mdb"};

// All records of a file: the items of each in their order, and the number of its rows.
std::vector<ItemsetRecord> Records(const std::string& path) {
  std::vector<ItemsetRecord> records;
  ItemsetFile file;
  file.OpenForReading(path);
  for (auto left = std::filesystem::file_size(path); left > 0;) {
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

class ClosedExtractionTest : public FolderTest {
 protected:
  ClosedExtractionTest() {
    hooks_.choose_output = [this] { return output_; };
    hooks_.rule_line = [this](std::string_view line) { lines_.emplace_back(line); };
  }

  void MakeTaxonomy(const Texts& terms) {
    std::string lines;
    for (const std::string& term : terms) lines += NodeLine(term, fmt::format("C{}", lines.size() + 1));
    LoadText(lines, "tax.mdb");
    std::filesystem::remove("load.xml");
  }
  void MakeTerms(const std::string& sql) {
    std::filesystem::remove("terms.mdb");
    MakeForeignDatabase("terms.mdb", sql.c_str());
  }

  ExtractionReport Extract() { return Extract(progress_, true); }
  ExtractionReport Extract(Progress& progress, bool closed) {
    lines_.clear();
    ItemsetFileHold hold(folder() / "state");
    TransactionSource source;
    source.Open("terms.mdb");
    TaxonomyStore taxonomy("tax.mdb");
    return closed ? ExtractClosedRules(source, taxonomy, hold, request_, hooks_, progress)
                  : ExtractRules(source, taxonomy, hold, request_, hooks_, progress);
  }

  ExtractionRequest request_{"T"};
  ExtractionHooks hooks_;
  RulesOutput output_{"Run.mdb", ExistingFile::kReplace};
  Texts lines_;
  RecordingProgress progress_;
};

// Derives rules from the bases, as the guide tells how to: closures by the exact rules, the way to larger
// itemsets by the approximate ones.
class Derivation {
 public:
  Derivation(float rows, float confidence) : rows_(rows), confidence_(confidence) {
    const std::vector<ItemsetRecord> exact = Records("ExactRules.dat");
    for (std::size_t i = 0; i < exact.size(); i += 2) {
      exact_.emplace_back(SetOf(exact[i]), SetOf(exact[i + 1]));
      EXPECT_EQ(exact[i].support, exact[i + 1].support);
    }
    const std::vector<ItemsetRecord> approximate = Records("ApproxRules.dat");
    for (std::size_t i = 0; i < approximate.size(); i += 2) {
      larger_[ClosureOf(SetOf(approximate[i]))].insert(SetOf(approximate[i + 1]));
    }
    for (const ItemsetRecord& closed : Records("FCI.dat")) support_[SetOf(closed)] = closed.support;
  }

  // The rule as a line of the table, empty when it is none.
  std::string Rule(const Texts& sides, const Set& antecedent, const Set& consequent) const {
    const Set closure = ClosureOf(antecedent);
    Set both = antecedent;
    both.insert(consequent.begin(), consequent.end());
    both = ClosureOf(both);
    if (!support_.contains(closure) || !Leads(closure, both)) return {};
    const auto a = static_cast<float>(support_.at(closure));
    const auto all = static_cast<float>(support_.at(both));
    if (all / a < confidence_) return {};
    const auto figure = [](float value) { return std::stod(fmt::format("{:.6f}", value)); };
    const float h = static_cast<float>(support_.at(ClosureOf(consequent)));
    return fmt::format("{}|{}|{}|{}|{}|{}|{}|{}", sides[0], sides[1], figure(all / rows_), figure(all / a),
                       figure(a / rows_), figure(h / rows_), antecedent.size(), consequent.size());
  }

 private:
  Set ClosureOf(Set items) const {
    const Set start = items;
    for (const auto& [generator, closure] : exact_) {
      if (Contains(start, generator)) items.insert(closure.begin(), closure.end());
    }
    return items;
  }
  bool Leads(const Set& from, const Set& to) const {
    if (from == to) return true;
    const auto next = larger_.find(from);
    return next != larger_.end() && std::ranges::any_of(next->second, [&](const Set& step) {
             return Contains(to, step) && Leads(step, to);
           });
  }

  float rows_;
  float confidence_;
  std::vector<std::pair<Set, Set>> exact_;
  std::map<Set, std::set<Set>> larger_;
  std::map<Set, std::uint32_t> support_;
};

TEST_F(ClosedExtractionTest, AllRulesOfTheOtherExtractionFollowFromTheBases) {
  // Node 1 is their category. The last term is in one row only: no itemset has all terms there
  // are.
  MakeTaxonomy({"Cough", "Zoster", "Asthma", "Fever", "AIDS", "Rare"});
  const std::vector<std::uint32_t> order = {6, 4, 2, 5, 3};  // by name
  std::mt19937 random(4);
  std::size_t total = 0;
  std::size_t fewer = 0;
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
    request_.generalize = false;
    if (Extract(progress_, false).end == ExtractionEnd::kOnlySingleItems) continue;
    Texts all = Rows("Run.mdb", kRules);
    const ExtractionReport report = Extract();
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
    EXPECT_EQ(Records("FCI.dat").size(), report.closed.closed_itemsets);
    EXPECT_EQ(Records("Generator.dat").size(), report.closed.generators);
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
  request_ = {"T", 0.5F, 0.75F, true, ',', "copy.dat"};
  const ExtractionReport report = Extract();
  EXPECT_EQ(report.closed.unknown_columns, Texts{"My note"});
  EXPECT_EQ(Rows("Run.mdb", "SELECT * FROM Extracted"),
            (Texts{"1|2-|3-|0.75|0.75|1|0.75|1|1", "2|4-|2-|0.5|1|0.5|1|1|1", "3|3-|2-|0.75|1|0.75|1|1|1"}));
  EXPECT_EQ(lines_, (Texts{"Asthma   => Steroid  ", "Smoking   => Asthma  ", "Steroid   => Asthma  "}));
  EXPECT_EQ(progress_.statuses, (Texts{"Checking items presence ...", "Searching for closed itemsets...",
                                       "Completed!!", "Generating rules ....", "Completed!!"}));
  const RulesInfo info = ReadRulesInfo("Run.mdb");
  EXPECT_EQ(info.texts, (Texts{"T", "4", "0,5", "0,75"}));
  EXPECT_EQ(std::count(info.first_map.begin(), info.first_map.end(), 10), 3);
  EXPECT_EQ(std::count(info.second_map.begin(), info.second_map.end(), 10), 0);
  EXPECT_EQ(ReadFile("copy.dat"), ReadFile("FCI.dat"));
  std::filesystem::remove("copy.dat");
  EXPECT_EQ(FileNames("."), kMade);
  EXPECT_EQ(FileNames("state"), Texts{"ItemSets.lock"});
}

TEST_F(ClosedExtractionTest, NamesItemsByTheOtherTaxonomyWhereThereIsOne) {
  MakeTaxonomy({"Asthma", "Cough"});
  MakeForeignDatabase("tax.mdb", R"(CREATE TABLE TaxonomyOrnex(Canonical, "Index", FatherId, More);
      INSERT INTO TaxonomyOrnex VALUES ('Fever', '7', 'X.2', ''), ('Asthma', '2', 'X.1', ''),
          ('Asthma', '1', 'X.0', ''), ('Other', '3', 'X.2', '');)");
  MakeTerms(R"(CREATE TABLE T("Index", Fever SMALLINT, Asthma SMALLINT, Cough SMALLINT);
      INSERT INTO T VALUES (1,1,1,1),(2,1,1,1),(3,0,1,1);)");
  const ExtractionReport report = Extract();
  EXPECT_EQ(lines_, (Texts{"Asthma   => Fever  ", "Fever   => Asthma  "}));
  EXPECT_EQ(Rows("Run.mdb", "SELECT ANTECEDENT FROM Extracted"), (Texts{"2-", "7-"}));
  EXPECT_EQ(report.closed.unknown_columns, Texts{"Cough"});
  EXPECT_EQ(report.closed.renumbered, Texts{"Fever"});
}

TEST_F(ClosedExtractionTest, OddTables) {
  MakeTaxonomy({"A", "B", "D"});
  struct Case {
    const char* table;
    float min_support;
    ExtractionEnd end;
    Texts rules;
  };
  const Case cases[] = {
      {R"(CREATE TABLE T("Index", A SMALLINT, B SMALLINT);)", 0.05F, ExtractionEnd::kOnlySingleItems, {}},
      {R"(CREATE TABLE T("Index");INSERT INTO T VALUES (1);)", 0.05F, ExtractionEnd::kOnlySingleItems, {}},
      {R"(CREATE TABLE T("Index", A SMALLINT, B SMALLINT);INSERT INTO T VALUES (1,0,1),(2,1,0);)",
       0.05F,
       ExtractionEnd::kOnlySingleItems,
       {}},
      // Only ones: the closure of the empty set is not empty, and rules have two sides nevertheless.
      {R"(CREATE TABLE T("Index", A SMALLINT, B SMALLINT);INSERT INTO T VALUES (1,1,1),(2,1,1);)",
       1.0F,
       ExtractionEnd::kRules,
       {"2-|3-|1|1", "3-|2-|1|1"}},
      // Columns alike, and a row id of 0.
      {R"(CREATE TABLE T("Index", A SMALLINT, B SMALLINT, D TEXT);
          INSERT INTO T VALUES (0,1,1,'1'),(1,1,1,'1'),(2,0,0,'1'),(3,0,0,'01');)",
       0.5F,
       ExtractionEnd::kRules,
       {"2-|3-4-|0.5|1", "3-|2-4-|0.5|1", "4-|2-3-|0.5|0.666667"}},
      {R"(CREATE TABLE T("Index", A SMALLINT, B SMALLINT);
          INSERT INTO T VALUES (1,1,1),(2,1,0),(3,1,0),(4,0,1),(5,0,1);)",
       0.2F,
       ExtractionEnd::kNoRules,
       {}}};
  for (const Case& one : cases) {
    std::filesystem::remove("Run.mdb");
    MakeTerms(one.table);
    request_.min_support = one.min_support;
    EXPECT_EQ(Extract().end, one.end) << one.table;
    EXPECT_EQ(std::filesystem::exists("Run.mdb"), one.end != ExtractionEnd::kOnlySingleItems) << one.table;
    if (one.end == ExtractionEnd::kRules) {
      EXPECT_EQ(Rows("Run.mdb", "SELECT ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE FROM Extracted"), one.rules);
    }
  }
  MakeTerms(R"(CREATE TABLE T("Index", A SMALLINT, B BLOB);INSERT INTO T VALUES (1,1,1);)");
  EXPECT_NE(MessageOf<DatabaseError>([this] { Extract(); }).find("neither numbers nor text"),
            std::string::npos);
  // More items than the text of a side has room for: each of 90 columns implies all others.
  Texts terms;
  std::string columns;
  std::string ones;
  for (int i = 1; i <= 90; ++i) {
    terms.push_back(fmt::format("N{}", i));
    columns += fmt::format(", N{} SMALLINT", i);
    ones += ",1";
  }
  MakeTaxonomy(terms);
  MakeTerms("CREATE TABLE T(\"Index\"" + columns + ");INSERT INTO T VALUES (1" + ones + ");");
  const ExtractionReport report = Extract();
  EXPECT_EQ(report.closed.too_long_rules, 90U);
  EXPECT_EQ(report.rules_stored, 0);
  EXPECT_EQ(Records("Rules.dat").size(), 180U);
}

TEST_F(ClosedExtractionTest, InterruptionsAndWrongNamesLeaveNothingHalfMade) {
  MakeTaxonomy({"Asthma", "Steroid", "Smoking"});
  MakeTerms(R"(CREATE TABLE T("Index", Smoking SMALLINT, Asthma SMALLINT, Steroid SMALLINT);
      INSERT INTO T VALUES (1,0,1,1),(2,0,1,1),(3,1,1,0),(4,1,1,1);)");
  const Texts before = {"state", "tax.mdb", "terms.mdb"};
  for (int pulse = 0;; ++pulse) {
    ASSERT_LT(pulse, 100);
    RecordingProgress stopping;
    stopping.interrupt_at = pulse;
    try {
      Extract(stopping, true);
      break;
    } catch (const Interrupted&) {
      EXPECT_EQ(FileNames("."), before) << pulse;
      EXPECT_EQ(FileNames("state"), Texts{"ItemSets.lock"});
    }
  }
  EXPECT_EQ(FileNames("."), kMade);
  output_.path = "Rules.dat";
  EXPECT_NE(MessageOf<InputError>([this] { Extract(); }).find("would replace"), std::string::npos);
  std::filesystem::copy_file("terms.mdb", "FCI.dat", std::filesystem::copy_options::overwrite_existing);
  std::filesystem::remove("terms.mdb");
  std::filesystem::create_symlink("FCI.dat", "terms.mdb");
  EXPECT_NE(MessageOf<InputError>([this] { Extract(); }).find("would replace this file"), std::string::npos);
}

}  // namespace selvane::tests
