// A tool window's progress bar and status line, as the core drives them.
#pragma once

#include <QElapsedTimer>

#include "base/progress.h"

class QLabel;
class QProgressBar;

namespace selvane {

// Lets the windows repaint between the steps of work, some twenty times a second at most.
class WindowProgress final : public Progress {
 public:
  // Both must outlive it.
  WindowProgress(QProgressBar& bar, QLabel& status);

  void SetRange(int lower, int upper) override;
  void SetPosition(int position) override;
  void SetStep(int step) override { step_ = step; }
  void StepIt() override;
  void SetStatus(std::string_view text) override;
  // Throws Interrupted once after Stop.
  void Pulse() override;

  void Stop() { stop_ = true; }
  void ForgetStop() { stop_ = false; }
  // An empty bar and no status text.
  void Clear();

 private:
  void Repaint();

  QProgressBar& bar_;
  QLabel& status_;
  QElapsedTimer since_repaint_;
  int step_ = 1;
  bool stop_ = false;
};

}  // namespace selvane
