#include "termdb/term_table.h"

#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

class TermTableTest : public FolderTest {
 protected:
  // A file whose abstract holds these terms, one word each.
  static void Abstract(const std::string& name, const Texts& terms) {
    std::string text = "PMID- 1\nAB  - \n";
    for (const std::string& term : terms) text += "      <DictTerm DictCanon=\"" + term + "\">x</DictTerm>\n";
    WriteText(name, text + "AD  - \n");
  }
  static TermTableReport Write(const TermCollection& collection) {
    SilentProgress progress;
    return WriteTermTable(collection, "terms.mdb", ExistingFile::kRefuse, FixedClock(), progress);
  }
  static TermCollection Collect(const std::vector<fs::path>& files, Texts* skipped = nullptr) {
    const TaxonomyStore taxonomy("tax.mdb");
    SilentProgress progress;
    return CollectTerms(
        taxonomy, files,
        [skipped](const fs::path& file, const std::string& reason) {
          if (skipped != nullptr) skipped->push_back(file.filename().string() + ": " + reason);
        },
        progress);
  }
};

TEST_F(TermTableTest, TableHoldsTheMostFrequentTerms) {
  std::string lines = NodeLine("Diseases", "C");
  for (char c = 'a'; c <= 'l'; ++c) lines += NodeLine(std::string("Term ") + c, std::string("C") + c);
  LoadText(lines, "tax.mdb");
  // Twelve terms; l and k come first, each with as many abstracts as c; a and b have the fewest.
  Abstract("1.txt", {"Term l", "Term k", "Term k", "Unknown", "Term a"});
  Abstract("2.txt", {"Unknown"});
  Abstract("3.txt",
           {"Term c", "Term d", "Term e", "Term f", "Term g", "Term h", "Term i", "Term j", "Term b"});
  Abstract("4.txt", {"Term d", "Term l", "Term k", "Term c", "Term e", "Term f", "Term g", "Term h", "Term i",
                     "Term j"});
  const TermCollection collection = Collect(QueryFiles(std::vector<fs::path>{"."}));
  EXPECT_EQ(collection.abstracts.size(), 3U);
  const TermTableReport report = Write(collection);
  EXPECT_EQ(report.table, "14_05_23_11_MESHTERMS");
  EXPECT_EQ(report.columns, (Texts{"Term l", "Term k", "Term c", "Term d", "Term e", "Term f", "Term g",
                                   "Term h", "Term i", "Term j"}));
  EXPECT_EQ(Rows("terms.mdb", "SELECT * FROM 14_05_23_11_MESHTERMS"),
            (Texts{"1|1|1|0|0|0|0|0|0|0|0", "2|0|0|1|1|1|1|1|1|1|1", "3|1|1|1|1|1|1|1|1|1|1"}));
  EXPECT_THROW(Write(collection), DatabaseError);
  // So many equal ones that a sort which is not stable mixes them.
  TermCollection equal;
  for (int i = 0; i < 40; ++i) equal.terms.push_back(std::to_string(i));
  equal.counts.assign(40, 5);
  equal.counts[39] = 6;
  EXPECT_EQ(SelectColumns(equal), (std::vector<std::uint32_t>{39, 0, 1, 2, 3, 4, 5, 6, 7, 8}));
}

TEST_F(TermTableTest, TableHolds32767Abstracts) {
  LoadText(NodeLine("Fever", "C1"), "tax.mdb");
  Abstract("1.txt", {"Fever"});
  Abstract("none.txt", {"Unknown"});
  std::vector<fs::path> files(32767, "1.txt");
  files.emplace_back("none.txt");
  const TermCollection collection = Collect(files);
  files.emplace_back("1.txt");
  ExpectFault<InputError>("there are 32768 abstracts", [&] { Collect(files); });
  EXPECT_THROW(Collect({"none.txt"}), NoTerms);
  const TermTableReport report = Write(collection);
  EXPECT_EQ(report.rows, 32767);
  EXPECT_EQ(Rows("terms.mdb", "SELECT max(Index),count(*) FROM " + report.table), Texts{"32767|32767"});
}

TEST_F(TermTableTest, AcceptsTermsOfKeptCategoriesOnly) {
  LoadText(NodeLine("Diseases", "C") + NodeLine("Fever", "C1") + NodeLine("Crohn's", "C2;D1") +
               NodeLine("Pain", "D2"),
           "tax.mdb");
  Abstract("1.txt", {"Fever", "Crohn's", "Pain"});
  EXPECT_EQ(Collect({"1.txt"}).terms, (Texts{"Fever", "Crohn s", "Pain"}));
  {
    Database database = Database::Open("tax.mdb", OpenMode::kWritable);
    database.Execute("DELETE * FROM Taxonomy WHERE FatherId='D'");
  }
  EXPECT_EQ(Collect({"1.txt"}).terms, Texts{"Fever"});
}

TEST_F(TermTableTest, PassesOverWhatItCannotRead) {
  LoadText(NodeLine("Fever", "C1"), "tax.mdb");
  Abstract("1.txt", {"Fever"});
  Abstract("2.TXT", {"Fever"});
  Abstract("3.dat", {"Fever"});
  fs::create_directory("folder.txt");
  fs::create_symlink("nowhere", "gone.txt");
  Texts skipped;
  EXPECT_EQ(Collect({"1.txt", "3.dat", "folder.txt", "gone.txt", "2.TXT"}, &skipped).abstracts.size(), 2U);
  ASSERT_EQ(skipped.size(), 3U);
  EXPECT_EQ(skipped[0], "3.dat: A selected file is not txt tagged file");
  EXPECT_NE(skipped[1].find("cannot read"), std::string::npos);
  EXPECT_NE(skipped[2].find("cannot open"), std::string::npos);
  fs::create_directory("empty");
  EXPECT_THROW(QueryFiles(std::vector<fs::path>{"empty"}), InputError);
  EXPECT_THROW(QueryFiles(std::vector<fs::path>{"missing.txt"}), InputError);
}

TEST_F(TermTableTest, RefusesNamesThatCannotBeColumns) {
  for (const Texts& terms : {Texts{"Index"}, Texts{"AIDS", "Aids"}}) {
    TermCollection collection;
    collection.terms = terms;
    collection.counts.assign(terms.size(), 1);
    collection.abstracts = {{0}};
    EXPECT_THROW(Write(collection), InputError);
  }
  EXPECT_TRUE(FileNames(".").empty());
}

}  // namespace selvane::tests
