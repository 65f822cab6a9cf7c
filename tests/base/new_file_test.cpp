#include "base/new_file.h"

#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <memory>

#include "base/error.h"
#include "support/test_support.h"

namespace selvane::tests {

namespace fs = std::filesystem;

class NewFileTest : public FolderTest {
 protected:
  // Makes the file whole, but for its name.
  static std::unique_ptr<NewFile> Made(const fs::path& path, std::string_view text,
                                       ExistingFile existing = ExistingFile::kReplace) {
    auto file = std::make_unique<NewFile>(path, existing);
    WriteText(file->temporary(), text);
    return file;
  }
  static mode_t ModeOf(const char* path) {
    struct stat status {};
    ::stat(path, &status);
    return status.st_mode & 0777U;
  }
};

TEST_F(NewFileTest, ReplacesWhatItMayAndKeepsItsPermissions) {
  WriteText("secret", "old");
  fs::permissions("secret", fs::perms{0660});  // more than the umask leaves
  fs::create_symlink("secret", "link");
  Made("link", "new")->Commit();
  EXPECT_EQ(ReadFile("secret"), "new");
  EXPECT_EQ(ModeOf("secret"), 0660U);
  EXPECT_TRUE(fs::is_symlink("link"));
  Made("other", "1")->Commit();
  WriteText("plain", "2");
  EXPECT_EQ(ModeOf("other"), ModeOf("plain"));
  fs::remove("plain");
  EXPECT_EQ(FileNames("."), (std::vector<std::string>{"link", "other", "secret"}));

  WriteText("protected", "old");
  fs::permissions("protected", fs::perms::owner_read);
  ASSERT_EQ(::mkfifo("pipe", 0600), 0);
  fs::create_directory("folder");
  const std::pair<const char*, const char*> refused[] = {{"protected", "write-protected"},
                                                         {"pipe", "a device or a pipe"},
                                                         {"folder", "this is a folder"},
                                                         {"no/file", "cannot create"},
                                                         {"", "No file was named"}};
  for (const auto& [path, reason] : refused) {
    ExpectFault<FileError>(reason, [name = path] { NewFile(name, ExistingFile::kReplace); });
  }
  // A link that leads nowhere takes the name too.
  fs::create_symlink("nowhere", "dangling");
  for (const char* const path : {"secret", "dangling"}) {
    ExpectFault<FileError>("is there already", [name = path] { NewFile(name, ExistingFile::kRefuse); });
  }
  EXPECT_EQ(FileNames(".").size(), 7U);
}

TEST_F(NewFileTest, ANameThatIsTakenMeanwhileIsLeftAsItIs) {
  const auto file = Made("name", "mine", ExistingFile::kRefuse);
  WriteText("name", "theirs");
  EXPECT_THROW(file->Commit(), FileError);
  EXPECT_EQ(ReadFile("name"), "theirs");
}

TEST_F(NewFileTest, ASetIsNamedWholeOrNotAtAll) {
  for (const bool last_is_taken : {false, true}) {
    WriteText("a", "old a");
    fs::remove("b");
    fs::remove("c");
    const auto a = Made("a", "new a");
    const auto b = Made("b", "new b", ExistingFile::kRefuse);
    const auto c = Made("c", "new c", ExistingFile::kRefuse);
    NewFile* const set[] = {a.get(), b.get(), c.get()};
    if (!last_is_taken) {
      CommitTogether(set);
      EXPECT_EQ(ReadFile("a") + ReadFile("b") + ReadFile("c"), "new anew bnew c");
    } else {
      // Its temporary file is gone, which shows only when it is to be named.
      fs::remove(c->temporary());
      EXPECT_THROW(CommitTogether(set), FileError);
      EXPECT_EQ(ReadFile("a"), "old a");
      EXPECT_FALSE(fs::exists("b") || fs::exists("c"));
    }
  }
  EXPECT_EQ(FileNames("."), std::vector<std::string>{"a"});
}

TEST_F(NewFileTest, WhatAKilledProcessLeftIsRemovedAndWhatALivingOneMakesStays) {
  const auto living = Made("file", "in the making");
  const pid_t child = ::fork();
  if (child == 0) {
    const NewFile dying("file", ExistingFile::kReplace);
    WriteText(dying.temporary().string() + "-journal", "of the engine");
    ::_exit(0);  // without running any destructor
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  const std::vector<std::string> of_users = {"file.1-0123456789abcdef.part.txt",
                                             "file.1-0123456789abcdef0.part", "file.1.part", "file.part"};
  for (const std::string& name : of_users) WriteText(name, "not ours");
  EXPECT_EQ(FileNames(".").size(), 3 + of_users.size());
  { const NewFile next("file", ExistingFile::kReplace); }
  for (const std::string& name : of_users) EXPECT_TRUE(fs::remove(name)) << name;
  EXPECT_EQ(FileNames("."), std::vector<std::string>{living->temporary().filename().string()});
}

TEST_F(NewFileTest, OneRunAtATimeMakesAFile) {
  {
    const OutputLock first("file");
    ExpectFault<FileError>("another run", [] { OutputLock("file"); });
  }
  EXPECT_TRUE(FileNames(".").empty());
  WriteText("file.lock", "a user's");
  { const OutputLock second("file"); }
  EXPECT_EQ(ReadFile("file.lock"), "a user's");
}

}  // namespace selvane::tests
