#include <QTest>
#include <QTreeWidget>

#include "support/window_test.h"
#include "taxonomy/loading_window.h"
#include "taxonomy/restoring_window.h"
#include "taxonomy/selecting_window.h"

namespace selvane::tests {

using Texts = std::vector<std::string>;

constexpr const char* kAskXml = "open: Selecting xml file : ";
constexpr const char* kAskNewDatabase = "save: Saving taxonomies on database : ";
constexpr const char* kAskDatabase = "open: Selecting taxonomies database : ";
constexpr const char* kRows = "SELECT * FROM Taxonomy";

class TaxonomyWindowsTest : public WindowTest {
 protected:
  const std::filesystem::path xml = SELVANE_SOURCE_DIR "/samples/taxonomy.xml";

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
  dialogs.Expect(kAskXml, {xml});
  dialogs.Expect(kAskNewDatabase, {"made.mdb"});
  Click(Button(window, "&Execute"));
  EXPECT_EQ(StatusOf(window), "Completed!!");
  EXPECT_EQ(Rows("made.mdb", kRows), Rows("tax.mdb", kRows));

  dialogs.Expect(kAskXml, {xml});
  dialogs.Expect(kAskNewDatabase);
  Click(Button(window, "&Execute"));
  EXPECT_EQ(Rows("taxDB", kRows).size(), 137U);
  dialogs.Expect(kAskXml, {xml});
  dialogs.Expect(kAskNewDatabase, {"tax.mdb"});
  dialogs.Expect("error: Kovril: *");  // it is there already
  Click(Button(window, "&Execute"));

  WriteText("odd.xml", "canonical=\"A\" type=\"b\" tree=\"C1\"\ncanonical tree\n");
  dialogs.Expect(kAskXml, {"odd.xml"});
  dialogs.Expect(kAskNewDatabase, {"odd.mdb"});
  dialogs.Expect("warning: Loading Taxonomy: 1 of the file's lines *");
  Click(Button(window, "&Execute"));
  EXPECT_EQ(left_with, 0);
  dialogs.Expect(kAskXml, {"tax.txt"});
  dialogs.Expect(kAskNewDatabase, {"other.mdb"});
  dialogs.Expect("error: Loading Taxonomy: Selected file is not xml file");
  Click(Button(window, "&Execute"));
  EXPECT_EQ(left_with, -1);
  EXPECT_FALSE(std::filesystem::exists("other.mdb"));
  Click(Button(window, "&Close"));
}

TEST_F(TaxonomyWindowsTest, SelectingShowsChildrenAndChoices) {
  MakeTaxonomy();
  SelectingWindow window(context);
  dialogs.Expect(kAskDatabase, {"tax.mdb"});
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
  EXPECT_EQ(Line(existing, "<Diseases>").toolTip(0), "C");
  EXPECT_EQ(Line(downward, "Diseases").toolTip(0), "C");
  EXPECT_EQ(Line(downward, "Organic Chemicals").toolTip(0), "D.02");
  EXPECT_EQ(Line(existing, "Amines").toolTip(0), "D.02.092");
  Click(Button(window, "&Reset all"));
  EXPECT_EQ(TreeText(downward), "");
  EXPECT_EQ(existing.topLevelItemCount(), 7);
  EXPECT_TRUE(existing.findItems("<", Qt::MatchStartsWith | Qt::MatchRecursive).empty());
  window.close();
}

TEST_F(TaxonomyWindowsTest, PrunesAsTheCommandLineDoesAndRestores) {
  MakeTaxonomy();
  const Texts whole = Rows("tax.mdb", kRows);
  std::filesystem::copy_file("tax.mdb", "plain.mdb");
  Cli("taxonomy prune plain.mdb C");
  {
    SelectingWindow window(context);
    dialogs.Expect(kAskDatabase, {"tax.mdb"});
    ASSERT_TRUE(window.Prepare());
    window.show();
    Choose(window, "Diseases");
    Click(Button(window, "&Execute"));
    EXPECT_FALSE(window.isVisible());
  }
  EXPECT_EQ(Rows("tax.mdb", kRows), Rows("plain.mdb", kRows));
  RestoringWindow window(context);
  window.show();
  dialogs.Expect(kAskDatabase);
  dialogs.Expect("error: Kovril: no file was named*");
  Click(Button(window, "&Execute"));
  dialogs.Expect(kAskDatabase, {"tax.mdb"});
  Click(Button(window, "&Execute"));
  EXPECT_EQ(StatusOf(window), "Completed!!");
  EXPECT_EQ(Rows("tax.mdb", kRows), whole);
  QTest::keyClick(&window, Qt::Key_Escape);
}

TEST_F(TaxonomyWindowsTest, SelectingIsNotShownWithoutADatabase) {
  SelectingWindow window(context);
  dialogs.Expect(kAskDatabase);
  EXPECT_FALSE(window.Prepare());
}

}  // namespace selvane::tests
