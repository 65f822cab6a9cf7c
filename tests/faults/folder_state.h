// What is in a folder, as those see it who read its files.
#pragma once

#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace selvane::faults {

// A new, empty folder, removed with this.
class ScratchFolder {
 public:
  ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder();
  const std::filesystem::path& path() const { return path_; }

 private:
  std::filesystem::path path_;
};

// The files of a folder and of those in it. The folder must stay as long as states are compared.
class FolderState {
 public:
  // The hash of each by its name in the folder. Of a file in the making only that it is there, without the
  // random part of its name: nobody reads it. The files that extractions leave empty are left out.
  using Files = std::map<std::string, std::string>;
  using Names = std::vector<std::string>;

  FolderState() = default;
  explicit FolderState(std::filesystem::path folder);

  const Files& files() const { return files_; }
  // Whether a file is the same in both: its bytes, or all rows of a database once its journal is dealt with.
  bool HasSame(const FolderState& other, const std::string& name) const;
  // Whether all files of `state` are here, and none of those that only `other` has; one may be left out.
  bool Is(const FolderState& state, const FolderState& other, std::string_view left_out = "") const;
  Names NamesBeyond(const FolderState& a, const FolderState& b) const;
  // Names of files here that the other has with the same bytes.
  Names NamesSharedWith(const FolderState& other) const;

 private:
  std::filesystem::path folder_;
  Files files_;
};

}  // namespace selvane::faults
