// Tagged abstracts as records (docs/formats/tagged-abstracts.md).
#pragma once

#include "literature/record_sink.h"

namespace selvane {

// Reads the first abstract of a file, with each marked term as a mention by its canonical form; headings do
// not count. Throws FileError.
void ReadTagged(ByteSource& source, RecordSink& sink);

}  // namespace selvane
