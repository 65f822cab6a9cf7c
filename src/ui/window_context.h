// What every window takes from outside.
#pragma once

#include <exception>

#include "base/clock.h"
#include "ui/dialogs.h"

class QSettings;

namespace selvane {

// Where failures of commands go: a message for the user, after which the program goes on or ends.
class FailureHandler {
 public:
  virtual ~FailureHandler() = default;
  virtual void HandleFailure(QWidget* parent, const std::exception_ptr& failure) = 0;
};

struct WindowContext {
  Dialogs& dialogs;
  FailureHandler& failures;
  const Clock& clock;
  QSettings& settings;  // sizes of windows
  char decimal_sign = '.';
};

}  // namespace selvane
