// Files of the operating system, owned by values that close them.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace selvane {

// What an error number of the system means to a user and, where there is something, what to do about it.
std::string ReasonOf(int error);

// The whole content of a file. Throws FileError.
std::string ReadFile(const std::filesystem::path& path);
// The names in a folder, in no order. Throws FileError. The standard library's iterators end the program when
// there is no memory for a name.
std::vector<std::string> NamesInFolder(const std::filesystem::path& folder);

// True when both names lead to one existing file.
bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b);
// True when both names lead to one file, or would if it were there.
bool IsSamePlace(const std::filesystem::path& a, const std::filesystem::path& b);

// Throws InputError when the output is one of the inputs, which it would replace.
void CheckIsNoInput(const std::filesystem::path& output, std::initializer_list<std::filesystem::path> inputs);

// An open file descriptor, closed at the end of its life.
class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(other.Release()) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() { Close(); }

  bool IsOpen() const { return descriptor_ >= 0; }
  int get() const { return descriptor_; }
  void Close() noexcept;
  // Hands the descriptor over to the caller.
  int Release() noexcept {
    const int descriptor = descriptor_;
    descriptor_ = -1;
    return descriptor;
  }

 private:
  int descriptor_ = -1;
};

// A file written from its beginning, through a buffer. Created, or emptied when it is there.
class OutputFile {
 public:
  // `shown` is the name that errors tell of: the user knows nothing of a temporary one. Throws FileError.
  explicit OutputFile(const std::filesystem::path& path) : OutputFile(path, path) {}
  OutputFile(const std::filesystem::path& path, std::filesystem::path shown);

  void Write(std::string_view bytes) {
    if (used_ + bytes.size() > buffer_.size()) return WriteBeyond(bytes);
    std::copy(bytes.begin(), bytes.end(), buffer_.begin() + static_cast<std::ptrdiff_t>(used_));
    used_ += bytes.size();
  }
  // How many bytes were written so far.
  std::uint64_t position() const { return flushed_ + used_; }
  // Writes out the buffer and closes. Throws FileError, with the bytes of the buffer lost. The destructor
  // closes without writing what is still in the buffer.
  void Close();

 private:
  void WriteBeyond(std::string_view bytes);
  void WriteOut(std::string_view bytes);

  std::filesystem::path path_;  // as it is shown
  FileDescriptor file_;
  std::vector<char> buffer_;
  std::size_t used_ = 0;
  std::uint64_t flushed_ = 0;
};

// A file read from its beginning, through a buffer.
class InputFile {
 public:
  // Throws FileError.
  explicit InputFile(std::filesystem::path path);

  // Reads exactly this many bytes; false when the file ends before. Throws FileError.
  bool Read(std::span<char> bytes);
  bool AtEnd();
  // Goes on reading at this byte. Throws FileError.
  void Seek(std::uint64_t position);
  const std::filesystem::path& path() const { return path_; }

 private:
  bool Fill();

  std::filesystem::path path_;
  FileDescriptor file_;
  std::vector<char> buffer_;
  std::size_t next_ = 0;
  std::size_t filled_ = 0;
};

// Writes all bytes of a file into another, as OutputFile does. Throws FileError.
void CopyFile(const std::filesystem::path& from, const std::filesystem::path& to,
              const std::filesystem::path& shown);

// A lock file, held while this lives and freed by the system when the process ends. `IsHeld` is false when
// another holds it. Throws FileError when the file cannot be made.
class FileLock {
 public:
  explicit FileLock(const std::filesystem::path& path);
  bool IsHeld() const { return held_; }

 private:
  FileDescriptor file_;
  bool held_ = false;
};

// The lock of a file in the making, NAME.lock beside it, which goes with this. Throws FileError when another
// process holds it, or when it cannot be made.
class OutputLock {
 public:
  explicit OutputLock(const std::filesystem::path& output);
  OutputLock(const OutputLock&) = delete;
  OutputLock& operator=(const OutputLock&) = delete;
  ~OutputLock();

 private:
  std::filesystem::path path_;
  FileDescriptor file_;
};

// An existing file opened for reading, never a pipe, a folder or a device. Throws FileError.
FileDescriptor OpenRegularFile(const std::filesystem::path& path);
// Its size in bytes. Throws FileError.
std::uint64_t SizeOf(const FileDescriptor& file, const std::filesystem::path& path);
// One read of the system, begun again after a signal; 0 at the end of the file. Throws FileError.
std::size_t ReadSome(const FileDescriptor& file, const std::filesystem::path& path, std::span<char> bytes);

// True while the name leads to the open file and to no other.
bool IsNamed(const FileDescriptor& file, const std::filesystem::path& path);

}  // namespace selvane
