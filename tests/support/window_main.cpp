// The main function of window tests: no display, no settings of the user, and any warning of Qt fails the
// test.

#include <QApplication>
#include <clocale>
#include <cstdlib>

#include "support/test_support.h"

namespace {

void FailOnWarning(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
  if (type == QtDebugMsg || type == QtInfoMsg) return;
  if (text.startsWith("This plugin does not support")) return;  // of the offscreen platform
  if (text.contains("XDG_RUNTIME_DIR") || text.contains("runtime directory")) return;
  ADD_FAILURE() << "Qt: " << text.toStdString();
}

}  // namespace

// The font library keeps what it has read.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig";
}

int main(int argc, char** argv) {
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  ::setenv("XDG_CONFIG_HOME", (selvane::ScratchRoot() / "selvane-test-config").c_str(), 1);
  testing::InitGoogleTest(&argc, argv);
  qInstallMessageHandler(FailOnWarning);
  const QApplication app(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  return RUN_ALL_TESTS();
}
