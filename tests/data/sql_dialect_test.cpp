#include "data/sql_dialect.h"

#include <random>

#include "data/database_error.h"
#include "data/recordset.h"
#include "data/statement.h"
#include "support/test_support.h"

namespace selvane::tests {

std::string ValuesOf(const TranslatedSql& sql) {
  std::string text;
  for (const Variant& value : sql.values) text += value.ToText() + ";";
  return text;
}

TEST(SqlDialect, Translates) {
  const struct {
    const char* sql;
    const char* text;
    const char* values;
  } cases[] = {
      {"SELECT Index FROM Taxonomy ", R"(SELECT "Index" FROM "Taxonomy")", ""},
      {"SELECT Canonical FROM Taxonomy WHERE Index='17'",
       R"(SELECT "Canonical" FROM "Taxonomy" WHERE "Index" = ?)", "17;"},
      {"SELECT * from 14_05_23_11_MESHTERMS", R"(SELECT * FROM "14_05_23_11_MESHTERMS")", ""},
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
  for (const auto& c : cases) {
    const TranslatedSql translated = SqlDialect::Translate(c.sql);
    EXPECT_EQ(translated.text, c.text);
    EXPECT_EQ(ValuesOf(translated), c.values) << c.sql;
  }
  for (const char* bad : {"SELECT 'a", "SELECT [a", "it's", "SELECT ?"}) {
    EXPECT_THROW(SqlDialect::Translate(bad), InputError) << bad;
  }
}

class LiftedLiteralsTest : public FolderTest {};

// What a lifted literal finds is what the engine finds with the literal in its own text.
TEST_F(LiftedLiteralsTest, FindWhatPlainTextFinds) {
  std::mt19937 random(7);
  const char* const pieces[] = {"a", "B", "1", "''", "%", "_", "-", ".", " ", "\"", ";", "--", "\xC3\xB6"};
  Database database = Database::Create("a.mdb");
  database.CreateTable("T", std::vector<Field>{{"N", FieldType::kInt16}, {"Text", FieldType::kText, 99}});
  EXPECT_THROW(database.OpenRecordset("SELECT Missing FROM T"), DatabaseError);  // no text in double quotes
  std::vector<std::string> literals;
  for (int i = 0; i < 60; ++i) {
    std::string literal;
    for (auto length = random() % 4; length > 0; --length) literal += pieces[random() % std::size(pieces)];
    literals.push_back(literal);
    database.Execute("insert into T (N,Text) values(" + std::to_string(i % 7) + ",'" + literal + "')");
  }
  for (int i = 0; i < 60; ++i) {
    const std::string number = std::to_string(i % 7);
    Statement plain(database.connection(), "SELECT count(*) FROM \"T\" WHERE \"Text\" = '" + literals[i] +
                                               "' AND \"N\" <= " + number);
    ASSERT_TRUE(plain.Step());
    const auto found =
        Rows(database, "select count(*) from T where Text='" + literals[i] + "' and N<=" + number);
    EXPECT_EQ(found.at(0), std::to_string(plain.ColumnInteger(0))) << literals[i];
  }
}

}  // namespace selvane::tests
