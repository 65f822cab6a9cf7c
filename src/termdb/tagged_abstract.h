// Tagged abstracts: MEDLINE text files in which a tagger has marked terms (docs/formats/tagged-abstracts.md).
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace selvane {

// Calls `visit` with the canonical form of every term marked in the first abstract of the file, in order and
// as often as it is marked, as UTF-8 with its single quotes made blanks. The view is valid during the call
// only. `bytes` is the whole file. A mark without its end or without a canonical form is passed over.
void ForEachTaggedTerm(std::string_view bytes, const std::function<void(std::string_view)>& visit);

}  // namespace selvane
