// Tagged abstracts: MEDLINE text files in which a tagger has marked terms (docs/formats/tagged-abstracts.md).
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace selvane {

// A mark of the first abstract, by places in the bytes of the file.
struct TaggedMark {
  std::size_t begin = 0;      // of the mark
  std::size_t words = 0;      // of the marked words
  std::size_t words_end = 0;  // behind them
  std::size_t end = 0;        // behind the mark
  std::string_view form;      // the canonical form as UTF-8, its single quotes made blanks; empty without one
};

// Where the first abstract begins, behind the name of its field; npos when there is none. `bytes` is the
// whole file, without a byte order mark.
std::size_t TaggedAbstractBegin(std::string_view bytes);

// Calls `visit` with each mark of the first abstract, in order; the form is valid during the call only. A
// mark without its end is passed over.
void ForEachTaggedMark(std::string_view bytes, const std::function<void(const TaggedMark&)>& visit);

// Calls `visit` with the canonical form of every term marked in the first abstract of the file, in order and
// as often as it is marked. A mark without a canonical form is passed over.
void ForEachTaggedTerm(std::string_view bytes, const std::function<void(std::string_view)>& visit);

}  // namespace selvane
