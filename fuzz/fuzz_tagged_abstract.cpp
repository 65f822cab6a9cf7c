#include "literature/tagged_abstract.h"
#include "literature/tagged_reader.h"
#include "literature_fuzzing.h"

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  selvane::ForEachTaggedTerm(TextOf(data, size), [](std::string_view term) {
    Require(selvane::IsUtf8(term));
    Require(term.find_first_of("'\n") == std::string_view::npos);
  });
  return FuzzReader(&selvane::ReadTagged, data, size);
}
