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

TEST_F(FileTest, BuffersKeepEveryByte) {
  std::string text;
  for (int i = 0; i < 200000; ++i) text += static_cast<char>(i * 7 + i / 256);
  OutputFile out("f");
  for (std::size_t at = 0, part = 1; at < text.size(); at += part, part = part * 3 % 70001) {
    part = std::min(part, text.size() - at);
    out.Write(std::string_view(text).substr(at, part));
  }
  out.Close();
  EXPECT_EQ(ReadFile("f"), text);
  InputFile in("f");
  std::string back(text.size(), ' ');
  EXPECT_TRUE(in.Read(std::span(back).first(100001)));
  EXPECT_TRUE(in.Read(std::span(back).subspan(100001)));
  EXPECT_EQ(back, text);
  EXPECT_TRUE(in.AtEnd());
  EXPECT_FALSE(in.Read(std::span(back).first(1)));
}

TEST_F(FileTest, LockHasOneHolder) {
  const FileLock first("lock");
  EXPECT_TRUE(first.IsHeld());
  EXPECT_FALSE(FileLock("lock").IsHeld());
}

}  // namespace selvane::tests
