// Walks through the calls of a command: the first one fails, then the second, until the command succeeds.
// After each run it looks at what is left and runs the command again. README.md says what its lines mean.
#include <fcntl.h>
#include <fmt/ostream.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <iostream>
#include <new>
#include <set>
#include <sstream>
#include <stdexcept>

#include "base/file.h"
#include "faults/fault_calls.h"
#include "faults/fault_cases.h"
#include "faults/folder_state.h"

int SelvaneCliMain(int argc, char** argv);  // the program's own main

namespace selvane::faults {

namespace {

namespace fs = std::filesystem;
using Names = FolderState::Names;

struct Options {
  fs::path samples = SELVANE_SOURCE_DIR "/samples";
  long points = 0;     // how many calls of each walk have a fault, evenly spread; 0 for all
  bool again = false;  // run the command again even behind a state that was tried before
};

struct Outcome {
  int status = 0;  // of the process, as waitpid tells it
  std::string message;
  Counter counter;
  bool Ended() const { return WIFEXITED(status); }
  bool Succeeded() const { return status == 0; }
};

struct Tally {
  long walked = 0, mixed = 0, losses = 0, aborts = 0, leftovers = 0, hindered = 0, unclear = 0, told = 0;
  long Faults() const { return mixed + losses + aborts + leftovers + hindered + unclear; }
};

// Nothing stands above the program's main that would catch what it lets through.
int RunProgram(std::string_view command, const fs::path& samples) noexcept {
  std::vector<std::string> words{"selvane-cli"};
  std::istringstream text{std::string(command)};
  for (std::string word; text >> word;)
    words.push_back(word[0] == '@' ? samples.string() + word.substr(1) : word);
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  arguments.push_back(nullptr);
  return SelvaneCliMain(static_cast<int>(words.size()), arguments.data());
}

Counter& SharedCounter() {
  void* const memory =
      ::mmap(nullptr, sizeof(Counter), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::bad_alloc();
  return *new (memory) Counter{};
}

class Walk {
 public:
  Walk(const FaultCase& tried, const Options& options)
      : case_(tried), options_(options), counter_(SharedCounter()) {
    fs::create_directory(work_);
    for (const std::string_view command : case_.prepare) {
      if (const Outcome made = Execute(command); !made.Succeeded())
        throw std::runtime_error(fmt::format("{}: {}", command, made.message));
    }
    before_ = Keep("before");
    clean_ = Execute(case_.command).status;
    after_ = Keep("after");
    again_ = Execute(case_.command).status;
    finally_ = Keep("finally");
  }

  Tally Run() {
    using enum Fault;
    for (const Fault fault : {kOnce, kOnward, kKill}) All(Calls::kFiles, fault);
    for (const Fault fault : {kOnce, kOnward}) All(Calls::kMemory, fault);
    return tally_;
  }

 private:
  // In a child of ours, so that nothing is loaded or set up anew.
  Outcome Execute(std::string_view command, Calls calls = Calls::kFiles, Fault fault = Fault::kNone,
                  long chosen = 0) {
    counter_ = {calls, fault, chosen, 0, {}};
    const fs::path messages = scratch_.path() / "messages";
    const pid_t child = ::fork();
    if (child == 0) {
      fs::current_path(work_);
      ::setenv("XDG_STATE_HOME", (work_ / "state").c_str(), 1);
      ::dup2(::open("/dev/null", O_WRONLY), STDOUT_FILENO);
      ::dup2(::open(messages.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666), STDERR_FILENO);
      ::alarm(120);
      Arm(counter_);
      ::_exit(RunProgram(command, options_.samples));
    }
    Outcome outcome;
    ::waitpid(child, &outcome.status, 0);
    outcome.message = ReadFile(messages);
    outcome.counter = counter_;
    return outcome;
  }

  FolderState Keep(const char* name) const {
    fs::copy(work_, scratch_.path() / name, fs::copy_options::recursive);
    return FolderState(scratch_.path() / name);
  }

  Outcome ExecuteAfresh(Calls calls, Fault fault, long chosen) {
    fs::remove_all(work_);
    fs::copy(scratch_.path() / "before", work_, fs::copy_options::recursive);
    return Execute(case_.command, calls, fault, chosen);
  }

  void All(Calls calls, Fault fault) {
    tried_ = {before_.files()};
    const long count = ExecuteAfresh(calls, Fault::kNone, 0).counter.count;
    const long stride = options_.points > 0 ? std::max(1L, count / options_.points) : 1;
    // Where not all are tried, each kind of fault begins at another one.
    for (long chosen = 1 + stride * static_cast<long>(fault) / 4;; chosen += stride) {
      const Outcome outcome = ExecuteAfresh(calls, fault, chosen);
      if (outcome.Ended() && outcome.counter.count < chosen) break;
      ++tally_.walked;
      Judge(outcome);
    }
  }

  void Judge(const Outcome& outcome) {
    // A file that cannot be read is passed over, with a word.
    if (outcome.Succeeded() && outcome.message.find("could not be read") != std::string::npos) return;
    const FolderState now(work_);
    const bool killed = outcome.counter.fault == Fault::kKill && outcome.status == SIGKILL;
    const bool is_old = now.Is(before_, after_);
    const bool is_new = now.Is(after_, before_);
    const Names extra = now.NamesBeyond(before_, after_);
    if (!outcome.Ended() && !killed) Count(tally_.aborts, "abort", outcome, extra);
    if (!is_old && !is_new) JudgeMixed(now, outcome, killed);
    if (outcome.Succeeded() && !is_new) Count(tally_.losses, "success without its files", outcome, extra);
    if (!killed && !extra.empty() && !MayLeave(outcome, extra))
      Count(tally_.leftovers, "leftover", outcome, extra);
    if (outcome.Ended() && !outcome.Succeeded() && !IsClear(outcome))
      Count(tally_.unclear, "unclear message", outcome, extra);
    if (tried_.insert(now.files()).second || options_.again) JudgeNext(outcome, is_old, is_new);
  }

  // What cannot be removed stays, and so does the journal without which an input would be lost.
  bool MayLeave(const Outcome& outcome, const Names& extra) const {
    const std::string_view call = outcome.counter.call;
    if (call.starts_with("unlink") || call.starts_with("remove")) return true;
    return extra.size() == 1 && extra[0].ends_with("-journal") &&
           before_.files().contains(extra[0].substr(0, extra[0].rfind('-')));
  }

  void JudgeMixed(const FolderState& now, const Outcome& outcome, bool killed) {
    for (const std::string& name : before_.NamesSharedWith(after_)) {
      if (!now.HasSame(before_, name)) return Count(tally_.losses, "changed input", outcome, {name});
    }
    // No file system names several files at once. Killed in between, readers must say so.
    const bool is_ahead = !case_.ahead.empty() && now.Is(before_, after_, case_.ahead) &&
                          now.HasSame(after_, std::string(case_.ahead));
    if (is_ahead || (killed && !case_.reader.empty() && !Execute(case_.reader).Succeeded())) {
      ++tally_.told;
    } else {
      Count(tally_.mixed, "mixed", outcome, now.NamesSharedWith(after_));
    }
  }

  void JudgeNext(const Outcome& outcome, bool is_old, bool is_new) {
    const Outcome next = Execute(case_.command);
    const bool is_done = is_new && !is_old;
    const FolderState& wanted = is_done ? finally_ : after_;
    const FolderState now(work_);
    const Names extra = now.NamesBeyond(before_, wanted);
    if (next.status == (is_done ? again_ : clean_) && now.Is(wanted, before_) &&
        (extra.empty() || !next.Succeeded()))
      return;
    // The next run may name a file of a half named set that is in its way.
    if (!is_old && !is_new && next.message.find("is there already") != std::string::npos) return;
    Count(tally_.hindered, "hindered, " + next.message, outcome, extra);
  }

  // In words that users know: of their own files, and no statements.
  static bool IsClear(const Outcome& outcome) {
    if (outcome.counter.calls == Calls::kMemory && outcome.counter.fault == Fault::kOnward) return true;
    for (const char* const word : {".part", "SELECT", "INSERT", "CREATE", "disk I/O"}) {
      if (outcome.message.find(word) != std::string::npos) return false;
    }
    return outcome.message.find("selvane-cli: ") != std::string::npos;
  }

  void Count(long& kind, std::string_view name, const Outcome& outcome, const Names& files) {
    constexpr long kShown = 3;
    if (++kind > kShown) return;
    constexpr std::string_view kFaults[] = {"none", "once", "onward", "killed"};
    const Counter& counter = outcome.counter;
    fmt::print(std::cerr, "{}: {}: {} at {} ({}), status {}: {}\n    {}\n", case_.name, name,
               kFaults[static_cast<int>(counter.fault)], counter.chosen, counter.call, outcome.status,
               fmt::join(files, " "), outcome.message.substr(0, outcome.message.find('\n')));
  }

  const FaultCase& case_;
  const Options& options_;
  ScratchFolder scratch_;
  fs::path work_ = scratch_.path() / "work";
  Counter& counter_;
  FolderState before_, after_, finally_;
  int clean_ = 0;
  int again_ = 0;
  std::set<FolderState::Files> tried_;
  Tally tally_;
};

int WalkAll(const Options& options, const Names& names) {
  long faults = 0;
  std::size_t walks = 0;
  for (const FaultCase& tried : FaultCases()) {
    if (!names.empty() && std::find(names.begin(), names.end(), tried.name) == names.end()) continue;
    const Tally tally = Walk(tried, options).Run();
    fmt::print(
        "{:<22} walked {:>6}  mixed {}  losses {}  aborts {}  leftovers {}  hindered {}  unclear {}  told "
        "{}\n",
        tried.name, tally.walked, tally.mixed, tally.losses, tally.aborts, tally.leftovers, tally.hindered,
        tally.unclear, tally.told);
    std::fflush(stdout);
    faults += tally.Faults();
    ++walks;
  }
  return faults == 0 && walks >= std::max<std::size_t>(names.size(), 1) ? 0 : 1;
}

}  // namespace

}  // namespace selvane::faults

// fault_walk [--samples FOLDER] [--points N] [--again] [CASE...]
// fault_walk --no-sync COMMAND...     the program itself, with syncs that do nothing
int main(int argc, char** argv) {
  using namespace selvane::faults;  // NOLINT
  Options options;
  Names names;
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == "--no-sync") {
      IgnoreSyncs();
      return SelvaneCliMain(argc - i, argv + i);
    }
    if (word == "--samples" && i + 1 < argc) {
      options.samples = std::filesystem::absolute(argv[++i]);
    } else if (word == "--points" && i + 1 < argc) {
      options.points = std::stol(argv[++i]);
    } else if (word == "--again") {
      options.again = true;
    } else {
      names.emplace_back(word);
    }
  }
  return WalkAll(options, names);
}
