#include "base/byte_source.h"

#include <fmt/format.h>
#define ZLIB_CONST  // input of the library is constant then
#include <zlib.h>

#include <algorithm>
#include <exception>
#include <new>
#include <utility>
#include <vector>

#include "base/error.h"
#include "base/file.h"

namespace selvane {

namespace {

// What packs best is the same byte over and over, a thousand to one. Markup of real files packs by ten to
// thirty. Up to some size nobody minds, however well it packs.
constexpr std::uint64_t kHarmlessSize = std::uint64_t{64} * 1024 * 1024;
constexpr std::uint64_t kMostRatio = 250;
// Both magic bytes and the only method that there is: no text begins so.
constexpr std::string_view kPackedStart = "\x1F\x8B\x08";

// An unpacker of zlib, for one member after the other.
class Unpacker {
 public:
  Unpacker() {
    constexpr int kGzipOnly = 16;
    if (::inflateInit2(&stream_, MAX_WBITS + kGzipOnly) != Z_OK) throw std::bad_alloc();
  }
  Unpacker(const Unpacker&) = delete;
  Unpacker& operator=(const Unpacker&) = delete;
  ~Unpacker() { ::inflateEnd(&stream_); }

  // Unpacks into the room until it is full or the input is used up; true when the member has ended.
  enum class State { kGoesOn, kEnded, kDamaged };
  State Run(std::string_view& input, char*& room, std::size_t& room_size) {
    stream_.next_in = reinterpret_cast<const Bytef*>(input.data());
    stream_.avail_in = static_cast<uInt>(input.size());
    stream_.next_out = reinterpret_cast<Bytef*>(room);
    stream_.avail_out = static_cast<uInt>(room_size);
    // No room left and no input left are no faults: the caller gives more of either.
    const int status = ::inflate(&stream_, Z_NO_FLUSH);
    input.remove_prefix(input.size() - stream_.avail_in);
    room += room_size - stream_.avail_out;
    room_size = stream_.avail_out;
    if (status == Z_MEM_ERROR) throw std::bad_alloc();
    if (status == Z_STREAM_END) return State::kEnded;
    return status == Z_OK || status == Z_BUF_ERROR ? State::kGoesOn : State::kDamaged;
  }
  void BeginMember() { ::inflateReset(&stream_); }

 private:
  z_stream stream_ = {};
};

}  // namespace

class ByteSource::Reader {
 public:
  Reader(std::filesystem::path path, FileDescriptor file, std::string_view memory, std::size_t piece_size)
      : path_(std::move(path)),
        size_(memory.size()),
        file_(std::move(file)),
        whole_(memory),
        memory_(memory),
        piece_size_(piece_size) {
    if (file_.IsOpen()) {
      size_ = SizeOf(file_, path_);
      // No larger than the file, since there may be many small ones; what has no size may give any number.
      packed_buffer_.resize(size_ == 0 ? kPieceSize : std::min<std::uint64_t>(kPieceSize, size_ + 1));
    }
    Refill();
    is_packed_ = raw_.starts_with(kPackedStart);
  }

  std::string_view Next() {
    // The buffer that the head lies in was not used since.
    if (!is_headed_) return Given(Piece());
    is_headed_ = false;
    return Given(head_);
  }

  std::string_view Head() {
    // Bytes in memory lie there whole, however small their pieces.
    if (!is_packed_ && !file_.IsOpen()) return whole_.substr(0, kPieceSize);
    if (!is_headed_) head_ = Piece();
    is_headed_ = true;
    return head_;
  }

  std::filesystem::path path_;
  bool is_packed_ = false;
  std::uint64_t size_ = 0;
  std::uint64_t read_ = 0;
  std::uint64_t given_ = 0;

 private:
  [[noreturn]] void Fail(const std::string& reason) const {
    throw FileError(fmt::format("{}: cannot read: {}", path_.string(), reason));
  }

  std::string_view Given(std::string_view piece) {
    given_ += piece.size();
    return piece;
  }

