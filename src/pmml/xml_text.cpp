#include "pmml/xml_text.h"

#include <optional>

#include "base/text.h"
#include "base/utf8.h"

namespace selvane {

namespace {

// The reference for a character that may not stand in an attribute as it is; empty for any other.
std::string_view ReferenceOf(char c) {
  switch (c) {
    case '&':
      return "&amp;";
    case '<':
      return "&lt;";
    case '>':
      return "&gt;";
    case '"':
      return "&quot;";
    // As they are, readers would make blanks of them.
    case '\t':
      return "&#9;";
    case '\n':
      return "&#10;";
    case '\r':
      return "&#13;";
    default:
      return {};
  }
}

template <typename IsReferenced>
std::string WithReferences(std::string_view text, const IsReferenced& is_referenced) {
  std::string result;
  result.reserve(text.size());
  for (const char c : text) {
    const std::string_view reference = is_referenced(c) ? ReferenceOf(c) : std::string_view();
    reference.empty() ? result.append(1, c) : result.append(reference);
  }
  return result;
}

}  // namespace

std::string HeldByXml(std::string_view text) {
  std::string held;
  held.reserve(text.size());
  ForEachCode(text, [&held](std::optional<char32_t> code, std::string_view bytes) {
    if (!code || *code == 0xFFFE || *code == 0xFFFF) {
      held += '?';
    } else if (*code < 0x20 && *code != '\t' && *code != '\n' && *code != '\r') {
      held += ' ';
    } else {
      held += bytes;
    }
  });
  return held;
}

// The XML library escapes only what it lays out itself, which would be other bytes than these files have had
// so far, and holds the whole document in memory.
std::string XmlAttribute(std::string_view text) {
  return WithReferences(HeldByXml(text), [](char) { return true; });
}

std::string PlainLatin1(std::string_view text) {
  return ToLatin1(WithReferences(HeldByXml(text), [](char c) { return c == '\n' || c == '\r'; }));
}

}  // namespace selvane
