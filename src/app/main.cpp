#include <QApplication>
#include <QCommandLineParser>
#include <QDir>
#include <QLocale>
#include <QSettings>
#include <algorithm>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string_view>

#include "app/application.h"
#include "app/main_window.h"
#include "ui/qt_dialogs.h"
#include "version.h"

namespace {

// Shows the version or the help, and leaves, when it is asked for that.
QString FolderArgument(const QCoreApplication& app) {
  QCommandLineParser parser;
  parser.setApplicationDescription("Workbench for mining association rules from biomedical abstracts.");
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument("folder", "Where file dialogs start; by default where they were last.",
                               "[folder]");
  parser.process(app);
  const QStringList folders = parser.positionalArguments();
  return folders.isEmpty() ? QString() : QDir(folders.front()).absolutePath();
}

// Questions that need no display.
bool AsksOnly(int argc, char** argv) {
  return std::any_of(argv + 1, argv + argc, [](std::string_view argument) {
    return argument == "--version" || argument == "-v" || argument == "--help" || argument == "-h";
  });
}

int Run(int argc, char** argv) {
  QCoreApplication::setApplicationVersion(SELVANE_VERSION);
  if (AsksOnly(argc, argv)) FolderArgument(QCoreApplication(argc, argv));
  const QApplication app(argc, argv);
  QCoreApplication::setApplicationName("selvane");
  QCoreApplication::setOrganizationName("selvane");
  // No display name: Qt would put it behind the title of every window.
  QGuiApplication::setDesktopFileName("selvane");
  const QString decimal_point = QLocale::system().decimalPoint();
  std::setlocale(LC_NUMERIC, "C");  // the core writes and reads numbers of its own

  QSettings settings;
  selvane::QtDialogs dialogs(settings, FolderArgument(app));
  selvane::Application application(dialogs, &QCoreApplication::exit);
  const selvane::SystemClock clock;
  const selvane::WindowContext context{dialogs, application, clock, settings,
                                       decimal_point == "," ? ',' : '.'};
  selvane::MainWindow window(context);
  window.show();
  return QApplication::exec();
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Run(argc, argv);
  } catch (const std::bad_alloc&) {
    std::fputs("selvane: out of memory; close other programs\n", stderr);
    return EXIT_FAILURE;
  }
}
