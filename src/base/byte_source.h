// The bytes of a file that may be packed, read in pieces: memory does not grow with the file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <string_view>

namespace selvane {

// A file's bytes from its beginning, unpacked when it is packed by gzip (told by its content; several packed
// members stand for their contents one after the other). A file that unpacks to more than 64 MiB and more
// than 250 times its size is taken for a bomb.
class ByteSource {
 public:
  static constexpr std::size_t kPieceSize = std::size_t{256} * 1024;

  // Throws FileError when there is no such file, or when it is a folder, a pipe or a device.
  explicit ByteSource(const std::filesystem::path& path);
  // Bytes that are in memory already and live as long as this, under a name for messages. What is given goes
  // by pieces of this size, but for what is unpacked.
  ByteSource(std::filesystem::path name, std::string_view bytes, std::size_t piece_size = kPieceSize);
  ByteSource(ByteSource&&) noexcept;
  ~ByteSource();

  // The next bytes, empty at the end; valid until the next call. What can be unpacked of a damaged file is
  // handed out first. Throws FileError, which names the file, when reading fails, when the packed bytes are
  // damaged or end too early, and for a bomb.
  std::string_view Next();
  // The first bytes, unpacked, up to 256 KiB of them: they are not taken, Next gives them again. To be called
  // before Next; a damaged file gives what can be read and throws at Next.
  std::string_view Head();

  const std::filesystem::path& path() const;
  bool is_packed() const;
  std::uint64_t file_size() const;    // as it stands on the disk
  std::uint64_t bytes_read() const;   // of the file as it stands on the disk, for progress
  std::uint64_t bytes_given() const;  // by Next, unpacked

 private:
  class Reader;
  std::unique_ptr<Reader> reader_;
};

}  // namespace selvane
