#include "app/main_window.h"

#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QStyle>
#include <QToolButton>

#include "support/window_test.h"

namespace selvane::tests {

class MainWindowTest : public WindowTest {
 protected:
  MainWindowTest() { window.show(); }
  ~MainWindowTest() override { window.close(); }

  // The titles of the windows that open while `act` goes on, each closed in its own way.
  Texts Opened(const std::function<void()>& act) {
    Texts titles;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
      QWidget* const dialog = QApplication::activeModalWidget();
      if (dialog == nullptr) return;
      titles.push_back(dialog->windowTitle().toStdString());
      titles.size() % 2 == 0 ? static_cast<void>(dialog->close()) : QTest::keyClick(dialog, Qt::Key_Escape);
    });
    watch.start(20);
    act();
    return titles;
  }
  QAction* Entry(int number) {
    for (QAction* const popup : window.menuBar()->actions()) {
      for (QAction* const entry : popup->menu()->actions()) {
        if (entry->data().toInt() == number) return entry;
      }
    }
    throw std::runtime_error("no entry " + std::to_string(number));
  }
  QPushButton& PictureButton(int number) { return *window.findChild<QPushButton*>(QString::number(number)); }

  MainWindow window{context};
};

TEST_F(MainWindowTest, ButtonsAndEntriesOpenTheSameWindows) {
  MakeTaxonomy();
  const std::tuple<int, int, std::string> windows[] = {
      {32793, 1000, "Kovril: Creating Mesh-Terms DB"},   {32772, 1001, "Kovril:Loading Taxonomies"},
      {32773, 1002, "Kovril:Restoring Taxonomies"},      {32774, 1003, "Kovril:Selecting Taxonomies"},
      {32776, 1004, "Kovril: Extracting Rules"},         {32777, 1005, "Kovril: Filtering Rules"},
      {32792, 1009, "Kovril: Importing/Exporting Rules"}};
  for (const auto& [entry, button, title] : windows) {
    for (const bool by_entry : {true, false}) {
      if (entry == 32774 || entry == 32777) dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
      EXPECT_EQ(Opened([&] { by_entry ? Entry(entry)->trigger() : Click(PictureButton(button)); }),
                Texts{title});
    }
  }
  dialogs.Expect(kAskTaxonomy);  // cancelled: no window
  EXPECT_EQ(Opened([&] { Click(PictureButton(1003)); }), Texts{});
  dialogs.Expect(kAskTaxonomy);
  dialogs.Expect("error: Kovril: no file was named*");
  EXPECT_EQ(Opened([&] { Click(PictureButton(1005)); }), Texts{});
}

TEST_F(MainWindowTest, ShowsPicturesWithTextsAndKeysThatDoNotCollide) {
  for (const QPushButton* const button : window.findChildren<QPushButton*>()) {
    EXPECT_FALSE(button->toolTip().isEmpty() || button->accessibleName().isEmpty());
    const QPixmap small = button->icon().pixmap(24, 24);
    std::set<QRgb> colours;
    for (int i = 0; i < 24; ++i) colours.insert(small.toImage().pixel(i, 12));
    EXPECT_GT(colours.size(), 2U) << "no picture on " << button->accessibleName().toStdString();
  }
  EXPECT_EQ(Entry(32773)->statusTip(), "Restoring pruned taxonomes ");
  EXPECT_LT(PictureButton(1000).x(), PictureButton(1001).x());
  EXPECT_LT(PictureButton(1003).y(), PictureButton(1004).y());
  const QList<QAction*> entries = window.menuBar()->actions().front()->menu()->actions();
  for (const QAction* const entry : entries) {
    EXPECT_EQ(entry->isSeparator(), entry == entries[entries.size() - 2]);  // before Exit
  }
  for (const QAction* const popup : window.menuBar()->actions()) {
    std::set<QChar> keys;
    for (const QAction* const entry : popup->menu()->actions()) {
      const auto at = entry->text().indexOf('&');
      if (at < 0) continue;
      EXPECT_TRUE(keys.insert(entry->text()[at + 1].toLower()).second) << entry->text().toStdString();
    }
  }
}

TEST_F(MainWindowTest, TheSystemMenuShowsTheAboutBoxAndExitCloses) {
  const QList<QAction*> entries = window.findChild<QToolButton*>("system")->menu()->actions();
  ASSERT_GE(entries.size(), 2);
  EXPECT_TRUE(entries[entries.size() - 2]->isSeparator());
  EXPECT_EQ(entries.back()->text(), "Infor&mazioni su Selvane...");
  EXPECT_EQ(Opened([&] { entries.back()->trigger(); }), Texts{"Informazioni su Kovril"});
  for (const bool by_button : {true, false}) {
    window.show();
    by_button ? Click(PictureButton(1008)) : Entry(32775)->trigger();
    EXPECT_FALSE(window.isVisible());
  }
}

TEST_F(MainWindowTest, AMinimisedWindowShowsItsPictureInTheMiddle) {
  window.resize(700, 400);
  QImage minimised(window.size(), QImage::Format_RGB32);
  minimised.fill(Qt::black);
  QPainter painter(&minimised);
  window.PaintMinimised(painter);
  const QRgb empty = minimised.pixel(0, 0);
  EXPECT_NE(empty, QColor(Qt::black).rgb());
  const int half = window.style()->pixelMetric(QStyle::PM_LargeIconSize) / 2;
  std::set<QRgb> in_the_middle;
  for (int x = -half; x < half; ++x) in_the_middle.insert(minimised.pixel(350 + x, 200));
  EXPECT_GT(in_the_middle.size(), 1U);
  for (const int x : {350 - half - 2, 350 + half + 2}) EXPECT_EQ(minimised.pixel(x, 200), empty);
}

TEST_F(MainWindowTest, TabulatesEntriesByItsNumberAlone) {
  for (const int number : {0, 32771, 1007}) EXPECT_FALSE(window.Send(number)) << number;
  dialogs.Expect("error: Kovril: f1.dat*");
  EXPECT_TRUE(window.Send(1006));
  WriteText("f1.dat", "a b\nc  a\r\n");
  WriteText("f2.dat", " b d e c f");
  EXPECT_TRUE(window.Send(1006));
  EXPECT_EQ(ReadFile("ris.dat"), "both 2\nfirst 1\nsecond 3\n");
}

// As main() does it, in a process of its own.
TEST_F(MainWindowTest, AFileThatIsNoTaxonomyEndsTheProgram) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  const auto run = [this] {
    Application leaving(dialogs, &QCoreApplication::exit);
    const WindowContext leaving_context{dialogs, leaving, clock, settings, '.'};
    MainWindow main_window(leaving_context);
    main_window.show();
    dialogs.Expect("open: Selecting xml file : ", {"tax.txt"});
    dialogs.Expect("save: Saving taxonomies on database : ", {"tax.mdb"});
    dialogs.Expect("error: Loading Taxonomy: Selected file is not xml file");
    QTimer::singleShot(0, &main_window, [&main_window] { main_window.Send(32772); });
    QTimer::singleShot(100, &main_window,
                       [] { Click(Button(*QApplication::activeModalWidget(), "&Execute")); });
    std::exit(QApplication::exec());
  };
  EXPECT_EXIT(run(), testing::ExitedWithCode(255), "");
}

}  // namespace selvane::tests
