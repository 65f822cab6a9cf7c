#include "literature/xml_record_reader.h"

namespace selvane {

void XmlRecordReader::Read(ByteSource& source) {
  // A text of any length is one record's fault, not the file's: records are limited, texts are not.
  XmlStream stream(source, *this, {.text = XmlLimits::kNone});
  stream_ = &stream;
  stream.WantText(false);
  while (stream.Step()) sink_.Advance();
  sink_.TellRecoded(stream.bytes_recoded());
  stream_ = nullptr;
}

}  // namespace selvane
