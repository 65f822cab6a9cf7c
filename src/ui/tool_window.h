// The base of all tool windows.
#pragma once

#include <QDialog>
#include <QTimer>
#include <deque>
#include <functional>

#include "ui/window_context.h"
#include "ui/window_progress.h"

class QHBoxLayout;
class QLabel;
class QProgressBar;
class QPushButton;
class QVBoxLayout;

namespace selvane {

// A modal window for one task: its controls, below them a progress bar and a status line, below these a row
// of buttons with Close. Escape closes it too. It remembers its size under its name.
//
// Every handler of a control goes through Run or RunLater, one at a time. While it works the window repaints
// but takes no other command, and Escape stops the work. What a handler throws goes to the context's failure
// handler, and the window goes on.
class ToolWindow : public QDialog {
 public:
  using Command = std::function<void()>;

  // Called once, before the window is shown: asks for what it cannot do without. False when it is not to be
  // shown. May throw what the core throws.
  virtual bool Prepare() { return true; }

  // Closes the window or, while a command works, stops that.
  void reject() override;
  void done(int result) override;

 protected:
  // `size` is that of the first time, in pixels.
  ToolWindow(const WindowContext& context, QWidget* parent, const QString& name, const QString& title,
             const QSize& size);

  // Where a window puts its controls.
  QVBoxLayout& content() { return *content_; }
  // A sentence that says what the window does.
  void AddHint(const QString& text);
  // A button in the bottom row, right of those added before; Close is to be the last.
  QPushButton* AddButton(const QString& text, Command command);
  QPushButton* AddCloseButton();

  // What the Close button, Escape and the title bar do; run as a command.
  virtual void Close();

  void Run(const Command& command);
  // Runs the command when the control that asked for it has dealt with its event and no mouse button is down:
  // a dialog shown from within a press would swallow the release. Comes before any command that is run later.
  void RunLater(Command command);

  const WindowContext& context() const { return context_; }
  WindowProgress& progress() { return progress_; }
  void ShowMessage(MessageIcon icon, const QString& title, const QString& text, const QString& details = {});

  void keyPressEvent(QKeyEvent* event) override;

 private:
  void RunNow(const Command& command);
  void RunPending();

  const WindowContext& context_;
  QVBoxLayout* content_;
  QProgressBar* bar_;
  QLabel* status_;
  QHBoxLayout* buttons_;
  WindowProgress progress_;
  std::deque<Command> pending_;
  QTimer when_pending_;  // single shots
  bool working_ = false;
};

}  // namespace selvane
