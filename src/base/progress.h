// How long work reports where it stands: the seam between the core and a progress bar with a status line.
#pragma once

#include <cstdint>
#include <string_view>

namespace selvane {

// A progress bar and a status text. The core calls it; windows, the command line and tests implement it.
class Progress {
 public:
  virtual ~Progress() = default;

  // Sets the ends of the bar; the position is not changed.
  virtual void SetRange(int lower, int upper) = 0;
  virtual void SetPosition(int position) = 0;
  // Sets what one StepIt advances by.
  virtual void SetStep(int step) = 0;
  virtual void StepIt() = 0;
  // Replaces the status text. Working texts end in "..." or "....", the last one is "Completed!!".
  virtual void SetStatus(std::string_view text) = 0;
  // Called between the steps of long work, at least some times a second. May let a window repaint; throws
  // Interrupted when the work is to stop.
  virtual void Pulse() = 0;
};

// For callers that show nothing and never stop.
class SilentProgress final : public Progress {
 public:
  void SetRange(int, int) override {}
  void SetPosition(int) override {}
  void SetStep(int) override {}
  void StepIt() override {}
  void SetStatus(std::string_view) override {}
  void Pulse() override {}
};

// Advances a bar of 0..100 by one each time the amount of work done passes another hundredth of the whole.
class HundredthSteps {
 public:
  // `total` is the whole amount, in any unit; 0 never advances. Resets the bar.
  HundredthSteps(Progress& progress, std::uint64_t total) : progress_(progress), total_(total) {
    progress_.SetRange(0, 100);
    progress_.SetStep(1);
    progress_.SetPosition(0);
  }

  // `done` is the amount of work done so far, never less than at the call before.
  void Reached(std::uint64_t done) {
    while (total_ > 0 && shown_ < 100 && done * 100 >= (shown_ + 1) * total_) {
      ++shown_;
      progress_.StepIt();
      progress_.Pulse();
    }
  }

 private:
  Progress& progress_;
  std::uint64_t total_;
  std::uint64_t shown_ = 0;
};

}  // namespace selvane
