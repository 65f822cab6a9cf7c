#include "termdb/row_spool.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <system_error>

#include "base/error.h"

namespace selvane {

namespace {

// A quarter of a megabyte. The rows wait in a file, as the columns are known only when all records were read.
constexpr std::size_t kBufferWords = std::size_t{1} << 16;

// Some file systems have no files without names; there the name is taken away at once.
FileDescriptor OpenNameless(const std::filesystem::path& folder) {
  FileDescriptor file(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (file.IsOpen() || (errno != EOPNOTSUPP && errno != EISDIR && errno != EINVAL)) return file;
  std::string name = (folder / "selvane-rows-XXXXXX").string();
  file = FileDescriptor(::mkostemp(name.data(), O_CLOEXEC));
  if (file.IsOpen()) ::unlink(name.c_str());
  return file;
}

}  // namespace

RowSpool::RowSpool(const std::filesystem::path& folder)
    : folder_(folder.empty() ? std::filesystem::path(".") : folder), file_(OpenNameless(folder_)) {
  if (!file_.IsOpen()) Fail("cannot make a temporary file here");
  buffer_.reserve(kBufferWords);
}

void RowSpool::Fail(const char* what) const {
  throw FileError(fmt::format("{}: {}: {}", folder_.string(), what,
                              std::error_code(errno, std::generic_category()).message()));
}

void RowSpool::Add(std::span<const std::uint32_t> row) {
  buffer_.push_back(static_cast<std::uint32_t>(row.size()));
  buffer_.insert(buffer_.end(), row.begin(), row.end());
  if (buffer_.size() >= kBufferWords) WriteOut();
}

void RowSpool::WriteOut() {
  const char* at = reinterpret_cast<const char*>(buffer_.data());
  std::size_t left = buffer_.size() * sizeof(std::uint32_t);
  while (left > 0) {
    const ssize_t written = ::write(file_.get(), at, left);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) Fail("cannot write the rows to a temporary file here; make room and try again");
    at += written;
    left -= static_cast<std::size_t>(written);
  }
  buffer_.clear();
}

// Appends words to what is left in the buffer; false at the end of the file.
bool RowSpool::ReadMore() {
  buffer_.erase(buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(next_));
  next_ = 0;
  const std::size_t old_size = buffer_.size();
  buffer_.resize(old_size + kBufferWords);
  char* const begin = reinterpret_cast<char*>(buffer_.data() + old_size);
  std::size_t bytes = 0;
  while (bytes < kBufferWords * sizeof(std::uint32_t)) {
    const ssize_t got = ::read(file_.get(), begin + bytes, kBufferWords * sizeof(std::uint32_t) - bytes);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) Fail("cannot read the rows of a temporary file here");
    if (got == 0) break;
    bytes += static_cast<std::size_t>(got);
  }
  buffer_.resize(old_size + bytes / sizeof(std::uint32_t));
  return bytes > 0;
}

void RowSpool::ForEach(const std::function<void(std::span<const std::uint32_t>)>& visit) {
  WriteOut();
  if (::lseek(file_.get(), 0, SEEK_SET) != 0) Fail("cannot read the rows of a temporary file here");
  for (;;) {
    // A row is its length and then its terms. The buffer may end within one, and then the rest is read behind
    // it.
    const auto whole = [this] { return next_ < buffer_.size() && buffer_.size() - next_ > buffer_[next_]; };
    while (!whole()) {
      if (!ReadMore()) return;
    }
    const std::size_t length = buffer_[next_];
    visit(std::span(buffer_).subspan(next_ + 1, length));
    next_ += length + 1;
  }
}

}  // namespace selvane
