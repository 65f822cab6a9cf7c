#include "ui/tool_window.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QSettings>
#include <QVBoxLayout>

#include "base/error.h"
#include "ui/input_lock.h"

namespace selvane {

namespace {

constexpr int kRetryMilliseconds = 20;
constexpr int kHintWidth = 280;

QString SizeKey(const QWidget& window) {
  return "windows/" + window.objectName();
}

}  // namespace

ToolWindow::ToolWindow(const WindowContext& context, QWidget* parent, const QString& name,
                       const QString& title, const QSize& size)
    : QDialog(parent),
      context_(context),
      content_(new QVBoxLayout),
      bar_(new QProgressBar),
      status_(new QLabel),
      buttons_(new QHBoxLayout),
      progress_(*bar_, *status_) {
  setObjectName(name);
  setWindowTitle(title);
  bar_->setAccessibleName("Progress");
  status_->setObjectName("status");
  status_->setTextFormat(Qt::PlainText);
  buttons_->addStretch();
  when_pending_.setSingleShot(true);
  connect(&when_pending_, &QTimer::timeout, this, [this] { RunPending(); });
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(content_, 1);
  layout->addWidget(status_);
  layout->addWidget(bar_);
  layout->addLayout(buttons_);
  resize(size);
  restoreGeometry(context_.settings.value(SizeKey(*this)).toByteArray());
}

void ToolWindow::AddHint(const QString& text) {
  auto* const hint = new QLabel(text);
  hint->setWordWrap(true);
  hint->setMinimumSize(kHintWidth, hint->heightForWidth(kHintWidth));  // else it is cut when all is small
  content_->addWidget(hint, 1, Qt::AlignTop);
}

QPushButton* ToolWindow::AddButton(const QString& text, Command command) {
  auto* const button = new QPushButton(text);
  button->setAutoDefault(false);  // Return in an edit field is not a click
  connect(button, &QPushButton::clicked, this, [this, button, command = std::move(command)] {
    button->setFocus();  // a shortcut does not move it, and an edit field is read when it loses the focus
    Run(command);
  });
  buttons_->addWidget(button);
  return button;
}

QPushButton* ToolWindow::AddCloseButton() {
  return AddButton("&Close", [this] { Close(); });
}

void ToolWindow::Run(const Command& command) {
  if (working_) return;  // asked for while the working command let the window repaint
  while (!pending_.empty()) {
    const Command earlier = std::move(pending_.front());
    pending_.pop_front();
    RunNow(earlier);
  }
  RunNow(command);
}

void ToolWindow::RunLater(Command command) {
  pending_.push_back(std::move(command));
  when_pending_.start(0);
}

void ToolWindow::RunPending() {
  if (pending_.empty()) return;
  if (working_ || QApplication::mouseButtons() != Qt::NoButton) {
    when_pending_.start(kRetryMilliseconds);
    return;
  }
  // It runs what is pending before the command that it is given.
  Run([] {});
}

void ToolWindow::RunNow(const Command& command) {
  const QScopedValueRollback<bool> working(working_, true);
  std::exception_ptr failure;
  // Escape at the very end of the last command was not meant for this one.
  progress_.ForgetStop();
  try {
    const InputLock lock(*this, [this] { progress_.Stop(); });
    command();
  } catch (const Interrupted&) {
    progress_.Clear();
    status_->setText("Stopped. Nothing half-made was left behind.");
  } catch (...) {
    failure = std::current_exception();
    progress_.Clear();
  }
  // Only now is the lock gone, and with it the cursor that says to wait.
  if (failure) context_.failures.HandleFailure(this, failure);
}

void ToolWindow::ShowMessage(MessageIcon icon, const QString& title, const QString& text,
                             const QString& details) {
  context_.dialogs.Message(this, icon, title, text, details);
}

void ToolWindow::done(int result) {
  context_.settings.setValue(SizeKey(*this), saveGeometry());
  QDialog::done(result);
}

void ToolWindow::reject() {
  // Escape comes here, and the close button of the window. A command that works is stopped by unwinding; the
  // window must not go while it is used.
  if (working_) {
    progress_.Stop();
  } else {
    Run([this] { Close(); });
  }
}

void ToolWindow::Close() {
  done(QDialog::Rejected);
}

void ToolWindow::keyPressEvent(QKeyEvent* event) {
  const bool enter = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (!enter) {
    QDialog::keyPressEvent(event);
  } else if (auto* const button = qobject_cast<QPushButton*>(focusWidget())) {
    button->click();
  }
}

}  // namespace selvane
