#include "base/new_file.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <random>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include "base/error.h"

namespace selvane {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPart = ".part";
// What a database engine may keep beside a file.
constexpr const char* kSideFiles[] = {"-journal", "-wal", "-shm"};

[[noreturn]] void Fail(const fs::path& path, std::string_view what, int error) {
  throw FileError(fmt::format("{}: {}: {}", path.string(), what, ReasonOf(error)));
}

// Follows links, also one whose target is not there yet.
fs::path Followed(const fs::path& path) {
  std::error_code error;
  if (!fs::is_symlink(fs::symlink_status(path, error))) return path;
  fs::path target = fs::weakly_canonical(path, error);
  if (error) Fail(path, "this link leads nowhere; name the file itself", error.value());
  return target;
}

fs::path FolderOf(const fs::path& path) {
  return path.has_parent_path() ? path.parent_path() : fs::path(".");
}

FileDescriptor OpenExclusively(const fs::path& path, mode_t mode) {
  return FileDescriptor(::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
}

// What stands before the ".part" of a temporary name is the process, a "-" and sixteen digits. Behind it may
// stand what the database engine keeps beside a file. The length of a temporary name's main part; 0 for the
// name of any other file, which is nobody's to remove.
std::size_t MainPartOf(std::string_view name, std::string_view begin) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  constexpr std::size_t kRandomDigits = 16;
  if (!name.starts_with(begin)) return 0;
  const std::size_t dash = name.find_first_not_of("0123456789", begin.size());
  if (dash == std::string_view::npos || dash == begin.size() || name[dash] != '-') return 0;
  const std::size_t end = dash + 1 + kRandomDigits;
  if (name.find_first_not_of(kDigits, dash + 1) != end) return 0;
  const std::string_view rest = name.substr(end);
  if (!rest.starts_with(kPart)) return 0;
  const std::string_view side = rest.substr(kPart.size());
  const bool is_ours = side.empty() || side == "-journal" || side == "-wal" || side == "-shm";
  return is_ours ? end + kPart.size() : 0;
}

// Files can be made in some folders whose names one may not read: then there is nothing to be found.
std::vector<std::string> ReadableNamesIn(const fs::path& folder) {
  try {
    return NamesInFolder(folder);
  } catch (const FileError&) {
    return {};
  }
}

// Removes what killed processes have left of this file. A process that lives holds the lock of its own.
void RemoveStaleParts(const fs::path& path) {
  const std::string begin = path.filename().string() + '.';
  const fs::path folder = FolderOf(path);
  for (const std::string& name : ReadableNamesIn(folder)) {
    const std::size_t main_part = MainPartOf(name, begin);
    if (main_part == 0) continue;
    const fs::path main = folder / name.substr(0, main_part);
    const FileDescriptor stale(::open(main.c_str(), O_RDWR | O_NOFOLLOW | O_CLOEXEC));
    if (stale.IsOpen() ? ::flock(stale.get(), LOCK_EX | LOCK_NB) == 0 : errno == ENOENT) {
      ::unlink((folder / name).c_str());
    }
  }
}

std::string RandomPart() {
  std::random_device random;
  return fmt::format("{}-{:08x}{:08x}", ::getpid(), random(), random());
}

void SyncFolder(const fs::path& folder) {
  const FileDescriptor open_folder(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!open_folder.IsOpen() || ::fsync(open_folder.get()) != 0) {
    // Some file systems of other machines cannot sync a folder; there is nothing to be done then.
    if (errno == EINVAL || errno == ENOTSUP || errno == EACCES) return;
    Fail(folder, "the new files are complete, but the folder may not be on the disk yet", errno);
  }
}

int Rename(const fs::path& from, const fs::path& to, unsigned flags) {
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), flags) == 0 ? 0 : errno;
}

}  // namespace

bool IsTaken(const std::filesystem::path& path) {
  struct stat ignored {};
  if (::lstat(path.c_str(), &ignored) == 0) return true;
  if (errno == ENOENT || errno == ENOTDIR) return false;
  Fail(path, "cannot use this name", errno);
}

void CheckIsFree(const std::filesystem::path& path, ExistingFile existing) {
  if (existing == ExistingFile::kReplace || !IsTaken(path)) return;
  throw FileError(fmt::format("{}: {}", path.string(), kTakenReason));
}

NewFile::NewFile(const fs::path& path, ExistingFile existing) : NewFile(existing) {
  if (path.empty()) throw FileError("No file was named: choose a file and try again");
  // A name that is to be new may not even be a link.
  path_ = existing == ExistingFile::kReplace ? Followed(path) : path;
  CheckTarget();
  RemoveStaleParts(path_);
  struct stat old {};
  const bool replaces = ::stat(path_.c_str(), &old) == 0;
  const mode_t mode = replaces ? old.st_mode & 0777U : 0666U;
  // Another process may take the file for a stale one before it is locked; then the next name is tried.
  do {
    MakeTemporary(path_.string() + fmt::format(".{}{}", RandomPart(), kPart), mode);
  } while (!IsNamed(file_, temporary_));
  if (!replaces) return;
  // Whose it is can be kept by the administrator only; that it stays as closed as it was, by everyone.
  if (::fchown(file_.get(), old.st_uid, old.st_gid) != 0 && errno != EPERM)
    Fail(path_, "cannot create", errno);
  if (::fchmod(file_.get(), mode) != 0) Fail(path_, "cannot create", errno);
}

