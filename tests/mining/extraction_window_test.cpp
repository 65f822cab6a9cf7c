#include "mining/extraction_window.h"

#include <QClipboard>
#include <QGuiApplication>

#include "rules/rules_info.h"
#include "support/window_test.h"

namespace selvane::tests {

constexpr const char* kTable = "14_05_23_11_MESHTERMS";
constexpr const char* kAskOutput = "save, asking: Saving extracted rules :";
// The texts name the confidence both times.
const std::string kBad = ": Minimun Confidence has a Invalid value \n It'll take in default value";
const std::string kBadConfidence = "error: Extracting Rules" + kBad;
const std::string kBadSupport = "error: Extracting" + kBad;

class ExtractionWindowTest : public WindowTest {
 protected:
  ExtractionWindowTest() {
    MakeTaxonomy();
    MakeTerms();
    window.show();
  }
  ~ExtractionWindowTest() override { window.close(); }

  void OpenAndChoose() {
    dialogs.Expect(kAskTerms, {"terms.mdb"});
    Click(Button(window, "&Open Database"));
    EXPECT_EQ(EnabledButtons(window), "Extraxt with ORNEX, &Close");
    dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
    ClickRow(tables(), 0);
  }
  // Types over the number and leaves the field.
  void Enter(const char* field, const char* number) {
    auto* const edit = window.findChild<QLineEdit*>(field);
    edit->setFocus();
    edit->selectAll();
    QTest::keyClicks(edit, number);
    QTest::keyClick(edit, Qt::Key_Tab);
    QCoreApplication::processEvents();
  }
  std::string Shown(const char* field) { return FromQt(window.findChild<QLineEdit*>(field)->text()); }
  void Extract() { Click(Button(window, "&Extract with APRIORI")); }
  // The same by the command line, with a database of its own; the rules that the window has stored.
  Texts SameByCli(const std::string& output, const std::string& options) {
    for (const char* name : {"tax", "terms"}) fs::copy_file(name + std::string(".mdb"), name);
    Cli("rules extract terms --taxonomy tax --output plain.mdb " + options);
    EXPECT_EQ(ReadFile("Info" + output + ".dat"), ReadFile("Infoplain.dat"));
    const Texts stored = Rows(output + ".mdb", "SELECT * FROM Extracted");
    EXPECT_EQ(stored, Rows("plain.mdb", "SELECT * FROM Extracted"));
    return stored;
  }
  QListWidget& tables() { return *window.findChild<QListWidget*>("tables"); }
  QTreeWidget& rules() { return *window.findChild<QTreeWidget*>(); }

