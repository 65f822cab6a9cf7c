#include "base/file.h"

#include <dirent.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>
#include <utility>

#include "base/error.h"

namespace selvane {

namespace {

constexpr std::size_t kBufferSize = std::size_t{64} * 1024;

[[noreturn]] void Fail(const char* action, const std::filesystem::path& path, int error) {
  throw FileError(fmt::format("{}: cannot {}: {}", path.string(), action, ReasonOf(error)));
}

FileDescriptor OpenFile(const std::filesystem::path& path, int flags, const char* action,
                        const std::filesystem::path& shown) {
  if (path.empty()) throw FileError("No file was named: choose a file and try again");
  FileDescriptor file(::open(path.c_str(), flags | O_CLOEXEC, 0666));
  if (!file.IsOpen()) Fail(action, shown, errno);
  return file;
}

FileDescriptor OpenFile(const std::filesystem::path& path, int flags, const char* action) {
  return OpenFile(path, flags, action, path);
}

}  // namespace

std::size_t ReadSome(const FileDescriptor& file, const std::filesystem::path& path, std::span<char> bytes) {
  for (;;) {
    const ssize_t got = ::read(file.get(), bytes.data(), bytes.size());
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR) Fail("read", path, errno);
  }
}

FileDescriptor OpenRegularFile(const std::filesystem::path& path) {
  // Not to wait for a pipe that nobody writes to.
  FileDescriptor file = OpenFile(path, O_RDONLY | O_NONBLOCK, "open");
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) Fail("read", path, errno);
  if (!S_ISREG(status.st_mode))
    throw FileError(fmt::format("{}: cannot read: this is no file", path.string()));
  return file;
}

std::string ReasonOf(int error) {
  switch (error) {
    case ENOSPC:
    case EDQUOT:
      return "the disk is full; make room and try again";
    case ENAMETOOLONG:
      return "the name is too long; choose a shorter one";
    case EACCES:
    case EPERM:
      return "you have no right to do that; choose a file or a folder of your own";
    case EROFS:
      return "the disk is write-protected; choose a folder on another one";
    case ENOENT:
      return "there is no such file or folder; check the name";
    case EMFILE:
    case ENFILE:
      return "too many files are open; close other programs and try again";
    default:
      return std::error_code(error, std::generic_category()).message();
  }
}

std::uint64_t SizeOf(const FileDescriptor& file, const std::filesystem::path& path) {
  struct stat status {};
  if (::fstat(file.get(), &status) != 0) Fail("read", path, errno);
  return static_cast<std::uint64_t>(status.st_size);
}

std::string ReadFile(const std::filesystem::path& path) {
  const FileDescriptor file = OpenRegularFile(path);
  std::string bytes(SizeOf(file, path) + 1, '\0');  // one more, so that the end shows at once
  std::size_t filled = 0;
  for (;;) {
    const std::size_t got = ReadSome(file, path, std::span(bytes).subspan(filled));
    if (got == 0) break;
    filled += got;
    if (filled == bytes.size()) bytes.resize(bytes.size() * 2);
  }
  bytes.resize(filled);
  return bytes;
}

std::vector<std::string> NamesInFolder(const std::filesystem::path& folder) {
  const std::unique_ptr<DIR, int (*)(DIR*)> open_folder(::opendir(folder.c_str()), &::closedir);
  if (!open_folder) Fail("read the folder", folder, errno);
  std::vector<std::string> names;
  for (;;) {
    errno = 0;
    const dirent* const entry = ::readdir(open_folder.get());
    if (entry == nullptr && errno != 0) Fail("read the folder", folder, errno);
    if (entry == nullptr) return names;
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
  }
}

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b) {
  std::error_code ignored;
  return std::filesystem::equivalent(a, b, ignored);
}

bool IsSamePlace(const std::filesystem::path& a, const std::filesystem::path& b) {
  // Through links of folders too. When the current folder is gone, making a file says so.
  const auto place = [](const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::weakly_canonical(std::filesystem::absolute(path, error), error);
  };
  return IsSameFile(a, b) || place(a) == place(b);
}

void CheckIsNoInput(const std::filesystem::path& output,
                    std::initializer_list<std::filesystem::path> inputs) {
  for (const std::filesystem::path& input : inputs) {
    if (!IsSameFile(output, input)) continue;
    throw InputError(
        fmt::format("{}: this would replace a file that is read; choose another name", output.string()));
  }
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  if (this != &other) {
    Close();
    descriptor_ = other.Release();
  }
  return *this;
}

