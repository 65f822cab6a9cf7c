// Texts made smaller for keeping, in the zlib format that every language can read.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace selvane {

// Packs one text after the other; setting it up takes longer than packing an abstract.
class Packer {
 public:
  Packer();
  Packer(Packer&&) noexcept;
  ~Packer();
  // The bytes of a text, packed; an empty text gives bytes too. Texts of up to 4 GB.
  std::string Pack(std::string_view text);

 private:
  class Stream;
  std::unique_ptr<Stream> stream_;
};

// A single text, packed.
std::string Pack(std::string_view text);

// The text again. Throws InputError when the bytes are damaged, or when the text is longer than the limit.
std::string Unpack(std::string_view bytes, std::size_t limit);

}  // namespace selvane
