#include "itemsets/itemset_file.h"

#include <fmt/format.h>

#include <array>
#include <cstdlib>
#include <system_error>

#include "base/error.h"
#include "base/file.h"

namespace selvane {

namespace {

// Of either extraction; the first is the itemset file.
constexpr std::array<const char*, 3> kWorkingFiles = {"ItemSets.dat", "FC_s.dat", "FPC_s.dat"};

void CheckIsNoWorkingFile(const std::filesystem::path& folder,
                          std::initializer_list<std::filesystem::path> others) {
  for (const std::filesystem::path& other : others) {
    for (const char* const name : kWorkingFiles) {
      if (other.empty() || !IsSamePlace(other, folder / name)) continue;
      throw InputError(fmt::format(
          "{}: every extraction makes a file of this name, and removes it in the end; move or name the file "
          "elsewhere",
          other.string()));
    }
  }
}

}  // namespace

void AppendRecord(std::span<const std::uint32_t> items, std::uint32_t support_count, std::string& bytes) {
  AppendCount(static_cast<std::uint32_t>(items.size()), bytes);
  AppendValues(items, bytes);
  AppendValues({&support_count, 1}, bytes);
}

EncodedRecord TakeRecord(std::string_view& bytes) {
  const char* const begin = bytes.data();
  const std::optional<std::uint32_t> count = TakeCount(bytes);
  // The support count stands behind the items. Division, as a damaged count times four might overflow.
  if (!count || bytes.size() / 4 < std::size_t{*count} + 1) {
    throw FileError("the working file of itemsets is damaged; extract again, and see whether the disk is");
  }
  EncodedRecord record;
  record.item_bytes = bytes.substr(0, std::size_t{*count} * 4);
  bytes.remove_prefix(record.item_bytes.size());
  record.support_count = ValueOf(bytes);
  bytes.remove_prefix(4);
  record.bytes = {begin, static_cast<std::size_t>(bytes.data() - begin)};
  return record;
}

void ItemsetFile::OpenForWriting(const std::filesystem::path& path, const std::filesystem::path& shown) {
  Close();
  writer_.emplace(path, shown);
}

void ItemsetFile::OpenForReading(const std::filesystem::path& path) {
  Close();
  reader_.emplace(path);
}

void ItemsetFile::ReadEncoded(std::string& records) {
  if (!reader_) throw FileError("the itemset file is not open for reading");
  reader_->ReadEncoded(records);
}

void ItemsetFile::Write(std::span<const std::uint32_t> items, std::uint32_t support_count) {
  encoded_.clear();
  AppendRecord(items, support_count, encoded_);
  WriteEncoded(encoded_);
}

void ItemsetFile::WriteEncoded(std::string_view records) {
  if (!writer_) throw FileError("the itemset file is not open for writing");
  writer_->WriteEncoded(records);
}

void ItemsetFile::ReadNext(ItemsetRecord& record) {
  if (!reader_) throw FileError("the itemset file is not open for reading");
  reader_->ReadValues(reader_->ReadCount(), record.items);
  record.support_count = reader_->ReadValue();
}

void ItemsetFile::Seek(std::uint64_t position) {
  if (!reader_) throw FileError("the itemset file is not open for reading");
  reader_->Seek(position);
}

void ItemsetFile::Close() {
  reader_.reset();
  if (!writer_) return;
  // Closed in any case: when writing out fails, the file is no longer open either.
  std::optional<ArchiveWriter> writer = std::move(writer_);
  writer_.reset();
  writer->Close();
}

std::filesystem::path ItemsetFileHold::DefaultFolder() {
  // A state folder that is not absolute counts as none.
  const char* const state = std::getenv("XDG_STATE_HOME");
  if (state != nullptr && state[0] == '/') return std::filesystem::path(state) / "selvane";
  const char* const home = std::getenv("HOME");
  if (home != nullptr && home[0] != '\0') return std::filesystem::path(home) / ".local/state/selvane";
  throw FileError(
      "there is no folder for the itemset file; set XDG_STATE_HOME or HOME to a folder of your own");
}

ItemsetFileHold::ItemsetFileHold(const std::filesystem::path& folder,
                                 std::initializer_list<std::filesystem::path> others)
    : path_(folder / kWorkingFiles.front()) {
  CheckIsNoWorkingFile(folder, others);
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (error) {
    throw FileError(
        fmt::format("{}: cannot make the folder for the itemset file: {}; set XDG_STATE_HOME to a "
                    "folder of your own",
                    folder.string(), error.message()));
  }
  lock_.emplace(folder / "ItemSets.lock");
  if (lock_->IsHeld()) {
    // What a run that was killed has left behind.
    for (const char* const name : kWorkingFiles) {
      std::filesystem::remove(folder / name, error);
    }
    return;
  }
  path_.clear();  // another run's file is not ours to remove
  throw FileError("another extraction is going on; wait until it has ended, then try again");
}

void ItemsetFileHold::Remove() noexcept {
  std::error_code ignored;
  if (!path_.empty()) std::filesystem::remove(path_, ignored);
}

}  // namespace selvane
