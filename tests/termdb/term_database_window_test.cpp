#include "termdb/term_database_window.h"

#include <QPlainTextEdit>

#include "support/window_test.h"
#include "termdb/term_table.h"

namespace selvane::tests {

class TermDatabaseWindowTest : public WindowTest {
 protected:
  void Choose(const ScriptedDialogs::Paths& files) {
    dialogs.Expect("open many: Selecting query files : ", files);
    Click(Button(window, "Choose Query &Files"));
  }
  void Create() { Click(Button(window, "&Create DB")); }
  TermDatabaseWindow window{context};
};

TEST_F(TermDatabaseWindowTest, MakesTheTableThatTheCommandLineMakes) {
  constexpr const char* kAskOutput = "save: Saving mesh-terms in abstracts on database : ";
  MakeTaxonomy();
  MakeTerms();
  window.show();
  dialogs.Expect("warning: Creating Mesh-Terms DB: No query files selected*");
  Create();
  ScriptedDialogs::Paths files = QueryFiles(ScriptedDialogs::Paths{SELVANE_SOURCE_DIR "/samples/abstracts"});
  files.insert(files.begin() + 3, "notes.doc");
  Choose(files);
  Choose({});  // cancelled: the first choice stays
  dialogs.Expect(kAskTaxonomy);
  Create();
  dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
  dialogs.Expect("error: Creating Mesh-Terms DB: A selected file is not txt tagged file");
  dialogs.Expect(kAskOutput, {"made.mdb"});
  Create();
  EXPECT_EQ(StatusOf(window), "Completed!!");
  const std::string rows = "SELECT * FROM 14_05_23_11_MESHTERMS";
  EXPECT_EQ(Rows("made.mdb", rows), Rows("terms.mdb", rows));
  EXPECT_TRUE(window.findChild<QPlainTextEdit*>()->toPlainText().contains("30 abstracts"));

  Choose({files.back()});
  dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
  dialogs.Expect(kAskOutput);
  Create();
  EXPECT_EQ(StatusOf(window), "");
  dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
  dialogs.Expect(kAskOutput, {"made.mdb"});
  dialogs.Expect("error: Kovril: *");  // there already, and not replaced
  Create();
  Cli("taxonomy prune tax.mdb C D E F G I M");
  dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
  dialogs.Expect("information: Creating Mesh-Terms DB: No query file holds a term*");
  Create();
  window.close();
}

}  // namespace selvane::tests
