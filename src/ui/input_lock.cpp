#include "ui/input_lock.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

namespace selvane {

InputLock::InputLock(QWidget& window, std::function<void()> escape)
    : window_(window), escape_(std::move(escape)) {
  window_.setCursor(Qt::WaitCursor);
  qApp->installEventFilter(this);
}

InputLock::~InputLock() {
  window_.unsetCursor();
}

bool InputLock::eventFilter(QObject* /*object*/, QEvent* event) {
  // A dialog that the command itself shows is modal above the window and needs its events.
  const QWidget* const modal = QApplication::activeModalWidget();
  if (modal != nullptr && modal != &window_) return false;
  switch (event->type()) {
    case QEvent::KeyPress:
      if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) escape_();
      return true;
    case QEvent::KeyRelease:
    case QEvent::Shortcut:
    case QEvent::ShortcutOverride:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::TouchBegin:
    case QEvent::TouchUpdate:
    case QEvent::TouchEnd:
    case QEvent::DragEnter:
    case QEvent::Drop:
      return true;
    // Painting and resizing go on: a window that stays blank looks as if it had died.
    default:
      return false;
  }
}

}  // namespace selvane
