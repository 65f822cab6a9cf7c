// What tests of windows need: scripted dialogs, trees as text, and a Qt that fails the test when it warns.
#pragma once

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QTest>
#include <QTimer>
#include <QTreeWidget>
#include <deque>

#include "app/application.h"
#include "support/test_support.h"
#include "ui/qt_text.h"
#include "ui/window_context.h"

namespace selvane::tests {

constexpr const char* kAskTaxonomy = "open: Selecting taxonomies database : ";
constexpr const char* kAskTerms = "open: Opening target database : ";

// Answers from a script. A question that was not expected fails the test, and so does one that never came.
class ScriptedDialogs final : public Dialogs {
 public:
  using Paths = std::vector<fs::path>;
  ~ScriptedDialogs() override { ExpectDone(); }

  // `question` is "open: TITLE", "open many: TITLE", "save: TITLE", "save, asking: TITLE" (both with
  // the suggested name behind, if there is one) or "ICON: TITLE:
  // TEXT" with the icons information, warning and error, or "ask: TITLE: TEXT", to which
  // any answer is yes; a star at its end stands for any text. No answer is
  // Cancel.
  void Expect(const std::string& question, const Paths& answers = {}) {
    steps_.emplace_back(question, answers);
  }
  void ExpectDone();

  fs::path OpenFile(QWidget*, FileKind, const QString& title) override;
  Paths OpenFiles(QWidget*, FileKind, const QString& title) override;
  fs::path SaveFile(QWidget*, FileKind, const QString& title, OverwriteQuestion question,
                    const QString& suggestion) override;
  bool Ask(QWidget*, const QString& title, const QString& text) override;
  void Message(QWidget*, MessageIcon icon, const QString& title, const QString& text,
               const QString& details) override;

  std::string details;  // of the last message

 private:
  Paths Answer(const std::string& question);
  std::deque<std::pair<std::string, Paths>> steps_;  // question and answer
};

// A folder of its own, with dialogs, settings and the real handler of failures. `left_with` is the status
// with which the program would have ended, 0 while it goes on.
class WindowTest : public FolderTest {
 protected:
  WindowTest();
  ~WindowTest() override;

  ScriptedDialogs dialogs;
  FixedClock clock;
  QSettings settings{"settings.ini", QSettings::IniFormat};
  int left_with = 0;
  Application application{dialogs, [this](int status) { left_with = status; }};
  WindowContext context{dialogs, application, clock, settings, '.'};
  // Runs a command of the command line, whose words are parted by blanks; fails the test when that fails.
  void Cli(const std::string& command);
  // tax.mdb and terms.mdb, made from samples/.
  void MakeTaxonomy() { Cli("taxonomy load " SELVANE_SOURCE_DIR "/samples/taxonomy.xml tax.mdb"); }
  void MakeTerms() {
    Cli("terms build --taxonomy tax.mdb --output terms.mdb " SELVANE_SOURCE_DIR "/samples/abstracts");
  }
  // Both, and rules.mdb: 127 rules.
  void MakeRules() {
    MakeTaxonomy();
    MakeTerms();
    Cli("rules extract terms.mdb --taxonomy tax.mdb --output rules.mdb --min-support 0.2 --min-confidence "
        ".7");
  }
};

// The button of this text; fails the test when there is none.
QPushButton& Button(const QWidget& window, const QString& text);
// Clicks as a user does, on a shown window, and lets what is to follow happen.
void Click(QWidget& widget, QPoint place = {});
void ClickRow(QAbstractItemView& view, int row);
std::string StatusOf(const QWidget& window);
// Texts of all enabled buttons, joined by ", ".
std::string EnabledButtons(const QWidget& window);
// The lines of a tree, each indented by two blanks a level. Children of closed items are shown too.
std::string TreeText(const QTreeWidget& tree);

}  // namespace selvane::tests
