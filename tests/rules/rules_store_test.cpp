#include "rules/rules_store.h"

#include "data/database_error.h"
#include "support/test_support.h"

namespace selvane::tests {

using Texts = std::vector<std::string>;

class RulesStoreTest : public FolderTest {
 protected:
  static Rule Example(std::int32_t item) { return {{12, item}, {7}, 0.012F, 0.8F, 0.015F, 0.3F, 2, 1}; }
};

TEST_F(RulesStoreTest, StoresRulesUnderTheirNumbers) {
  RulesStore store;
  store.CreateRulesDatabase("r.mdb", "Extracted");
  EXPECT_TRUE(store.source_table().empty() && store.target_table().empty());
  EXPECT_TRUE(store.database().HasQuery("SQLstatement"));
  store.SetTargetTable("Extracted");
  store.InsertRule(Example(345));
  Rule tiny = Example(1);
  tiny.support = 0.0000004F;
  tiny.consequent.clear();
  store.InsertRule(tiny);
  EXPECT_EQ(Rows(store.database(), "SELECT * FROM Extracted"),
            (Texts{"1|12-345-|7-|0.012|0.8|0.015|0.3|2|1", "2|12-1-||0|0.8|0.015|0.3|2|1"}));

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
  RulesStore store;
  store.OpenRulesDatabase("f.mdb");
  store.OpenRulesTable("R");
  EXPECT_EQ(store.CountRules(), 6);
  Rule rule;
  store.LoadRule(4, rule);
  EXPECT_EQ(rule.antecedent, std::vector<std::int32_t>{1});
  store.LoadRule(1, rule);
  EXPECT_TRUE(rule.antecedent.empty());
  EXPECT_THROW(store.LoadRule(7, rule), DatabaseError);
  EXPECT_THROW(store.LoadRule(8, rule), DatabaseError);
  EXPECT_NE(MessageOf<DatabaseError>([&] { store.OpenRulesTable("Other"); }).find("no rules table"),
            std::string::npos);
  EXPECT_THROW(store.OpenRulesTable("None"), DatabaseError);
}

TEST_F(RulesStoreTest, TableHolds32767Rules) {
  RulesStore store;
  store.CreateRulesDatabase("r.mdb", "Extracted");
  store.SetTargetTable("Extracted");
  Transaction transaction(store.database());
  for (long i = 0; i < kMostRules; ++i) store.InsertRule(Example(1));
  EXPECT_THROW(store.InsertRule(Example(1)), DatabaseError);
  transaction.Commit();
  store.SetSourceTable("Extracted");
  EXPECT_EQ(store.CountRules(), kMostRules);
  Rule long_rule = Example(1);
  long_rule.antecedent.assign(60, 12345);  // 360 characters
  EXPECT_THROW(store.InsertRule(long_rule), DatabaseError);
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
