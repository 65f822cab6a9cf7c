// XML read as a stream of tags and texts, so that memory does not grow with the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string_view>

#include "base/byte_source.h"

namespace selvane {

// The attributes of a tag, valid during the call that they come with.
class XmlAttributes {
 public:
  // Names and values in turn, ended by a null pointer.
  explicit XmlAttributes(const char* const* pairs) : pairs_(pairs) {}
  // The value, empty when there is no such attribute.
  std::string_view operator[](std::string_view name) const;

 private:
  const char* const* pairs_;
};

// Who is told what a stream reads. What an operation throws comes out of XmlStream::Step. Texts are UTF-8.
class XmlHandler {
 public:
  virtual ~XmlHandler() = default;
  virtual void OnStart(std::string_view name, const XmlAttributes& attributes) = 0;
  virtual void OnEnd(std::string_view name) = 0;
  // A text comes in parts, at least one for each of its lines.
  virtual void OnText(std::string_view part) = 0;
};

struct XmlLimits {
  std::size_t depth = 200;                    // elements within each other
  std::size_t tag = std::size_t{1} << 20U;    // bytes of a tag, a comment or a declaration
  std::size_t text = std::size_t{16} << 20U;  // bytes between two tags
  static constexpr std::size_t kNone = std::numeric_limits<std::size_t>::max();
};

// Reads a source as XML, whatever it is written in. A document type is passed over and never fetched; a file
// that declares entities of its own is refused, and a reference to an unknown one is given as it stands.
class XmlStream {
 public:
  // Source and handler outlive this. Throws InputError for an encoding that is not known.
  XmlStream(ByteSource& source, XmlHandler& handler, XmlLimits limits = {});
  XmlStream(const XmlStream&) = delete;
  XmlStream& operator=(const XmlStream&) = delete;
  ~XmlStream();

  // Reads the next piece of the file; false when the document has ended or was stopped. Throws InputError,
  // which names file and line, for what is no XML and what is beyond the limits; FileError; and what the
  // handler throws. Nothing can be read after a throw.
  bool Step();
  // For handlers: nothing more is told.
  void Stop();
  // For handlers: whether texts are told from now on, as they are at first. Going without is quicker.
  void WantText(bool wanted);
  std::uint64_t line_number() const;    // where the stream stands, from 1 on
  std::uint64_t bytes_recoded() const;  // as Utf8Source counts them

 private:
  class Parser;
  std::unique_ptr<Parser> parser_;
};

}  // namespace selvane
