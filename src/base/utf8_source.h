// The text of a file as UTF-8, whatever it is written in, read in pieces.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "base/byte_source.h"

namespace selvane {

// What a file says that it is written in.
enum class Encoding {
  kUtf8,          // or nothing said: UTF-8, each byte that is none read as code page 1252
  kCodePage1252,  // every byte, also for ISO-8859-1
};

// The bytes of a source as UTF-8. A byte order mark is dropped; behind one of UTF-16 that is read. A byte
// that is no UTF-8 is read as code page 1252, by itself: a file that is put together of others may be written
// in both, and one bad byte must not spoil what follows it.
class Utf8Source {
 public:
  // The source outlives this and is read by it alone.
  explicit Utf8Source(ByteSource& source, Encoding encoding = Encoding::kUtf8);

  // The next text, empty at the end; valid until the next call. A character is never cut. Throws what the
  // source throws.
  std::string_view Next();
  const ByteSource& source() const { return source_; }
  // How many bytes were no UTF-8 so far, in a file that did not say so itself.
  std::uint64_t bytes_recoded() const { return bytes_recoded_; }

 private:
  enum class Form { kUnknown, kBytes, kUtf16Low, kUtf16High };

  std::string_view FromUtf8(std::string_view piece, bool is_last);
  std::string_view FromUtf16(std::string_view piece);
  void AppendMixed(std::string_view bytes, bool is_end);
  void DropMark(std::string_view& piece);

  ByteSource& source_;
  Encoding encoding_;
  Form form_ = Form::kUnknown;
  std::string begun_;        // a character's first bytes, whose others are in the next piece
  char32_t first_half_ = 0;  // of a pair of UTF-16
  std::string text_;
  std::uint64_t bytes_recoded_ = 0;
};

}  // namespace selvane
