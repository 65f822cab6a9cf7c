#include "base/new_file.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "base/error.h"

namespace selvane {

namespace {

[[noreturn]] void Fail(const char* action, const std::filesystem::path& path, int error) {
  throw FileError(fmt::format("{}: cannot {}: {}", path.string(), action,
                              std::error_code(error, std::generic_category()).message()));
}

}  // namespace

bool IsTaken(const std::filesystem::path& path) {
  return std::filesystem::exists(std::filesystem::symlink_status(path));
}

void CheckIsFree(const std::filesystem::path& path, ExistingFile existing) {
  if (existing == ExistingFile::kReplace || !IsTaken(path)) return;
  throw FileError(fmt::format("{}: {}", path.string(), kTakenReason));
}

NewFile::NewFile(std::filesystem::path path, ExistingFile existing)
    : path_(std::move(path)), existing_(existing) {
  if (path_.empty()) throw FileError("No file was named: choose a file and try again");
  CheckIsFree(path_, existing_);
  temporary_ = path_;
  temporary_ += fmt::format(".{}.part", ::getpid());
}

NewFile::~NewFile() {
  if (committed_) return;
  std::error_code ignored;
  std::filesystem::remove(temporary_, ignored);
}

// Only a link tells whether the name was still free at that very moment; a rename would replace what another
// program has made since the check.
void NewFile::Commit() {
  if (existing_ == ExistingFile::kReplace) {
    if (::rename(temporary_.c_str(), path_.c_str()) != 0) Fail("replace", path_, errno);
  } else if (::link(temporary_.c_str(), path_.c_str()) == 0) {
    ::unlink(temporary_.c_str());
  } else if (errno == EEXIST || std::filesystem::exists(path_)) {
    Fail("create", path_, EEXIST);
  } else if (::rename(temporary_.c_str(), path_.c_str()) != 0) {  // a file system without hard links
    Fail("create", path_, errno);
  }
  committed_ = true;
}

}  // namespace selvane
