// New files that get their names only when they are complete.
#pragma once

#include <filesystem>
#include <string_view>

namespace selvane {

// What a new file is to do where one of its name is there already.
enum class ExistingFile { kRefuse, kReplace };

// True when the name is taken, if only by a link that leads nowhere.
bool IsTaken(const std::filesystem::path& path);
// What is said then, behind the name.
inline constexpr std::string_view kTakenReason =
    "the file is there already and was left as it is; choose another name, or move it away";
// Throws FileError when the name is taken and the file there is not to be replaced.
void CheckIsFree(const std::filesystem::path& path, ExistingFile existing);

// A new file that appears under its name only when it is complete: it is made under a temporary name in the
// same folder, and removed unless it is committed.
class NewFile {
 public:
  // Throws FileError when the file is there already and is not to be replaced, or the path is empty.
  NewFile(std::filesystem::path path, ExistingFile existing);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  // Where to write until the commit.
  const std::filesystem::path& temporary() const { return temporary_; }
  // Gives the complete, closed file its name. Throws FileError.
  void Commit();

 private:
  std::filesystem::path path_;
  std::filesystem::path temporary_;
  ExistingFile existing_;
  bool committed_ = false;
};

}  // namespace selvane
