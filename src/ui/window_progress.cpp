#include "ui/window_progress.h"

#include <QCoreApplication>
#include <QLabel>
#include <QProgressBar>
#include <algorithm>

#include "base/error.h"
#include "ui/qt_text.h"

namespace selvane {

namespace {

constexpr qint64 kRepaintMilliseconds = 50;

}  // namespace

WindowProgress::WindowProgress(QProgressBar& bar, QLabel& status) : bar_(bar), status_(status) {
  Clear();
  since_repaint_.start();
}

void WindowProgress::SetRange(int lower, int upper) {
  // A range without length would make the bar run to and fro for ever.
  bar_.setRange(lower, std::max(upper, lower + 1));
}

void WindowProgress::SetPosition(int position) {
  bar_.setValue(std::clamp(position, bar_.minimum(), bar_.maximum()));
}

void WindowProgress::StepIt() {
  SetPosition(bar_.value() + step_);
}

void WindowProgress::SetStatus(std::string_view text) {
  status_.setText(ToQt(text));
  Repaint();
}

void WindowProgress::Pulse() {
  if (since_repaint_.elapsed() >= kRepaintMilliseconds) Repaint();
  if (!stop_) return;
  // Once only: what cleans up after the stop calls this too.
  stop_ = false;
  throw Interrupted();
}

void WindowProgress::Clear() {
  bar_.setRange(0, 100);
  bar_.setValue(0);
  status_.clear();
}

void WindowProgress::Repaint() {
  // The InputLock drops clicks and keys meanwhile, so no command begins within another.
  QCoreApplication::processEvents();
  since_repaint_.restart();
}

}  // namespace selvane
