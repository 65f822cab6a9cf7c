#include "support/window_test.h"

#include <QAbstractItemView>
#include <cstdlib>
#include <iterator>
#include <sstream>

#include "cli/cli.h"

namespace selvane::tests {

namespace {

bool Fits(const std::string& expected, const std::string& asked) {
  return expected.ends_with('*') ? asked.starts_with(expected.substr(0, expected.size() - 1))
                                 : asked == expected;
}

void AddLines(const QTreeWidgetItem& item, int level, std::string& text) {
  text += std::string(static_cast<std::size_t>(2 * level), ' ') + FromQt(item.text(0)) + '\n';
  for (int i = 0; i < item.childCount(); ++i) AddLines(*item.child(i), level + 1, text);
}

}  // namespace

void ScriptedDialogs::ExpectDone() {
  for (const auto& step : steps_) ADD_FAILURE() << "never asked: " << step.first;
  steps_.clear();
}

ScriptedDialogs::Paths ScriptedDialogs::Answer(const std::string& question) {
  const auto [expected, answers] = steps_.empty() ? std::pair("nothing", Paths()) : steps_.front();
  if (!Fits(expected, question)) {
    ADD_FAILURE() << "asked: " << question << "\nexpected: " << expected;
    return {};
  }
  steps_.pop_front();
  return answers;
}

fs::path ScriptedDialogs::OpenFile(QWidget* /*parent*/, FileKind /*kind*/, const QString& title) {
  const Paths paths = Answer("open: " + FromQt(title));
  return paths.empty() ? fs::path() : paths.front();
}

ScriptedDialogs::Paths ScriptedDialogs::OpenFiles(QWidget* /*parent*/, FileKind /*kind*/,
                                                  const QString& title) {
  return Answer("open many: " + FromQt(title));
}

fs::path ScriptedDialogs::SaveFile(QWidget* /*parent*/, FileKind /*kind*/, const QString& title,
                                   OverwriteQuestion question, const QString& suggestion) {
  const Paths paths = Answer((question == OverwriteQuestion::kAsked ? "save, asking: " : "save: ") +
                             FromQt(title) + FromQt(suggestion));
  return paths.empty() ? fs::path() : paths.front();
}

bool ScriptedDialogs::Ask(QWidget* /*parent*/, const QString& title, const QString& text) {
  return !Answer("ask: " + FromQt(title) + ": " + FromQt(text)).empty();
}

void ScriptedDialogs::Message(QWidget* /*parent*/, MessageIcon icon, const QString& title,
                              const QString& text, const QString& more) {
  details = FromQt(more);
  constexpr const char* kIcons[] = {"information", "warning", "error"};
  Answer(kIcons[static_cast<int>(icon)] + (": " + FromQt(title)) + ": " + FromQt(text));
}

WindowTest::WindowTest() {
  ::setenv("XDG_STATE_HOME", (folder() / "state").c_str(), 1);
}

WindowTest::~WindowTest() {
  for (const QWidget* window : QApplication::topLevelWidgets()) {
    if (window->isVisible()) ADD_FAILURE() << "left open: " << FromQt(window->windowTitle());
  }
}

void WindowTest::Cli(const std::string& command) {
  std::istringstream words(command);
  std::ostringstream out;
  SilentProgress progress;
  EXPECT_EQ(RunCli({std::istream_iterator<std::string>(words), {}}, {out, out, progress, clock, '.'}), 0)
      << out.str();
}

QPushButton& Button(const QWidget& window, const QString& text) {
  for (QPushButton* const button : window.findChildren<QPushButton*>()) {
    if (button->text() == text) return *button;
  }
  throw std::runtime_error("no button " + FromQt(text));
}

void Click(QWidget& widget, QPoint place) {
  QTest::mouseClick(&widget, Qt::LeftButton, {}, place);
  QCoreApplication::processEvents();
}

void ClickRow(QAbstractItemView& view, int row) {
  const QModelIndex index = view.model()->index(row, 0);
  view.scrollTo(index);
  Click(*view.viewport(), view.visualRect(index).center());
}

std::string StatusOf(const QWidget& window) {
  return FromQt(window.findChild<QLabel*>("status")->text());
}

std::string EnabledButtons(const QWidget& window) {
  QStringList texts;
  for (const QPushButton* const button : window.findChildren<QPushButton*>()) {
    if (button->isEnabled()) texts.append(button->text());
  }
  return FromQt(texts.join(", "));
}

std::string TreeText(const QTreeWidget& tree) {
  std::string text;
  for (int i = 0; i < tree.topLevelItemCount(); ++i) AddLines(*tree.topLevelItem(i), 0, text);
  return text;
}

}  // namespace selvane::tests
