// The controls that several windows share.
#include <QClipboard>
#include <QGuiApplication>
#include <QHelpEvent>
#include <QMenu>
#include <QToolTip>
#include <QVBoxLayout>

#include "support/window_test.h"
#include "ui/line_buffer.h"
#include "ui/number_field.h"
#include "ui/searched_tree.h"
#include "ui/text_tree.h"

namespace selvane::tests {

class ControlsTest : public WindowTest {
 protected:
  void Show(std::initializer_list<QWidget*> controls) {
    auto* const layout = new QVBoxLayout(&window);
    for (QWidget* const control : controls) layout->addWidget(control);
    window.resize(200, 300);
    window.show();
    Activate(window);
  }
  static void Activate(QWidget& shown) {
    shown.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&shown));
  }
  ~ControlsTest() override { window.close(); }
  QWidget window;
};

TEST_F(ControlsTest, ANumberFieldIsLeftForAnotherControlOnly) {
  auto* const field = new NumberField('.');
  auto* const other = new QLineEdit;
  int left = 0;
  field->left = [&left] { ++left; };
  Show({field, other});
  field->setFocus();
  {  // another program, as far as the field can tell
    QWidget program;
    program.show();
    Activate(program);
    EXPECT_FALSE(field->hasFocus());
    program.close();
    Activate(window);
  }
  EXPECT_TRUE(field->hasFocus());
  EXPECT_EQ(left, 0);
  QMenu menu;
  menu.addAction("Copy");
  menu.popup({});
  menu.close();
  EXPECT_EQ(left, 0);
  QTest::keyClick(field, Qt::Key_Tab);
  EXPECT_EQ(left, 1);
  field->setFocus();
  Click(*other);
  EXPECT_EQ(left, 2);
}

TEST_F(ControlsTest, ANumberFieldShowsTheUsersDecimalSignAndTakesEither) {
  NumberField field(',');
  field.Show(0.25F);
  EXPECT_EQ(field.text(), "0,25");
  for (const char* text : {"0,5", "0.5"}) {
    field.setText(text);
    EXPECT_EQ(field.Number(), 0.5F);
  }
}

TEST_F(ControlsTest, ATreeTellsOfEachLineWhatCannotBeSeen) {
  auto* const tree = new TextTree("lines");
  const QString long_line(100, 'x');
  for (const QString& text : {QString("short"), long_line, QString("with a code")})
    tree->addTopLevelItem(new QTreeWidgetItem({text}));
  tree->topLevelItem(2)->setToolTip(0, "C.23");
  Show({tree});
  const auto tip_at = [tree](QPoint place) {
    QHelpEvent help(QEvent::ToolTip, place, tree->viewport()->mapToGlobal(place));
    QCoreApplication::sendEvent(tree->viewport(), &help);
    std::string tip = QToolTip::isVisible() ? FromQt(QToolTip::text()) : "";
    QToolTip::hideText();  // takes a while
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
    return tip;
  };
  const auto tip_of = [&](int line) {
    return tip_at(tree->visualItemRect(tree->topLevelItem(line)).center());
  };
  EXPECT_EQ(tip_of(1), FromQt(long_line));
  EXPECT_EQ(tip_of(2), "with a code\nC.23");
  EXPECT_EQ(tip_of(0), "");
  EXPECT_EQ(tip_at({5, 200}), "");  // below the lines
  window.resize(2000, 300);
  EXPECT_EQ(tip_of(1), "");
}

TEST_F(ControlsTest, LinesAreFoundNarrowedAndCopiedInTheirOrder) {
  auto* const searched = new SearchedTree("lines");
  TextTree& tree = searched->tree();
  constexpr int kLines = 1500;  // more than a block
  LineBuffer buffer(tree);
  for (int i = 0; i < kLines; ++i) buffer.Add(QString("Line %1").arg(i), i);
  EXPECT_EQ(tree.topLevelItemCount(), 1024);
  buffer.Flush();
  ASSERT_EQ(tree.topLevelItemCount(), kLines);
  EXPECT_EQ(FromQt(tree.topLevelItem(1499)->text(0)), "Line 1499");
  EXPECT_EQ(tree.topLevelItem(1499)->data(0, Qt::UserRole).toInt(), 1499);
  tree.topLevelItem(7)->addChild(new QTreeWidgetItem({"line 1498 too"}));
  searched->describe = [](const QTreeWidgetItem& line) { return line.text(0) + '!'; };
  Show({searched});

  auto* const search = searched->findChild<QLineEdit*>("search");
  QTest::keyClicks(search, " LINE 1498 ");
  std::string shown;
  for (int i = 0; i < kLines; ++i) {
    if (!tree.topLevelItem(i)->isHidden()) shown += FromQt(tree.topLevelItem(i)->text(0)) + ", ";
  }
  EXPECT_EQ(shown, "Line 7, Line 1498, ");
  tree.setCurrentItem(tree.topLevelItem(1498));
  EXPECT_EQ(searched->findChild<QLabel*>()->text(), "Line 1498!");

  tree.setSelectionMode(QAbstractItemView::ExtendedSelection);
  for (const int line : {1498, 7}) tree.topLevelItem(line)->setSelected(true);
  QTest::keySequence(&tree, QKeySequence::Copy);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), "Line 7\nLine 1498");
  searched->Clear();
  EXPECT_EQ(search->text(), "");
  EXPECT_EQ(tree.topLevelItemCount(), 0);
}

}  // namespace selvane::tests
