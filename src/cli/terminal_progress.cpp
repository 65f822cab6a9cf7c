#include "cli/terminal_progress.h"

#include <fmt/format.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>

#include "base/error.h"

namespace selvane {

InterruptSignal::InterruptSignal() {
  sigset_t ends;
  sigemptyset(&ends);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction current {};
    // What the parent told us to ignore stays ignored, as nohup does.
    if (sigaction(signal, nullptr, &current) == 0 && current.sa_handler != SIG_IGN) sigaddset(&ends, signal);
  }
  sigprocmask(SIG_BLOCK, &ends, &before_);
  // A descriptor and no handler: a handler may do next to nothing, whereas Pulse can throw, and everything
  // half-made is removed on the way out.
  signals_ = FileDescriptor(::signalfd(-1, &ends, SFD_CLOEXEC | SFD_NONBLOCK));
}

bool InterruptSignal::Arrived() {
  if (arrived_ || !signals_.IsOpen()) return arrived_;
  pollfd wait{signals_.get(), POLLIN, 0};
  if (::poll(&wait, 1, 0) <= 0) return false;
  arrived_ = true;
  signalfd_siginfo taken{};
  if (::read(signals_.get(), &taken, sizeof taken) > 0) Release();  // the next one ends the program at once
  return true;
}

void InterruptSignal::Release() {
  sigprocmask(SIG_SETMASK, &before_, nullptr);
}

void TerminalProgress::SetRange(int lower, int upper) {
  lower_ = lower;
  // Drawing divides by the length of the range.
  upper_ = std::max(upper, lower + 1);
}

void TerminalProgress::SetPosition(int position) {
  position_ = std::clamp(position, lower_, upper_);
  Draw();
}

void TerminalProgress::SetStatus(std::string_view text) {
  status_ = text;
  // A new status is shown at once, however little time has passed since the last drawing.
  last_ = {};
  Draw();
}

void TerminalProgress::Pulse() {
  if (signal_.Arrived()) throw Interrupted();
  Draw();
}

void TerminalProgress::Clear() {
  if (drawn_) terminal_ << "\r\033[K" << std::flush;
  drawn_ = false;
}

void TerminalProgress::Draw() {
  if (!draw_) return;
  const auto now = std::chrono::steady_clock::now();
  if (now - last_ < std::chrono::milliseconds(100)) return;
  last_ = now;
  constexpr int kWidth = 30;
  const int filled = static_cast<int>(std::int64_t{kWidth} * (position_ - lower_) / (upper_ - lower_));
  terminal_ << fmt::format("\r\033[K[{:<{}}] {}", std::string(static_cast<std::size_t>(filled), '#'), kWidth,
                           status_)
            << std::flush;
  drawn_ = true;
}

}  // namespace selvane
