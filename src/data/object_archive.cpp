#include "data/object_archive.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "base/error.h"

namespace selvane {

namespace {

constexpr std::uint32_t kLongCount = 0xFFFF;            // announces a 32-bit count
constexpr std::uint32_t kLongText = 0xFF;               // announces a longer length
constexpr std::uint32_t kLongestText16 = 0xFFFE;        // beyond, 16 bits announce a length of 32
constexpr std::size_t kChunk = std::size_t{16} * 1024;  // values or bytes

std::uint32_t LittleEndian(std::uint32_t value) {
  if constexpr (std::endian::native == std::endian::little) return value;
  return __builtin_bswap32(value);
}

// The low bytes of a value come first in memory once they are in order, so fewer than four can be taken.
void Append(std::uint32_t value, int bytes, std::string& text) {
  const std::uint32_t ordered = LittleEndian(value);
  text.append(reinterpret_cast<const char*>(&ordered), static_cast<std::size_t>(bytes));
}

}  // namespace

void AppendCount(std::uint32_t count, std::string& bytes) {
  if (count < kLongCount) return Append(count, 2, bytes);
  Append(kLongCount, 2, bytes);
  Append(count, 4, bytes);
}

void AppendValues(std::span<const std::uint32_t> values, std::string& bytes) {
  if constexpr (std::endian::native == std::endian::little) {
    bytes.append(reinterpret_cast<const char*>(values.data()), values.size_bytes());
  } else {
    for (const std::uint32_t value : values) Append(value, 4, bytes);
  }
}

std::optional<std::uint32_t> TakeCount(std::string_view& bytes) {
  const auto take = [&bytes](std::size_t width) -> std::optional<std::uint32_t> {
    if (bytes.size() < width) return std::nullopt;
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data(), width);
    bytes.remove_prefix(width);
    return LittleEndian(value);
  };
  const std::optional<std::uint32_t> count = take(2);
  return count == kLongCount ? take(4) : count;
}

std::uint32_t ValueOf(std::string_view bytes) {
  std::uint32_t value = 0;
  std::memcpy(&value, bytes.data(), sizeof value);
  return LittleEndian(value);
}

void CopyValues(std::string_view bytes, std::vector<std::uint32_t>& values) {
  values.resize(bytes.size() / 4);
  if (!values.empty()) std::memcpy(values.data(), bytes.data(), values.size() * 4);
  for (std::uint32_t& value : values) value = LittleEndian(value);
}

void ArchiveWriter::WriteCount(std::uint32_t count) {
  encoded_.clear();
  AppendCount(count, encoded_);
  file_.Write(encoded_);
}

void ArchiveWriter::WriteValue(std::uint32_t value) {
  WriteValues({&value, 1});
}

void ArchiveWriter::WriteValues(std::span<const std::uint32_t> values) {
  encoded_.clear();
  AppendValues(values, encoded_);
  file_.Write(encoded_);
}

void ArchiveWriter::WriteText(std::string_view bytes) {
  const auto length = static_cast<std::uint32_t>(bytes.size());
  encoded_.clear();
  if (length < kLongText) {
    Append(length, 1, encoded_);
  } else if (length < kLongestText16) {
    Append(kLongText, 1, encoded_);
    Append(length, 2, encoded_);
  } else {
    Append(kLongText, 1, encoded_);
    Append(kLongCount, 2, encoded_);
    Append(length, 4, encoded_);
  }
  file_.Write(encoded_);
  file_.Write(bytes);
}

void ArchiveReader::Need(std::span<char> bytes) {
  if (file_.Read(bytes)) return;
  throw FileError(
      fmt::format("{}: the file ends too early; it is damaged or not complete: "
                  "run the extraction again",
                  file_.path().string()));
}

std::uint32_t ArchiveReader::Get(int bytes) {
  std::array<char, 4> raw{};
  Need(std::span(raw).first(static_cast<std::size_t>(bytes)));
  std::uint32_t value = 0;
  std::memcpy(&value, raw.data(), raw.size());
  return LittleEndian(value);
}

std::uint32_t ArchiveReader::ReadCount() {
  const std::uint32_t count = Get(2);
  return count == kLongCount ? Get(4) : count;
}

void ArchiveReader::ReadValues(std::uint32_t count, std::vector<std::uint32_t>& values) {
  values.clear();
  // A damaged count may announce gigabytes; memory grows with what the file really holds.
  while (values.size() < count) {
    const std::size_t before = values.size();
    values.resize(before + std::min<std::size_t>(count - before, kChunk));
    const auto part = std::span(values).subspan(before);
    Need({reinterpret_cast<char*>(part.data()), part.size_bytes()});
    if constexpr (std::endian::native == std::endian::big) {
      std::transform(part.begin(), part.end(), part.begin(), LittleEndian);
    }
  }
}

std::string ArchiveReader::ReadText() {
  std::uint32_t length = Get(1);
  if (length == kLongText) {
    length = Get(2);
    if (length == kLongCount) length = Get(4);
  }
  std::string text;
  while (text.size() < length) {
    const std::size_t before = text.size();
    text.resize(before + std::min<std::size_t>(length - before, kChunk));
    Need(std::span(text).subspan(before));
  }
  return text;
}

}  // namespace selvane
