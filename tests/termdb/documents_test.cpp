#include <gmock/gmock.h>

#include "base/error.h"
#include "data/recordset.h"
#include "support/test_support.h"
#include "termdb/document_reader.h"
#include "termdb/document_writer.h"
#include "termdb/rows_by_term.h"

namespace selvane::tests {

using testing::ElementsAre;

class DocumentsTest : public FolderTest {
 protected:
  // Two documents in one block of texts, a long one that fills it, and one behind it.
  DocumentsTest() {
    Database database = Database::Create("terms.mdb");
    Transaction transaction(database);
    DocumentWriter writer(database);
    writer.Add({1, "11", "Asthma", "", 2001, "one", {}});
    writer.Add({2,
                "",
                "",
                "J",
                0,
                "",
                {{1, MarkPlace::kText, 4000000000U, 7},
                 {0, MarkPlace::kHeading},
                 {2, MarkPlace::kMajorHeading},
                 {0, MarkPlace::kSubstance}}});
    writer.Add({3, "", "", "", 0, std::string(300000, 'x') + "end", {}});
    writer.Add({4, "", "Last", "", 0, "four", {}});
    writer.Finish("T", Texts{"A", "B", "C"});
    transaction.Commit();
  }

  // Row, PMID, title, journal, year, the end of the text, and the marks.
  static Texts Read(const std::vector<std::uint32_t>& rows) {
    Texts shown;
    SilentProgress progress;
    DocumentReader reader("terms.mdb", "t");
    reader.ForEach(
        rows,
        [&](const Document& document) {
          const std::string& text = document.text;
          shown.push_back(fmt::format("{}|{}|{}|{}|{}|{}", document.row, document.pmid, document.title,
                                      document.journal, document.year,
                                      text.substr(text.size() - std::min<std::size_t>(text.size(), 4))));
          for (const DocumentMark& mark : document.marks) {
            shown.back() += fmt::format("|{}{} {} {}", reader.terms()[mark.term],
                                        static_cast<int>(mark.place), mark.offset, mark.length);
          }
        },
        progress);
    return shown;
  }
};

TEST_F(DocumentsTest, AreReadByTheirRows) {
  const Texts all = Read({1, 2, 3, 4, 9});
  EXPECT_THAT(all, ElementsAre("1|11|Asthma||2001|one", "2|||J|0||B0 4000000000 7|A1 0 0|C2 0 0|A3 0 0",
                               "3||||0|xend", "4||Last||0|four"));
  EXPECT_EQ(Read({2, 4}), (Texts{all[1], all[3]}));
}

TEST_F(DocumentsTest, SayWhereThereAreNone) {
  ExpectFault<InputError>("belong to its table T, not to U", [] { DocumentReader("terms.mdb", "U"); });
  MakeForeignDatabase("old.mdb", R"(CREATE TABLE T("Index", a);)");
  ExpectFault<InputError>("remembers no documents", [] { DocumentReader("old.mdb", "T"); });
  for (const char* const damage :
       {"UPDATE sys_Marks SET Marks='7h'", "UPDATE sys_Marks SET Marks='1x'",
        "UPDATE sys_Marks SET Marks='1@5'", "UPDATE sys_Documents SET Begin=-1",
        "UPDATE sys_Documents SET Length=999999", "UPDATE sys_Texts SET Packed='zzz'",
        "DELETE FROM sys_Texts", "DELETE FROM sys_Marks WHERE Row=1"}) {
    const std::string whole = ReadFile("terms.mdb");
    {
      Database database = Database::Open("terms.mdb", OpenMode::kWritable);
      database.Execute(damage);
    }
    ExpectFault<DatabaseError>("documents are damaged", [] { Read({1, 2, 3}); });
    WriteText("terms.mdb", whole);
  }
}

TEST_F(DocumentsTest, AreChosenByTerms) {
  MakeForeignDatabase("t.mdb",
                      R"(CREATE TABLE T("Index" SMALLINT, "Asthma" SMALLINT, "C" SMALLINT, "B" SMALLINT);
      INSERT INTO T VALUES (1,1,0,0), (2,0,1,0), (3,1,0,1), (4,0,0,0);)");
  TransactionSource source;
  source.Open("t.mdb");
  const auto rows = [&source](const Texts& with, const Texts& without) {
    return RowsWithTerms(source, "T", with, without);
  };
  EXPECT_THAT(rows({}, {}), ElementsAre(1, 2, 3, 4));
  EXPECT_THAT(rows({"asthma"}, {"B"}), ElementsAre(1));
  EXPECT_THAT(rows({"Asthma", "B"}, {}), ElementsAre(3));
  EXPECT_THAT(rows({}, {"C", "B"}), ElementsAre(1, 4));
  ExpectFault<InputError>("no term \"D\"", [&] { rows({"D"}, {}); });
}

}  // namespace selvane::tests
