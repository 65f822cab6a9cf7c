// The main function of window tests: no display, English, and any warning of Qt fails the test.
#include <gtest/gtest.h>

#include <QApplication>
#include <clocale>
#include <cstdlib>

namespace {

void FailOnWarning(QtMsgType type, const QMessageLogContext& /*context*/, const QString& text) {
  if (type == QtDebugMsg || type == QtInfoMsg) return;
  if (text.contains("propagateSizeHints")) return;  // the offscreen platform cannot do it
  ADD_FAILURE() << "Qt: " << text.toStdString();
}

}  // namespace

int main(int argc, char** argv) {
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  if (std::getenv("XDG_RUNTIME_DIR") == nullptr) ::setenv("XDG_RUNTIME_DIR", "/tmp", 1);
  testing::InitGoogleTest(&argc, argv);
  const QApplication app(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  qInstallMessageHandler(FailOnWarning);
  return RUN_ALL_TESTS();
}
