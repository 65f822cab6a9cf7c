#include <expat.h>

#include <memory>
#include <pugixml.hpp>

#include "pmml/pmml11_writer.h"
#include "pmml/pmml44_writer.h"
#include "pmml/pmml_reader.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

constexpr const char* kOddTerm = "Sj\xC3\xB6gren \xE2\x82\xAC & <b>";

class PmmlTest : public FolderTest {
 protected:
  PmmlTest() {
    LoadText(NodeLine(kOddTerm, "C1") + NodeLine("Fever", "C2.5") + NodeLine("Diseases", "C") +
                 NodeLine("Drugs", "D"),
             "tax.mdb");
    store_.CreateRulesDatabase("rules.mdb", "R_1");
    store_.SetTargetTable("R_1");
    store_.SetSourceTable("R_1");
    info_ = {"T", "5", "0,2", "0.5", {"Diseases"}, {0, 0, 3, 0}, {1, 5}};
  }
  void Insert(const std::vector<std::int32_t>& antecedent, const std::vector<std::int32_t>& consequent,
              float pa = 0.4F) {
    const auto size = [](const auto& side) { return static_cast<std::int32_t>(side.size()); };
    store_.InsertRule({antecedent, consequent, 0.2F, 0.5F, pa, 0.6F, size(antecedent), size(consequent)});
  }
  std::string Export11() {
    const TaxonomyStore taxonomy("tax.mdb");
    WritePmml11(
        store_, "R_1", info_, [&taxonomy] { return &taxonomy; }, "a.xml", ExistingFile::kReplace, progress_);
    return ReadFile("a.xml");
  }
  void Export44() {
    WritePmml44(store_, ParametersOf(info_, "R_1"), TaxonomyStore("tax.mdb"), "b.xml", ExistingFile::kReplace,
                FixedClock(), progress_);
  }
  RulesStore store_;
  RulesInfo info_;
  SilentProgress progress_;
};

TEST_F(PmmlTest, WritesThatDocumentByteForByte) {
  Insert({3, 1}, {4});
  EXPECT_EQ(
      Export11(),
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\r\n<PMML version=\"1.1\">\r\n"
      "<Header copyright=\"www.dmg.org\"      description=\"Pmml specifics for generalized association "
      "rules\"/>\r\n"
      "<Application name=\"Selvane_Pudro\"/>\r\n<DataDictionary numberOfFields=\"1\" >\r\n"
      "\t\t<DataField name=\"item\" optype=\"categorical\" />\r\n</DataDictionary>\r\n\n\n"
      "<AssociationModel   modelName=\"R_1\">\n"
      "\t\t<AssocInputStats numberOfTransactions=\"5\" minimumSupport=\"0,2\"  minimumConfidence=\"0.5\" "
      "numberOfItems=\"6\"  numberOfItemsets=\"2\"  numberOfRules=\"1\"/>\n\n"
      "<!-- Mapped value attribute is  pubmed taxonomy  identifier for each item and weight gives kind of "
      "item in "
      "generalized rules extraction-->\n"
      "<AssocItem id=\"0\"  value=\"\"  mappedValue=\"\" weight=\"item\"/>\n"
      "<AssocItem id=\"0\"  value=\"\"  mappedValue=\"\" weight=\"item\"/>\n"
      "<AssocItem id=\"3\"  value=\"\"  mappedValue=\"C2\" weight=\"item\"/>\n"
      "<AssocItem id=\"0\"  value=\"\"  mappedValue=\"\" weight=\"item\"/>\n"
      "<AssocItem id=\"1\"  value=\"Diseases\"  mappedValue=\"C\" weight=\"class\"/>\n"
      "<AssocItem id=\"5\"  value=\"Drugs\"  mappedValue=\"D\" weight=\"class\"/>\n\n\n"
      "<AssocItemset id=\"3-1-\"  support=\"0.4\" numberOfItems=\"2\">\n"
      "\t\t<AssocItemRef itemRef=\"3\"/>\n\t\t<AssocItemRef itemRef=\"1\"/>\n</AssocItemset>\n"
      "<AssocItemset id=\"4-\"  support=\"0.6\" numberOfItems=\"1\">\n"
      "\t\t<AssocItemRef itemRef=\"4\"/>\n</AssocItemset>\n\n\n"
      "<AssocRule  support=\"0.2\"  confidence=\"0.5\"  antecedent=\"3-1-\"  consequent=\"4-\"/>\n"
      "</AssociationModel>\n</PMML>\n");
  info_.first_map = {2};
  EXPECT_NE(Export11().find("value=\"Sj\xF6gren &#8364; & <b>\"  mappedValue=\"C1\""), std::string::npos);
}

