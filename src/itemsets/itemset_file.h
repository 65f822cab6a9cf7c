// The binary file through which frequent itemsets go from the miner to rule generation
// (docs/formats/itemset-file.md).
#pragma once

#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "data/object_archive.h"

namespace selvane {

// One frequent itemset: its items in canonical order and the number of rows that hold it.
struct ItemsetRecord {
  std::vector<std::uint32_t> items;
  std::uint32_t support_count = 0;
};

// A record as it stands in a file.
struct EncodedRecord {
  std::string_view bytes;
  std::string_view item_bytes;
  std::uint32_t support_count = 0;

  std::size_t size() const { return item_bytes.size() / 4; }
  void CopyItems(std::vector<std::uint32_t>& items) const { CopyValues(item_bytes, items); }
};
// Appends a record to `bytes`; takes the first record from `bytes`, or throws FileError when it is not whole.
void AppendRecord(std::span<const std::uint32_t> items, std::uint32_t support_count, std::string& bytes);
EncodedRecord TakeRecord(std::string_view& bytes);

// A plain sequence of records, opened either for writing, from its beginning, or for reading. Every operation
// throws FileError when it fails.
class ItemsetFile {
 public:
  void OpenForWriting(const std::filesystem::path& path) { OpenForWriting(path, path); }
  // With the name that errors tell of.
  void OpenForWriting(const std::filesystem::path& path, const std::filesystem::path& shown);
  void OpenForReading(const std::filesystem::path& path);
  bool IsOpen() const { return writer_.has_value() || reader_.has_value(); }

  void Write(std::span<const std::uint32_t> items, std::uint32_t support_count);
  void WriteEncoded(std::string_view records);
  // Fails also where the file ends, so ask for no more records than there are.
  void ReadNext(ItemsetRecord& record);
  // Where the next record will be written, and where to read next: a number of bytes.
  std::uint64_t Position() const { return writer_ ? writer_->position() : 0; }
  void Seek(std::uint64_t position);
  // Replaces `records` by as many bytes of the file as it has.
  void ReadEncoded(std::string& records);
  // What was written is complete only when this returns.
  void Close();

 private:
  std::optional<ArchiveWriter> writer_;
  std::optional<ArchiveReader> reader_;
  std::string encoded_;
};

// The itemset file of all runs: one place for a user, held under a lock for the length of a run and removed
// at its end, however that ends.
class ItemsetFileHold {
 public:
  // `$XDG_STATE_HOME/selvane`, by default `~/.local/state/selvane`. Throws FileError when there is neither.
  static std::filesystem::path DefaultFolder();

  // Makes the folder, takes the lock and removes what a killed run has left there. Throws FileError when
  // another run holds the lock, and InputError when one of `others`, the files of the run, is one of those
  // that runs make and remove there.
  explicit ItemsetFileHold(const std::filesystem::path& folder,
                           std::initializer_list<std::filesystem::path> others = {});
  ItemsetFileHold(const ItemsetFileHold&) = delete;
  ItemsetFileHold& operator=(const ItemsetFileHold&) = delete;
  ~ItemsetFileHold() { Remove(); }

  const std::filesystem::path& path() const { return path_; }
  void Remove() noexcept;

 private:
  std::filesystem::path path_;
  std::optional<FileLock> lock_;
};

}  // namespace selvane
