#include "rules/rules_store.h"

#include <bit>
#include <cmath>
#include <limits>
#include <regex>

#include "support/test_support.h"

namespace selvane::tests {

class RulesStoreTest : public FolderTest {
 protected:
  RulesStoreTest() { store.CreateRulesDatabase("r.mdb", "Extracted"); }
  RulesStore store;
  static Rule Example(std::int32_t item) { return {{12, item}, {7}, 0.012F, 0.8F, 0.015F, 0.3F, 2, 1}; }

  // What is told when the insertion into a table of r.mdb fails, without the table's name.
  std::string Fault(const std::string& table, const std::function<void()>& insert) {
    store.OpenRulesDatabase("r.mdb");
    store.SetTargetTable(table);
    try {
      insert();
    } catch (const DatabaseError& error) {
      const std::string told = error.reason() + ": " + error.statement();
      return std::regex_replace(told, std::regex(table), "T");
    }
    return {};
  }
};

// A name with a blank in it would else be that of the table before the blank.
TEST_F(RulesStoreTest, EveryNameReachesItsOwnTable) {
  SilentProgress progress;
  std::int32_t item = 10;
  for (const char* name : {"Extracted", "Extracted old", "a\"b", "x]y", "[z]", "it's", "Order", "10_04"}) {
    if (item > 10) store.CreateRulesTable(name);
    store.SetTargetTable(name);
    store.InsertRule(Example(item));
    store.OpenRulesTable(name);
    Rule rule;
    store.LoadRule(1, rule);
    EXPECT_EQ(rule.antecedent.at(1), item) << name;
    EXPECT_EQ(store.LoadRules(progress).at(0).antecedent, rule.antecedent) << name;
    EXPECT_EQ(store.CountRules(), 1) << name;
    ++item;
  }
}

TEST_F(RulesStoreTest, StoresRulesUnderTheirNumbers) {
  EXPECT_TRUE(store.source_table().empty() && store.target_table().empty());
  store.SetTargetTable("Extracted");
  store.InsertRule(Example(345));
  Rule tiny = Example(1);
  tiny.support = 0.0000004F;
  tiny.consequent.clear();
  store.InsertRule(tiny);
  store.Close();
  EXPECT_EQ(Rows("r.mdb", "SELECT * FROM Extracted"),
            (Texts{"1|12-345-|7-|0.012|0.8|0.015|0.3|2|1", "2|12-1-||0|0.8|0.015|0.3|2|1"}));
  EXPECT_TRUE(Database::Open("r.mdb", OpenMode::kReadOnly).HasQuery("SQLstatement"));

  store.OpenRulesDatabase("r.mdb");
  store.OpenRulesTable("Extracted");
  EXPECT_EQ(store.CountRules(), 2);
  Rule rule;
  store.LoadRule(1, rule);
  EXPECT_EQ(rule.antecedent, (std::vector<std::int32_t>{12, 345}));
  EXPECT_EQ(rule.consequent, std::vector<std::int32_t>{7});
  EXPECT_EQ(rule.pc, 0.3F);
  EXPECT_EQ(rule.aspec, 2);
  store.LoadRule(3, rule);
  EXPECT_TRUE(rule.antecedent.empty() && rule.consequent.empty());
  EXPECT_EQ(rule.pc, 0.3F);  // the figures stay
}

TEST_F(RulesStoreTest, LoadsTheFirstOfEqualNumbersAsAWhereWould) {
  MakeForeignDatabase("f.mdb",
                      R"(CREATE TABLE R("INDEX",ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC);
      INSERT INTO R VALUES (4,'1-','2-',0,0,0,0,1,1),(2,'3-','2-',0,0,0,0,1,1),(4,'5-','2-',0,0,0,0,1,1),
      (NULL,'6-','2-',0,0,0,0,1,1),(7,'x-','2-',0,0,0,0,1,1),(8,'1-','2-',NULL,0,0,0,1,1);
      CREATE TABLE "Other"(a);)");
  store.OpenRulesDatabase("f.mdb");
  store.OpenRulesTable("r");
  EXPECT_EQ(store.CountRules(), 6);
  Rule rule;
  store.LoadRule(4, rule);
  EXPECT_EQ(rule.antecedent, std::vector<std::int32_t>{1});
  store.LoadRule(1, rule);
  EXPECT_TRUE(rule.antecedent.empty());
  EXPECT_THROW(store.LoadRule(7, rule), DatabaseError);
  EXPECT_THROW(store.LoadRule(8, rule), DatabaseError);
  ExpectFault<DatabaseError>("no rules table", [&] { store.OpenRulesTable("Other"); });
  EXPECT_THROW(store.OpenRulesTable("None"), DatabaseError);
}

// Numbers in any order, doubled, missing, null, below 1 or none; figures and sides that cannot be read.
TEST_F(RulesStoreTest, OneWalkGivesWhatLoadingRuleAfterRuleGives) {
  std::mt19937 random(11);
  const auto any = [&random](std::initializer_list<const char*> values) {
    return std::string(*(values.begin() + random() % values.size()));
  };
  int faults = 0;
  for (int table = 0; table < 150; ++table) {
    const bool clean = random() % 3 != 0;
    std::string sql = "CREATE TABLE R(\"index\",Antecedent,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC);";
    for (std::size_t row = random() % 9; row > 0; --row) {
      sql += "INSERT INTO R VALUES (" +
             any({"1", "2", "3", "4", "5", "6", "7", "NULL", "0", "-3", "'4'", "2.5"});
      if (!clean && random() % 12 == 0) sql.replace(sql.rfind('(') + 1, std::string::npos, "40000");
      sql += ",'" + any({"12-345-", "7-", "", "7", clean ? "8-" : "x-"}) + "','" + any({"1-", "2-3-"}) + "'";
      for (int figure = 0; figure < 4; ++figure)
        sql += ',' + any({"0.25", "-1e-30", "3", "'0.5'", "9e999", clean ? "1" : "NULL"});
      sql += ",1," + any({"2", clean ? "1" : "40000"}) + ");";
    }
    store.Close();
    fs::remove("f.mdb");
    MakeForeignDatabase("f.mdb", sql);
    store.OpenRulesDatabase("f.mdb");
    store.OpenRulesTable("R");
    const auto text = [](const Rule& rule) {
      return fmt::format("{} {} {} {} {} {} {} {}", ItemsetToText(rule.antecedent),
                         ItemsetToText(rule.consequent), rule.support, rule.confidence, rule.pa, rule.pc,
                         rule.aspec, rule.cspec);
    };
    Texts plain, walked;
    try {
      Rule rule;
      for (long number = 1; number <= store.CountRules(); ++number) {
        store.LoadRule(number, rule);
        plain.push_back(text(rule));
      }
    } catch (const DatabaseError& error) {
      plain = {error.what()};
      ++faults;
    }
    SilentProgress progress;
    try {
      for (const Rule& rule : store.LoadRules(progress)) walked.push_back(text(rule));
    } catch (const DatabaseError& error) {
      walked = {error.what()};
    }
    EXPECT_EQ(walked, plain) << sql;
  }
  EXPECT_GT(faults, 5);
  EXPECT_LT(faults, 100);
}

TEST_F(RulesStoreTest, TableHolds32767Rules) {
  store.SetTargetTable("Extracted");
  store.InsertRules([](RuleBatch& batch) {
    for (long i = 0; i < 32767; ++i) batch.Insert(Example(1));
  });
  EXPECT_THROW(store.InsertRule(Example(1)), DatabaseError);
  EXPECT_THROW(store.InsertRules([](RuleBatch& batch) { batch.Insert(Example(1)); }), DatabaseError);
  store.SetSourceTable("Extracted");
  EXPECT_EQ(store.CountRules(), 32767);
}

TEST_F(RulesStoreTest, ASideHas255Characters) {
  std::vector<std::int32_t> items(43, 12345);  // 252 characters and those of the last
  for (const auto& [last, fits] : {std::pair(12, true), std::pair(123, false)}) {
    items.back() = last;
    for (const Rule& rule : {Rule{items, {7}}, Rule{{7}, items}})
      EXPECT_EQ(Fault("Extracted", [&] { store.InsertRule(rule); }).empty(), fits);
  }
}

TEST_F(RulesStoreTest, ManyRulesAreStoredAsTheTextWouldStoreThem) {
  std::mt19937 random(5);
  const auto figure = [&random] {
    const auto bits = static_cast<std::uint32_t>(
        random());  // any float at all: tiny, huge, negative, infinite, not a number
    return random() % 2 == 0 ? std::bit_cast<float>(bits) : static_cast<float>(bits) / 4294967296.0F;
  };
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  std::vector<Rule> rules = {{{}, {-1}, -0.0F, 0.0000005F, 1.0000005F, 16777216.0F, -32768, 32767},
                             {{1}, {2}, std::nanf(""), 0, 0, 0, 1, 1},
                             {{1}, {2}, 0, 0, kInfinity, -kInfinity, 1, 1}};
  for (int i = 0; i < 100; ++i)
    rules.push_back({{12, 345}, {7}, figure(), figure(), figure(), figure(), 2, 1});
  rules.push_back(Example(1));
  rules.back().antecedent.assign(43, 12345);  // 258 characters
  rules.push_back(Example(1));
  rules.back().cspec = 32768;
  for (const char* table : {"A1", "B1"}) store.CreateRulesTable(table);
  for (const Rule& rule : rules) {
    EXPECT_EQ(Fault("A1", [&] { store.InsertRule(rule); }),
              Fault("B1", [&] { store.InsertRules([&](RuleBatch& batch) { batch.Insert(rule); }); }));
  }
  EXPECT_NE(Fault("A1", [&] { store.InsertRule(rules[1]); }).find("the figure nan, which"),
            std::string::npos);
  store.Close();
  const auto stored = [](const char* table) {
    return Rows("r.mdb",
                std::string("SELECT Index,ANTECEDENT,CONSEQUENT,printf('%!.26e',SUPPORT),") +
                    "printf('%!.26e',CONFIDENCE),printf('%!.26e',PA),printf('%!.26e',PC),ASPEC,CSPEC FROM " +
                    table);
  };
  EXPECT_GT(stored("A1").size(), 30U);
  EXPECT_EQ(stored("A1"), stored("B1"));
}

TEST_F(RulesStoreTest, SavesATableWholeOrNotAtAll) {
  store.SetTargetTable("Extracted");
  store.InsertRules([](RuleBatch& batch) {
    for (const int item : {1, 2, 3}) batch.Insert(Example(item));
  });
  store.OpenRulesTable("Extracted");
  store.BeginCascade();
  const auto fail = [](RuleBatch& batch) {
    batch.Insert(Example(4));
    throw InputError("stopped");
  };
  EXPECT_THROW(store.SaveRulesTable("Kept", fail), InputError);
  EXPECT_EQ(store.ListRulesTables(), Texts{"Extracted"});
  store.ContinueCascade();
  EXPECT_EQ(store.CountRules(), 3);  // nothing was saved, so the chain stays where it is
  store.SaveRulesTable("Kept", [](RuleBatch& batch) { batch.Insert(Example(5)); });
  EXPECT_THROW(store.SaveRulesTable("Kept", [](RuleBatch&) {}), DatabaseError);
  store.ContinueCascade();
  EXPECT_EQ(store.source_table() + store.target_table(), "KeptKept");
  EXPECT_EQ(store.CountRules(), 1);
  // Rules that follow go on with the numbers; those of a batch that fails are given again.
  EXPECT_THROW(store.InsertRules(fail), InputError);
  store.InsertRule(Example(6));
  Rule rule;
  store.LoadRule(2, rule);
  EXPECT_EQ(rule.antecedent, (std::vector<std::int32_t>{12, 6}));
  store.BeginCascade();
  store.ContinueCascade();
  EXPECT_EQ(store.source_table(), "Kept");
  EXPECT_EQ(store.target_table(), "");
}

TEST(Itemset, TextsComeBack) {
  const std::pair<const char*, std::vector<std::int32_t>> cases[] = {
      {"", {}}, {"12-345-", {12, 345}}, {"12-345", {12}}, {"7-", {7}}, {"7", {}}};
  for (const auto& [text, itemset] : cases) EXPECT_EQ(TextToItemset(text), itemset) << text;
  EXPECT_EQ(ItemsetToText(std::vector<std::int32_t>{12, 345}), "12-345-");
  for (const char* bad : {"-", "a-", "1-x-", "99999999999-"})
    EXPECT_THROW(TextToItemset(bad), InputError) << bad;
}

}  // namespace selvane::tests
