#include "base/packing.h"

#include <fmt/format.h>
#define ZLIB_CONST  // input of the library is constant then
#include <zlib.h>

#include <algorithm>
#include <new>

#include "base/error.h"

namespace selvane {

class Packer::Stream {
 public:
  Stream() {
    // Quick rather than small: an abstract is short, and a longer search finds little more in it.
    if (::deflateInit(&stream_, Z_BEST_SPEED) != Z_OK) throw std::bad_alloc();
  }
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() { ::deflateEnd(&stream_); }

  std::string Pack(std::string_view text) {
    ::deflateReset(&stream_);
    std::string bytes(::deflateBound(&stream_, static_cast<uLong>(text.size())), '\0');
    stream_.next_in = reinterpret_cast<const Bytef*>(text.data());
    stream_.avail_in = static_cast<uInt>(text.size());
    stream_.next_out = reinterpret_cast<Bytef*>(bytes.data());
    stream_.avail_out = static_cast<uInt>(bytes.size());
    ::deflate(&stream_, Z_FINISH);
    bytes.resize(bytes.size() - stream_.avail_out);
    return bytes;
  }

 private:
  z_stream stream_ = {};
};

Packer::Packer() : stream_(std::make_unique<Stream>()) {}
Packer::Packer(Packer&&) noexcept = default;
Packer::~Packer() = default;

std::string Packer::Pack(std::string_view text) {
  return stream_->Pack(text);
}

std::string Pack(std::string_view text) {
  return Packer().Pack(text);
}

std::string Unpack(std::string_view bytes, std::size_t limit) {
  std::string text(std::min(limit, std::max<std::size_t>(bytes.size() * 4, 64)), '\0');
  for (;;) {
    uLongf length = static_cast<uLongf>(text.size());
    const int status = ::uncompress(reinterpret_cast<Bytef*>(text.data()), &length,
                                    reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
    if (status == Z_OK) return text.substr(0, length);
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
    if (status != Z_BUF_ERROR) throw InputError("a packed text is damaged");
    // Also what bytes give that end too early: it ends at the limit.
    if (text.size() == limit) {
      throw InputError(fmt::format("a packed text is damaged or longer than {} bytes", limit));
    }
    text.resize(std::min(limit, text.size() * 4));
  }
}

}  // namespace selvane
