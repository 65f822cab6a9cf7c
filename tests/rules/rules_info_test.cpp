#include "rules/rules_info.h"

#include "support/test_support.h"

namespace selvane::tests {

using Items = std::vector<std::int32_t>;

class RulesInfoTest : public FolderTest {};

TEST_F(RulesInfoTest, BothWaysOfWritingGiveTheSameFile) {
  const RulesInfo info{
      "T", "4", "0,5", "", {"Diseases", "Drugs"}, MapOfItems(Items{7, 3}), MapOfItems(Items{99999})};
  EXPECT_EQ(ItemsOfMap(info.first_map), (Items{3, 7}));
  fs::create_directory("sub.folder");
  NewFile file(RulesInfoPath("sub.folder/my.run.mdb"), ExistingFile::kRefuse);
  WriteRulesInfo(info, file);
  file.Commit();
  EXPECT_EQ(ReadRulesInfo("sub.folder/my.run.mdb"), info);
  WriteRulesInfo(Items{3, 7}, Items{99999}, Texts{"T", "4", "0,5", "", "Diseases", "Drugs"}, "Infoplain");
  EXPECT_EQ(ReadFile("sub.folder/Infomy.run.dat"), ReadFile("Infoplain.dat"));
  WriteRulesInfo(Items{}, Items{}, Texts{"T", "4"}, "Infoshort");
  const RulesInfo less = ReadRulesInfo("short.mdb");
  EXPECT_EQ(less, (RulesInfo{"T", "4", "", "", {}, MapOfItems({}), MapOfItems({})}));
  EXPECT_EQ(MinimumSupportOf(less), 0);
  EXPECT_FLOAT_EQ(MinimumSupportOf(info), 0.5);
}

TEST_F(RulesInfoTest, WritesTheseBytes) {
  WriteRulesInfo(Items{0, 3}, Items{99999}, Texts{"T", "Sj\xC3\xB6gren"}, "InfoRun1");
  EXPECT_EQ(FileNames("."), Texts{"InfoRun1.dat"});
  const std::string count("\xFF\xFF\xA0\x86\x01\0", 6);
  std::string first(400000, '\0');
  std::string second = first;
  first[0] = first[12] = second[399996] = 10;
  const std::string texts = std::string("\x02\0\x01T", 4) +
                            "\x07"
                            "Sj\xF6gren";
  EXPECT_EQ(ReadFile("InfoRun1.dat"), count + first + count + second + texts);
}

TEST_F(RulesInfoTest, FaultsAreToldApart) {
  for (const Items& items : {Items{100000}, Items{-1}}) {
    EXPECT_THROW(WriteRulesInfo(items, Items{}, Texts{}, "Info"), InputError);
    EXPECT_THROW(WriteRulesInfo(Items{}, items, Texts{}, "Info"), InputError);
  }
  EXPECT_TRUE(FileNames(".").empty());
  EXPECT_THROW(ReadRulesInfo("missing.mdb"), FileError);
  for (const char* name : {"rules.MDB", "rules", "rules.db"})
    EXPECT_THROW(ReadRulesInfo(name), EndOfProgram) << name;
  WriteRulesInfo(Items{1}, Items{2}, Texts{"abc"}, "Infor");
  const std::string whole = ReadFile("Infor.dat");
  for (const std::size_t length :
       {0UL, 5UL, 399999UL, 400006UL, 800012UL, 800013UL, 800014UL, whole.size() - 1}) {
    WriteText("Infor.dat", std::string_view(whole).substr(0, length));
    EXPECT_THROW(ReadRulesInfo("r.mdb"), FileError) << length;
  }
}

}  // namespace selvane::tests
