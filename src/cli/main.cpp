#include <langinfo.h>
#include <locale.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iostream>
#include <new>
#include <string_view>

#include "base/shown_text.h"
#include "cli/cli.h"
#include "cli/terminal_progress.h"

namespace {

// The decimal sign of the user's locale. The process itself stays in the neutral one.
char DecimalSign() {
  const locale_t locale = ::newlocale(LC_NUMERIC_MASK, "", nullptr);
  if (locale == nullptr) return '.';
  const char* const sign = ::nl_langinfo_l(RADIXCHAR, locale);
  // Numbers are read with a point or a comma. Any other sign would be written and never read again.
  const char first = sign[0] == ',' ? ',' : '.';
  ::freelocale(locale);
  return first;
}

// Whether a text looks on a terminal as it is; known without memory, which a message may be about.
bool IsPlain(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return (c >= ' ' && c <= '~') || c == '\n' || c == '\t'; });
}

// Takes the progress line away before anything else is written to the terminal.
// For standard output, signals are released too: what is printed is complete, and a pipe that nobody reads
// must not keep the program from being ended.
// What is for people's eyes is written with its control characters made visible; each write holds whole
// characters. Data to a pipe or a file stay as they are.
class ClearingBuffer final : public std::streambuf {
 public:
  ClearingBuffer(std::streambuf* target, bool is_for_eyes, selvane::TerminalProgress& progress,
                 selvane::InterruptSignal* released = nullptr)
      : target_(target), is_for_eyes_(is_for_eyes), progress_(progress), released_(released) {}

 protected:
  int overflow(int c) override {
    if (c == EOF) return 0;
    const char byte = static_cast<char>(c);
    return xsputn(&byte, 1) == 1 ? c : EOF;
  }
  std::streamsize xsputn(const char* text, std::streamsize size) override {
    progress_.Clear();
    if (released_ != nullptr) released_->Release();
    const std::string_view whole(text, static_cast<std::size_t>(size));
    if (!is_for_eyes_ || IsPlain(whole)) return target_->sputn(text, size);
    const std::string visible = selvane::Visible(whole);
    const auto length = static_cast<std::streamsize>(visible.size());
    return target_->sputn(visible.data(), length) == length ? size : 0;
  }
  int sync() override { return target_->pubsync(); }

 private:
  std::streambuf* target_;
  const bool is_for_eyes_;
  selvane::TerminalProgress& progress_;
  selvane::InterruptSignal* released_;
};

int Run(int argc, char** argv) {
  // The first object of all, so that no signal can end the program where something half-made would stay
  // behind.
  selvane::InterruptSignal signal;
  selvane::TerminalProgress progress(std::cerr, ::isatty(STDERR_FILENO) == 1, signal);
  ClearingBuffer out_buffer(std::cout.rdbuf(), ::isatty(STDOUT_FILENO) == 1, progress, &signal);
  // Messages are for people wherever they go, data on a terminal only.
  ClearingBuffer err_buffer(std::cerr.rdbuf(), true, progress);
  std::ostream out(&out_buffer);
  std::ostream err(&err_buffer);
  const selvane::SystemClock clock;
  const selvane::CliContext context{out, err, progress, clock, DecimalSign()};
  return selvane::RunCli({argv + 1, argv + argc}, context);
}

// Says so without asking for memory.
void TellOfNoMemory() {
  for (const std::string_view text :
       {std::string_view("selvane-cli: "), selvane::kOutOfMemory, std::string_view("\n")}) {
    if (::write(STDERR_FILENO, text.data(), text.size()) < 0) return;
  }
}

[[noreturn]] void EndWithoutMemory() {
  TellOfNoMemory();
  ::_exit(selvane::kFailed);
}

// Before any object of the program and its libraries is made: what is thrown there nobody can catch.
[[gnu::constructor(101)]] void PrepareForNoMemory() {
  std::set_new_handler(&EndWithoutMemory);
}

}  // namespace

int main(int argc, char** argv) {
  std::set_new_handler(nullptr);  // from here on it is thrown and caught, and nothing half-made is left
  try {
    const int status = Run(argc, argv);
    // Some file systems tell only now that the output has found no place.
    if (::close(STDOUT_FILENO) == 0 || errno == EBADF || status != selvane::kDone) return status;
    std::cerr << "selvane-cli: the output cannot be written; is the disk full?\n";
  } catch (const std::bad_alloc&) {
    TellOfNoMemory();
  }
  return selvane::kFailed;
}
