// PubMed XML (docs/formats/pubmed-xml.md).
#pragma once

#include "literature/record_sink.h"

namespace selvane {

// Reads all articles and books of a file. Throws FileError, and InputError for what is no XML.
void ReadPubmedXml(ByteSource& source, RecordSink& sink);

}  // namespace selvane
