// Progress on a terminal, and the wish to stop.
#pragma once

#include <chrono>
#include <csignal>
#include <ostream>
#include <string>

#include "base/file.h"
#include "base/progress.h"

namespace selvane {

// Takes Ctrl-C and the other signals that ask a program to end, from when it is made on, so that work can be
// ended in order. Make it before any thread is started.
class InterruptSignal {
 public:
  InterruptSignal();
  // True from the first such signal on.
  bool Arrived();
  // Lets signals end the program at once again, as while it only prints.
  void Release();

 private:
  sigset_t before_{};
  FileDescriptor signals_;
  bool arrived_ = false;
};

// One line, drawn anew a few times a second when `draw` is set and cleared at the end. Throws Interrupted
// when the signal has arrived.
class TerminalProgress final : public Progress {
 public:
  TerminalProgress(std::ostream& terminal, bool draw, InterruptSignal& signal)
      : terminal_(terminal), draw_(draw), signal_(signal) {}
  ~TerminalProgress() override { Clear(); }

  void SetRange(int lower, int upper) override;
  void SetPosition(int position) override;
  void SetStep(int step) override { step_ = step; }
  void StepIt() override { SetPosition(position_ + step_); }
  void SetStatus(std::string_view text) override;
  void Pulse() override;
  // Takes the line off the terminal, for other text to follow.
  void Clear();

 private:
  void Draw();

  std::ostream& terminal_;
  const bool draw_;
  InterruptSignal& signal_;
  int lower_ = 0;
  int upper_ = 100;
  int position_ = 0;
  int step_ = 1;
  std::string status_;
  bool drawn_ = false;
  std::chrono::steady_clock::time_point last_;
};

}  // namespace selvane
