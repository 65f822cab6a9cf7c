// app/: the program itself: the main window, the About box, and what happens to failures.
#pragma once

#include <functional>

#include "ui/window_context.h"

namespace selvane {

// The status with which the program ends itself; the system shows it as 255.
inline constexpr int kEndStatus = -1;

// Every failure of a command comes here. An error is shown in a message box, in plain words, with the
// statement that failed on demand, and the program goes on. A silent abort shows nothing. A file of a kind
// that the program does not bear is shown, and then the program ends with kEndStatus.
class Application final : public FailureHandler {
 public:
  // `leave` ends the program with a status when control is back in its event loops.
  Application(Dialogs& dialogs, std::function<void(int)> leave)
      : dialogs_(dialogs), leave_(std::move(leave)) {}

  void HandleFailure(QWidget* parent, const std::exception_ptr& failure) override;

 private:
  Dialogs& dialogs_;
  std::function<void(int)> leave_;
};

}  // namespace selvane
