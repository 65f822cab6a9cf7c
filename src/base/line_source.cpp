#include "base/line_source.h"

#include <algorithm>

namespace selvane {

bool LineSource::Next(std::string_view& line) {
  was_cut_ = false;
  // Nearly all lines lie whole in a piece, and are handed out where they lie.
  const std::size_t end = rest_.find('\n');
  if (end == std::string_view::npos) return Join(line);
  line = Ended(rest_.substr(0, end));
  rest_.remove_prefix(end + 1);
  return true;
}

// A line whose end is not in the piece at hand.
bool LineSource::Join(std::string_view& line) {
  joined_.clear();
  bool is_there = false;
  for (;;) {
    is_there = is_there || !rest_.empty();
    const std::size_t end = rest_.find('\n');
    const std::string_view part = rest_.substr(0, end);
    // One byte beyond the limit is kept: it tells that the line was longer. The rest needs no memory.
    const std::size_t taken = std::min(part.size(), longest_line_ + 1 - joined_.size());
    joined_ += part.substr(0, taken);
    if (end != std::string_view::npos) {
      rest_.remove_prefix(end + 1);
      break;
    }
    rest_ = text_.Next();
    if (rest_.empty()) break;
  }
  line = Ended(joined_);
  return is_there;
}

std::string_view LineSource::Ended(std::string_view line) {
  ++line_number_;
  if (line.ends_with('\r')) line.remove_suffix(1);
  if (line.size() <= longest_line_) return line;
  was_cut_ = true;
  std::size_t length = longest_line_;
  // Not within a character.
  while (length > 0 && (static_cast<unsigned char>(line[length]) & 0xC0U) == 0x80U) --length;
  return line.substr(0, length);
}

}  // namespace selvane
