#include "base/file.h"

#include "support/test_support.h"

namespace selvane::tests {

class FileTest : public FolderTest {};

TEST_F(FileTest, NewFileAppearsOnlyWhenComplete) {
  {
    NewFile file("out", ExistingFile::kRefuse);
    WriteText(file.temporary(), "half");
    EXPECT_FALSE(std::filesystem::exists("out"));
  }
  EXPECT_TRUE(FileNames(".").empty());
  NewFile file("out", ExistingFile::kRefuse);
  WriteText(file.temporary(), "whole");
  file.Commit();
  EXPECT_EQ(FileNames("."), std::vector<std::string>{"out"});
  EXPECT_EQ(ReadFile("out"), "whole");
}

TEST_F(FileTest, ExistingFileSurvives) {
  WriteText("out", "mine");
  EXPECT_THROW(NewFile("out", ExistingFile::kRefuse), FileError);
  {
    NewFile replacing("out", ExistingFile::kReplace);
    WriteText(replacing.temporary(), "half");
  }
  EXPECT_EQ(ReadFile("out"), "mine");
  // Somebody makes the file while ours is being written.
  NewFile late("late", ExistingFile::kRefuse);
  WriteText(late.temporary(), "ours");
  WriteText("late", "theirs");
  EXPECT_THROW(late.Commit(), FileError);
  EXPECT_EQ(ReadFile("late"), "theirs");
}

}  // namespace selvane::tests
