#include "cli/cli.h"

#include <cmath>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <sstream>

#include "rules/rule_list.h"
#include "rules/rules_info.h"
#include "taxonomy/taxonomy_files.h"
#include "termdb/rows_by_term.h"

namespace selvane::tests {

const std::string kSamples = std::string(SELVANE_SOURCE_DIR) + "/samples";
const std::string kExtract = "rules extract terms.mdb --taxonomy tax.mdb --output ";

class CliTest : public FolderTest {
 protected:
  CliTest() { ::setenv("XDG_STATE_HOME", (folder() / "state").c_str(), 1); }

  // Runs a command whose words are parted by blanks.
  int Run(const std::string& command) {
    std::istringstream words(command);
    Texts arguments;
    for (std::string word; words >> word;) arguments.push_back(word);
    std::ostringstream out;
    std::ostringstream err;
    SilentProgress progress;
    const int status = RunCli(arguments, {out, err, progress, FixedClock(), '.'});
    out_ = out.str();
    err_ = err.str();
    return status;
  }

  void MakeSampleRules() {
    for (const std::string& command :
         {"taxonomy load " + kSamples + "/taxonomy.xml tax.mdb",
          "terms build --taxonomy tax.mdb --output terms.mdb " + kSamples + "/abstracts",
          kExtract + "rules.mdb --min-support 0.2 --min-confidence 0.7"}) {
      ASSERT_EQ(Run(command), 0) << err_;
    }
  }