void FileDescriptor::Close() noexcept {
  if (IsOpen()) ::close(Release());
}

OutputFile::OutputFile(const std::filesystem::path& path, std::filesystem::path shown)
    : path_(std::move(shown)),
      file_(OpenFile(path, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW, "create", path_)),
      buffer_(kBufferSize) {}

// A large piece is written as it is, when nothing before it is waiting any more.
void OutputFile::WriteBeyond(std::string_view bytes) {
  WriteOut({buffer_.data(), std::exchange(used_, 0)});
  if (bytes.size() > buffer_.size()) return WriteOut(bytes);
  Write(bytes);
}

void OutputFile::WriteOut(std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file_.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) Fail("write", path_, errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
    flushed_ += static_cast<std::uint64_t>(written);
  }
}

void OutputFile::Close() {
  if (!file_.IsOpen()) return;
  WriteOut({buffer_.data(), std::exchange(used_, 0)});
  // Some file systems tell only now that the bytes have found no place.
  const int descriptor = file_.Release();
  if (::close(descriptor) != 0 && errno != EINTR) Fail("write", path_, errno);
}

InputFile::InputFile(std::filesystem::path path)
    : path_(std::move(path)), file_(OpenFile(path_, O_RDONLY, "open")), buffer_(kBufferSize) {}

// What was read before is gone, so it is called only when all of it was taken.
bool InputFile::Fill() {
  next_ = 0;
  filled_ = ReadSome(file_, path_, buffer_);
  return filled_ > 0;
}

bool InputFile::AtEnd() {
  return next_ == filled_ && !Fill();
}

void InputFile::Seek(std::uint64_t position) {
  if (::lseek(file_.get(), static_cast<off_t>(position), SEEK_SET) < 0) Fail("read", path_, errno);
  next_ = filled_ = 0;
}

bool InputFile::Read(std::span<char> bytes) {
  while (!bytes.empty()) {
    if (AtEnd()) return false;
    const std::size_t part = std::min(bytes.size(), filled_ - next_);
    std::memcpy(bytes.data(), buffer_.data() + next_, part);
    next_ += part;
    bytes = bytes.subspan(part);
  }
  return true;
}

void CopyFile(const std::filesystem::path& from, const std::filesystem::path& to,
              const std::filesystem::path& shown) {
  const FileDescriptor input = OpenFile(from, O_RDONLY, "open");
  OutputFile output(to, shown);
  std::vector<char> bytes(kBufferSize);
  while (const std::size_t got = ReadSome(input, from, bytes)) output.Write({bytes.data(), got});
  output.Close();
}

// The file stays when the lock is given up: removing it would let two hold a lock of one name, on two files.
FileLock::FileLock(const std::filesystem::path& path)
    : file_(OpenFile(path, O_RDWR | O_CREAT, "create")),
      held_(::flock(file_.get(), LOCK_EX | LOCK_NB) == 0) {}

bool IsNamed(const FileDescriptor& file, const std::filesystem::path& path) {
  struct stat open_file {};
  struct stat named {};
  return ::fstat(file.get(), &open_file) == 0 && ::lstat(path.c_str(), &named) == 0 &&
         open_file.st_ino == named.st_ino && open_file.st_dev == named.st_dev;
}

OutputLock::OutputLock(const std::filesystem::path& output) : path_(output) {
  path_ += ".lock";
  // The one before may have removed the file between our opening and locking it: then it locks nobody out.
  do {
    file_ = OpenFile(path_, O_RDWR | O_CREAT | O_NOFOLLOW, "create", output);
    if (::flock(file_.get(), LOCK_EX | LOCK_NB) == 0) continue;
    if (errno == EWOULDBLOCK) {
      throw FileError(fmt::format(
          "{}: another run is making this file; wait until it has ended, then try again", output.string()));
    }
    const int error = errno;
    ::unlink(path_.c_str());  // nobody can hold a lock here
    Fail("lock", output, error);
  } while (!IsNamed(file_, path_));
}

// A file of that name that holds something is a user's: it served as a lock and stays.
OutputLock::~OutputLock() {
  struct stat status {};
  if (::fstat(file_.get(), &status) == 0 && status.st_size == 0) ::unlink(path_.c_str());
}

}  // namespace selvane
