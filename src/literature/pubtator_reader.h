// PubTator (docs/formats/pubtator.md).
#pragma once

#include "literature/record_sink.h"

namespace selvane {

// Reads all documents of a file: titles, abstracts and rows of marks. Throws FileError.
void ReadPubtator(ByteSource& source, RecordSink& sink);

// True for the line of a title or an abstract: 26094|t|A title
bool IsPubtatorText(std::string_view line);

}  // namespace selvane
