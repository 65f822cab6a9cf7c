// Where marks stand in the text of a record: files count in characters, we in bytes.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "literature/record_sink.h"

namespace selvane {

// Finds the bytes of characters in a text, quickly for many of them.
class CharacterPlaces {
 public:
  // The text stays as it is while places are asked for.
  void Begin(std::string_view text);
  std::size_t characters() const { return characters_; }
  // Where the character begins, from 0 on; the end of the text for its number of characters, which is the
  // most that may be asked for.
  std::size_t ByteOf(std::size_t character) const;
  std::string_view text() const { return text_; }

 private:
  std::string_view text_;
  std::size_t characters_ = 0;
  std::vector<std::size_t> marks_;  // where every 64th character begins; empty when all have one byte
};

// A mark as a file gives it.
struct Mark {
  std::uint64_t begin = 0;  // in characters
  std::uint64_t end = 0;
  std::string_view words;  // empty when the file does not repeat them
  std::uint64_t line = 0;  // of the file, for messages
};

// Gives a mention the place of its mark in the text. Words that stand elsewhere, within some two thousand
// bytes, are found there, as when the file counts in bytes; that is told. False when the mark has no place in
// the text, or names nothing, which is told too.
bool PlaceMark(const CharacterPlaces& places, const Mark& mark, Mention& mention, RecordSink& sink);

}  // namespace selvane
