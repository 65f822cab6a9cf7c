#include "taxonomy/taxonomy_loading.h"

#include "base/file.h"
#include "base/text.h"
#include "data/bulk_insert.h"
#include "data/recordset.h"
#include "taxonomy/position_code.h"
#include "taxonomy/taxonomy_file.h"
#include "taxonomy/taxonomy_files.h"
#include "taxonomy/taxonomy_schema.h"

namespace selvane::tests {

// The load as plain statements over the table, one after the other.
class PlainLoader {
 public:
  explicit PlainLoader(Database& database) : database_(database) {}

  void Add(const std::string& code, const std::string& term) {
    if (code.size() > 1) AddSon(std::string(ParentCode(code)), term);
    Recordset row = Find(code);
    if (row.AtEnd()) {
      Insert("insert into Source (Index,FatherId,Canonical) values('" + Next() + "','" + code + "','" + term +
             "')");
    } else {
      row.Edit();
      row.SetField("Canonical", term);
      row.Update();
    }
  }

 private:
  void AddSon(const std::string& parent, const std::string& term) {
    if (Find(parent).AtEnd()) {
      if (sons_ == 0) AddColumn();
      Insert("insert into Source (Index,FatherId,Canonical,SON1) values('" + Next() + "','" + parent +
             "','','" + term + "')");
      return;
    }
    Recordset row = Find(parent);
    int field = 3;
    while (field < row.FieldCount() && !row.Value(field).ToText().empty()) ++field;
    if (field == row.FieldCount()) AddColumn();
    Recordset wide = Find(parent);
    wide.Edit();
    wide.SetField(field, term);
    wide.Update();
  }
  Recordset Find(const std::string& code) {
    return database_.OpenEditable("SELECT * FROM Source WHERE FatherId='" + code + "'");
  }
  void AddColumn() { database_.AddField("Source", SonField(++sons_)); }
  std::string Next() { return std::to_string(++last_index_); }
  void Insert(const std::string& sql) {
    database_.SetQuery("SQLstatement", sql);
    database_.ExecuteQuery("SQLstatement");
  }

  Database& database_;
  int sons_ = 0;
  int last_index_ = 0;
};

void LoadPlainly(const std::string& lines, const std::string& path) {
  SilentProgress progress;
  TaxonomyFile file;
  ParseTaxonomyText(lines, "text", file, progress);
  TaxonomyStore::Create(path);
  Database database = Database::Open(path, OpenMode::kWritable);
  PlainLoader loader(database);
  for (const TaxonomyLine& line : file.lines) {
    for (const std::string& code : line.codes) loader.Add(code, WithoutQuotes(line.term));
  }
  const std::vector<Field> fields = database.Fields("Source");
  for (std::size_t i = 3; i < fields.size(); ++i) database.AddField("Taxonomy", fields[i]);
  database.Close();
  TaxonomyStore(path).Rebuild(progress);
}

// Fields and rows of a table, and the saved statement.
Texts Content(const std::string& path, const std::string& table) {
  Database database = Database::Open(path, OpenMode::kReadOnly);
  Texts content = Rows(database, "SELECT * FROM " + table);
  for (const Field& field : database.Fields(table))
    content.push_back(field.name + std::to_string(field.size));
  content.push_back(database.QueryText("SQLstatement"));
  return content;
}

class TaxonomyLoadingTest : public FolderTest {};

TEST_F(TaxonomyLoadingTest, EqualsThePlainStatements) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    std::mt19937 random(seed);
    const std::string lines = RandomTaxonomy(random, 2 + static_cast<int>(random() % 25));
    LoadText(lines, "fast.mdb");
    const std::string plain = "plain" + std::to_string(seed) + ".mdb";
    LoadPlainly(lines, plain);
    for (const char* table : {"Source", "Taxonomy"})
      ASSERT_EQ(Content("fast.mdb", table), Content(plain, table)) << "seed " << seed << "\n" << lines;
  }
}

