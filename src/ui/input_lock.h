// Keeps a window that works from taking other commands.
#pragma once

#include <QObject>
#include <functional>

class QWidget;

namespace selvane {

// During its life the user's keys, clicks and wheel are dropped, so that the window can repaint between the
// steps of its work. Dialogs that the work itself shows are used as ever. Escape calls `escape`.
class InputLock final : public QObject {
 public:
  InputLock(QWidget& window, std::function<void()> escape);
  ~InputLock() override;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  QWidget& window_;
  std::function<void()> escape_;
};

}  // namespace selvane
