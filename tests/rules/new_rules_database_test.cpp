#include "rules/new_rules_database.h"

#include "data/database_error.h"
#include "support/test_support.h"

namespace selvane::tests {

namespace fs = std::filesystem;

class NewRulesDatabaseTest : public FolderTest {
 protected:
  static RulesInfo InfoOf(const char* table) {
    return {.term_table = table,
            .rows = "4",
            .min_support = "0.5",
            .min_confidence = "0.5",
            .taxonomies = {},
            .first_map = MapOfItems({}),
            .second_map = MapOfItems({})};
  }
  static void Make(const char* path, const std::optional<RulesInfo>& info,
                   ExistingFile existing = ExistingFile::kReplace) {
    NewRulesDatabase made(path, existing, "Extracted");
    made.Fill([](RulesStore& store) { store.InsertRule({{1}, {2}, 0.5F, 0.5F, 0.5F, 0.5F, 1, 1}); });
    made.Commit(info);
  }
  static std::string TableOf(const char* path) {
    RulesStore store;
    store.OpenRulesDatabase(path);
    return ReadInfoOf(store).term_table;
  }
};

TEST_F(NewRulesDatabaseTest, BothFilesAppearTogetherAndKnowEachOther) {
  {
    NewRulesDatabase stopped("rules.mdb", ExistingFile::kReplace, "Extracted");
    EXPECT_EQ(FileNames(".").size(), 2U);  // its temporary file and its lock
  }
  EXPECT_TRUE(FileNames(".").empty());
  Make("rules.mdb", InfoOf("first"));
  EXPECT_EQ(FileNames("."), (Texts{"Inforules.dat", "rules.mdb"}));
  EXPECT_EQ(TableOf("rules.mdb"), "first");
  for (const char* name : {"rules.mdb", "Inforules.dat"}) fs::copy_file(name, std::string("old_") + name);
  Make("rules.mdb", InfoOf("second"));
  EXPECT_EQ(TableOf("rules.mdb"), "second");
  // As a crash between the two names could leave them.
  fs::rename("old_Inforules.dat", "Inforules.dat");
  ExpectFault<InputError>("rules.mdb and Inforules.dat do not belong together", [] { TableOf("rules.mdb"); });
  fs::rename("old_rules.mdb", "rules.mdb");
  EXPECT_EQ(TableOf("rules.mdb"), "first");
  // Without information there is no file, and none of another run is taken for it.
  fs::copy_file("Inforules.dat", "kept");
  Make("rules.mdb", std::nullopt);
  EXPECT_EQ(FileNames("."), (Texts{"kept", "rules.mdb"}));
  fs::rename("kept", "Inforules.dat");
  ExpectFault<InputError>("do not belong together", [] { TableOf("rules.mdb"); });
}

TEST_F(NewRulesDatabaseTest, TheInformationOfAnotherDatabaseIsNeverTouched) {
  Make("rules.mdb", InfoOf("mine"));
  for (const auto& info : {std::optional(InfoOf("other")), std::optional<RulesInfo>()}) {
    ExpectFault<InputError>("may belong to another rules database", [&] { Make("rules.db", info); });
  }
  EXPECT_EQ(FileNames("."), (Texts{"Inforules.dat", "rules.mdb"}));
  EXPECT_EQ(TableOf("rules.mdb"), "mine");
  fs::copy_file("rules.mdb", "rules.db");
  Make("rules.mdb", InfoOf("again"));  // its own, as its note says
  EXPECT_EQ(TableOf("rules.mdb"), "again");
}

TEST_F(NewRulesDatabaseTest, AUsersTableMayBeginLikeOneOfOurs) {
  Make("rules.mdb", std::nullopt);
  RulesStore store;
  store.OpenRulesDatabase("rules.mdb");
  store.CreateRulesTable("sys_rules");
  EXPECT_EQ(store.ListRulesTables(), (Texts{"Extracted", "sys_rules"}));
}

}  // namespace selvane::tests
