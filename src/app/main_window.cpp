#include "app/main_window.h"

#include <QGridLayout>
#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPushButton>
#include <QSettings>
#include <QShortcut>
#include <QStyle>
#include <QToolButton>
#include <QWindow>
#include <algorithm>
#include <array>
#include <memory>
#include <string_view>

#include "app/about_box.h"
#include "filters/filtering_window.h"
#include "mining/extraction_window.h"
#include "pmml/exchange_window.h"
#include "tabulation/tabulation.h"
#include "taxonomy/loading_window.h"
#include "taxonomy/restoring_window.h"
#include "taxonomy/selecting_window.h"
#include "termdb/term_database_window.h"

namespace selvane {

namespace {

constexpr int kAboutCommand = 16;
constexpr int kSmallestPicture = 48;
constexpr int kGreatestPicture = 192;
constexpr int kPictureMargin = 12;
constexpr int kButtonColumns = 4;
constexpr const char* kAboutText = "Infor&mazioni su Selvane...";
constexpr const char* kSizeKey = "windows/main";
constexpr const char* kDatabase = "&Database";
constexpr const char* kRules = "&AssociationRules";

QIcon Picture(const char* name) {
  return QIcon(QString(":/pictures/%1.svg").arg(name));
}

}  // namespace

// In the order of the menu; a separator stands before Exit. The buttons are in the order of their numbers.
std::span<const MainWindow::Command> MainWindow::Commands() {
  static constexpr std::array kCommands = {
      Command{32793, 1000, kDatabase, "&Create Mesh-Terms DB", "", "terms",
              "To fill MeSH term database from UIMA tagged texts", &MainWindow::CreateTermDatabase},
      Command{32772, 1001, kDatabase, "&Load Taxonomies", "Loading taxonomies from xml file", "load",
              "To store taxonomies in the database", &MainWindow::LoadTaxonomies},
      Command{32773, 1002, kDatabase, "&Restore Taxonomies", "Restoring pruned taxonomes ", "restore",
              "To restore pruned taxonomies", &MainWindow::RestoreTaxonomies},
      Command{32774, 1003, kDatabase, "&Select Taxonomies", "Selecting existing taxonomies", "select",
              "To select taxonomies to be involved in the mining process", &MainWindow::SelectTaxonomies},
      Command{32775, 1008, kDatabase, "E&xit", "Exit from application", "exit",
              "To exit from the application", &MainWindow::Exit},
      Command{32776, 1004, kRules, "&Extract rules", "Extracting rules", "extract",
              "To extract association rules from a MeSH term database", &MainWindow::ExtractRules},
      Command{32777, 1005, kRules, "&Filtering rules", "Filtering and managing extracted rules", "filter",
              "To filter association rules stored in database", &MainWindow::FilterRules},
      Command{32792, 1009, kRules, "Im&port/Export rules", "Importing/Exporting association rules",
              "exchange",
              "To import rules from PMML files to database and to export rules from database into PMML",
              &MainWindow::ExchangeRules},
      // No menu entry or button sends these. The prompt of the first belongs to no command any more.
      Command{32771, 0, nullptr, "", "Creating database on Gandry results", nullptr, nullptr, nullptr},
      Command{1006, 0, nullptr, "", "", nullptr, nullptr, &MainWindow::Tabulate},
      Command{kAboutCommand, 0, nullptr, kAboutText, "", nullptr, nullptr, &MainWindow::ShowAbout},
  };
  return kCommands;
}

MainWindow::MainWindow(const WindowContext& context) : context_(context) {
  setWindowTitle("Kovril");
  setWindowIcon(Picture("selvane"));
  AddSystemMenu();
  AddMenus();
  AddButtons();
  resize(480, 280);
  restoreGeometry(context_.settings.value(kSizeKey).toByteArray());
}

// The window manager's own menu cannot be extended, so the icon at the left end of the menu bar opens ours.
void MainWindow::AddSystemMenu() {
  // An icon in the menu bar itself would vanish while its menu is open.
  auto* const button = new QToolButton;
  button->setObjectName("system");
  button->setIcon(windowIcon());
  button->setAutoRaise(true);
  button->setPopupMode(QToolButton::InstantPopup);
  button->setAccessibleName("System menu");
  auto* const menu = new QMenu(button);
  button->setMenu(menu);
  menuBar()->setCornerWidget(button, Qt::TopLeftCorner);
  menu->addAction("M&ove", this, [this] { windowHandle()->startSystemMove(); });
  menu->addAction("Mi&nimise", this, [this] { showMinimized(); });
  menu->addAction("&Close", this, [this] { close(); });
  menu->addSeparator();
  menu->addAction(kAboutText, this, [this] { Send(kAboutCommand); });
  auto* const shortcut = new QShortcut(QKeySequence("Alt+Space"), this);
  connect(shortcut, &QShortcut::activated, button, &QToolButton::showMenu);
}

void MainWindow::AddMenus() {
  QMenu* popup = nullptr;
  std::string_view popup_text;
  for (const Command& command : Commands()) {
    if (command.popup == nullptr) continue;
    if (popup_text != command.popup) {
      popup_text = command.popup;
      popup = menuBar()->addMenu(command.popup);
    }
    if (command.run == &MainWindow::Exit) popup->addSeparator();
    QAction* const entry = popup->addAction(command.text);
    entry->setStatusTip(command.prompt);
    entry->setData(command.menu_number);
    entry->setMenuRole(QAction::NoRole);
    connect(entry, &QAction::triggered, this, [this, number = command.menu_number] { Send(number); });
  }
}

void MainWindow::AddButtons() {
  std::vector<Command> commands(Commands().begin(), Commands().end());
  std::sort(commands.begin(), commands.end(),
            [](const Command& a, const Command& b) { return a.button_number < b.button_number; });
  auto* const panel = new QWidget;
  auto grid = std::make_unique<QGridLayout>();
  for (const Command& command : commands) {
    if (command.button_number == 0) continue;
    auto* const button = new QPushButton(Picture(command.picture), {}, panel);
    button->setObjectName(QString::number(command.button_number));
    button->setAutoDefault(true);  // Return presses it, as Space does
    constexpr int kSmallestButton = kSmallestPicture + 2 * kPictureMargin;
    button->setMinimumSize(kSmallestButton, kSmallestButton);
    button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    button->setToolTip(command.tooltip);
    button->setAccessibleName(QString(command.text).remove('&'));
    button->setAccessibleDescription(command.tooltip);
    connect(button, &QPushButton::clicked, this, [this, number = command.button_number] { Send(number); });
    const int place = static_cast<int>(buttons_.size());
    grid->addWidget(button, place / kButtonColumns, place % kButtonColumns);
    buttons_.push_back(button);
  }
  panel->setLayout(grid.release());
  setCentralWidget(panel);
}

bool MainWindow::Send(int number) {
  if (number == 0) return false;  // stands for none in the table
  const auto commands = Commands();
  // One table for both kinds of numbers, which do not overlap.
  const auto found = std::find_if(commands.begin(), commands.end(), [number](const Command& command) {
    return command.run != nullptr && (command.menu_number == number || command.button_number == number);
  });
  if (found == commands.end()) return false;
  try {
    (this->*found->run)();
  } catch (...) {
    context_.failures.HandleFailure(this, std::current_exception());
  }
  return true;
}

template <typename Window>
void MainWindow::OpenWindow() {
  // On the stack, so that the files which the window holds open are released when it is closed.
  Window window(context_, this);
  if (window.Prepare()) window.exec();
}

// The pictures grow and shrink with their buttons.
void MainWindow::resizeEvent(QResizeEvent* event) {
  QMainWindow::resizeEvent(event);
  // Laid out at once: the buttons would still have their old sizes otherwise.
  centralWidget()->layout()->activate();
  for (QPushButton* const button : buttons_) {
    const int room = std::min(button->width(), button->height()) - 2 * kPictureMargin;
    const int size = std::clamp(room, kSmallestPicture, kGreatestPicture);
    button->setIconSize({size, size});
  }
}

void MainWindow::closeEvent(QCloseEvent* event) {
  context_.settings.setValue(kSizeKey, saveGeometry());
  QMainWindow::closeEvent(event);
}

void MainWindow::CreateTermDatabase() {
  OpenWindow<TermDatabaseWindow>();
}

void MainWindow::LoadTaxonomies() {
  OpenWindow<LoadingWindow>();
}

void MainWindow::RestoreTaxonomies() {
  OpenWindow<RestoringWindow>();
}

void MainWindow::SelectTaxonomies() {
  OpenWindow<SelectingWindow>();
}

void MainWindow::ExtractRules() {
  OpenWindow<ExtractionWindow>();
}

void MainWindow::FilterRules() {
  OpenWindow<FilteringWindow>();
}

void MainWindow::ExchangeRules() {
  OpenWindow<ExchangeWindow>();
}

void MainWindow::Tabulate() {
  TabulateEntries("f1.dat", "f2.dat", "ris.dat");
}

void MainWindow::ShowAbout() {
  AboutBox(this).exec();
}

void MainWindow::Exit() {
  close();
}

void MainWindow::PaintMinimised(QPainter& painter) const {
  const int size = style()->pixelMetric(QStyle::PM_LargeIconSize);
  painter.eraseRect(rect());
  painter.drawPixmap((width() - size + 1) / 2, (height() - size + 1) / 2, windowIcon().pixmap(size, size));
}

void MainWindow::paintEvent(QPaintEvent* event) {
  if (!isMinimized()) return QMainWindow::paintEvent(event);
  QPainter painter(this);
  PaintMinimised(painter);
}

}  // namespace selvane
