#include "literature/tagged_abstract.h"

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

std::size_t TaggedAbstractBegin(std::string_view bytes) {
  constexpr std::string_view kField = "\nAB  - ";
  if (bytes.starts_with(kField.substr(1))) return kField.size() - 1;
  const std::size_t line_end = bytes.find(kField);
  return line_end == kNone ? kNone : line_end + kField.size();
}

void ForEachTaggedMark(std::string_view bytes, const std::function<void(const TaggedMark&)>& visit) {
  constexpr std::string_view kClose = "</DictTerm>";
  std::size_t at = TaggedAbstractBegin(bytes);
  if (at == kNone) return;
  FormReader forms(bytes);
  // The line that ends the abstract. A mark may run over it: only a line that is read while looking for the
  // next mark ends the abstract.
  std::size_t end = bytes.find("\nAD  - ", at - 1);
  for (;;) {
    TaggedMark mark;
    mark.begin = bytes.substr(0, end).find("<DictTerm", at);
    if (mark.begin == kNone) return;
    mark.words_end = bytes.find(kClose, mark.begin);
    if (mark.words_end == kNone) return;
    mark.end = at = mark.words_end + kClose.size();
    const std::string_view element = bytes.substr(mark.begin, mark.words_end - mark.begin);
    const std::string_view canonical = CanonicalOf(element);
    // The tag ends behind the form, which may hold the sign itself.
    const auto tag = canonical.empty()
                         ? 0
                         : static_cast<std::size_t>(canonical.data() - element.data()) + canonical.size();
    const std::size_t tag_end = element.find('>', tag);
    mark.words = tag_end == kNone ? mark.words_end : mark.begin + tag_end + 1;
    mark.form = forms.Clean(canonical);
    visit(mark);
    if (end != kNone && end < at) end = bytes.find("\nAD  - ", at);
  }
}

void ForEachTaggedTerm(std::string_view bytes, const std::function<void(std::string_view)>& visit) {
  if (HasUtf16Mark(bytes)) return ForEachTaggedTerm(DecodeInput(std::string(bytes)), visit);
  if (bytes.starts_with("\xEF\xBB\xBF"sv)) bytes.remove_prefix(3);
  ForEachTaggedMark(bytes, [&visit](const TaggedMark& mark) {
    if (!mark.form.empty()) visit(mark.form);
  });
}

}  // namespace selvane
