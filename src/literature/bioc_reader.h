// BioC XML (docs/formats/bioc.md).
#pragma once

#include "literature/record_sink.h"

namespace selvane {

// Reads all documents of a collection: titles, abstracts and their annotations. Throws FileError, and
// InputError for what is no XML.
void ReadBioc(ByteSource& source, RecordSink& sink);

}  // namespace selvane
