// What the readers of XML share.
#pragma once

#include "base/xml_stream.h"
#include "literature/record_sink.h"

namespace selvane {

// A handler that makes records of a file's tags. No text is told until it asks for one.
class XmlRecordReader : public XmlHandler {
 public:
  explicit XmlRecordReader(RecordSink& sink) : sink_(sink) {}

  // Reads the whole file. Throws FileError, and InputError for what is no XML.
  void Read(ByteSource& source);

 protected:
  RecordSink& sink() const { return sink_; }
  // The stream that is being read.
  XmlStream& stream() const { return *stream_; }

 private:
  RecordSink& sink_;
  XmlStream* stream_ = nullptr;
};

}  // namespace selvane
