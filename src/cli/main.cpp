#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <iostream>

#include "cli/cli.h"
#include "cli/terminal_progress.h"

namespace {

// The decimal sign of the user's locale. The process itself stays in the neutral one.
char DecimalSign() {
  const locale_t locale = ::newlocale(LC_NUMERIC_MASK, "", nullptr);
  if (locale == nullptr) return '.';
  const char* const sign = ::nl_langinfo_l(RADIXCHAR, locale);
  const char first = sign[0] == ',' ? ',' : '.';
  ::freelocale(locale);
  return first;
}

// Takes the progress line away before anything else is written to the terminal.
// For standard output, signals are released too: what is printed is complete, and a pipe that nobody reads
// must not keep the program from being ended.
class ClearingBuffer final : public std::streambuf {
 public:
  ClearingBuffer(std::streambuf* target, selvane::TerminalProgress& progress,
                 selvane::InterruptSignal* released = nullptr)
      : target_(target), progress_(progress), released_(released) {}

 protected:
  int overflow(int c) override {
    progress_.Clear();
    return c == EOF ? 0 : target_->sputc(static_cast<char>(c));
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    progress_.Clear();
    if (released_ != nullptr) released_->Release();
    return target_->sputn(text, size);
  }
  int sync() override { return target_->pubsync(); }

 private:
  std::streambuf* target_;
  selvane::TerminalProgress& progress_;
  selvane::InterruptSignal* released_;
};

}  // namespace

int main(int argc, char** argv) {
  selvane::InterruptSignal signal;
  selvane::TerminalProgress progress(std::cerr, ::isatty(STDERR_FILENO) == 1, signal);
  ClearingBuffer out_buffer(std::cout.rdbuf(), progress, &signal);
  ClearingBuffer err_buffer(std::cerr.rdbuf(), progress);
  std::ostream out(&out_buffer);
  std::ostream err(&err_buffer);
  const selvane::SystemClock clock;
  const selvane::CliContext context{out, err, progress, clock, DecimalSign()};
  return selvane::RunCli({argv + 1, argv + argc}, context);
}