void NewFile::MakeTemporary(const fs::path& name, mode_t mode) {
  side_files_.clear();
  for (const char* const suffix : kSideFiles) side_files_.emplace_back(name.string() + suffix);
  fs::path made = name;
  file_ = OpenExclusively(made, mode);
  if (!file_.IsOpen()) Fail(path_, "cannot create", errno);
  temporary_ = std::move(made);
  if (::flock(file_.get(), LOCK_EX) != 0) Fail(path_, "cannot create", errno);
}

void NewFile::RemoveTemporary() noexcept {
  if (!temporary_.empty()) ::unlink(temporary_.c_str());
}

NewFile::~NewFile() {
  if (state_ == State::kUnnamed) RemoveTemporary();
  // One that has its name was closed before; a journal that is still there was only not removed.
  for (const fs::path& side : side_files_) ::unlink(side.c_str());
}

std::string NewFile::Content() const {
  try {
    return ReadFile(temporary_);
  } catch (const FileError&) {
    throw FileError(fmt::format("{}: what was written cannot be read again; check the disk and try again",
                                path_.string()));
  }
}

void NewFile::CheckTarget() const {
  struct stat old {};
  if (::lstat(path_.c_str(), &old) != 0) {
    if (errno == ENOENT) return;
    Fail(path_, "cannot create", errno);
  }
  CheckIsFree(path_, existing_);
  if (S_ISDIR(old.st_mode))
    throw FileError(fmt::format("{}: this is a folder; name a file in it", path_.string()));
  if (!S_ISREG(old.st_mode)) {
    throw FileError(
        fmt::format("{}: this is a device or a pipe, and was left as it is; name a file", path_.string()));
  }
  // Asked of the file and not of the system, which lets the administrator do everything.
  if ((old.st_mode & 0222U) == 0 || ::access(path_.c_str(), W_OK) != 0) {
    throw FileError(fmt::format(
        "{}: the file is write-protected and was left as it is; choose another name, or make it writable",
        path_.string()));
  }
}

void NewFile::Prepare() {
  CheckTarget();
  if (::fsync(file_.get()) != 0) Fail(path_, "cannot write", errno);
}

// What is replaced changes places with the new file where the file system can do that, so that it can be put
// back until the whole set has its names.
void NewFile::Name() {
  struct stat old {};
  const bool replaces = existing_ == ExistingFile::kReplace && ::lstat(path_.c_str(), &old) == 0;
  int error = Rename(temporary_, path_, replaces ? RENAME_EXCHANGE : RENAME_NOREPLACE);
  if (error == 0) {
    state_ = replaces ? State::kExchanged : State::kNamed;
    return;
  }
  const bool is_unknown = error == EINVAL || error == ENOSYS;
  if (is_unknown && replaces) {
    // The same in three steps, where the file system has links.
    const fs::path& kept = side_files_.front();
    const bool is_kept = ::link(path_.c_str(), kept.c_str()) == 0;
    error = Rename(temporary_, path_, 0);
    if (error == 0 && is_kept && ::rename(kept.c_str(), temporary_.c_str()) == 0) {
      state_ = State::kExchanged;
      return;
    }
  } else if (is_unknown && !replaces) {
    error = ::link(temporary_.c_str(), path_.c_str()) == 0 ? 0 : errno;
    if (error == 0) ::unlink(temporary_.c_str());
  }
  if (error != 0) Fail(path_, "cannot name the complete file", error);
  state_ = State::kFinal;
}

void NewFile::TakeNameBack() noexcept {
  if (state_ == State::kExchanged && Rename(temporary_, path_, RENAME_EXCHANGE) != 0)
    ::rename(temporary_.c_str(), path_.c_str());
  if (state_ == State::kNamed) ::rename(path_.c_str(), temporary_.c_str());
  if (state_ != State::kFinal) state_ = State::kUnnamed;
}

// What was replaced is not needed any more.
void NewFile::Forget() noexcept {
  if (state_ == State::kExchanged) RemoveTemporary();
  state_ = State::kFinal;
  // Closed before the file is opened by its name: closing any descriptor of a database would drop the locks
  // that the process has on it.
  file_.Close();
}

void NewFile::Commit() {
  NewFile* const self = this;
  CommitTogether({&self, 1});
}

void CommitTogether(std::span<NewFile* const> files, const std::function<void()>& last_step) {
  std::set<fs::path> folders;
  for (NewFile* const file : files) {
    file->Prepare();
    folders.insert(FolderOf(file->path_));
  }
  if (last_step) last_step();
  try {
    for (NewFile* const file : files) file->Name();
  } catch (...) {
    for (NewFile* const file : files) file->TakeNameBack();
    throw;
  }
  for (NewFile* const file : files) file->Forget();
  for (const fs::path& folder : folders) SyncFolder(folder);
}

}  // namespace selvane
