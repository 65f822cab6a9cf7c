#include "literature/mark_places.h"

#include <fmt/format.h>

#include <algorithm>

#include "base/text.h"

namespace selvane {

namespace {

constexpr std::size_t kStep = 64;
constexpr auto kNone = std::string_view::npos;

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0U) == 0x80U;
}

std::size_t NextCharacter(std::string_view text, std::size_t at) {
  do ++at;
  while (at < text.size() && IsContinuation(text[at]));
  return at;
}

// The occurrence of the words that is nearest to a place, npos when there is none near. Not in the whole
// text, which may be long and hold many marks.
std::size_t NearestWords(std::string_view text, std::string_view words, std::size_t at) {
  constexpr std::size_t kNear = 2000;
  const std::size_t from = at - std::min(at, kNear);
  const std::string_view near = text.substr(from, at - from + kNear + words.size());
  const std::size_t behind = near.find(words, at - from);
  const std::size_t before = near.rfind(words, at - from);
  if (behind == kNone && before == kNone) return kNone;
  const bool is_before = behind == kNone || (before != kNone && at - from - before <= behind - (at - from));
  return from + (is_before ? before : behind);
}

}  // namespace

void CharacterPlaces::Begin(std::string_view text) {
  text_ = text;
  characters_ = CharacterCount(text);
  marks_.clear();
  // Most abstracts are ASCII, where characters are bytes.
  if (characters_ == text.size()) return;
  std::size_t character = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (IsContinuation(text[at])) continue;
    if (character++ % kStep == 0) marks_.push_back(at);
  }
}

std::size_t CharacterPlaces::ByteOf(std::size_t character) const {
  if (marks_.empty()) return character;
  if (character == characters_) return text_.size();
  std::size_t at = marks_[character / kStep];
  for (std::size_t i = character % kStep; i > 0; --i) at = NextCharacter(text_, at);
  return at;
}

bool PlaceMark(const CharacterPlaces& places, const Mark& mark, Mention& mention, RecordSink& sink) {
  if (mention.ids.empty() && mention.name.empty()) {
    sink.Tell(problems::kNoIdentifier, fmt::format("line {}: it has no words either", mark.line));
    return false;
  }
  if (mark.begin > mark.end || mark.end > places.characters()) {
    sink.Tell(problems::kOutside, fmt::format("line {}: \"{}\"", mark.line, mark.words));
    return false;
  }
  std::size_t at = places.ByteOf(mark.begin);
  std::size_t length = places.ByteOf(mark.end) - at;
  if (!mark.words.empty() && places.text().substr(at, length) != mark.words) {
    // The identifier belongs to the words, so they count; and it is the words that a reader wants to see.
    const std::size_t found = NearestWords(places.text(), mark.words, at);
    sink.Tell(found == kNone ? problems::kNotFound : problems::kMisplaced,
              fmt::format("line {}: \"{}\"", mark.line, mark.words));
    if (found == kNone) return false;
    at = found;
    length = mark.words.size();
  }
  mention.offset = static_cast<std::uint32_t>(at);
  mention.length = static_cast<std::uint32_t>(length);
  return true;
}

}  // namespace selvane
