// What several test folders need: a folder for each test, recorded progress, small databases.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/error.h"
#include "base/progress.h"
#include "data/database.h"

namespace selvane {

// Where tests make their folders: what TMPDIR names when it is set, else memory where there is room, else the
// system's folder for temporary files.
std::filesystem::path ScratchRoot();

// A new, empty folder that is the current one during the test and is removed after it.
class FolderTest : public testing::Test {
 public:
  FolderTest();
  ~FolderTest() override;
  std::filesystem::path folder() const { return folder_; }

 private:
  std::filesystem::path folder_;
  std::filesystem::path before_;
};

void WriteText(const std::filesystem::path& path, std::string_view text);
// Names of the files in a folder, sorted.
std::vector<std::string> FileNames(const std::filesystem::path& folder);

// Keeps what was reported; interrupts at a chosen pulse.
class RecordingProgress final : public Progress {
 public:
  void SetRange(int lower, int upper) override { ranges.emplace_back(lower, upper); }
  void SetPosition(int position) override { positions.push_back(position); }
  void SetStep(int) override {}
  void StepIt() override { ++steps; }
  void SetStatus(std::string_view text) override { statuses.emplace_back(text); }
  void Pulse() override {
    if (pulses++ == interrupt_at) throw Interrupted();
  }

  std::vector<std::pair<int, int>> ranges;
  std::vector<int> positions;
  std::vector<std::string> statuses;
  int steps = 0;
  int pulses = 0;
  int interrupt_at = -1;
};

class FixedClock final : public Clock {
 public:
  // 23 November, 14:05.
  std::tm LocalTime() const override {
    std::tm time{};
    time.tm_mday = 23;
    time.tm_mon = 10;
    time.tm_hour = 14;
    time.tm_min = 5;
    return time;
  }
};

// All rows of an SQL text, the fields of each joined by "|".
std::vector<std::string> Rows(Database& database, std::string_view sql);
std::vector<std::string> Rows(const std::filesystem::path& path, std::string_view sql);

// Makes a database by statements of the engine's own dialect, as another program would.
void MakeForeignDatabase(const std::filesystem::path& path, const char* sql);

// The text of the DatabaseError, FileError or other Error that the call throws; fails the test when it does
// not.
template <typename Kind, typename Call>
std::string MessageOf(const Call& call) {
  try {
    call();
  } catch (const Kind& error) {
    return error.what();
  } catch (const std::exception& error) {
    ADD_FAILURE() << "another error: " << error.what();
    return {};
  }
  ADD_FAILURE() << "no error";
  return {};
}

}  // namespace selvane
