// The object archive: little-endian counts, 32-bit values and counted strings. The itemset file and the rules
// information file share it (docs/formats/ describes both).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/file.h"

namespace selvane {

// Appends to `bytes` what ArchiveWriter writes for a count, and for values.
void AppendCount(std::uint32_t count, std::string& bytes);
void AppendValues(std::span<const std::uint32_t> values, std::string& bytes);
// The count that `bytes` begin with, which is taken from them; nothing when they are too short.
std::optional<std::uint32_t> TakeCount(std::string_view& bytes);
// The value that `bytes`, at least four, begin with.
std::uint32_t ValueOf(std::string_view bytes);
// Replaces `values` by those that fill `bytes`.
void CopyValues(std::string_view bytes, std::vector<std::uint32_t>& values);

// Writes an archive file from its beginning. Throws FileError.
class ArchiveWriter {
 public:
  explicit ArchiveWriter(const std::filesystem::path& path) : file_(path) {}
  // With the name that errors tell of.
  ArchiveWriter(const std::filesystem::path& path, std::filesystem::path shown)
      : file_(path, std::move(shown)) {}

  // 16 bits below 65,535; otherwise 0xFFFF and 32 bits.
  void WriteCount(std::uint32_t count);
  void WriteValue(std::uint32_t value);
  void WriteValues(std::span<const std::uint32_t> values);
  // What the other operations would write.
  void WriteEncoded(std::string_view bytes) { file_.Write(bytes); }
  // A string by its bytes: a length byte below 255, else 0xFF and 16 bits below 65,534, else 0xFF, 0xFFFF and
  // 32 bits; no terminator.
  void WriteText(std::string_view bytes);
  // How many bytes were written so far.
  std::uint64_t position() const { return file_.position(); }
  // Nothing is complete before this returns.
  void Close() { file_.Close(); }

 private:
  OutputFile file_;
  std::string encoded_;
};

// Reads an archive file from its beginning. Throws FileError, also where the file ends too early.
class ArchiveReader {
 public:
  explicit ArchiveReader(std::filesystem::path path) : file_(std::move(path)) {}

  bool AtEnd() { return file_.AtEnd(); }
  void Seek(std::uint64_t position) { file_.Seek(position); }
  std::uint32_t ReadCount();
  std::uint32_t ReadValue() { return Get(4); }
  // Replaces `values` by the next `count` values. Memory grows with what the file holds, not with what a
  // damaged count claims.
  void ReadValues(std::uint32_t count, std::vector<std::uint32_t>& values);
  std::string ReadText();
  // Fills `bytes`, from which the Take and Copy functions read.
  void ReadEncoded(std::span<char> bytes) { Need(bytes); }

 private:
  std::uint32_t Get(int bytes);
  void Need(std::span<char> bytes);
  InputFile file_;
};

}  // namespace selvane
