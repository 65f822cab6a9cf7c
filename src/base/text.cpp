#include "base/text.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>

#include "base/byte_source.h"
#include "base/utf8.h"
#include "base/utf8_source.h"

namespace selvane {

namespace {

// Code points of the bytes 0x80..0x9F of code page 1252; the five unassigned bytes keep their own value.
constexpr std::array<char32_t, 32> kUpperControls = {
    0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};

unsigned Byte(char c) {
  return static_cast<unsigned char>(c);
}

}  // namespace

std::size_t SequenceLength(std::string_view text, char32_t& code) {
  const unsigned lead = Byte(text[0]);
  if (lead < 0x80) {
    code = lead;
    return 1;
  }
  const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
  if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
  code = lead & (0xFFU >> (length + 1));
  for (std::size_t i = 1; i < length; ++i) {
    if ((Byte(text[i]) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (Byte(text[i]) & 0x3F);
  }
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < kSmallest[length] || code > 0x10FFFF || surrogate ? 0 : length;
}

// As the engine compares names of tables and columns, whatever the locale.
std::string LowerCase(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return lower;
}

void ReplaceQuotes(std::string& text) {
  std::replace(text.begin(), text.end(), '\'', ' ');
}

std::string WithoutQuotes(std::string_view text) {
  std::string copy(text);
  ReplaceQuotes(copy);
  return copy;
}

std::string DoubleQuoted(std::string_view text) {
  std::string quoted = "\"";
  for (const char c : text) quoted.append(c == '"' ? 2 : 1, c);
  return quoted += '"';
}

std::string_view Trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

void AppendUtf8(std::string& out, char32_t code) {
  const auto put = [&out](char32_t byte) { out.push_back(static_cast<char>(byte)); };
  if (code < 0x80) return put(code);
  if (code < 0x800) {
    put(0xC0 | (code >> 6));
  } else {
    if (code < 0x10000) {
      put(0xE0 | (code >> 12));
    } else {
      put(0xF0 | (code >> 18));
      put(0x80 | ((code >> 12) & 0x3F));
    }
    put(0x80 | ((code >> 6) & 0x3F));
  }
  put(0x80 | (code & 0x3F));
}

std::size_t ValidUtf8Length(std::string_view bytes) {
  std::size_t at = 0;
  while (at < bytes.size()) {
    // Most text is ASCII: eight bytes at once while none is beyond.
    std::uint64_t word = 0;
    for (; at + sizeof word <= bytes.size(); at += sizeof word) {
      std::memcpy(&word, bytes.data() + at, sizeof word);
      if ((word & 0x8080808080808080U) != 0) break;
    }
    while (at < bytes.size() && Byte(bytes[at]) < 0x80) ++at;
    if (at == bytes.size()) break;
    char32_t code = 0;
    const std::size_t length = SequenceLength(bytes.substr(at), code);
    if (length == 0) return at;
    at += length;
  }
  return at;
}

bool IsUtf8(std::string_view bytes) {
  return ValidUtf8Length(bytes) == bytes.size();
}

std::size_t CharacterCount(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (Byte(c) & 0xC0) != 0x80; }));
}

bool HasUtf16Mark(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

std::string DecodeInput(std::string bytes) {
  if (HasUtf16Mark(bytes)) {
    ByteSource source({}, bytes);
    Utf8Source text(source);
    std::string utf8;
    for (std::string_view piece = text.Next(); !piece.empty(); piece = text.Next()) utf8 += piece;
    return utf8;
  }
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.erase(0, 3);
  if (IsUtf8(bytes)) return bytes;
  return FromCodePage1252(bytes);
}

std::string FromCodePage1252(std::string_view bytes) {
  std::string utf8;
  utf8.reserve(bytes.size() + bytes.size() / 16);
  for (const char c : bytes) {
    const unsigned byte = Byte(c);
    AppendUtf8(utf8, byte >= 0x80 && byte < 0xA0 ? kUpperControls[byte - 0x80] : byte);
  }
  return utf8;
}

std::string ToCodePage1252(std::string_view utf8) {
  std::string bytes;
  bytes.reserve(utf8.size());
  ForEachCode(utf8, [&bytes](std::optional<char32_t> code, std::string_view) {
    const auto control = std::find(kUpperControls.begin(), kUpperControls.end(), code);
    if (control != kUpperControls.end()) {
      bytes.push_back(static_cast<char>(0x80 + (control - kUpperControls.begin())));
    } else {
      const bool same_byte = code && (*code < 0x80 || (*code >= 0xA0 && *code <= 0xFF));
      bytes.push_back(same_byte ? static_cast<char>(*code) : '?');
    }
  });
  return bytes;
}

std::string ToLatin1(std::string_view utf8) {
  std::string bytes;
  bytes.reserve(utf8.size());
  ForEachCode(utf8, [&bytes](std::optional<char32_t> code, std::string_view) {
    if (code && *code < 0x100) {
      bytes.push_back(static_cast<char>(*code));
    } else {
      bytes += code ? fmt::format("&#{};", static_cast<std::uint32_t>(*code)) : "?";
    }
  });
  return bytes;
}

std::string Listed(std::span<const std::string> names) {
  constexpr std::size_t kMostListed = 30;
  const std::string shown =
      fmt::format("{}", fmt::join(names.first(std::min(names.size(), kMostListed)), "; "));
  return names.size() <= kMostListed ? shown
                                     : fmt::format("{} and {} more", shown, names.size() - kMostListed);
}

// Seven digits, since more would show what a float does not hold: 0.05 as 0.0500000007.
std::string SingleText(float value, char decimal_sign) {
  std::string text = fmt::format("{:.7g}", static_cast<double>(value));
  std::replace(text.begin(), text.end(), '.', decimal_sign);
  return text;
}

std::optional<double> NumberOf(std::string_view text) {
  std::string plain(Trimmed(text));
  std::replace(plain.begin(), plain.end(), ',', '.');
  const bool signed_plus = plain.size() > 1 && plain[0] == '+' && plain[1] != '-';
  const char* const first = plain.data() + (signed_plus ? 1 : 0);
  const char* const last = plain.data() + plain.size();
  double value = 0;
  const auto [end, status] = std::from_chars(first, last, value);
  if (status != std::errc{} || end != last) return std::nullopt;
  return value;
}

std::optional<std::int32_t> Int32Of(std::string_view text) {
  const std::string_view digits = Trimmed(text);
  std::int32_t value = 0;
  const auto [end, status] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (digits.empty() || status != std::errc{} || end != digits.data() + digits.size()) return std::nullopt;
  return value;
}

std::string_view NextLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

}  // namespace selvane
