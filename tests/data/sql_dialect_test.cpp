#include "data/sql_dialect.h"

#include <gtest/gtest.h>

#include "base/error.h"
#include "data/variant.h"

namespace selvane::tests {

TEST(SqlDialect, Translates) {
  const std::tuple<const char*, const char*, const char*> cases[] = {
      {"SELECT Index FROM Taxonomy ", R"(SELECT "Index" FROM "Taxonomy")", ""},
      {"SELECT Canonical FROM Taxonomy WHERE Index='17'",
       R"(SELECT "Canonical" FROM "Taxonomy" WHERE "Index" = ?)", "17;"},
      {"SELECT * from 1e5", R"(SELECT * FROM "1e5")", ""},
      {"select Index from T where [a (b) c] = 1", R"(SELECT "Index" FROM "T" WHERE "a (b) c" = ?)", "1;"},
      {"select [a]]b] from T where [x\"y] = '1'", R"(SELECT "a]b" FROM "T" WHERE "x""y" = ?)", "1;"},
      {"DELETE * FROM Taxonomy WHERE FatherId Like 'C.23*'",
       R"(DELETE FROM "Taxonomy" WHERE "FatherId" GLOB ?)", "C.23*;"},
      {"SELECT a FROM T WHERE b Like '[!x]?#'", R"(SELECT "a" FROM "T" WHERE "b" GLOB ?)", "[^x]?[0-9];"},
      {"insert into Source (Index) values('it''s')", R"(INSERT INTO "Source" ( "Index" ) VALUES ( ? ))",
       "it's;"},
      {"insert into T (INDEX) values(2,'12-',-0.012000)",
       R"(INSERT INTO "T" ( "INDEX" ) VALUES ( ? , ? , ? ))", "2;12-;-0.012;"},
      {"SELECT count(*) FROM T ORDER BY 1 LIMIT 5", R"(SELECT count ( * ) FROM "T" ORDER BY 1 LIMIT 5)", ""},
      {"SELECT a FROM T WHERE b<>'x' AND c>=-2", R"(SELECT "a" FROM "T" WHERE "b" <> ? AND "c" >= ?)",
       "x;-2;"},
      {"select a from T where b Like c and d = 'x#'", R"(SELECT "a" FROM "T" WHERE "b" GLOB "c" AND "d" = ?)",
       "x#;"},
      {"SELECT a--b FROM T", R"(SELECT "a" - - "b" FROM "T")", ""},  // no comment begins
  };
  for (const auto& [sql, text, values] : cases) {
    const TranslatedSql translated = SqlDialect::Translate(sql);
    std::string found;
    for (const Variant& value : translated.values) found += value.ToText() + ";";
    EXPECT_EQ(translated.text + " " + found, std::string(text) + " " + values);
  }
  const std::string value = "C'1*?#[";
  const TranslatedSql quoted =
      SqlDialect::Translate("SELECT a FROM T WHERE b=" + SqlDialect::ValueText(value) + " AND c Like " +
                            SqlDialect::BeginningText(value));
  EXPECT_EQ(quoted.values.front().ToText() + " " + quoted.values.back().ToText(), "C'1*?#[ C'1[*][?][#][[]*");
  for (const char* bad : {"SELECT 'a", "SELECT [a", "it's", "SELECT ?"})
    EXPECT_THROW(SqlDialect::Translate(bad), InputError) << bad;
}

}  // namespace selvane::tests
