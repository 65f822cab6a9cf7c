#include "data/object_archive.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "base/error.h"

namespace selvane {

namespace {

constexpr std::uint32_t kLongCount = 0xFFFF;  // announces a 32-bit count
constexpr std::uint32_t kLongText = 0xFF;     // announces a longer length
constexpr std::uint32_t kLongestText16 = 0xFFFE;
constexpr std::size_t kChunk = std::size_t{16} * 1024;  // values or bytes

std::uint32_t LittleEndian(std::uint32_t value) {
  if constexpr (std::endian::native == std::endian::little) return value;
  return __builtin_bswap32(value);
}

}  // namespace

void ArchiveWriter::Put(std::uint32_t value, int bytes) {
  const std::uint32_t ordered = LittleEndian(value);
  std::array<char, 4> raw{};
  std::memcpy(raw.data(), &ordered, raw.size());
  file_.Write({raw.data(), static_cast<std::size_t>(bytes)});
}

void ArchiveWriter::WriteCount(std::uint32_t count) {
  if (count < kLongCount) return Put(count, 2);
  Put(kLongCount, 2);
  Put(count, 4);
}

void ArchiveWriter::WriteValue(std::uint32_t value) {
  Put(value, 4);
}

void ArchiveWriter::WriteValues(std::span<const std::uint32_t> values) {
  if constexpr (std::endian::native == std::endian::little) {
    file_.Write({reinterpret_cast<const char*>(values.data()), values.size_bytes()});
  } else {
    for (const std::uint32_t value : values) Put(value, 4);
  }
}

void ArchiveWriter::WriteText(std::string_view bytes) {
  const auto length = static_cast<std::uint32_t>(bytes.size());
  if (length < kLongText) {
    Put(length, 1);
  } else if (length < kLongestText16) {
    Put(kLongText, 1);
    Put(length, 2);
  } else {
    Put(kLongText, 1);
    Put(kLongCount, 2);
    Put(length, 4);
  }
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
