// Takes the pictures of the user guide: walks through the typical run on samples/ and saves each window.
// selvane-screenshots [--dark] [--width N] SAMPLES FOLDER; N of 1 gives each window its smallest size.
#include <QApplication>
#include <QListWidget>
#include <QPushButton>
#include <QSettings>
#include <QStyleFactory>
#include <QTimer>
#include <QTreeWidget>
#include <deque>
#include <filesystem>
#include <functional>
#include <iostream>

#include "app/about_box.h"
#include "app/application.h"
#include "app/main_window.h"
#include "filters/filtering_window.h"
#include "mining/extraction_window.h"
#include "pmml/exchange_window.h"
#include "taxonomy/loading_window.h"
#include "taxonomy/restoring_window.h"
#include "taxonomy/selecting_window.h"
#include "termdb/term_database_window.h"
#include "termdb/term_table.h"

namespace {

namespace fs = std::filesystem;

// Gives the files that were put in, in their order; messages go to standard error.
class PreparedDialogs final : public selvane::Dialogs {
 public:
  std::deque<fs::path> files;
  std::vector<fs::path> query_files;
  int messages = 0;  // none is expected

  fs::path OpenFile(QWidget*, selvane::FileKind, const QString&) override { return Next(); }
  std::vector<fs::path> OpenFiles(QWidget*, selvane::FileKind, const QString&) override {
    return query_files;
  }
  fs::path SaveFile(QWidget*, selvane::FileKind, const QString&, selvane::OverwriteQuestion,
                    const QString&) override {
    return Next();
  }
  bool Ask(QWidget*, const QString&, const QString&) override { return true; }
  void Message(QWidget*, selvane::MessageIcon, const QString& title, const QString& text,
               const QString& details) override {
    ++messages;
    std::cerr << title.toStdString() << ": " << text.toStdString() << ' ' << details.toStdString() << '\n';
  }

 private:
  fs::path Next() {
    if (files.empty()) throw std::logic_error("a file was asked for that none was prepared for");
    fs::path file = std::move(files.front());
    files.pop_front();
    return file;
  }
};

// 20 April, 10:11.
class FixedClock final : public selvane::Clock {
 public:
  std::tm LocalTime() const override {
    std::tm time{};
    time.tm_mday = 20;
    time.tm_mon = 3;
    time.tm_hour = 10;
    time.tm_min = 11;
    return time;
  }
};

class Photographer {
 public:
  Photographer(fs::path folder, int width) : folder_(std::move(folder)), width_(width) {}

  void Take(QWidget& window, const char* name) {
    if (width_ > 0) window.resize(width_, width_ == 1 ? 1 : window.height());
    Settle();
    const QString file = QString::fromStdString((folder_ / name).string());
    if (!window.grab().save(file)) throw std::runtime_error("cannot write " + file.toStdString());
  }
  static void Settle() {
    for (int i = 0; i < 3; ++i) QCoreApplication::processEvents();
  }

