// What several test folders need: a folder for each test, recorded progress, small databases.
#pragma once

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <map>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/file.h"
#include "base/progress.h"
#include "data/database.h"
#include "data/database_error.h"

namespace selvane {

namespace fs = std::filesystem;
using Texts = std::vector<std::string>;

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
Texts FileNames(const std::filesystem::path& folder);

// Keeps texts and steps; interrupts at a chosen pulse.
class RecordingProgress final : public Progress {
 public:
  void SetRange(int, int) override {}
  void SetPosition(int) override {}
  void SetStep(int) override {}
  void StepIt() override { ++steps; }
  void SetStatus(std::string_view text) override { statuses.emplace_back(text); }
  void Pulse() override {
    if (pulses++ == interrupt_at) throw Interrupted();
  }

  Texts statuses;
  int steps = 0;
  int pulses = 0;
  int interrupt_at = -1;
};

class FixedClock final : public Clock {
 public:
  // 23 November, 14:05:00.
  std::tm LocalTime() const override { return {0, 5, 14, 23, 10, 0, 0, 0, 0, 0, nullptr}; }
};

// All rows of an SQL text, the fields of each joined by "|".
Texts Rows(Database& database, std::string_view sql);
Texts Rows(const std::filesystem::path& path, std::string_view sql);

// Makes a database by statements of the engine's own dialect, as another program would.
void MakeForeignDatabase(const std::filesystem::path& path, const std::string& sql);

// Expects the call to throw an error of this kind that tells of `part`.
template <typename Kind, typename Call>
void ExpectFault(std::string_view part, const Call& call) {
  try {
    call();
    ADD_FAILURE() << "no error that tells of: " << part;
  } catch (const Kind& error) {
    EXPECT_NE(std::string_view(error.what()).find(part), std::string::npos)
        << error.what() << "\nnot: " << part;
  }
}

}  // namespace selvane
