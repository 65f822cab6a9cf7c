// MeSH as published, in each of its layouts.
#include "taxonomy/mesh_loading.h"

#include "base/error.h"
#include "taxonomy/mesh_reading.h"
#include "taxonomy/taxonomy_files.h"

namespace selvane::tests {

class MeshLoadingTest : public FolderTest {
 protected:
  static MeshLoadReport Load(std::string_view text, bool check_tags = true,
                             std::string_view supplementary = {}) {
    WriteText("mesh", text);
    MeshLoadRequest request{
        .file = "mesh", .database = "tax.mdb", .existing = ExistingFile::kReplace, .check_tags = check_tags};
    if (!supplementary.empty()) {
      WriteText("supplementary", supplementary);
      request.supplementary = {"supplementary"};
    }
    SilentProgress progress;
    return LoadMesh(request, progress);
  }
  static Texts Content() {
    Texts all = Rows("tax.mdb", "SELECT Index,FatherId,Canonical FROM Source");
    for (const char* sql : {"SELECT Id,Term,Name,Class FROM sys_Headings", "SELECT * FROM sys_EntryTerms",
                            "SELECT * FROM sys_Supplementary"})
      for (std::string& row : Rows("tax.mdb", sql)) all.push_back(std::move(row));
    return all;
  }
};

const std::string kTree =
    "\xEF\xBB\xBFTree Number\tDesc Ui\tTerm\r\nC08.127.108\tD001249\tAsthma\r\nC23.5\tD002\tCrohn's & Co\r\n"
    "C08.127\tD001982\tBronchial Diseases\r\nC08\tD012140\tRespiratory Tract Diseases\r\n"
    "\r\nC20.9\tD001249\tAsthma\r\n";

const std::string kAscii =
    "*NEWRECORD\nRECTYPE = D\nMH = Crohn's & Co\nENTRY = Ileitis|T047|NON|x = y\nMN = C23.5\nDC = 1\nUI = "
    "D002\n\n"
    "*NEWRECORD\nMH = Female\nPRINT ENTRY = Females\nDC = 3\nUI = D005260\n\n"
    "*NEWRECORD\nRECTYPE = D\nMH = Asthma\nENTRY = Asthmas\nPRINT ENTRY = Asthma, Bronchial|T1\nMN = "
    "C08.127.108\n"
    "MN = C20.9\nMS = of the bronchi\nDC = 1\nUI = D001249\n\n"
    "*NEWRECORD\nMH = Bronchial Diseases\nMN = C08.127\nDC = 1\nUI = D001982\n"
    "*NEWRECORD\nMH = Respiratory Tract Diseases\nMN = C08\nDC = 1\nUI = D012140\n"
    "*NEWRECORD\nRECTYPE = C\nNM = aeron\nHM = *Asthma/*drug & therapy\nHM = Crohn's & Co\nHM = Not "
    "There\nUI = C1\n";

std::string Descriptor(const std::string& id, int descriptor_class, const std::string& name,
                       const Texts& trees, const Texts& terms) {
  std::string text = "<DescriptorRecord DescriptorClass = \"" + std::to_string(descriptor_class) +
                     "\">\n<DescriptorUI>" + id + "</DescriptorUI><DescriptorName>\n <String>" + name +
                     "</String></DescriptorName><SeeRelatedList><SeeRelatedDescriptor><DescriptorReferredTo>"
                     "<DescriptorUI>D9</DescriptorUI><DescriptorName><String>Other</String></DescriptorName>"
                     "</DescriptorReferredTo></SeeRelatedDescriptor></SeeRelatedList><TreeNumberList>";
  for (const std::string& tree : trees) text += "<TreeNumber>" + tree + "</TreeNumber>\n";
  text += "</TreeNumberList><ConceptList><Concept><ConceptName><String>No</String></ConceptName><TermList>";
  for (const std::string& term : terms)
    text += "<Term><TermUI>T1</TermUI><String>" + term + "</String><DateCreated>1</DateCreated></Term>";
  return text + "</TermList></Concept></ConceptList></DescriptorRecord>\n";
}

const std::string kSupplementaryXml =
    "<SupplementalRecordSet><SupplementalRecord><SupplementalRecordUI>C1</SupplementalRecordUI>"
    "<SupplementalRecordName><String>aeron</String></SupplementalRecordName><HeadingMappedToList>"
    "<HeadingMappedTo><DescriptorReferredTo><DescriptorUI>*D001249</DescriptorUI></DescriptorReferredTo>"
    "<QualifierReferredTo><QualifierUI>Q1</QualifierUI></QualifierReferredTo></HeadingMappedTo>"
    "<HeadingMappedTo><DescriptorReferredTo><DescriptorUI>D002</DescriptorUI></DescriptorReferredTo>"
    "</HeadingMappedTo><HeadingMappedTo><DescriptorReferredTo><DescriptorUI>D7</DescriptorUI>"
    "</DescriptorReferredTo></HeadingMappedTo></HeadingMappedToList></SupplementalRecord></"
    "SupplementalRecordSet>";

// "D1 label =Asthma", "D1 type TopicalDescriptor": short for the lines of triples.
std::string Triples(const Texts& lines) {
  const std::string base = "<http://example.org/mesh/";
  std::string text;
  for (const std::string& line : lines) {
    const std::size_t first = line.find(' ');
    const std::size_t second = line.find(' ', first + 1);
    const std::string object = line.substr(second + 1);
    text += base + line.substr(0, first) + "> " + base + "vocab#" +
            line.substr(first + 1, second - first - 1) + "> " +
            (object[0] == '=' ? object.substr(1) : base + object + ">") + " .\n";
  }
  return text;
}

TEST_F(MeshLoadingTest, EachLayoutGivesTheSameDatabase) {
  const Texts expected = {"1|C|Diseases",
                          "2|C.08|Respiratory Tract Diseases",
                          "3|C.08.127|Bronchial Diseases",
                          "4|C.08.127.108|Asthma",
                          "5|C.20|",
                          "6|C.20.9|Asthma",
                          "7|C.23|",
                          "8|C.23.5|Crohn s & Co",
                          "9|T|Check Tags",
                          "10|T.001|Female",
                          "D001249|Asthma|Asthma|1",
                          "D001982|Bronchial Diseases|Bronchial Diseases|1",
                          "D002|Crohn s & Co|Crohn's & Co|1",
                          "D005260|Female|Female|3",
                          "D012140|Respiratory Tract Diseases|Respiratory Tract Diseases|1",
                          "D001249|Asthma, Bronchial",
                          "D001249|Asthmas",
                          "D002|Ileitis",
                          "D005260|Females",
                          "C1|aeron|D001249",
                          "C1|aeron|D002"};
  const std::string xml =
      "<?xml version=\"1.0\"?>\n<!DOCTYPE DescriptorRecordSet SYSTEM \"x.dtd\">\n<DescriptorRecordSet>" +
      Descriptor("D002", 1, "Crohn's &amp; Co", {"C23.5"}, {"Ileitis", "Crohn's &amp; Co"}) +
      Descriptor("D005260", 3, "Female", {}, {"Females"}) +
      Descriptor("D001249", 1, "Asthma", {"C20.9", "C08.127.108"},
                 {"Asthmas", "Asthma", "Asthma, Bronchial"}) +
      Descriptor("D001982", 1, "Bronchial Diseases", {"C08.127"}, {}) +
      Descriptor("D012140", 1, "Respiratory Tract Diseases", {"C08"}, {}) + "</DescriptorRecordSet>";
  const std::string triples = Triples({"D002 type TopicalDescriptor",
                                       "D002 label =\"Crohn\\u0027s & Co\"@en",
                                       "D002 label =\"Crohn\"@fr",
                                       "D002 treeNumber C23.5",
                                       "D002 concept M1",
                                       "T1 altLabel =\"Ileitis\"@en",
                                       "M1 preferredTerm T1",
                                       "D005260 type CheckTag",
                                       "D005260 label =\"Female\"@en",
                                       "D005260 preferredConcept M2",
                                       "M2 term T2",
                                       "T2 prefLabel =\"Females\"",
                                       "D001249 preferredTerm T3",
                                       "T3 prefLabel =\"Asthma\"@en",
                                       "T3 altLabel =\"Asthma, Bronchial\"@en",
                                       "T3 altLabel =\"Asthmas\"@en",
                                       "D001249 type TopicalDescriptor",
                                       "D001249 treeNumber C20.9",
                                       "D001249 treeNumber C08.127.108",
                                       "D001249 label =\"Asthma\"@en",
                                       "D001982 type TopicalDescriptor",
                                       "D001982 label =\"Bronchial Diseases\"@en",
                                       "D001982 treeNumber C08.127",
                                       "D012140 type TopicalDescriptor",
                                       "D012140 label =\"Respiratory Tract Diseases\"@en",
                                       "D012140 treeNumber C08",
                                       "D9 type TopicalDescriptor",
                                       "D9 label =\"Gone\"@en",
                                       "D9 active =\"false\"",
                                       "C1 type SCR_Chemical",
                                       "C1 label =\"aeron\"@en",
                                       "C1 preferredMappedTo D001249Q1",
                                       "C1 mappedTo D002",
                                       "C1 mappedTo D7"});
  const std::string* const layouts[][2] = {
      {&kAscii, &kSupplementaryXml}, {&xml, &kAscii}, {&triples, &triples}};
  for (const auto& [headings, supplementary] : layouts) {
    const MeshLoadReport report = Load(*headings, true, *supplementary);
    EXPECT_EQ(Content(), expected) << *headings;
    EXPECT_EQ(report.counts.headings + report.counts.mapped, 6);
    EXPECT_EQ(report.problems.size(), 1U);  // of the heading that the record maps to and nobody has
    // Without check tags, and from the tree, the positions but theirs are the same.
    Load(*headings, false);
    EXPECT_EQ(Content().at(8), "D001249|Asthma|Asthma|1");
  }
  const MeshLoadReport tree = Load(kTree);
  const Texts content = Content();
  EXPECT_EQ(Texts(content.begin(), content.begin() + 8), Texts(expected.begin(), expected.begin() + 8));
  EXPECT_EQ(Texts(content.begin() + 8, content.end()).at(2), "D002|Crohn s & Co|Crohn's & Co|0");
  EXPECT_EQ(tree.counts.positions * 10 + tree.unnamed, 52);
}

TEST_F(MeshLoadingTest, TellsWhatItPassedOver) {
  const std::string longest(127, 'x');
  const auto report =
      Load("A01\tD1\tPlain\nA02\tD1\tOther\nA01\tD2\tPlain\nA03\tD3\t" + longest + "\nA04\tD4\t" + longest +
               "\xC3\x84 end\nA05\tD5\nA6.\tD6\tDot\na1\tD6\tSmall\nD1\t\tNo "
               "id\nA07\tD7\tOrganisms\nB01\tD8\tBug\n",
           false);
  Texts problems;
  for (const auto& [kind, problem] : report.problems)
    problems.push_back(std::to_string(problem.count) + " " + kind.substr(0, 28) + ": " + problem.example);
  EXPECT_EQ(problems,
            (Texts{"2 identifiers of two names, of: D1", "1 lines of the tree without th: line 6",
                   "1 names above 127 characters, : D4", "1 positions that several headi: A01 of D1 and D2",
                   "1 records without a name or an: No id", "2 tree numbers that are none: A6. of D6"}));
  EXPECT_EQ(
      Rows("tax.mdb", "SELECT FatherId,Canonical FROM Source"),
      (Texts{"A|Anatomical Structures", "A.01|Plain", "A.02|Plain", "A.03|" + longest,
             "A.04|" + longest.substr(3) + " D4", "A.07|Organisms", "B|Organisms (category)", "B.01|Bug"}));
  EXPECT_EQ(Rows("tax.mdb", "SELECT * FROM sys_EntryTerms"), Texts{"D4|" + longest + "\xC3\x84 end"});
}

TEST_F(MeshLoadingTest, KnowsLayoutsByContentAndLeavesNothingBehind) {
  const std::pair<std::string_view, MeshFormat> heads[] = {
      {"\n<DescriptorRecordSet LanguageCode = \"eng\">", MeshFormat::kDescriptorXml},
      {kSupplementaryXml, MeshFormat::kSupplementaryXml},
      {"\n*NEWRECORD\r\n", MeshFormat::kAscii},
      {kTree, MeshFormat::kTree},
      {"# x\n<http://a/rdf/D1> <http://b> \"c\" .\n", MeshFormat::kNone},
      {"<http://a/mesh/D1> <http://b> <c> .\n", MeshFormat::kTriples},
      {"<taxonomy>\n<node canonical=\"A\" type=\"\" tree=\"\"/>", MeshFormat::kNone},
      {"a\tb\tc\n", MeshFormat::kNone},
      {"", MeshFormat::kNone}};
  for (const auto& [head, format] : heads) EXPECT_EQ(RecognizeMesh(head), format) << head;
  ExpectFault<InputError>("mesh: it holds no headings", [] { Load(kSupplementaryXml); });
  ExpectFault<InputError>("mesh: none of its headings has a tree",
                          [] { Load("*NEWRECORD\nMH = A\nUI = D1\n", false); });
  // A type of record beyond ASCII is named whole.
  EXPECT_EQ(Load(kAscii + "*NEWRECORD\nRECTYPE = \xC3\x84\n").problems.begin()->second.example,
            "RECTYPE = \xC3\x84 at line 43");
  fs::remove("tax.mdb");
  ExpectFault<InputError>("supplementary: it holds no supp", [] { Load(kTree, false, kTree); });
  ExpectFault<InputError>("mesh: line 2", [] { Load("<DescriptorRecordSet>\n</DescriptorRecord>"); });
  EXPECT_EQ(FileNames("."), (Texts{"mesh", "supplementary"}));
}

}  // namespace selvane::tests
