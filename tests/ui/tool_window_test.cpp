#include "ui/tool_window.h"

#include <QProgressBar>
#include <QVBoxLayout>

#include "support/window_test.h"

namespace selvane::tests {

// A window with one field, whose command "Work" is given by the test.
class Workshop final : public ToolWindow {
 public:
  explicit Workshop(const WindowContext& context)
      : ToolWindow(context, nullptr, "workshop", "Workshop", {300, 200}) {
    content().addWidget(&field);
    AddButton("&Work", [this] { work(*this); });
    AddCloseButton();
    setModal(true);  // as exec() does
    show();
  }
  using ToolWindow::progress;
  using ToolWindow::RunLater;

  QLineEdit field;
  std::function<void(Workshop&)> work;
};

class ToolWindowTest : public WindowTest {};

TEST_F(ToolWindowTest, TakesNoCommandWhileItWorksButRepaintsAndCanBeStopped) {
  Workshop window(context);
  int runs = 0;
  bool shown = false;
  window.work = [&](Workshop& self) {
    ++runs;
    Click(Button(self, "&Work"));
    Click(Button(self, "&Close"));
    QTest::keyClick(&self.field, Qt::Key_A);
    QDialog question(&self);  // what the command asks is answered
    question.open();
    QTest::keyClick(&question, Qt::Key_Escape);
    EXPECT_FALSE(question.isVisible());
    self.progress().SetStatus("Working ...");
    self.progress().SetRange(0, 10);
    self.progress().SetStep(2);
    for (int i = 1; i <= 5; ++i) self.progress().StepIt();
    int painted = 0;
    QTimer::singleShot(0, &self, [&painted] { ++painted; });
    QTest::qSleep(60);
    self.progress().Pulse();  // gives the window its turn
    shown = painted == 1 && self.isVisible() && StatusOf(self) == "Working ..." &&
            self.findChild<QProgressBar*>()->value() == 10;
  };
  Click(Button(window, "&Work"));
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(shown);
  EXPECT_TRUE(window.field.text().isEmpty());

  const auto until_stopped = [](Workshop& self, const std::function<void()>& stop) {
    stop();
    for (int i = 0; i < 1000; ++i) self.progress().Pulse();
    ADD_FAILURE() << "went on";
  };
  window.work = [&](Workshop& self) {
    until_stopped(self, [&self] { QTest::keyClick(&self, Qt::Key_Escape); });
  };
  Click(Button(window, "&Work"));
  EXPECT_EQ(StatusOf(window), "Stopped. Nothing half-made was left behind.");
  window.work = [&](Workshop& self) { until_stopped(self, [&self] { self.close(); }); };
  Click(Button(window, "&Work"));
  EXPECT_TRUE(window.isVisible());
  QTest::keyClick(&window, Qt::Key_Escape);
  EXPECT_FALSE(window.isVisible());
}

TEST_F(ToolWindowTest, KeepsTheBarWithinItsRangeAndItsRepaintsApart) {
  Workshop window(context);
  const QProgressBar& bar = *window.findChild<QProgressBar*>();
  WindowProgress& progress = window.progress();
  progress.SetRange(5, 5);  // one without length would have no end
  EXPECT_EQ(std::pair(bar.minimum(), bar.maximum()), std::pair(5, 6));
  for (const auto& [position, shown] : {std::pair(99, 6), {0, 5}, {6, 6}}) {
    progress.SetPosition(position);
    EXPECT_EQ(bar.value(), shown);
  }
  progress.SetStatus("repaints at once");
  bool had_its_turn = false;
  QTimer::singleShot(0, &window, [&had_its_turn] { had_its_turn = true; });
  progress.Pulse();
  EXPECT_FALSE(had_its_turn);
  progress.Stop();
  EXPECT_THROW(progress.Pulse(), Interrupted);
  progress.Pulse();  // once is enough: what cleans up may call it too
  progress.Stop();   // one that came too late must not end the next command
  bool done = false;
  window.work = [&done](Workshop& self) {
    self.progress().Pulse();
    done = true;
  };
  Click(Button(window, "&Work"));
  EXPECT_TRUE(done);
  window.close();
}

TEST_F(ToolWindowTest, ShowsFailuresAndGoesOn) {
  Workshop window(context);
  const auto fail_with = [&](auto error, const char* told, const char* details) {
    window.work = [error](Workshop& self) {
      self.progress().SetStatus("Working ...");
      throw error;
    };
    if (*told != 0) dialogs.Expect(told);
    Click(Button(window, "&Work"));
    EXPECT_EQ(StatusOf(window), "");
    EXPECT_EQ(dialogs.details, details);
  };
  fail_with(DatabaseError("a.mdb", "it is no database", "SELECT 1"),
            "error: Kovril: a.mdb\nit is no database", "The statement that failed:\nSELECT 1");
  fail_with(DatabaseError("", "it is no database", ""), "error: Kovril: it is no database", "");
  fail_with(FileError("b.txt: cannot be read"), "error: Kovril: b.txt: cannot be read", "");
  fail_with(std::bad_alloc(), "error: Kovril: There is not enough memory.*", "");
  fail_with(std::logic_error("x"), "error: Kovril: The command failed.", "x");
  fail_with(SilentAbort(), "", "x");  // of the message before
  EXPECT_EQ(left_with, 0);
  fail_with(EndOfProgram("Loading Taxonomy", "not xml"), "error: Loading Taxonomy: not xml", "");
  EXPECT_EQ(left_with, -1);
  window.close();
}

TEST_F(ToolWindowTest, RunsWhatIsForLaterBeforeTheNextCommandAndNotUnderAPressedButton) {
  Workshop window(context);
  std::string order;
  window.work = [&order](Workshop&) { order += "work "; };
  window.RunLater([&order] { order += "later "; });
  QTest::mouseClick(&Button(window, "&Work"), Qt::LeftButton);
  EXPECT_EQ(order, "later work ");
  window.work = [&order](Workshop& self) {
    self.RunLater([&order] { order += "after "; });
    self.progress().SetStatus("");  // repaints
    order += "working ";
  };
  Click(Button(window, "&Work"));
  EXPECT_TRUE(QTest::qWaitFor([&order] { return order == "later work working after "; })) << order;
  order = "later work ";
  QTest::mousePress(&window.field, Qt::LeftButton);
  window.RunLater([&order] { order += "released "; });
  QTest::qWait(60);
  EXPECT_EQ(order, "later work ");
  QTest::mouseRelease(&window.field, Qt::LeftButton);
  EXPECT_TRUE(QTest::qWaitFor([&order] { return order == "later work released "; })) << order;
  window.close();
}

}  // namespace selvane::tests
