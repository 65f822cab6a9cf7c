// Where the readers of literature put what they find.
#pragma once

#include <cstddef>
#include <exception>
#include <string>
#include <string_view>

#include "base/error.h"
#include "literature/record_reading.h"

namespace selvane {

// The longest that a record may become, counted in bytes of its fields as they are collected.
inline constexpr std::size_t kLargestRecord = std::size_t{16} << 20U;

// What the visitor or the progress threw, on its way through a reader; not taken for a fault of the file.
struct VisitorFault {
  std::exception_ptr cause;
};

// Passes records and problems of one file on to a visitor.
class RecordSink {
 public:
  RecordSink(const ByteSource& source, RecordVisitor& visitor, Progress& progress)
      : source_(source), visitor_(visitor), progress_(progress) {}

  // Hands a record on, and tells of one that names no term.
  void Take(Record&& record);
  // Tells of a problem; `place` is what its example says behind the name of the file.
  void Tell(std::string_view kind, std::string_view place);
  // Tells that a file was written in code page 1252, in parts at least, when so many bytes were.
  void TellRecoded(std::uint64_t bytes);
  // Tells that the file could not be read to its end, in the words of the error, which name the file.
  void TellUnreadable(const Error& error);
  // To be called now and then while there are no records, too: lets progress show, and stop the reading.
  void Advance() { Advance(source_.bytes_read()); }
  // To be called at the end of the file, also when not all of it was read.
  void Finish() { Advance(source_.file_size()); }
  std::size_t records() const { return records_; }

 private:
  void Advance(std::uint64_t bytes);
  template <typename Call>
  void Guarded(const Call& call);

  const ByteSource& source_;
  RecordVisitor& visitor_;
  Progress& progress_;
  std::size_t records_ = 0;
  std::uint64_t bytes_told_ = 0;
};

}  // namespace selvane
