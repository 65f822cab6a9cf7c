// Text and number helpers that everything may use. Text is UTF-8 inside the program.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>

namespace selvane {

// Hash for containers of std::string that are searched by std::string_view.
struct TextHash {
  using is_transparent = void;
  std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>{}(text); }
};

template <typename Value>
using TextMap = std::unordered_map<std::string, Value, TextHash, std::equal_to<>>;

// ASCII letters in lower case, every other byte unchanged.
std::string LowerCase(std::string_view text);

// Each single quote becomes a blank: terms are put between single quotes in SQL texts.
std::string WithoutQuotes(std::string_view text);
// The same in place.
void ReplaceQuotes(std::string& text);

// The text between double quotes, with those inside it doubled: a name for the engine, a field for a table of
// comma-separated values.
std::string DoubleQuoted(std::string_view text);

std::string_view Trimmed(std::string_view text);

bool IsUtf8(std::string_view bytes);
// Length of the valid UTF-8 text at the beginning of the bytes.
std::size_t ValidUtf8Length(std::string_view bytes);
// Appends a character, by its code.
void AppendUtf8(std::string& out, char32_t code);

// Number of characters of valid UTF-8 text.
std::size_t CharacterCount(std::string_view text);

// True for what begins with the byte order mark of UTF-16.
bool HasUtf16Mark(std::string_view bytes);
// The bytes of an input file as UTF-8: a byte order mark is dropped, behind one of UTF-16 that is read, valid
// UTF-8 is taken as it is, anything else is read as code page 1252.
std::string DecodeInput(std::string bytes);

// UTF-8 to code page 1252; what the code page cannot hold becomes '?'.
std::string ToCodePage1252(std::string_view utf8);
// UTF-8 to ISO-8859-1; what that cannot hold becomes a numeric character reference, as &#8364;.
std::string ToLatin1(std::string_view utf8);
std::string FromCodePage1252(std::string_view bytes);

// Names joined by "; ", since terms hold commas; the first ones of a list that may be long.
std::string Listed(std::span<const std::string> names);

// The text of a 32-bit float with at most 7 significant digits, as "0.05" or "1", with this decimal sign.
std::string SingleText(float value, char decimal_sign = '.');

// A whole text as a number, with a point or a comma as the decimal sign and blanks around it; nothing when it
// is something else.
std::optional<double> NumberOf(std::string_view text);

// A whole text as a decimal 32-bit integer, blanks around it allowed.
std::optional<std::int32_t> Int32Of(std::string_view text);

// The next line of a text that ends in LF or CR LF, without its end; `rest` moves behind it. The last line
// needs no end. Call only while `rest` is not empty.
std::string_view NextLine(std::string_view& rest);

}  // namespace selvane