// Every element with the elements that may follow each other in it and the attributes that it must have.
TEST_F(PmmlTest, WritesAValidModelOfVersion44) {
  for (int i = 0; i < 3; ++i) Insert({2, 3}, {5});
  Insert({3, 2}, {1});
  store_.InsertRule({{3}, {1}, 0.2F, 0.5F, 0.4F, 0, 1, 1});
  Export44();
  for (const char* line :
       {"<Itemset id=\"1\" support=\"0.4\" numberOfItems=\"2\">\n   <ItemRef itemRef=\"2\"/>",
        "<Itemset id=\"4\" support=\"0.6\" numberOfItems=\"1\">\n   <ItemRef itemRef=\"1\"/>",
        "<Itemset id=\"6\" support=\"0\" numberOfItems=\"1\">\n   <ItemRef itemRef=\"1\"/>",
        "<AssociationRule id=\"4\" antecedent=\"3\" consequent=\"4\" support=\"0.2\" "
        "confidence=\"0.5\" lift=\"0.8333333\"/>",
        "<AssociationRule id=\"5\" antecedent=\"5\" consequent=\"6\" support=\"0.2\" "
        "confidence=\"0.5\"/>"}) {
    EXPECT_NE(ReadFile("b.xml").find(line), std::string::npos) << line;
  }
  const std::map<std::string, std::pair<Texts, Texts>> schema = {
      {"PMML", {{"Header", "DataDictionary", "AssociationModel"}, {"version", "xmlns"}}},
      {"Header", {{"Application", "Timestamp"}, {}}},
      {"Application", {{}, {"name"}}},
      {"Timestamp", {{}, {}}},
      {"DataDictionary", {{"DataField"}, {"numberOfFields"}}},
      {"DataField", {{}, {"name", "optype", "dataType"}}},
      {"AssociationModel",
       {{"MiningSchema", "Item", "Itemset", "AssociationRule"},
        {"functionName", "numberOfTransactions", "minimumSupport", "minimumConfidence", "numberOfItems",
         "numberOfItemsets", "numberOfRules"}}},
      {"MiningSchema", {{"MiningField"}, {}}},
      {"MiningField", {{}, {"name", "usageType"}}},
      {"Item", {{}, {"id", "value"}}},
      {"Itemset", {{"ItemRef"}, {"id", "numberOfItems"}}},
      {"ItemRef", {{}, {"itemRef"}}},
      {"AssociationRule", {{}, {"antecedent", "consequent", "support", "confidence"}}}};
  pugi::xml_document document;
  ASSERT_TRUE(document.load_file("b.xml"));
  std::map<std::string, std::set<std::string>> ids;
  const std::function<void(const pugi::xml_node&)> check = [&](const pugi::xml_node& node) {
    ASSERT_TRUE(schema.contains(node.name())) << node.name();
    const auto& [children, attributes] = schema.at(node.name());
    for (const std::string& name : attributes)
      EXPECT_TRUE(node.attribute(name.c_str())) << node.name() << name;
    const pugi::xml_attribute id = node.attribute("id");
    EXPECT_TRUE(!id || ids[node.name()].insert(id.value()).second) << id.value();
    auto place = children.begin();
    for (const pugi::xml_node& child : node.children()) {
      if (child.type() != pugi::node_element) continue;
      place = std::find(place, children.end(), child.name());
      ASSERT_NE(place, children.end()) << child.name() << " in " << node.name();
      check(child);
    }
  };
  check(document.child("PMML"));
  const pugi::xml_node model = document.child("PMML").child("AssociationModel");
  EXPECT_EQ(model.find_child_by_attribute("Item", "id", "2").attribute("value").value(),
            std::string(kOddTerm));
  EXPECT_EQ(model.attribute("minimumSupport").value(), std::string("0.2"));
  EXPECT_TRUE(ids["Item"].size() == 4 && ids["Itemset"].size() == 6 && ids["AssociationRule"].size() == 5);
}