  ExtractionWindow window{context};
};

TEST_F(ExtractionWindowTest, GoesFromADatabaseToRulesAsTheCoreDoes) {
  EXPECT_EQ(EnabledButtons(window), "&Open Database, Extraxt with ORNEX, &Close");
  dialogs.Expect(kAskTerms);
  dialogs.Expect("error: Extracting Rules: Select a valid Data Source");
  Click(Button(window, "&Open Database"));
  OpenAndChoose();
  EXPECT_EQ(EnabledButtons(window), "&Extract with APRIORI, Extraxt with ORNEX, &Close");
  EXPECT_EQ(tables().item(0)->text(), kTable);
  EXPECT_EQ(window.findChild<QListWidget*>("fields")->count(), 10);

  Enter("Minimun Support", "0.2");
  Enter("Minimun Confidence", "0,7");
  dialogs.Expect(kAskOutput, {"rules.mdb"});
  Extract();
  EXPECT_EQ(StatusOf(window), "Completed!!");
  EXPECT_EQ(rules().topLevelItemCount(), 127);
  EXPECT_EQ(Shown("Minimun Confidence"), "0.7");
  rules().topLevelItem(1)->setSelected(true);
  rules().topLevelItem(0)->setSelected(true);
  QTest::keyClick(&rules(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(),
            rules().topLevelItem(0)->text(0) + '\n' + rules().topLevelItem(1)->text(0));

  // The same by the command line; then again by the window, without ancestors, over the file of before.
  SameByCli("rules", "--min-support 0.2 --min-confidence 0.7");
  Click(*window.findChild<QCheckBox*>(), QPoint(8, 12));
  dialogs.Expect(kAskOutput, {"rules.mdb"});
  Extract();
  EXPECT_EQ(rules().topLevelItemCount(), 2);
}

TEST_F(ExtractionWindowTest, ThresholdsOutOfRangeAreReportedWhenTheFieldIsLeft) {
  OpenAndChoose();
  dialogs.Expect(kBadSupport);
  Enter("Minimun Support", "1.5");
  EXPECT_EQ(Shown("Minimun Support"), "1.5");
  dialogs.Expect(kBadConfidence);
  dialogs.Expect(kBadSupport);
  Enter("Minimun Confidence", "0");
  dialogs.ExpectDone();
  // The check box reads the refused values again, and the extraction corrects them again.
  Click(*window.findChild<QCheckBox*>(), QPoint(8, 12));
  dialogs.Expect(kBadConfidence);
  dialogs.Expect(kBadSupport);
  dialogs.Expect(kAskOutput, {"rules.mdb"});
  Extract();
  EXPECT_EQ(Shown("Minimun Support"), "0.05");
  EXPECT_EQ(Shown("Minimun Confidence"), "0.5");
  EXPECT_EQ(ReadRulesInfo("rules.mdb").min_support, "0.05");
  dialogs.Expect("error: Extracting Rules: \"many\" is not a number*");
  Enter("Minimun Support", "many");
  EXPECT_EQ(Shown("Minimun Support"), "0.05");
  Enter("Minimun Support", "1");
  dialogs.ExpectDone();
}

TEST_F(ExtractionWindowTest, EndsWithoutRulesInItsWaysAndTellsOfRestoredTerms) {
  Cli("taxonomy prune tax.mdb F.01.145.805");
  OpenAndChoose();
  Enter("Minimun Support", "1");
  dialogs.Expect("information: Extracting Rules: No extractable rules");
  dialogs.Expect("information: Extracting Rules: Terms of the table had been pruned*");
  Extract();
  EXPECT_EQ(StatusOf(window), "Completed!!");
  Enter("Minimun Support", "0.5");
  Enter("Minimun Confidence", "1");
  dialogs.Expect(kAskOutput);  // cancelled
  dialogs.Expect("error: Kovril: no file was named*");
  Extract();
  EXPECT_EQ(StatusOf(window), "");
  tables().clearSelection();
  QCoreApplication::processEvents();
  for (const char* button : {"&Extract with APRIORI", "Extraxt with ORNEX"}) {
    dialogs.Expect("warning: Extracting: No table selected");
    Click(Button(window, button));
  }
  EXPECT_EQ(FileNames("state/selvane"), Texts{"ItemSets.lock"});
}

TEST_F(ExtractionWindowTest, ExtractsWithOrnexAsTheCommandLineDoes) {
  Cli("taxonomy prune tax.mdb F.01.145.805");
  OpenAndChoose();
  Enter("Minimun Support", "0.1");
  dialogs.Expect(std::string(kAskOutput) + "RulesORNEX", {"RulesORNEX.mdb"});
  dialogs.Expect("information: Extracting Rules: Columns without a node in the taxonomy were left out: *");
  Click(Button(window, "Extraxt with ORNEX"));
  EXPECT_EQ(StatusOf(window), "Completed!!");
  const Texts stored = SameByCli("RulesORNEX", "--min-support 0.1 --closed");
  EXPECT_EQ(static_cast<std::size_t>(rules().topLevelItemCount()), stored.size());
  EXPECT_FALSE(stored.empty());
  Enter("Minimun Support", "1");
  dialogs.Expect("information: Extracting Rules: No extractable rules");
  dialogs.Expect("information: Extracting Rules: Columns without a node*");
  Click(Button(window, "Extraxt with ORNEX"));
  EXPECT_EQ(rules().topLevelItemCount(), 0);
}

TEST_F(ExtractionWindowTest, ASecondTaxonomyIsAskedForWithEachTable) {
  OpenAndChoose();
  const auto again = [this] {
    tables().clearSelection();
    QCoreApplication::processEvents();
    ClickRow(tables(), 0);
  };
  dialogs.Expect(kAskTaxonomy, {"tax.mdb"});  // held already, so not opened a second time
  again();
  EXPECT_EQ(tables().selectedItems().size(), 1);
  WriteText("no.mdb", "no database");
  dialogs.Expect(kAskTaxonomy, {"no.mdb"});
  dialogs.Expect("error: Kovril: no.mdb\n*");
  again();
  EXPECT_TRUE(tables().selectedItems().isEmpty());  // so that a click asks again
  dialogs.Expect(kAskTaxonomy);
  dialogs.Expect("error: Kovril: no file was named*");
  ClickRow(tables(), 0);
}

}  // namespace selvane::tests
