// New files that get their names only when they are complete: one alone, or several as one thing.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "base/file.h"

namespace selvane {

// What a new file is to do where one of its name is there already.
enum class ExistingFile { kRefuse, kReplace };

// True when the name is taken, if only by a link that leads nowhere. Throws FileError for what can be no
// name.
bool IsTaken(const std::filesystem::path& path);
// What is said then, behind the name.
inline constexpr std::string_view kTakenReason =
    "the file is there already and was left as it is; choose another name, or move it away";
// Throws FileError when the name is taken and the file there is not to be replaced.
void CheckIsFree(const std::filesystem::path& path, ExistingFile existing);

// A file in the making, under a temporary name in the folder of the file that it becomes: NAME, the process,
// a random part, ".part". It is held by a lock as long as this lives and removed unless it is committed. What
// a process that was killed has left is removed by the next that makes the same file.
//
// A link is followed: its target is what is replaced. What is replaced keeps its permissions. Only plain
// files are replaced, and none that is write-protected.
class NewFile {
 public:
  // Makes the empty temporary file. Throws FileError when the path is empty or its folder is not there, when
  // a file of its name is not to be replaced, or may not be.
  NewFile(const std::filesystem::path& path, ExistingFile existing);
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile();

  // The name that the file gets, with links followed.
  const std::filesystem::path& path() const { return path_; }
  // Where to write until the commit.
  const std::filesystem::path& temporary() const { return temporary_; }
  // What has been written there. Throws FileError.
  std::string Content() const;
  // Gives the complete, closed file its name: the disk has it before it is named, and its name when this
  // returns. Throws FileError.
  void Commit();

 private:
  friend void CommitTogether(std::span<NewFile* const> files, const std::function<void()>& last_step);

  // Behind this the destructor runs, whatever fails.
  explicit NewFile(ExistingFile existing) : existing_(existing) {}
  void MakeTemporary(const std::filesystem::path& name, mode_t mode);
  void RemoveTemporary() noexcept;

  // The steps of a commit. Up to Name nothing is changed but the temporary file.
  void Prepare();
  void Name();
  void TakeNameBack() noexcept;
  void Forget() noexcept;
  void CheckTarget() const;

  std::filesystem::path path_;
  std::filesystem::path temporary_;
  // What a database engine may leave beside it; made beforehand, as removing must not need memory.
  std::vector<std::filesystem::path> side_files_;
  ExistingFile existing_;
  FileDescriptor file_;
  enum class State { kUnnamed, kNamed, kExchanged, kFinal } state_ = State::kUnnamed;
};

// Gives several complete, closed files their names in this order, as one: when one cannot be named, those
// before it get what they replaced back. A crash meanwhile can leave names of both sets, which their readers
// must be able to tell. Throws FileError.
//
// `last_step`, where there is one, runs when all files are on the disk and only names are left to give: for
// what is to be kept with them and cannot be taken back. When it throws, nothing is named.
void CommitTogether(std::span<NewFile* const> files, const std::function<void()>& last_step = {});

}  // namespace selvane
