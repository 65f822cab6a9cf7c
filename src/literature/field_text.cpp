#include "literature/field_text.h"

#include <algorithm>

#include "base/text.h"

namespace selvane {

namespace {

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsNumber(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

// D or C and six or nine digits; seven of them behind a C are a concept of another vocabulary.
bool IsMesh(std::string_view text) {
  return (text[0] == 'D' || text[0] == 'C') && (text.size() == 7 || text.size() == 10) &&
         IsNumber(text.substr(1));
}

bool IsBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

// The text behind a prefix in any letters; nothing changes when it is not there.
bool DropPrefix(std::string_view& text, std::string_view lower_prefix) {
  if (LowerCase(text.substr(0, lower_prefix.size())) != lower_prefix) return false;
  text = Trimmed(text.substr(lower_prefix.size()));
  return true;
}

void AddIdentifier(std::string_view text, Identifiers& found) {
  std::string_view part = Trimmed(text);
  if (part.empty()) return;
  // Taggers write it with the prefix, older corpora without.
  DropPrefix(part, "mesh:");
  if (part.empty()) return;
  if (IsMesh(part)) {
    found.ids.emplace_back(part);
  } else if (DropPrefix(part, "omim:") && IsNumber(part)) {
    found.ids.push_back("OMIM:" + std::string(part));
  } else {
    const std::string lower = LowerCase(part);
    const bool is_none =
        lower == "-1" || lower == "-" || lower == "none" || lower == "null" || lower == "unknown";
    (is_none ? found.is_none : found.is_other) = true;
  }
}

}  // namespace

int YearOf(std::string_view text) {
  for (std::size_t at = 0; at < text.size();) {
    if (!IsDigit(text[at])) {
      ++at;
      continue;
    }
    std::size_t end = at;
    while (end < text.size() && IsDigit(text[end])) ++end;
    // Volumes and pages have numbers too, but dates begin with the year.
    if (end - at == 4 && (text[at] == '1' || text[at] == '2')) return *Int32Of(text.substr(at, 4));
    at = end;
  }
  return 0;
}

void AppendFolded(std::string& out, std::string_view text) {
  while (!text.empty()) {
    if (IsBlank(text.front())) {
      const auto word = std::find_if_not(text.begin(), text.end(), IsBlank);
      text.remove_prefix(static_cast<std::size_t>(word - text.begin()));
      if (!out.empty() && out.back() != ' ') out += ' ';
    }
    // Up to what is no single blank between words, so that most of a text is copied at once.
    std::size_t end = 0;
    while (end < text.size() &&
           !(IsBlank(text[end]) && (text[end] != ' ' || end + 1 == text.size() || IsBlank(text[end + 1])))) {
      ++end;
    }
    out += text.substr(0, end);
    text.remove_prefix(end);
  }
}

void TrimEnd(std::string& text) {
  if (text.ends_with(' ')) text.pop_back();
}

std::string_view Shortened(std::string_view text, std::size_t most) {
  if (text.size() <= most) return text;
  while (most > 0 && (static_cast<unsigned char>(text[most]) & 0xC0U) == 0x80U) --most;
  return text.substr(0, most);
}

Identifiers IdentifiersOf(std::string_view text) {
  Identifiers found;
  for (;;) {
    const std::size_t end = text.find_first_of("|+,;");
    AddIdentifier(text.substr(0, end), found);
    if (end == std::string_view::npos) return found;
    text.remove_prefix(end + 1);
  }
}

}  // namespace selvane
