#include "data/expression_filter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/error.h"

namespace selvane {

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ExpressionFilterTest : public testing::Test {
 protected:
  ExpressionFilterTest() {
    filter_.AddRow(std::vector<Variant>{1.5, 0.2, "Asthma"});
    filter_.AddRow(std::vector<Variant>{3.0, Variant(), "Fever; it's"});
    filter_.AddRow(std::vector<Variant>{4.0, 0.001, "Cough"});
  }
  std::vector<std::string> columns_ = {"lift", "p", "antecedent"};
  ExpressionFilter filter_{columns_};
};

TEST_F(ExpressionFilterTest, FindsTheRowsForWhichItIsTrue) {
  EXPECT_THAT(filter_.RowsWhere("lift > 2"), ElementsAre(1, 2));
  EXPECT_THAT(filter_.RowsWhere("LIFT > 2 and p < 0.01 -- a comment"), ElementsAre(2));
  EXPECT_THAT(filter_.RowsWhere("antecedent like '%thm%' or p is null"), ElementsAre(0, 1));
  EXPECT_THAT(filter_.RowsWhere("abs(lift - 3) <= 1"), ElementsAre(1, 2));
}

// Each is refused with the names that there are, and the filter goes on to work.
TEST_F(ExpressionFilterTest, RefusesWhatIsNoExpressionOverTheColumns) {
  for (const char* expression :
       {"lift >", "", "lif > 2", "lift > 2; delete from Figures", "1) union select 1 from sqlite_schema --",
        "lift > (select count(*) from sqlite_schema)", "load_extension('x') is null",
        "\"Asthma\" = antecedent",
        "lift > (with recursive r(x) as (select 1 union all select x from r) select count(*) from r)"}) {
    try {
      filter_.RowsWhere(expression);
      FAIL() << expression;
    } catch (const InputError& error) {
      EXPECT_THAT(error.what(), HasSubstr("lift, p, antecedent"));
    }
  }
  EXPECT_THAT(filter_.RowsWhere("1"), ElementsAre(0, 1, 2));
}

}  // namespace

}  // namespace selvane
