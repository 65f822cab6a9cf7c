// A document of BioC, put together of its passages.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "literature/field_text.h"
#include "literature/mark_places.h"

namespace selvane {

// A text with the place in the document that annotations count from.
struct BiocText {
  enum class Kind { kTitle, kAbstract, kOther };
  Kind kind = Kind::kOther;
  std::uint64_t offset = 0;  // in characters
  std::string text;          // not kept of other kinds
};

struct BiocAnnotation {
  Identifiers identifiers;
  std::string words;
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  int locations = 0;  // offset and length are those of the first
  std::uint64_t line = 0;
};

struct BiocDocument {
  std::string id;
  std::string year;
  std::string journal;
  std::vector<BiocText> texts;
  std::vector<BiocAnnotation> annotations;

  // The record of title and abstract, with the annotations that lie in them. Tells of what does not.
  Record ToRecord(RecordSink& sink);
};

}  // namespace selvane