// Names that break lines, and that XML cannot hold: the files are whole, and ours are read back.
TEST_F(PmmlTest, HostileNamesGiveWellFormedFilesThatComeBack) {
  {
    Database names = Database::Open("tax.mdb", OpenMode::kWritable);
    int node = 0;
    for (const char* const name : {"a\tb", "a\nb\r", "\xEF\xBF\xBF\x1B'", "\xFF|\xEF\xBF\xBE", "\xC4\x80"})
      names.Execute(
          fmt::format("UPDATE Source SET Canonical='{}' WHERE Index='{}'", WithoutQuotes(name), ++node));
  }
  info_ = {"T", "5", "0.2", "0.5", {}, {1, 2, 3, 4, 5}, {}};
  Insert({1, 2}, {3, 4});
  Insert({5}, {2});
  Export11();
  Export44();
  for (const char* const file : {"a.xml", "b.xml"}) {
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                         XML_ParserFree);
    const std::string text = ReadFile(file);
    EXPECT_EQ(XML_Parse(parser.get(), text.data(), static_cast<int>(text.size()), 1), XML_STATUS_OK) << file;
    const PmmlFile model(file);
    EXPECT_EQ(model.ReadHead(progress_).declared_rules, 2);
    EXPECT_EQ(model.ReadRules(TaxonomyStore("tax.mdb"), progress_).at(0).consequent, (std::vector{3, 4}));
  }
  EXPECT_NE(ReadFile("a.xml").find("value=\"a&#10;b&#13;\""), std::string::npos);
  EXPECT_NE(ReadFile("b.xml").find("value=\"a&#9;b\""), std::string::npos);
}

TEST_F(PmmlTest, RulesComeBackAsTheyWentOut) {
  std::mt19937 random(3);
  const auto side = [&random] {
    std::vector<std::int32_t> items(1 + random() % 3);
    for (std::int32_t& item : items) item = static_cast<std::int32_t>(1 + random() % 5);
    return items;
  };
  for (int i = 0; i < 50; ++i) Insert(side(), side());
  info_.second_map = {1};
  Export11();
  Export44();
  store_.Close();
  const Texts rows = Rows("rules.mdb", "SELECT * FROM R_1");
  for (const std::string name : {"a", "b"}) {
    const PmmlFile file(name + ".xml");
    const PmmlHead head = file.ReadHead(progress_);
    EXPECT_EQ(head.parameters.name + head.parameters.transactions, "R_15");
    EXPECT_EQ(head.taxonomies.at(0) + head.taxonomy_codes.at(0) + std::to_string(head.declared_rules),
              "DiseasesC50");
    const std::vector<Rule> rules = file.ReadRules(TaxonomyStore("tax.mdb"), progress_);
    ImportRules(head, &rules, name + ".mdb", ExistingFile::kRefuse, progress_);
    EXPECT_EQ(Rows(name + ".mdb", "SELECT * FROM R_1"), rows);
    EXPECT_EQ(ReadRulesInfo(name + ".mdb").rows, "5");
    ImportRules(head, nullptr, name + "_empty.mdb", ExistingFile::kRefuse, progress_);
    EXPECT_TRUE(Rows(name + "_empty.mdb", "SELECT * FROM R_1").empty());
  }
}

TEST_F(PmmlTest, ItemsAreFoundByNameAndPositionInAnotherTaxonomy) {
  const auto item = [](const char* id, const char* value, const char* code) {
    return fmt::format("<Item id=\"{}\" value=\"{}\" mappedValue=\"{}\"/>", id, value, code);
  };
  // The items x and y are to be the nodes at these positions, or this is to be wrong with them.
  const auto import = [this](const std::string& items, const char* x, const char* y,
                             std::string_view expected) {
    WriteText("m.xml",
              fmt::format(R"(<PMML version="4.4"><AssociationModel>{}<Itemset id="1"><ItemRef itemRef="{}"/>
        </Itemset><Itemset id="2"><ItemRef itemRef="{}"/></Itemset><AssociationRule antecedent="1"
        consequent="2" support="1" confidence="1"/></AssociationModel></PMML>)",
                          items, x, y));
    const TaxonomyStore taxonomy("other.mdb");
    std::string found;
    try {
      const Rule rule = PmmlFile("m.xml").ReadRules(taxonomy, progress_).at(0);
      for (const auto& side : {rule.antecedent, rule.consequent})
        found += taxonomy.working().PositionOf(side[0]) + ' ';
    } catch (const InputError& error) {
      found = error.what();
    }
    EXPECT_NE(found.find(expected), std::string::npos) << found;
  };
  // 1 is the category; 2 Asthma, 3 Fever, 4 Asthma again, 5 Cough.
  LoadText(
      NodeLine("Asthma", "C1") + NodeLine("Fever", "C2") + NodeLine("Asthma", "C3") + NodeLine("Cough", "C4"),
      "other.mdb");
  import(item("a", "Asthma", "C3") + item("2", "Asthma", "C1"), "a", "2", "C.3 C.1 ");
  import(item("5", "Fever", "C9") + item("3", "Cough", "C2"), "5", "3", "C.2 C.4 ");  // by name
  import(item("2", "Asthma", "") + item("4", "Asthma", ""), "4", "2", "C.3 C.1 ");    // by number and name
  import(item("9", "#9", "C4"), "9", "3", "C.4 C.2 ");  // a node that had no name; and none declared
  import(item("1", "Measles", "C1"), "1", "1", "does not have the item \"Measles\"");
  import(item("a", "Cough", "C4") + item("b", "Cough", "C8"), "a", "b", "are one node");
}

