#include "data/object_archive.h"

#include "support/test_support.h"

namespace selvane::tests {

class ObjectArchiveTest : public FolderTest {};

TEST_F(ObjectArchiveTest, TextsOfEveryLengthComeBack) {
  const std::vector<std::pair<std::size_t, std::string>> lengths = {
      {0, std::string("\0", 1)},
      {254, "\xFE"},
      {255, std::string("\xFF\xFF\0", 3)},
      {65533, "\xFF\xFD\xFF"},
      {65534, std::string("\xFF\xFF\xFF\xFE\xFF\0\0", 7)},
  };
  for (const auto& [length, prefix] : lengths) {
    const std::string text(length, 'x');
    ArchiveWriter archive("a.dat");
    archive.WriteText(text);
    const auto count = static_cast<std::uint32_t>(length + 1);
    archive.WriteCount(count);
    archive.Close();
    // Two bytes for a count below 65,535, six from there on; the same as another way of writing it.
    std::string encoded;
    AppendCount(count, encoded);
    EXPECT_EQ(encoded.size(), count < 65535 ? 2U : 6U);
    EXPECT_TRUE(ReadFile("a.dat").ends_with(encoded));
    std::string_view rest = encoded;
    EXPECT_EQ(TakeCount(rest), count);
    EXPECT_EQ(ReadFile("a.dat").substr(0, prefix.size()), prefix);
    ArchiveReader reader("a.dat");
    EXPECT_EQ(reader.ReadText(), text);
    EXPECT_EQ(reader.ReadCount(), count);
    EXPECT_TRUE(reader.AtEnd());
  }
}

TEST_F(ObjectArchiveTest, DamagedCountsAreErrors) {
  // A count that claims gigabytes is found out by the end of the file, not by running out of memory.
  WriteText("big.dat", "\xFF\xFF\xFF\xFF\xFF\xFF");
  ArchiveReader reader("big.dat");
  std::vector<std::uint32_t> values;
  EXPECT_THROW(reader.ReadValues(reader.ReadCount(), values), FileError);
}

}  // namespace selvane::tests
