#include "base/shown_text.h"

#include <fmt/format.h>

#include <cmath>
#include <iterator>
#include <optional>

#include "base/text.h"
#include "base/utf8.h"

namespace selvane {

namespace {

// The upper ones too: to a terminal U+009B begins a command as Escape and [ do.
bool IsControl(char32_t code) {
  return code != '\n' && code != '\t' && (code < 0x20 || (code >= 0x7F && code < 0xA0));
}

}  // namespace

std::string Visible(std::string_view text) {
  std::string visible;
  visible.reserve(text.size());
  ForEachCode(text, [&visible](std::optional<char32_t> code, std::string_view bytes) {
    if (code && !IsControl(*code)) {
      visible += bytes;
    } else {
      fmt::format_to(std::back_inserter(visible), "\\x{:02x}",
                     code ? static_cast<unsigned>(*code) : static_cast<unsigned char>(bytes.front()));
    }
  });
  return visible;
}

std::string Guarded(std::string_view text) {
  constexpr std::string_view kBeginnings = "=+-@\t\r\n";
  if (text.empty() || kBeginnings.find(text.front()) == std::string_view::npos) return std::string(text);
  const std::optional<double> number = NumberOf(text);
  return number && std::isfinite(*number) ? std::string(text) : "'" + std::string(text);
}

std::string Shortened(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  std::size_t end = most;
  // A character is not cut in two.
  while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80) --end;
  return std::string(text.substr(0, end)) + "...";
}

}  // namespace selvane