TEST_F(PmmlTest, AsManyRulesAreImportedAsATableHolds) {
  PmmlHead head;
  head.parameters = {"M", "5", "0.2", "0.5"};
  std::vector<Rule> rules(32767, Rule{{1}, {2}, 0.2F, 0.5F, 0.4F, 0.6F, 1, 1});
  ImportRules(head, &rules, "full.mdb", ExistingFile::kRefuse, progress_);
  EXPECT_EQ(Rows("full.mdb", "SELECT max(Index),count(*) FROM M"), Texts{"32767|32767"});
  rules.push_back(rules.front());
  ExpectFault<InputError>("the file has 32768 rules, and a table holds 32767",
                          [&] { ImportRules(head, &rules, "over.mdb", ExistingFile::kRefuse, progress_); });
  EXPECT_FALSE(fs::exists("over.mdb") || fs::exists("Infoover.dat"));
}

TEST_F(PmmlTest, ReadsAnyLayoutAndSaysWhatIsMissing) {
  const std::string model = "<x AssociationModel a modelName= \"M\">\n";
  const std::string statistics =
      "numberOfRules=\"7\" numberOfItems=\"2\" AssocInputStats minimumConfidence=\"c\" minimumSupport= \"s\" "
      "numberOfTransactions=\"t\"\n";
  WriteText("a.xml", "<foreign/>\n" + statistics + model + statistics +
                         "<AssocItem mappedValue=\"C\" value=\"Diseases\"/>\n<AssocItem value=\"Sj\xF6gren\" "
                         "mappedValue=\"D\"/>\n"
                         "<AssocItem value=\"x\" mappedValue=\"C1\"/>\n<AssocItemset\n<AssocItem value=\"E\" "
                         "mappedValue=\"E\"/>\n");
  const PmmlHead head = PmmlFile("a.xml").ReadHead(progress_);
  const auto& [name, transactions, min_support, min_confidence] = head.parameters;
  EXPECT_EQ(name + transactions + min_support + min_confidence + std::to_string(head.declared_rules),
            "Mtsc7");
  EXPECT_EQ(head.taxonomies, (Texts{"C", "Sj\xC3\xB6gren"}));  // the first value= is that of mappedValue=
  EXPECT_EQ(head.taxonomy_codes, "CD");

  const std::pair<std::string, const char*> faults[] = {
      {"", "no association model"},
      {"<html>", "no association model"},
      {"<AssociationModel name=\"M\">\n", "line 1 has no modelName="},
      {model + "<AssocInputStats numberOfTransactions=\"5\"/>\n", "line 2 has no minimumSupport="},
      {model + statistics + "<AssocItem value=\"x\"/>", "line 3 has no mappedValue="},
      {"AssociationModel modelName=\"" + std::string(256, 'M') + "\"\n", "modelName has 256 bytes"},
      {model + "minimumSupport=\"" + std::string(256, '0') + "\" " + statistics,
       "minimumSupport has 256 bytes"},
      {model + statistics + "<AssocItem value=\"" + std::string(1271, 'C') + "\" mappedValue=\"C\"",
       "taxonomy has 1271 bytes"},
      {"<PMML version=\"4.4\"><AssociationModel", "no complete XML"},
      {"<PMML version=\"4.4\"><AssociationModel modelName=\"M\"/></PMML>", "no numberOfTransactions"}};
  for (const auto& [text, part] : faults) {
    WriteText("bad.xml", text);
    ExpectFault<InputError>(part, [&] { PmmlFile("bad.xml").ReadHead(progress_); });
  }
  std::string great;  // its rules would not fit into a table by one character
  while (great.size() < 256) great += "1-";
  const TaxonomyStore taxonomy("tax.mdb");
  for (const auto& [side, part] : {std::pair<std::string, const char*>("2-", "names the itemset"),
                                   {great, "128 items"},
                                   {great + "\" support=\"4e38", "no support="}}) {
    WriteText("bad.xml", fmt::format("<AssocItemset id=\"{0}\" support=\"1\">\n<AssocRule antecedent=\"{1}\" "
                                     "consequent=\"{1}\" support=\"1\" confidence=\"1\"/>",
                                     great, side));
    ExpectFault<InputError>(part, [&] { PmmlFile("bad.xml").ReadRules(taxonomy, progress_); });
  }
  PmmlHead unnamed;
  EXPECT_THROW(ImportRules(unnamed, nullptr, "new.mdb", ExistingFile::kRefuse, progress_), InputError);
  EXPECT_FALSE(fs::exists("new.mdb"));
}

}  // namespace selvane::tests
