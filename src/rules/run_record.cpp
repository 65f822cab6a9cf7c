#include "rules/run_record.h"

#include <algorithm>

#include "base/text.h"

namespace selvane {

void RunRecord::Set(std::string_view name, std::string_view value) {
  // An entry is a line, which no value may break.
  std::string line(value);
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < ' ') c = ' ';
  }
  entries_.emplace_back(name, std::move(line));
}

std::string_view RunRecord::Find(std::string_view name) const {
  const auto found = std::find_if(entries_.begin(), entries_.end(),
                                  [name](const auto& entry) { return entry.first == name; });
  return found == entries_.end() ? std::string_view() : std::string_view(found->second);
}

std::string RunRecord::ToText() const {
  std::string text;
  for (const auto& [name, value] : entries_) {
    text += name;
    text += ": ";
    text += value;
    text += '\n';
  }
  return text;
}

RunRecord RunRecord::FromText(std::string_view text) {
  RunRecord record;
  while (!text.empty()) {
    const std::string_view line = NextLine(text);
    const std::size_t end = line.find(": ");
    if (end != std::string_view::npos) record.Set(line.substr(0, end), line.substr(end + 2));
  }
  return record;
}

}  // namespace selvane