 private:
  fs::path folder_;
  int width_;
};

void Press(const QWidget& window, const QString& text) {
  for (QPushButton* const button : window.findChildren<QPushButton*>()) {
    if (button->text() == text) return button->click();
  }
  throw std::logic_error("no button " + text.toStdString());
}

void TakeTaxonomyWindows(const selvane::WindowContext& context, PreparedDialogs& dialogs,
                         const fs::path& samples, Photographer& photographer) {
  selvane::LoadingWindow loading(context);
  loading.show();
  dialogs.files = {samples / "taxonomy.xml", "tax.mdb"};
  Press(loading, "&Execute");
  photographer.Take(loading, "loading.png");

  selvane::SelectingWindow selecting(context);
  dialogs.files = {"tax.mdb"};
  selecting.Prepare();
  selecting.show();
  Photographer::Settle();
  auto* const tree = selecting.findChild<QTreeWidget*>("existing");
  for (QTreeWidgetItem* item = tree->topLevelItem(1); item != nullptr; item = item->child(0)) {
    item->setExpanded(true);
    tree->setCurrentItem(item);
  }
  tree->setCurrentItem(tree->topLevelItem(1)->child(0));
  Press(selecting, "Prune &hierarchy");
  photographer.Take(selecting, "selecting.png");
  selecting.hide();
}

void TakeMiningWindows(const selvane::WindowContext& context, PreparedDialogs& dialogs,
                       const fs::path& samples, Photographer& photographer) {
  selvane::TermDatabaseWindow terms(context);
  terms.show();
  dialogs.query_files = selvane::QueryFiles(std::vector<fs::path>{samples / "abstracts"});
  dialogs.files = {"tax.mdb", "terms.mdb"};
  Press(terms, "Choose Query &Files");
  Press(terms, "&Create DB");
  photographer.Take(terms, "terms.png");

  selvane::ExtractionWindow extraction(context);
  extraction.show();
  dialogs.files = {"terms.mdb", "tax.mdb", "rules.mdb"};
  Press(extraction, "&Open Database");
  extraction.findChild<QListWidget*>("tables")->setCurrentRow(0);
  Photographer::Settle();
  Press(extraction, "&Extract with APRIORI");
  photographer.Take(extraction, "extraction.png");
}

QListWidget& List(const QWidget& window, const QString& name) {
  for (QListWidget* const list : window.findChildren<QListWidget*>()) {
    if (list->accessibleName() == name) return *list;
  }
  throw std::logic_error("no list " + name.toStdString());
}

void Select(QListWidget& list, const QString& text) {
  list.setCurrentItem(list.findItems(text, Qt::MatchExactly).at(0));
}

// Opens a filter's window by its command and, while it is shown, prepares it and takes its picture.
void TakeFilterWindow(selvane::FilteringWindow& filtering, int command, const char* name,
                      Photographer& photographer, const std::function<void(QWidget&)>& prepare) {
  QTimer::singleShot(0, &filtering, [&] {
    QWidget& window = *QApplication::activeModalWidget();
    prepare(window);
    photographer.Take(window, name);
    window.close();
  });
  filtering.Send(command);
}

void TakeFilterWindows(const selvane::WindowContext& context, PreparedDialogs& dialogs,
                       Photographer& photographer) {
  using selvane::FilteringWindow;
  FilteringWindow filtering(context);
  dialogs.files = {"tax.mdb", "rules.mdb"};
  filtering.Prepare();
  filtering.show();
  Press(filtering, "&Load Rules");
  List(filtering, "Tables List in Rules Database").setCurrentRow(0);
  Photographer::Settle();
  auto* const rules = filtering.findChild<QTreeWidget*>();
  rules->setCurrentItem(rules->topLevelItem(3));
  photographer.Take(filtering, "filtering.png");
  TakeFilterWindow(filtering, FilteringWindow::kRatingCommand, "rating.png", photographer,
                   [](QWidget& window) { Press(window, "&Filter"); });
  TakeFilterWindow(filtering, FilteringWindow::kTemplateCommand, "template.png", photographer,
                   [](QWidget& window) {
                     Select(List(window, "Antecedent Taxonomy Classes"), "Ethanolamines");
                     Select(List(window, "Antecedent Cardinality"), "1");
                     window.findChild<QPushButton*>("ADD class to Antecedent")->click();
                     Select(List(window, "Consequent Items"), "Smoking");
                     window.findChild<QPushButton*>("ADD item to Consequent")->click();
                     Press(window, "Add &Template");
                     Press(window, "&Filter");
                   });
  TakeFilterWindow(filtering, FilteringWindow::kSpecificityCommand, "specificity.png", photographer,
                   [](QWidget& window) {
                     Select(List(window, "Ground Items"), "Smoking");
                     Press(window, "&ADD");
                     Press(window, "&Filter");
                     auto* const tree = window.findChild<QTreeWidget*>();
                     tree->setCurrentItem(tree->topLevelItem(0));
                     Press(window, "More Specific");
                   });
  dialogs.files = {"terms.mdb"};
  TakeFilterWindow(filtering, FilteringWindow::kCoverCommand, "cover.png", photographer,
                   [](QWidget& window) { Press(window, "&Filter"); });
}

bool TakeAll(const fs::path& samples, Photographer& photographer) {
  PreparedDialogs dialogs;
  selvane::Application application(dialogs, [](int status) { std::exit(status); });
  const FixedClock clock;
  QSettings settings("settings.ini", QSettings::IniFormat);
  const selvane::WindowContext context{dialogs, application, clock, settings};

  selvane::MainWindow main_window(context);
  main_window.show();
  photographer.Take(main_window, "main.png");
  TakeTaxonomyWindows(context, dialogs, samples, photographer);
  TakeMiningWindows(context, dialogs, samples, photographer);
  TakeFilterWindows(context, dialogs, photographer);
  selvane::ExchangeWindow exchange(context);
  exchange.show();
  dialogs.files = {"rules.mdb"};
  Press(exchange, "Select &Database");
  List(exchange, "Rules Tables in Database").setCurrentRow(0);
  photographer.Take(exchange, "exchange.png");
  exchange.hide();
  selvane::RestoringWindow restoring(context);
  restoring.show();
  dialogs.files = {"tax.mdb"};
  Press(restoring, "&Execute");
  photographer.Take(restoring, "restoring.png");
  selvane::AboutBox about(nullptr);
  about.show();
  photographer.Take(about, "about.png");
  return dialogs.messages == 0;
}

QPalette DarkPalette() {
  QPalette palette(QColor(45, 45, 48), QColor(45, 45, 48));
  palette.setColor(QPalette::Base, QColor(30, 30, 32));
  palette.setColor(QPalette::Highlight, QColor(60, 110, 170));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  return palette;
}

}  // namespace

int main(int argc, char** argv) {
  const QApplication app(argc, argv);
  QApplication::setStyle(QStyleFactory::create("Fusion"));
  QStringList arguments = QCoreApplication::arguments().mid(1);
  if (arguments.removeAll("--dark") > 0) QApplication::setPalette(DarkPalette());
  int width = 0;
  const auto at = arguments.indexOf("--width");
  if (at >= 0 && at + 1 < arguments.size()) {
    width = arguments[at + 1].toInt();
    arguments.remove(at, 2);
  }
  if (arguments.size() != 2) {
    std::cerr << "usage: selvane-screenshots [--dark] [--width N] SAMPLES FOLDER\n";
    return 2;
  }
  Photographer photographer(fs::absolute(arguments[1].toStdString()), width);
  const fs::path samples = fs::absolute(arguments[0].toStdString());
  std::string scratch = (fs::temp_directory_path() / "selvane-screenshots-XXXXXX").string();
  if (::mkdtemp(scratch.data()) == nullptr) return 1;
  fs::current_path(scratch);
  ::setenv("XDG_STATE_HOME", scratch.c_str(), 1);
  const bool complete = TakeAll(samples, photographer);
  fs::remove_all(scratch);
  return complete ? 0 : 1;
}