TEST_F(TaxonomyLoadingTest, ReadsValuesByTheirQuotes) {
  const std::string lines =
      "\xEF\xBB\xBF<x tree canonical = \"Sj\xC3\xB6gren's\" a type= \"d\" z=tree \"C23.888;C25.1\">\r\n"
      "<node canonical=\"Other\" tree=\"C1\"/>\n"
      "<!-- canonical, type and tree -->\n<node canonical=\"Category\" type=\"t\" tree=\"C\"/>\n"
      "<node canonical=\"Nowhere\" type=\"t\" tree=\"\"/>\n";
  LoadText(lines, "a.mdb");
  EXPECT_EQ(Rows("a.mdb", "SELECT Index,FatherId,Canonical,SON1 FROM Source"),
            (Texts{"1|C.23||Sj\xC3\xB6gren s", "2|C.23.888|Sj\xC3\xB6gren s|", "3|C.25||Sj\xC3\xB6gren s",
                   "4|C.25.1|Sj\xC3\xB6gren s|", "5|C|Category|"}));
  // A row is copied up to its first empty value.
  EXPECT_EQ(Rows("a.mdb", "SELECT FatherId,SON1 FROM Taxonomy WHERE Canonical=''"),
            (Texts{"C.23|", "C.25|"}));
}

TEST_F(TaxonomyLoadingTest, KnowsTaxonomyFilesByTheEndOfTheirNames) {
  for (const char* name : {"tax.xml", "tax.XML", "tax.txt.xml", "tax.xml2", "tax.myxml", ".xml"})
    EXPECT_NO_THROW(CheckTaxonomyFileName(name)) << name;
  for (const char* name : {"tax.txt", "xml", "xml.txt", "tax.xml.bak", "tax.xml.", "tax.x.ml"})
    EXPECT_THROW(CheckTaxonomyFileName(name), EndOfProgram) << name;
}

TEST_F(TaxonomyLoadingTest, NodeHasAsManyChildrenAsATableHasColumns) {
  std::string lines;
  for (int i = 1; i <= 1997; ++i) lines += NodeLine("T" + std::to_string(i), "C" + std::to_string(i));
  LoadText(lines, "wide.mdb");
  EXPECT_EQ(Rows("wide.mdb", "SELECT SON1997 FROM Source WHERE FatherId='C'"), Texts{"T1997"});
  ExpectFault<InputError>("position C has more than 1997 children",
                          [&] { LoadText(lines + NodeLine("T1998", "C1998"), "wider.mdb"); });
  EXPECT_FALSE(fs::exists("wider.mdb"));
}

TEST_F(TaxonomyLoadingTest, FaultsLeaveNothingBehind) {
  const std::string good = NodeLine("Fever", "C1");
  WriteText("there.mdb", "mine");
  const std::pair<std::string, const char*> cases[] = {
      {"<node canonical=Fever type=d tree=C1>\n", "line 2: canonical, type and tree"},
      {"<node tree=\"C1\" type=\"d\" canonical=\"Fever\"/>\n", "line 2: canonical, type and tree"},
      {NodeLine("Fever", "C1;\xC3\x84 2"), "line 2: the tree value holds an apostrophe or an odd"},
      {NodeLine("Fever", "C'1"), "line 2: the tree value holds an apostrophe"},
      {NodeLine(std::string(128, 'x'), "C2"), "line 2: the canonical value is longer than 127"},
      {NodeLine("Fever", "C" + std::string(126, '1')), "line 2: the position code is longer"},
  };
  SilentProgress progress;
  for (const auto& [text, part] : cases) {
    WriteText("a.xml", good + text);
    ExpectFault<InputError>(part, [&] { LoadTaxonomy("a.xml", "new.mdb", ExistingFile::kRefuse, progress); });
  }
  WriteText("a.xml", "nothing\n");
  EXPECT_THROW(LoadTaxonomy("a.xml", "new.mdb", ExistingFile::kRefuse, progress), InputError);
  WriteText("a.xml", good);
  EXPECT_THROW(LoadTaxonomy("a.xml", "there.mdb", ExistingFile::kRefuse, progress), DatabaseError);
  EXPECT_THROW(LoadTaxonomy("b.xml", "new.mdb", ExistingFile::kRefuse, progress), FileError);
  EXPECT_THROW(LoadTaxonomy("tax.txt", "new.mdb", ExistingFile::kRefuse, progress), EndOfProgram);
  for (int pulse = 0; pulse < 300; pulse += 7) {
    RecordingProgress stopping;
    stopping.interrupt_at = pulse;
    EXPECT_THROW(LoadTaxonomy("a.xml", "new.mdb", ExistingFile::kRefuse, stopping), Interrupted) << pulse;
  }
  EXPECT_EQ(FileNames("."), (Texts{"a.xml", "there.mdb"}));
  EXPECT_EQ(ReadFile("there.mdb"), "mine");
}

}  // namespace selvane::tests
