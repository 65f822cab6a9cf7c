#include "base/excerpt.h"

#include <fmt/format.h>

namespace selvane {

std::string Excerpt(std::string_view text, std::size_t most) {
  if (text.size() <= most) return std::string(text);
  std::size_t end = most;
  const auto is_inside = [text](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80;
  };
  while (end > 0 && most - end < 4 && is_inside(end)) --end;
  return fmt::format("{}... ({} bytes)", text.substr(0, end), text.size());
}

}  // namespace selvane
