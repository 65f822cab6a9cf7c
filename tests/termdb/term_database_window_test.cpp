#include "termdb/term_database_window.h"

#include <QPlainTextEdit>

#include "support/window_test.h"
#include "taxonomy/taxonomy_pruning.h"
#include "termdb/term_table.h"

namespace selvane::tests {

class TermDatabaseWindowTest : public WindowTest {
 protected:
  const ScriptedDialogs::Paths samples =
      QueryFiles(ScriptedDialogs::Paths{SELVANE_SOURCE_DIR "/samples/abstracts"});
  void Choose(TermDatabaseWindow& window, const ScriptedDialogs::Paths& files) {
    dialogs.Expect("open many: Selecting query files : ", files);
    Click(Button(window, "Choose Query &Files"));
  }
  void AnswerTaxonomy() { dialogs.Expect("open: Selecting taxonomies database : ", {"tax.mdb"}); }
  void AnswerOutput(const ScriptedDialogs::Paths& output) {
    dialogs.Expect("save: Saving mesh-terms in abstracts on database : ", output);
  }
};

TEST_F(TermDatabaseWindowTest, MakesTheTableThatTheCoreMakes) {
  MakeTaxonomy("tax.mdb");
  MakeTerms("tax.mdb", "plain.mdb");
  TermDatabaseWindow window(context);
  window.show();
  dialogs.Expect("warning: Creating Mesh-Terms DB: No query files selected*");
  Click(Button(window, "&Create DB"));
  ScriptedDialogs::Paths files = samples;
  files.insert(files.begin() + 3, "notes.doc");
  Choose(window, files);
  Choose(window, {});  // cancelled: the first choice stays
  AnswerTaxonomy();
  dialogs.Expect("error: Creating Mesh-Terms DB: A selected file is not txt tagged file");
  AnswerOutput({"terms.mdb"});
  Click(Button(window, "&Create DB"));
  EXPECT_EQ(StatusOf(window), "Completed!!");
  const std::string rows = "SELECT * FROM 14_05_23_11_MESHTERMS";
  EXPECT_EQ(Rows("terms.mdb", rows), Rows("plain.mdb", rows));
  EXPECT_TRUE(window.findChild<QPlainTextEdit*>()->toPlainText().contains("30 abstracts"));

  AnswerTaxonomy();
  dialogs.Expect("error: Creating Mesh-Terms DB: *");
  AnswerOutput({"terms.mdb"});
  dialogs.Expect("error: Kovril: *");  // there already, and not replaced
  Click(Button(window, "&Create DB"));
  window.close();
}

TEST_F(TermDatabaseWindowTest, CancelledDialogsAndFilesWithoutTermsMakeNothing) {
  MakeTaxonomy("tax.mdb");
  TermDatabaseWindow window(context);
  window.show();
  Choose(window, samples);
  dialogs.Expect("open: Selecting taxonomies database : ");
  Click(Button(window, "&Create DB"));
  AnswerTaxonomy();
  AnswerOutput({});
  Click(Button(window, "&Create DB"));
  EXPECT_EQ(StatusOf(window), "");
  {
    TaxonomyStore taxonomy("tax.mdb");
    SilentProgress progress;
    for (const char* category : {"C", "D", "E", "F", "G", "I", "M"}) {
      PruneTaxonomy(taxonomy, {}, taxonomy.NodesAtPosition(category), progress);
    }
  }
  AnswerTaxonomy();
  dialogs.Expect("information: Creating Mesh-Terms DB: No query file holds a term*");
  Click(Button(window, "&Create DB"));
  EXPECT_EQ(FileNames("."), std::vector<std::string>{"tax.mdb"});
  window.close();
}

}  // namespace selvane::tests
