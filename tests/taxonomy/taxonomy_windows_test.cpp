#include <QTest>

#include "support/window_test.h"
#include "taxonomy/loading_window.h"
#include "taxonomy/restoring_window.h"
#include "taxonomy/selecting_window.h"

namespace selvane::tests {

constexpr const char* kAskXml = "open: Selecting xml file : ";
constexpr const char* kAskNewDatabase = "save: Saving taxonomies on database : ";
constexpr const char* kRows = "SELECT * FROM Taxonomy";

class TaxonomyWindowsTest : public WindowTest {
 protected:
  const fs::path xml = SELVANE_SOURCE_DIR "/samples/taxonomy.xml";

  // The place of a line in the tree, by its text, opened so that it can be clicked.
  static QTreeWidgetItem& Line(QTreeWidget& tree, const QString& text) {
    const auto found = tree.findItems(text, Qt::MatchExactly | Qt::MatchRecursive);
    if (found.empty()) throw std::runtime_error("no line " + text.toStdString());
    tree.scrollToItem(found.front());
    return *found.front();
  }
  static void DoubleClick(QTreeWidget& tree, const QString& text) {
    const QPoint place = tree.visualItemRect(&Line(tree, text)).center();
    Click(*tree.viewport(), place);
    QTest::mouseDClick(tree.viewport(), Qt::LeftButton, {}, place);
  }
  static void Choose(SelectingWindow& window, const QString& text) {
    auto& tree = *window.findChild<QTreeWidget*>("existing");
    Click(*tree.viewport(), tree.visualItemRect(&Line(tree, text)).center());
    Click(Button(window, "Prune &hierarchy"));
  }
};

TEST_F(TaxonomyWindowsTest, LoadingMakesWhatTheCommandLineMakes) {
  MakeTaxonomy();
  LoadingWindow window(context);
  window.show();
  EXPECT_EQ(EnabledButtons(window), "&Execute, &Close");
  dialogs.Expect(kAskXml);  // cancelled: nothing happens
  Click(Button(window, "&Execute"));
  const auto load = [&](const fs::path& file, const ScriptedDialogs::Paths& output, const char* told) {
    dialogs.Expect(kAskXml, {file});
    dialogs.Expect(kAskNewDatabase, output);
    if (*told != 0) dialogs.Expect(told);
    Click(Button(window, "&Execute"));
  };
  load(xml, {"made.mdb"}, "");
  EXPECT_EQ(StatusOf(window), "Completed!!");
  EXPECT_EQ(Rows("made.mdb", kRows), Rows("tax.mdb", kRows));
  load(xml, {}, "");
  EXPECT_EQ(Rows("taxDB", kRows).size(), 137U);
  load(xml, {"tax.mdb"}, "error: Kovril: *");  // it is there already
  WriteText("odd.xml", "canonical=\"A\" type=\"b\" tree=\"C1\"\ncanonical tree\n");
  load("odd.xml", {"odd.mdb"}, "warning: Loading Taxonomy: 1 of the file's lines *");
  WriteText("odd.xml", "canonical=\"\xC5\x82\" type=\"b\" tree=\"C\"\n");
  load("odd.xml", {"odd2.mdb"}, "information: Loading Taxonomy: The information file *");
  EXPECT_EQ(left_with, 0);
  load("tax.txt", {"other.mdb"}, "error: Loading Taxonomy: Selected file is not xml file");
  EXPECT_EQ(left_with, -1);
  EXPECT_FALSE(fs::exists("other.mdb"));
  Click(Button(window, "&Close"));
}

TEST_F(TaxonomyWindowsTest, SelectingShowsChildrenAndChoices) {
  MakeTaxonomy();
  SelectingWindow window(context);
  dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
  ASSERT_TRUE(window.Prepare());
  window.show();
  auto& existing = *window.findChild<QTreeWidget*>("existing");
  auto& downward = *window.findChild<QTreeWidget*>("downward");
  EXPECT_EQ(existing.topLevelItemCount(), 7);
  dialogs.Expect("warning: Choosing Taxonomy: No taxonomy selected*");
  Click(Button(window, "Prune &hierarchy"));

  DoubleClick(existing, "Chemicals and Drugs");
  for (int i = 0; i < 3; ++i) DoubleClick(existing, "Organic Chemicals");  // nothing is added twice
  EXPECT_EQ(
      TreeText(existing).substr(0, 107),
      "Diseases\nChemicals and Drugs\n  Organic Chemicals\n    Alcohols\n    Amines\n    Nitro Compounds\n"
      "  Heterocyclic");
  Choose(window, "Organic Chemicals");
  dialogs.Expect("warning: Choosing Taxonomy: Already pruned");
  Choose(window, "<Organic Chemicals>");
  Choose(window, "Diseases");
  Click(Button(window, "Prune &upward"));
  EXPECT_EQ(TreeText(downward), "Organic Chemicals\nDiseases\n");
  // The position of each line, marked and chosen ones too.
  const std::tuple<QTreeWidget*, const char*, const char*> tips[] = {{&existing, "<Diseases>", "C"},
                                                                     {&downward, "Diseases", "C"},
                                                                     {&downward, "Organic Chemicals", "D.02"},
                                                                     {&existing, "Amines", "D.02.092"}};
  for (const auto& [tree, line, tip] : tips) EXPECT_EQ(Line(*tree, line).toolTip(0), tip);
  Click(Button(window, "&Reset all"));
  EXPECT_EQ(TreeText(downward), "");
  EXPECT_EQ(existing.topLevelItemCount(), 7);
  EXPECT_TRUE(existing.findItems("<", Qt::MatchStartsWith | Qt::MatchRecursive).empty());
  window.close();
}

TEST_F(TaxonomyWindowsTest, PrunesAsTheCommandLineDoesAndRestores) {
  MakeTaxonomy();
  const Texts whole = Rows("tax.mdb", kRows);
  fs::copy_file("tax.mdb", "plain.mdb");
  Cli("taxonomy prune plain.mdb C");
  {
    SelectingWindow window(context);
    dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
    ASSERT_TRUE(window.Prepare());
    window.show();
    Choose(window, "Diseases");
    Click(Button(window, "&Execute"));
    EXPECT_FALSE(window.isVisible());
  }
  EXPECT_EQ(Rows("tax.mdb", kRows), Rows("plain.mdb", kRows));
  RestoringWindow window(context);
  window.show();
  dialogs.Expect(kAskTaxonomy);
  dialogs.Expect("error: Kovril: no file was named*");
  Click(Button(window, "&Execute"));
  dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
  Click(Button(window, "&Execute"));
  EXPECT_EQ(StatusOf(window), "Completed!!");
  EXPECT_EQ(Rows("tax.mdb", kRows), whole);
  QTest::keyClick(&window, Qt::Key_Escape);
}

}  // namespace selvane::tests
