#include "termdb/tagged_abstract.h"

#include <algorithm>

#include "base/text.h"

namespace selvane {

namespace {

using namespace std::string_view_literals;

constexpr auto kNone = std::string_view::npos;

// The canonical form in a mark's text, as it stands there; empty when there is none.
std::string_view CanonicalOf(std::string_view mark) {
  const std::size_t attribute = mark.find("DictCanon=");
  if (attribute == kNone) return {};
  const std::size_t value = attribute + "DictCanon=\""sv.size();
  const std::size_t end = value <= mark.size() ? mark.find('"', value) : kNone;
  return end == kNone ? std::string_view() : mark.substr(value, end - value);
}

// A form that was wrapped over lines, with one blank for each line end (or other control character) and the
// blanks around it.
std::string Unwrapped(std::string_view form) {
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  std::string text;
  while (!form.empty()) {
    const auto end = std::find_if(form.begin(), form.end(), is_control);
    const auto length = static_cast<std::size_t>(end - form.begin());
    const std::string_view piece = Trimmed(form.substr(0, length));
    if (!text.empty() && !piece.empty()) text += ' ';
    text += piece;
    form.remove_prefix(std::min(length + 1, form.size()));
  }
  return text;
}

// Turns forms into clean UTF-8 text, copying as rarely as possible.
class FormReader {
 public:
  explicit FormReader(std::string_view bytes) : bytes_(bytes) {}

  std::string_view Clean(std::string_view form) {
    const bool plain = std::all_of(form.begin(), form.end(), [](char c) {
      // Neither a line end, nor a quote, nor beyond ASCII.
      return static_cast<signed char>(c) > 0x1F && c != '\'';
    });
    if (plain) return form;
    clean_ = Unwrapped(form);
    // A value without its opening quote may begin in the middle of a character.
    if (!IsWholeUtf8() || !IsUtf8(clean_)) clean_ = FromCodePage1252(clean_);
    ReplaceQuotes(clean_);
    return clean_;
  }

 private:
  // Which encoding a file has is asked of the whole file, once, when the first form needs to know.
  bool IsWholeUtf8() {
    if (!asked_) is_utf8_ = IsUtf8(bytes_);
    asked_ = true;
    return is_utf8_;
  }

  std::string_view bytes_;
  bool asked_ = false;
  bool is_utf8_ = true;
  std::string clean_;
};

}  // namespace

void ForEachTaggedTerm(std::string_view bytes, const std::function<void(std::string_view)>& visit) {
  if (bytes.starts_with("\xEF\xBB\xBF"sv)) bytes.remove_prefix(3);
  const std::size_t begin = bytes.starts_with("AB  - "sv) ? 0 : bytes.find("\nAB  - ");
  if (begin == kNone) return;
  FormReader forms(bytes);
  std::size_t at = begin + 1;
  // The line that ends the abstract. A mark may run over it: only a line that is read while looking for the
  // next mark ends the abstract.
  std::size_t end = bytes.find("\nAD  - ", at);
  for (;;) {
    const std::size_t mark = bytes.substr(0, end).find("<DictTerm", at);
    if (mark == kNone) return;
    const std::size_t close = bytes.find("</DictTerm>", mark);
    if (close == kNone) return;
    const std::string_view canonical = CanonicalOf(bytes.substr(mark, close - mark));
    const std::string_view form = forms.Clean(canonical);
    if (!form.empty()) visit(form);
    at = close + "</DictTerm>"sv.size();
    if (end != kNone && end < at) end = bytes.find("\nAD  - ", at);
  }
}

}  // namespace selvane
