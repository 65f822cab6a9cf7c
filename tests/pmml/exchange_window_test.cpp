#include "pmml/exchange_window.h"

#include "support/window_test.h"

namespace selvane::tests {

class ExchangeWindowTest : public WindowTest {
 protected:
  ExchangeWindowTest() {
    MakeRules();
    Cli("pmml export rules.mdb --taxonomy tax.mdb --output plain.xml");
    window.show();
  }
  ~ExchangeWindowTest() override { window.close(); }
  void Press(const char* text) { Click(Button(window, text)); }
  QString Result(const char* name) { return window.findChild<QLineEdit*>(name)->text(); }
  ExchangeWindow window{context};
};

TEST_F(ExchangeWindowTest, ExportsWhatTheCommandLineExports) {
  EXPECT_EQ(EnabledButtons(window), "Select &XML file, Select &Database, &Close");
  dialogs.Expect("open: Selecting rules database : ", {"rules.mdb"});
  Press("Select &Database");
  dialogs.Expect("warning: Importing/Exporting rules: No table selected");
  Press("&Export");
  ClickRow(*window.findChild<QListWidget*>(), 0);
  const auto export_to = [this](const ScriptedDialogs::Paths& output) {
    dialogs.Expect("save, asking: Saving exported rules :", output);
    if (!output.empty() && fs::exists(output[0].string() + ".xml")) {
      dialogs.Expect("ask: Importing/Exporting rules: *", {"yes"});
    }
    dialogs.Expect("open: Selecting taxonomies database :", {"tax.mdb"});
    Press("&Export");
    EXPECT_EQ(StatusOf(window), "Completed!!");
  };
  export_to({"made.xml"});
  export_to({"made.xml"});
  export_to({});
  EXPECT_EQ(ReadFile("made.xml.xml"), ReadFile("plain.xml"));
  EXPECT_EQ(ReadFile("XmlRules.xml"), ReadFile("plain.xml"));
  dialogs.Expect("save, asking: Saving exported rules :", {"made.xml"});
  dialogs.Expect("ask: Importing/Exporting rules: *");  // no
  Press("&Export");
  dialogs.Expect("save, asking: Saving exported rules :", {"head"});
  dialogs.Expect("open: Selecting taxonomies database :");
  Press("&Export");
  EXPECT_FALSE(window.isVisible());
  const std::string head = ReadFile("head.xml");
  EXPECT_EQ(head, ReadFile("plain.xml").substr(0, head.size()));
  EXPECT_TRUE(head.ends_with("numberOfRules=\"127\"/>"));
}

TEST_F(ExchangeWindowTest, ImportsTheHeadOfAFile) {
  const auto begin_import = [this](const ScriptedDialogs::Paths& output) {
    dialogs.Expect("open: Selecting xml rules file : ", {"plain.xml"});
    Press("Select &XML file");
    EXPECT_TRUE(Button(window, "&Import").isEnabled());
    dialogs.Expect(kAskTaxonomy, {"tax.mdb"});
    dialogs.Expect("save, asking: Saving imported rules :", output);
  };
  for (const char* const output : {"imported", "RulesDB"}) {  // which is its name when none was given
    begin_import(output == std::string("imported") ? ScriptedDialogs::Paths{"imported.mdb"}
                                                   : ScriptedDialogs::Paths{});
    Press("&Import");
    EXPECT_FALSE(Button(window, "&Import").isEnabled());
    EXPECT_EQ(StatusOf(window), "Completed!!");
    EXPECT_EQ(Result("Rules Database ") + Result("Rules Table in Database") + Result("Imported Rules  "),
              output + QString("Extracted127"));
  }
  // Nobody was asked whether to replace it.
  const auto made = fs::last_write_time("RulesDB.mdb");
  begin_import({});
  dialogs.Expect("error: Kovril: RulesDB.mdb\nthe file is there already*");
  Press("&Import");
  EXPECT_EQ(fs::last_write_time("RulesDB.mdb"), made);
  EXPECT_TRUE(Rows("imported.mdb", "SELECT * FROM Extracted").empty());
  WriteText("other.xml", "something else");
  dialogs.Expect("open: Selecting xml rules file : ", {"other.xml"});
  Press("Select &XML file");
  dialogs.Expect("error: Kovril: other.xml: the file holds no association model*");
  Press("&Import");
  dialogs.Expect("open: Selecting xml rules file : ");
  Press("Select &XML file");
  EXPECT_FALSE(window.isVisible());
}

}  // namespace selvane::tests