  std::string out_;
  std::string err_;
};

TEST_F(CliTest, RunsTheWholeWayOnTheSamples) {
  MakeSampleRules();
  EXPECT_NE(err_.find("30 rows, 29 items, 263 itemsets, 127 rules"), std::string::npos) << err_;
  EXPECT_EQ(Run("rules show rules.mdb --taxonomy tax.mdb --sort confidence --limit 1"), 0);
  EXPECT_EQ(out_, "   36  0.200000  1.000000  Terbutaline => Respiratory Tract Diseases\n");
  EXPECT_EQ(Run("terms list terms.mdb"), 0);
  EXPECT_EQ(out_.substr(0, 13), "1\t16\tSmoking\n");
  EXPECT_EQ(Run("rules list rules.mdb"), 0);
  EXPECT_EQ(
      out_.find("table\tExtracted\t127\nterm table\t14_05_23_11_MESHTERMS\nrows\t30\nminimum support\t0.2\n"),
      0U);
  EXPECT_EQ(Run(kExtract + "rules.mdb --overwrite --no-generalize --min-support 0,2 --min-confidence 0,7"),
            0);
  EXPECT_EQ(Run("rules show rules.mdb --taxonomy tax.mdb --format csv --table extracted"), 0);
  EXPECT_EQ(
      out_.substr(0, out_.find("\n2,")),
      "INDEX,ANTECEDENT,CONSEQUENT,ANTECEDENT_NAMES,CONSEQUENT_NAMES,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC,"
      "LIFT,LEVERAGE,CONVICTION\n1,25,124,\"Pulmonary Disease, Chronic Obstructive\",\"Smoking\",0.233333,"
      "0.777778,0.3,0.533333,1,1,1.458335,0.073333,2.100004");
}

// Figures that are equal, 0 or no numbers; 1 and 2 are categories without a name in this taxonomy.
TEST_F(CliTest, ShowsRulesByEachFigure) {
  WriteText("tax.xml", NodeLine("A", "C1") + NodeLine("B", "C2"));
  ASSERT_EQ(Run("taxonomy load tax.xml tax.mdb"), 0) << err_;
  MakeForeignDatabase("r.mdb",
                      "CREATE TABLE R(\"INDEX\",ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC);"
                      "INSERT INTO R VALUES(1,'2-','3-',0.25,0.5,0.5,0,1,1),(2,'3-','2-',0,1,0.25,0.75,1,1),"
                      "(3,'2-','3-9-',0.5,'nan',0.5,1,1,2),(4,'3-2-','1-',0.25,0.75,0,0.75,2,1);");
  const std::pair<const char*, const char*> cases[] = {
      {"index", "1 2 3 4"}, {"support", "3 1 4 2"},    {"confidence", "2 4 1 3"},  {"pa", "1 3 2 4"},
      {"pc", "3 2 4 1"},    {"pc --limit 3", "3 2 4"}, {"pc --limit 4", "3 2 4 1"}};
  for (const auto& [sort, order] : cases) {
    ASSERT_EQ(Run(std::string("rules show r.mdb --taxonomy tax.mdb --format json --sort ") + sort), 0);
    std::string shown;
    for (const auto& rule : nlohmann::json::parse(out_))
      shown += (shown.empty() ? "" : " ") + rule["index"].dump();
    EXPECT_EQ(shown, order) << sort;
  }
  EXPECT_EQ(Run("rules show r.mdb --taxonomy tax.mdb --format csv"), 0);
  EXPECT_EQ(out_.substr(out_.find('\n') + 1),
            "1,2,3,\"A\",\"B\",0.25,0.5,0.5,0,1,1,,0.25,2\n"
            "2,3,2,\"B\",\"A\",0,1,0.25,0.75,1,1,1.333333,-0.1875,\n"
            "3,2,3 9,\"A\",\"B AND #9\",0.5,nan,0.5,1,1,2,,0,\n"
            "4,3 2,1,\"B AND A\",\"#1\",0.25,0.75,0,0.75,2,1,1,0.25,1\n");
  EXPECT_EQ(Run("rules show r.mdb --taxonomy tax.mdb --format json --limit 1"), 0);
  EXPECT_EQ(nlohmann::json::parse(out_)[0],
            nlohmann::json::parse(R"({"index":1,"antecedent":[2],"consequent":[3],"antecedent_names":["A"],
                "consequent_names":["B"],"support":0.25,"confidence":0.5,"pa":0.5,"pc":0,"aspec":1,"cspec":1,
                "lift":null,"leverage":0.25,"conviction":2.0})"));
}

// Whatever the rules say of support and confidence, their documents can be counted.
TEST_F(CliTest, DocumentsAgreeWithTheFiguresOfRules) {
  MakeSampleRules();
  ASSERT_EQ(Run(kExtract + "plain.mdb --no-generalize --min-support 0.05 --min-confidence 0.2"), 0) << err_;
  ASSERT_EQ(Run(kExtract + "terms_rules.mdb --items terms --witnesses distinct --min-support 0.05 --keep "
                           "strongest"),
            0)
      << err_;
  const RowCounting by_terms{.items = ItemKind::kTerms, .distinct_witnesses = true};
  for (const auto& [database, counting] :
       {std::pair("rules.mdb", RowCounting{}), std::pair("plain.mdb", RowCounting{.generalized = false}),
        std::pair("terms_rules.mdb", by_terms)}) {
    SilentProgress progress;
    RulesStore store;
    store.OpenRulesDatabase(database);
    store.OpenRulesTable("Extracted");
    const RuleList rules(store, progress);
    ASSERT_GT(rules.size(), 20);
    const TaxonomyStore taxonomy("tax.mdb");
    TransactionSource source;
    source.Open("terms.mdb");
    for (RuleNumber number = 1; number <= rules.size(); ++number) {
      const Rule& rule = rules[number];
      const RuleRows rows =
          RowsOfRule(source, "14_05_23_11_MESHTERMS", taxonomy, rule.antecedent, rule.consequent, counting);
      EXPECT_EQ(static_cast<float>(rows.holding.size()), std::round(rule.support * 30)) << number;
      EXPECT_EQ(static_cast<float>(rows.holding.size() + rows.exceptions.size()), std::round(rule.pa * 30));
    }
  }
}

// Each step of --readable is taken unless it is switched off, and what is left can be asked for by measures.
TEST_F(CliTest, ReadableRulesPassAllSteps) {
  MakeSampleRules();
  const std::string readable = kExtract + "few.mdb --overwrite --min-support 0.2 --readable --significant 1 ";
  ASSERT_EQ(Run(readable + "--correction none"), 0) << err_;
  for (const char* step : {"improvement", "significant", "specific", "interesting", "shortest"}) {
    EXPECT_NE(err_.find(fmt::format(" rules left by --{}", step)), std::string::npos) << step << err_;
  }
  EXPECT_EQ(Run("rules show few.mdb --taxonomy tax.mdb --where lift>=1.9 --sort p --measures count"), 0);
  EXPECT_EQ(std::count(out_.begin(), out_.end(), '\n'), 3) << out_;
  EXPECT_EQ(Run(readable + "--no-shortest --specific 0 --items positions"), 0) << err_;
  EXPECT_EQ(err_.find("--shortest"), std::string::npos);
  EXPECT_EQ(err_.find("--specific"), std::string::npos);
  EXPECT_EQ(Run(readable + "--consequent Nonsense"), 1);
  EXPECT_NE(err_.find("taxonomy find"), std::string::npos);
}

TEST_F(CliTest, GoesFromASearchToTheDocumentsOfARule) {
  ASSERT_EQ(Run("taxonomy load " + kSamples + "/headings.txt tax.mdb"), 0) << err_;
  const std::string build = "terms build --taxonomy tax.mdb --output terms.mdb ";
  ASSERT_EQ(
      Run(build + "--terms all --leave-out B01 " + kSamples + "/search.nbib " + kSamples + "/marks.pubtator"),
      0);
  EXPECT_NE(err_.find("9 rows of 11 records, 10 of 11 terms; 2 files read"), std::string::npos) << err_;
  ASSERT_EQ(Run(kExtract + "rules.mdb --min-support 0.3 --min-confidence 0.8"), 0) << err_;
  const std::string documents = "rules documents rules.mdb --taxonomy tax.mdb --terms terms.mdb --rule 8 ";
  EXPECT_EQ(Run(documents + "--exceptions"), 0);
  EXPECT_EQ(out_, "    4  90000104  2018  One puff before the stairs.\n");
  EXPECT_EQ(err_, "rule 8: Ethanolamines => Asthma: 4 of 9 rows hold it, 1 its left side only\n");
  EXPECT_EQ(Run(documents + "--format json"), 0);
  EXPECT_EQ(
      nlohmann::json::parse(out_)[3]["marks"][1],
      nlohmann::json::parse(R"({"term":"Asthma","place":"text","offset":43,"length":6,"words":"asthma"})"));
  EXPECT_EQ(
      Run("terms documents --with Smoking --without Hypertension --with albuterol terms.mdb --format csv"),
      0);
  EXPECT_EQ(out_,
            "ROW,PMID,YEAR,JOURNAL,TITLE,TERMS,TEXT\n4,\"90000104\",2018,\"J Invent Samp\",\"One puff before "
            "the stairs.\",\"Albuterol; Humans; Pulmonary Disease, Chronic Obstructive; Smoking\",\"Patients "
            "took salbutamol, or nothing, before climbing four flights of stairs.\"\n");
  // A taxonomy that has changed since gives other rows, and that is said.
  EXPECT_EQ(Run("taxonomy prune tax.mdb D.02.033.100.291.057"), 0);
  EXPECT_EQ(Run(documents), 0);
  EXPECT_NE(err_.find("its support stands for 4 rows: since"), std::string::npos) << err_;
  for (const auto& [command, status, part] :
       {std::tuple(documents + "--table Filtered", 1, "no table Filtered"),
        {"rules documents rules.mdb --taxonomy tax.mdb --terms terms.mdb --rule 999", 1, "has no rule 999"},
        {build + "--terms 0 x", 2, "not 0"},
        {build + "--form both x", 2, "both"},
        {build + "x", 1, "no such file"}}) {
    EXPECT_EQ(Run(command), status) << command;
    EXPECT_NE(err_.find(part), std::string::npos) << err_;
  }
}

TEST_F(CliTest, ExtractsBasesThatCanBeFilteredAndExchanged) {
  MakeSampleRules();
  EXPECT_EQ(Run("taxonomy prune tax.mdb F.01.145.805"), 0);
  EXPECT_EQ(Run(kExtract + "bases.mdb --closed --itemsets copy.dat"), 0);
  EXPECT_TRUE(
      err_.starts_with("selvane-cli: columns without a node in the taxonomy were left out: Smoking\n"
                       "30 rows, 9 items, 32 closed itemsets, 32 generators, 30 rules (0 exact and 30 "
                       "approximate found); checking "))
      << err_;
  EXPECT_EQ(ReadFile("copy.dat"), ReadFile("FCI.dat"));
  EXPECT_EQ(Run("rules filter template bases.mdb --taxonomy tax.mdb --inclusive Atenolol=>[Any]"), 0);
  EXPECT_NE(out_.find("Atenolol => "), std::string::npos);
  EXPECT_EQ(Run("pmml export bases.mdb --taxonomy tax.mdb --output m.xml --pmml-version 4.4"), 0);
  EXPECT_EQ(Run("pmml import m.xml --taxonomy tax.mdb --output back.mdb --rules"), 0);
  EXPECT_EQ(Rows("back.mdb", "SELECT * FROM Extracted"), Rows("bases.mdb", "SELECT * FROM Extracted"));
  EXPECT_EQ(Run(kExtract + "all.mdb --closed --unreduced --min-confidence 0.1"), 0);
  const auto all = Rows("all.mdb", "SELECT * FROM Extracted").size();
  EXPECT_EQ(Run(kExtract + "next.mdb --closed --min-confidence 0.1"), 0);
  EXPECT_LT(Rows("next.mdb", "SELECT * FROM Extracted").size(), all);
  EXPECT_EQ(Run(kExtract + "FCI.dat --overwrite --closed"), 1);
  EXPECT_NE(err_.find("would replace a file that the run needs"), std::string::npos) << err_;
  EXPECT_EQ(Run(kExtract + "x.mdb --unreduced"), 2);
}

TEST_F(CliTest, ListsPrunesAndRestoresTaxonomies) {
  ASSERT_EQ(Run("taxonomy load " + kSamples + "/taxonomy.xml tax.mdb"), 0);
  EXPECT_EQ(Run("taxonomy list tax.mdb --under C08.127 --depth 2"), 0);
  EXPECT_EQ(out_.substr(0, 29), "9\tC.08.127\tBronchial Diseases");
  EXPECT_EQ(std::count(out_.begin(), out_.end(), '\n'), 6) << out_;
  EXPECT_EQ(Run("taxonomy prune tax.mdb C.08 C14"), 0);
  EXPECT_EQ(Run("taxonomy list tax.mdb --under C.08"), 1);
  EXPECT_EQ(Run("taxonomy list tax.mdb --under C08 --source"), 0);
  EXPECT_EQ(Run("taxonomy restore tax.mdb"), 0);
  EXPECT_EQ(Run("taxonomy prune --upward tax.mdb C.08.127"), 0);
  EXPECT_EQ(err_, "3 positions pruned\n");
}

TEST_F(CliTest, FiltersPrintAndSave) {
  MakeSampleRules();
  const std::string saved = "Filtered_23_11_14_05_00";
  const std::vector<Texts> cases = {
      {"template --inclusive [#8]+=>[Any] Smoking=>[Any] --save", "   37  0.5", "\n" + saved + "\n"},
      {"rating --save --table Extracted", "", "was saved within this second; save once more\n"},
      {"rating --viewpoint surprise --table Extracted", "   53  ", "deviation 0.13108, limit 0.498764\n"},
      {"specificity --ground Smoking --depth 1 --table " + saved,
       "   16  0.500000  0.937500  Smoking => Diseases\n     24  ", ""},
      {"specificity --format json --ground Atenolol --table " + saved, "[]\n", "No rule with ground items\n"},
      {"cover --terms terms.mdb --clusters 2 --table Extracted", "# cluster 1: ", "24 of 127 rules kept\n"}};
  for (const Texts& c : cases) {
    Run("rules filter " + c[0] + " rules.mdb --taxonomy tax.mdb");
    EXPECT_TRUE(out_.starts_with(c[1]) && err_.ends_with(c[2])) << c[0] << '\n' << out_ << err_;
  }
  EXPECT_NE(out_.find("# cluster 2"), std::string::npos);
  EXPECT_EQ(out_.find("# cluster 3"), std::string::npos);
  EXPECT_EQ(Run("rules list rules.mdb"), 0);
  EXPECT_EQ(out_.find("table\tExtracted\t127\ntable\t" + saved + "\t35\nterm table"), 0U) << out_;
}

// A formula, and a taxonomy whose name the information file cannot hold.
TEST_F(CliTest, OddNamesAreGuardedAndFiltered) {
  const std::string odd = "U\xC5\x82y";
  WriteText("tax.xml", NodeLine(odd, "C") + NodeLine("=A1", "C1"));
  ASSERT_EQ(Run("taxonomy load tax.xml tax.mdb"), 0);
  EXPECT_NE(err_.find("question marks: " + odd + ";"), std::string::npos) << err_;
  MakeForeignDatabase("r.mdb",
                      "CREATE TABLE R(\"INDEX\",ANTECEDENT,CONSEQUENT,SUPPORT,CONFIDENCE,PA,PC,ASPEC,CSPEC);"
                      "INSERT INTO R VALUES(1,'2-','1-',0.25,0.5,0.5,0.5,1,1);");
  WriteRulesInfo({}, {}, Texts{"T", "1", "0.1", "0.2", odd + "?"}, "Infor");
  EXPECT_EQ(Run("rules filter rating r.mdb --taxonomy tax.mdb --format csv"), 1);
  WriteRulesInfo({}, {}, Texts{"T", "1", "0.1", "0.2", odd}, "Infor");
  EXPECT_EQ(Run("rules filter rating r.mdb --taxonomy tax.mdb --format csv"), 0) << err_;
  EXPECT_NE(out_.find("1,2,1,\"'=A1\",\"" + odd + "\","), std::string::npos) << out_;
  EXPECT_EQ(Run("rules show r.mdb --taxonomy tax.mdb --format csv --no-guard"), 0);
  EXPECT_NE(out_.find(",\"=A1\","), std::string::npos);
}

TEST_F(CliTest, MeshIsLoadedByContentAndSearched) {
  const std::string tree = "C08\tD012140\tRespiratory Tract Diseases\nC08.1\tD1\tCough, =Dry\n";
  WriteText("mesh.txt", tree + "Z9.x\tD2\tNowhere\n");
  WriteText("supp",
            "*NEWRECORD\nRECTYPE = C\nNM = x\nHM = Cough, =Dry\nUI = C1\n*NEWRECORD\nRECTYPE = C\nNM = y\nUI "
            "= C2\n");
  ASSERT_EQ(Run("taxonomy load --supplementary supp mesh.txt mesh.mdb"), 0) << err_;
  EXPECT_EQ(err_,
            "1 tree numbers that are none; the first: Z9.x of D2\n2 supplementary records, 1 of them "
            "mapped to a heading of the taxonomy\n2 headings with 0 entry terms at 2 positions in 1 "
            "categories loaded\n");
  const Texts cases[] = {
      {"C1", "Cough, =Dry\tD1\tC08.1\tx\n"},
      {"c.08", "Respiratory Tract Diseases\tD012140\tC08\n"},
      {"=dry --format csv",
       "TERM,ID,POSITIONS,FOUND_BY,FOUND\n\"Cough, =Dry\",\"D1\",\"C08.1\",part of name,\"Cough, =Dry\"\n"},
      {"D1 --format json",
       "[\n {\n  \"term\": \"Cough, =Dry\",\n  \"id\": \"D1\",\n  \"positions\": [\n   {\n    \"position\": "
       "\"C08.1\",\n"},
      {"nothing", ""}};
  for (const Texts& c : cases) {
    EXPECT_EQ(Run("taxonomy find mesh.mdb " + c[0]), 0) << err_;
    EXPECT_TRUE(out_.starts_with(c[1])) << c[0] << '\n' << out_;
  }
  EXPECT_EQ(err_, "0 terms found\n");
  // A taxonomy file under any name, and what only MeSH can have.
  WriteText("own", NodeLine("Diseases", "C"));
  EXPECT_EQ(Run("taxonomy load own own.mdb"), 0) << err_;
  EXPECT_EQ(Run("taxonomy load own own2.mdb --check-tags"), 1);
  EXPECT_NE(err_.find("own: this is a taxonomy file, not MeSH"), std::string::npos) << err_;
}

TEST_F(CliTest, FaultsHaveAMessageAndAStatusAndLoseNothing) {
  MakeSampleRules();
  WriteText("text.mdb", std::string(100, 'x'));
  WriteText("tax.txt", "");
  WriteText("bad.xml", "<node canonical=\"a\" type=\"b\" tree=>\n");
  fs::create_directory("empty");
  WriteText("copy.mdb", ReadFile("rules.mdb"));
  MakeForeignDatabase("two.mdb",
                      R"(CREATE TABLE a("Index", x); INSERT INTO a VALUES (1, 1); CREATE TABLE b(i);
      CREATE TABLE 'c d'(i, x);)");
  MakeForeignDatabase("hurt.mdb", R"(CREATE TABLE a("Index"); INSERT INTO a VALUES (1);)");
  WriteText("hurt.mdb", ReadFile("hurt.mdb").substr(0, 4096) + std::string(4096, 'x'));
  const Texts before = FileNames(".");
  const std::tuple<std::string, int, const char*> cases[] = {
      {"taxonomy load tax.txt new.mdb", 255, "Selected file is not xml file"},
      {"taxonomy load missing.xml new.mdb", 1, "missing.xml: cannot open"},
      {"taxonomy load bad.xml new.mdb", 1, "line 1"},
      {"taxonomy load bad.xml", 2, "TAXDB"},
      {"taxonomy restore text.mdb", 1, "not a database"},
      {"taxonomy restore rules.mdb", 1, "no taxonomy database"},
      {"terms build --taxonomy tax.mdb --output new.mdb empty", 1, "holds no files"},
      {"terms build --taxonomy tax.mdb --output new.mdb tax.txt", 1, "no file holds a term"},
      {"terms list two.mdb", 1, "--table; there are: a, b"},
      {"terms list two.mdb --table z", 1, "no table z"},
      {kExtract + "rules.mdb", 1, "--overwrite"},
      {kExtract + "no/where.mdb", 1, "no such folder"},
      {kExtract + "new.mdb --min-support 1.5", 2, "at most 1"},
      {kExtract + "new.mdb --min-confidence x", 2, "not x"},
      {kExtract + "new.mdb --min-support 1 --min-confidence 1", 0, "No extractable rules: no two items"},
      {"rules extract two.mdb --table a --taxonomy tax.mdb --output new.mdb", 0, "no row holds a term"},
      {kExtract + "terms.mdb --overwrite", 1, "the run needs"},
      {kExtract + "./tax.mdb --overwrite", 1, "the run needs"},
      {kExtract + "new.mdb --itemsets no/copy.dat", 1, "no such folder"},
      {kExtract + "new.mdb --itemsets Infonew.dat", 1, "the run needs"},
      // Said before the search, which finds nothing.
      {kExtract + "rules.db --min-support 1", 1, "may belong to another rules database"},
      {kExtract + "rules.mdb --overwrite --min-support 1", 0,
       "still there, as nothing replaces them\nNo extractable rules"},
      {kExtract + std::string(300, 'x'), 1, "xx: cannot use this name: the name is too long"},
      {"rules extract state/selvane/ItemSets.dat --taxonomy tax.mdb --output new.mdb", 1, "move or name"},
      {"terms list hurt.mdb", 1, "hurt.mdb: the file is damaged"},
      {"terms list two.mdb --table c_d", 1, "no table c_d"},
      {"taxonomy list tax.mdb --depth 0", 2, "1 to 1000"},
      {"rules show terms.mdb --taxonomy tax.mdb", 1, "no rules table"},
      {"rules show rules.mdb --taxonomy rules.mdb", 1, "no taxonomy database"},
      {"rules show rules.mdb --taxonomy tax.mdb --format xml", 2, "xml"},
      {"rules list copy.mdb", 1, "Infocopy.dat: cannot open"},
      {"rules filter cover rules.mdb --taxonomy tax.mdb --terms two.mdb", 1, "there is no table 14"},
      {"taxonomy prune tax.mdb C", 0, "pruned"},
      {"rules filter rating rules.mdb --taxonomy tax.mdb", 1, "Unable to load rules:\n Diseases\n Chemicals"},
      {"", 2, "required"},
  };
  for (const auto& [command, status, part] : cases) {
    EXPECT_EQ(Run(command), status) << command << "\n" << err_;
    EXPECT_NE(err_.find(part), std::string::npos) << command << "\n" << err_;
  }
  fs::copy_file("rules.mdb", "rules.db");
  EXPECT_EQ(Run("rules list rules.db"), 255);
  fs::remove("rules.db");
  EXPECT_EQ(FileNames("."), before);
}

}  // namespace selvane::tests
