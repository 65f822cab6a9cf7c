// The program as a process: signals, a full disk, standard output that cannot be written.
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

class CliProcessTest : public FolderTest {
 protected:
  CliProcessTest() {
    ::setenv("XDG_STATE_HOME", (folder() / "state").c_str(), 1);
    // Deep enough for every command to take some time.
    std::string lines;
    for (int i = 0; i < 3000; ++i)
      lines += NodeLine(fmt::format("Term {}", i), fmt::format("C{}.{}", i % 90, i));
    WriteText("tax.xml", lines);
  }

  // Starts the program with words parted by blanks; its messages go to "err".
  static pid_t Start(const std::string& command) {
    const pid_t child = ::fork();
    if (child != 0) return child;
    const std::string line = "exec " SELVANE_CLI " " + command + " 2>err";
    ::execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
    ::_exit(127);
  }
  static int StatusOf(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  }
  static int Run(const std::string& command) { return StatusOf(Start(command)); }
};

TEST_F(CliProcessTest, CtrlCLeavesNothingHalfMade) {
  int interrupted = 0;
  for (int delay = 0; delay < 12; ++delay) {
    fs::remove("new.mdb");
    const pid_t child = Start("taxonomy load tax.xml new.mdb");
    ::usleep(static_cast<useconds_t>(3000 * (1 << (delay / 2))));
    ::kill(child, delay % 2 == 0 ? SIGINT : SIGTERM);
    const int status = StatusOf(child);
    const Texts names = FileNames(".");
    if (status == 0) {
      EXPECT_EQ(names, (Texts{"err", "new.mdb", "tax.xml"}));
    } else if (status == 1) {
      ++interrupted;
      EXPECT_NE(ReadFile("err").find("interrupted"), std::string::npos);
      EXPECT_EQ(names, (Texts{"err", "tax.xml"}));
    } else {
      EXPECT_TRUE(status == 1000 + SIGINT || status == 1000 + SIGTERM) << status;  // it was not ready
    }
  }
  RecordProperty("interrupted", interrupted);
}

TEST_F(CliProcessTest, OutputThatCannotBeWrittenIsAFailure) {
  ASSERT_EQ(Run("taxonomy load tax.xml tax.mdb"), 0);
  EXPECT_EQ(Run("taxonomy list tax.mdb >/dev/full"), 1);
  EXPECT_NE(ReadFile("err").find("cannot be written"), std::string::npos);
  EXPECT_EQ(Run("taxonomy list tax.mdb --depth 1 >out"), 0);
  EXPECT_EQ(ReadFile("err"), "");
}

TEST_F(CliProcessTest, NamesDoNotCommandTheTerminal) {
  WriteText("odd.xml", NodeLine("red \x1B[31m", "C1"));
  ASSERT_EQ(Run("taxonomy load odd.xml odd.mdb"), 0);
  const auto lines = [](const char* line) { return std::string("1\tC\t\n2\tC.1\tred ") + line + "[31m\n"; };
  EXPECT_EQ(Run("taxonomy list odd.mdb >out"), 0);
  EXPECT_EQ(ReadFile("out"), lines("\x1B"));
  ASSERT_EQ(std::system("script -qec 'stty -opost; " SELVANE_CLI " taxonomy list odd.mdb' /dev/null >out"),
            0);
  EXPECT_EQ(ReadFile("out"), lines("\\x1b"));
  EXPECT_EQ(Run("taxonomy list odd.mdb --under $(printf '\\033')"), 1);
  EXPECT_NE(ReadFile("err").find("position \\x1b;"), std::string::npos);
}

}  // namespace selvane::tests