  // The file's own next bytes, when those before are used up; false at its end.
  bool Refill() {
    if (!file_.IsOpen()) {
      raw_ = memory_.substr(0, piece_size_);
      memory_.remove_prefix(raw_.size());
    } else {
      raw_ = {packed_buffer_.data(), ReadSome(file_, path_, packed_buffer_)};
    }
    read_ += raw_.size();
    return !raw_.empty();
  }

  std::string_view Piece() {
    if (fault_) std::rethrow_exception(std::exchange(fault_, nullptr));
    if (is_packed_) return UnpackedPiece();
    if (raw_.empty()) Refill();
    return std::exchange(raw_, {});
  }

  // What was unpacked before damage showed is handed out; the damage is told by the next call.
  std::string_view UnpackedPiece() {
    // Filled up before it is handed out, since each piece costs its reader some calls.
    if (unpacked_.empty()) unpacked_.resize(kPieceSize);
    char* room = unpacked_.data();
    std::size_t room_size = unpacked_.size();
    try {
      while (room_size > 0 && Unpack(room, room_size)) {
      }
    } catch (const FileError&) {
      if (room == unpacked_.data()) throw;
      fault_ = std::current_exception();
    }
    return {unpacked_.data(), unpacked_.size() - room_size};
  }

  // One step of unpacking; false at the end of the file.
  bool Unpack(char*& room, std::size_t& room_size) {
    if (raw_.empty() && !Refill()) {
      if (in_member_) Fail("the packed file ends too early; get it again");
      return false;
    }
    if (!in_member_ && !BeginMember()) return true;
    const Unpacker::State state = unpacker_.Run(raw_, room, room_size);
    if (state == Unpacker::State::kDamaged) Fail("its packed bytes are damaged; get it again");
    in_member_ = state != Unpacker::State::kEnded;
    if (given_ > kHarmlessSize && given_ / kMostRatio > read_) {
      Fail(
          fmt::format("it unpacks to more than {} times its size, as no literature does; unpack it "
                      "yourself if it is what you want",
                      kMostRatio));
    }
    return true;
  }

  // Some programs fill up the space behind the last member with zeros.
  bool BeginMember() {
    raw_.remove_prefix(std::min(raw_.find_first_not_of('\0'), raw_.size()));
    if (raw_.empty()) return false;
    unpacker_.BeginMember();
    return in_member_ = true;
  }

  FileDescriptor file_;
  std::string_view whole_;   // the bytes in memory
  std::string_view memory_;  // what is left of them
  std::size_t piece_size_;
  std::vector<char> packed_buffer_;
  std::vector<char> unpacked_;
  std::string_view raw_;
  std::string_view head_;
  bool is_headed_ = false;
  bool in_member_ = false;
  Unpacker unpacker_;
  std::exception_ptr fault_;
};

ByteSource::ByteSource(const std::filesystem::path& path)
    : reader_(std::make_unique<Reader>(path, OpenRegularFile(path), std::string_view(), kPieceSize)) {}
ByteSource::ByteSource(std::filesystem::path name, std::string_view bytes, std::size_t piece_size)
    : reader_(std::make_unique<Reader>(std::move(name), FileDescriptor(), bytes, piece_size)) {}
ByteSource::ByteSource(ByteSource&&) noexcept = default;
ByteSource::~ByteSource() = default;

std::string_view ByteSource::Next() {
  return reader_->Next();
}
std::string_view ByteSource::Head() {
  return reader_->Head();
}
const std::filesystem::path& ByteSource::path() const {
  return reader_->path_;
}
bool ByteSource::is_packed() const {
  return reader_->is_packed_;
}
std::uint64_t ByteSource::file_size() const {
  return reader_->size_;
}
std::uint64_t ByteSource::bytes_read() const {
  return reader_->read_;
}
std::uint64_t ByteSource::bytes_given() const {
  return reader_->given_;
}

}  // namespace selvane
