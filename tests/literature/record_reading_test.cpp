// Records of files in every format, written here in a few lines and compared as one text.
#include "literature/record_reading.h"

#include "base/byte_source.h"
#include "support/test_support.h"

namespace selvane::tests {

// Writes down records and problems as they come: "pmid|title|text|journal|year|mentions", each mention with
// its flags (* major, h heading, s substance), and for a mark the words at its place.
struct Notes : RecordVisitor {
  void OnRecord(Record&& record) override {
    std::string mentions;
    for (const Mention& mention : record.mentions) {
      mentions += fmt::format(" {}{}{}{}{}", mention.is_major ? "*" : "", mention.is_heading ? "h" : "",
                              mention.is_substance ? "s" : "", fmt::join(mention.ids, "+"),
                              mention.name.empty() ? "" : "(" + mention.name + ")");
      const bool is_mark = !mention.is_heading && !mention.is_substance;
      if (is_mark) mentions += "=" + DocumentText(record).substr(mention.offset, mention.length);
    }
    told.push_back(fmt::format("{}|{}|{}|{}|{}|{}", record.pmid, record.title, record.text, record.journal,
                               record.year, mentions));
    if (record.title == "throw") throw InputError("of the visitor");
  }
  void OnProblem(std::string_view kind, std::string_view example) override {
    told.push_back(fmt::format("{}: {}", kind, example));
  }
  void OnBytes(std::uint64_t more) override { bytes += more; }
  Texts told;
  std::uint64_t bytes = 0;
};

Texts ToldOf(const fs::path& name, std::string_view bytes) {
  // Pieces of several sizes must not matter.
  Texts told;
  for (const std::size_t piece : {7UL, 63UL, ByteSource::kPieceSize}) {
    if (piece < 64 && bytes.size() > 1'000'000) continue;
    ByteSource source(name, bytes, piece);
    Notes notes;
    SilentProgress progress;
    ReadRecords(source, notes, progress);
    EXPECT_EQ(notes.bytes, bytes.size());
    if (!told.empty()) {
      EXPECT_EQ(notes.told, told) << piece;
    }
    told = notes.told;
  }
  return told;
}

struct Case {
  std::string bytes;
  Texts told;
};

TEST(RecordReading, Medline) {
  const Case cases[] = {
      {"\nPMID- 1\nTI  - Long\n      title\nAB  - Text.\nDP  - 1998 Dec-1999\nTA  - J S\nJT  - Journal\n"
       "MH  - *Asthma/drug\n      therapy\nMH  - Crohn's Disease/*genetics\nRN  - 0 (A(1) acid)\nRN  - "
       "5-0-1\n"
       "PMID- 2\nMH  - Female\n\n\nTI  - T\nrubbish\n",
       {"substances without a name: a.nbib: PMID 1: \"5-0-1\"",
        "1|Long title|Text.|Journal|1998| *h(Asthma) *h(Crohn s Disease) s(A(1) acid)", "2||||0| h(Female)",
        "lines that belong to no record: a.nbib: line 19", "records without a PMID: a.nbib: record 3",
        "records with neither headings nor marks: a.nbib: record 3", "|T|||0|"}},
      {"PMID- 1\r\nTI  - \xFC\r\nMH  - A\r\n",
       {"1|\xC3\xBC|||0| h(A)",
        "files with bytes that are no UTF-8, read as code page 1252: a.nbib: 1 bytes"}},
      {"PMID- 1\nAB  - " + std::string(std::size_t{17} << 20U, 'x') + "\n\nPMID- 2\nMH  - A\n",
       {"records of more than 16 MiB, which are left out: a.nbib: PMID 1", "2||||0| h(A)"}},
      {"TY  - JOUR\nAB  - T\n", {"files of no known format: a.nbib: no reader knows its content"}},
      {"", {"files of no known format: a.nbib: no reader knows its content"}},
  };
  for (const auto& [bytes, told] : cases) EXPECT_EQ(ToldOf("a.nbib", bytes), told);
}

TEST(RecordReading, Tagged) {
  const std::string bytes =
      "PMID- 7\nTI  - Title\n      here\nAB  - \n      Of x<DictTerm DictCanon=\"Crohn's\n      "
      "Disease\">crohns\n"
      "      disease</DictTerm>.\n      <DictTerm>none</DictTerm> \xF6 <DictTerm DictCanon=\"B\"> b "
      "</DictTerm>\n"
      "AD  - X\nMH  - Asthma\n\nPMID- 8\nAB  - <DictTerm DictCanon=\"C\">c</DictTerm>\n";
  EXPECT_EQ(
      ToldOf("a.txt", bytes),
      Texts{"7|Title here|Of xcrohns disease. none \xC3\xB6 b||0| (Crohn s Disease)=crohns disease (B)=b"});
  EXPECT_EQ(ToldOf("a.md", bytes).at(0), "files of no known format: a.md: no reader knows its content");
}

TEST(RecordReading, Pubtator) {
  const std::string bytes =
      "1|t|\xC3\x84 lead\n1|a|Text of lead.\n1\t2\t6\tlead\tChemical\tMESH:D007854\n"
      "1\t15\t19\tlead\tChemical\tD007854|C000001+OMIM:"
      "12\n1\t10\t14\tText\tDisease\n1\t2\t6\tlead\tGene\t672\n"
      "1\t2\t6\tlead\tX\t-1\n1\t2\t6\t\tX\n"
      "1\t90\t94\tlead\tX\tD007854\n1\t2\t6\tgold\tX\tD007854\n1\tCID\tD007854\tD007854\n"
      "2\t1\t2\tx\tX\tD000001\n\n4|a|lead\n4\t1\t5\tlead\tX\tD007854\n4|t|T\n\n3|t|\n3|a|B\n3|a|C\n";
  EXPECT_EQ(
      ToldOf("a.pubtator", bytes),
      (Texts{"marks whose words stand elsewhere in the text, and count there: a.pubtator: line 5: \"Text\"",
             "marks with identifiers of other vocabularies: a.pubtator: line 6: Gene, 672",
             "marks for which the file says that they have no identifier: a.pubtator: line 7: X, -1",
             std::string(problems::kNoIdentifier) + ": a.pubtator: line 8: it has no words either",
             "marks outside of the text, which are left out: a.pubtator: line 9: \"lead\"",
             "marks whose words are not in the text, which are left out: a.pubtator: line 10: \"gold\"",
             "relations, which are not read: a.pubtator: line 11",
             "1|\xC3\x84 lead|Text of lead.||0| D007854=lead D007854+C000001+OMIM:12=lead (Text)=Text",
             "lines that belong to no record: a.pubtator: line 12",
             "lines that belong to no record: a.pubtator: line 16", "4||lead||0| D007854=lead",
             "lines that belong to no record: a.pubtator: line 20",
             "records with neither headings nor marks: a.pubtator: PMID 3", "3||B||0|"}));
}

// A place far into a text is found by steps.
TEST(RecordReading, CountsCharactersFarIntoAText) {
  std::string bytes = "1|t|";
  for (int i = 0; i < 200; ++i) bytes += "\xCE\xB1-\xE2\x82\xAC. ";
  for (int i = 0; i < 200; ++i)
    bytes += fmt::format("\n1\t{}\t{}\t\xCE\xB1-\xE2\x82\xAC\tX\tD000001", 5 * i, 5 * i + 3);
  const Texts told = ToldOf("a", bytes);
  ASSERT_EQ(told.size(), 1U);
  std::size_t marks = 0;
  for (std::size_t at = 0; (at = told[0].find("=\xCE\xB1-\xE2\x82\xAC", at)) != std::string::npos; ++at)
    ++marks;
  EXPECT_EQ(marks, 200U);
}

TEST(RecordReading, PubmedXml) {
  const std::string heading = "<MeshHeading><DescriptorName UI='D000001' MajorTopicYN='N'>A</DescriptorName>";
  const std::string bytes =
      "<?xml version='1.0'?><!-- > --><!DOCTYPE PubmedArticleSet PUBLIC '-//' "
      "'http://none/'><PubmedArticleSet>"
      "<PubmedArticle><MedlineCitation><PMID>1</PMID><DateCreated><Year>2020</Year>"
      "</DateCreated><Article><Journal>"
      "<JournalIssue><PubDate><MedlineDate>1998 Dec-1999 "
      "Jan</MedlineDate></PubDate></JournalIssue><Title>J</Title>"
      "</Journal><ArticleTitle>Of <i>H<sub>2</sub></i>O\n  and &lt;</ArticleTitle><Abstract>"
      "<AbstractText Label='AIM'>First.\n</AbstractText><AbstractText "
      "Label='UNLABELLED'>Second.</AbstractText>"
      "<CopyrightInformation>C</CopyrightInformation></Abstract><AuthorList><Author><PMID>9</PMID></Author></"
      "AuthorList>"
      "</Article><ChemicalList><Chemical><NameOfSubstance "
      "UI='C000001'>S's</NameOfSubstance></Chemical></ChemicalList>"
      "<SupplMeshList><SupplMeshName UI='C000002'>T</SupplMeshName></SupplMeshList><MeshHeadingList>" +
      heading + "<QualifierName MajorTopicYN='Y'>q</QualifierName></MeshHeading>" + heading +
      "</MeshHeading></MeshHeadingList><OtherAbstract><AbstractText>O</AbstractText></OtherAbstract>"
      "<CommentsCorrectionsList><CommentsCorrections><PMID>8</PMID></CommentsCorrections></"
      "CommentsCorrectionsList>"
      "</MedlineCitation><PubmedData><PubDate><Year>2021</Year></PubDate></PubmedData></PubmedArticle>\n"
      "<PubmedBookArticle><BookDocument><PMID>2</PMID><Book><BookTitle>B</BookTitle><PubDate><Year>1993</"
      "Year></PubDate>"
      "</Book></BookDocument></PubmedBookArticle><PubmedArticle></"
      "PubmedArticle><PubmedArticle><MedlineCitation><x></y>";
  EXPECT_EQ(
      ToldOf("a.xml", bytes),
      (Texts{"1|Of H2O and <|AIM: First. Second.|J|1998| sC000001(S s) sC000002(T) *hD000001(A) hD000001(A)",
             "records with neither headings nor marks: a.xml: PMID 2", "2|B||B|1993|",
             "records without a PMID: a.xml: line 4",
             "records with neither headings nor marks: a.xml: record 3", "||||0|",
             std::string(problems::kUnreadable) +
                 ": a.xml: line 4: this is no well-formed XML (mismatched tag) (records read before: 3)"}));
  const std::string large =
      "<PubmedArticleSet><PubmedArticle><MedlineCitation><PMID>1</PMID><Abstract><AbstractText>" +
      std::string(std::size_t{17} << 20U, 'x') +
      "</AbstractText></Abstract></MedlineCitation></PubmedArticle></PubmedArticleSet>";
  EXPECT_EQ(ToldOf("a.xml", large), (Texts{"records of more than 16 MiB, which are left out: a.xml: PMID 1",
                                           "files without a record: a.xml"}));
}

TEST(RecordReading, Bioc) {
  const auto annotation = [](const char* infon, int offset, const char* text) {
    return fmt::format("<annotation id='1'>{}<location offset='{}' length='4'/><text>{}</text></annotation>",
                       infon, offset, text);
  };
  const std::string bytes =
      "<collection><source>s</source><document><id>1</id><passage><infon key='type'>Title</infon>"
      "<infon key='year'>1999</infon><infon key='journal'>J; 1999</infon><offset>10</offset><text>\xC3\x84 "
      "lead</text>" +
      annotation("<infon key='MESH'>D007854</infon>", 12, "lead") +
      "</passage><passage><infon "
      "key='section_type'>ABSTRACT</infon><offset>30</offset><text>Of\nlead</text>" +
      annotation("<infon key='identifier'>MESH:C000001</infon>", 33, "lead") +
      annotation("<infon key='OMIM'>12</infon>", 32, "lead") + annotation("", 33, "lead") +
      annotation("<infon key='NCBI Gene'>1</infon>", 33, "lead") +
      annotation("<infon key='MESH'>-</infon>", 33, "lead") +
      "</passage><passage><infon key='type'>paragraph</infon><offset>60</offset><text>lead</text>" +
      annotation("<infon key='MESH'>D007854</infon>", 60, "lead") +
      "</passage><relation id='R'><infon key='MESH'>D000002</infon></relation></document>"
      "<document><id>2</id><passage><sentence><offset>0</offset><text>T</text></sentence><relation>"
      "<infon "
      "key='type'>title</infon></relation><sentence><offset>2</offset><text>A</text></sentence></passage></"
      "document></collection>";
  EXPECT_EQ(ToldOf("a.xml", bytes),
            (Texts{"relations, which are not read: a.xml: line 2",
                   "passages beside title and abstract, which are not read: a.xml: document 1",
                   "marks whose words stand elsewhere in the text, and count there: a.xml: line 2: \"lead\"",
                   "marks with identifiers of other vocabularies: a.xml: line 2: \"lead\"",
                   "marks for which the file says that they have no identifier: a.xml: line 2: \"lead\"",
                   "marks outside of the text, which are left out: a.xml: line 2: \"lead\"",
                   "1|\xC3\x84 lead|Of lead|J|1999| D007854=lead C000001=lead OMIM:12=lead (lead)=lead",
                   "relations, which are not read: a.xml: line 2",
                   "records with neither headings nor marks: a.xml: PMID 2", "2|T|A||0|"}));
}

using RecordFiles = FolderTest;

TEST_F(RecordFiles, FaultsOfTheVisitorAreNotTheFiles) {
  WriteText("a.nbib", "PMID- 1\nTI  - throw\nMH  - A\n");
  Notes notes;
  RecordingProgress progress;
  ExpectFault<InputError>("of the visitor", [&] { ReadRecords("a.nbib", notes, progress); });
  progress.interrupt_at = progress.pulses;
  WriteText("a.nbib", "PMID- 1\nMH  - A\n");
  EXPECT_THROW(ReadRecords("a.nbib", notes, progress), Interrupted);
  EXPECT_EQ(ReadRecords("none", notes, progress), RecordFormat::kUnknown);
  EXPECT_TRUE(notes.told.back().starts_with("files that could not be read to their end: none: cannot open"));
}

TEST_F(RecordFiles, FoldersGiveAllTheirFiles) {
  fs::create_directories("d/below");
  for (const char* name : {"d/b.txt", "d/a.xml", "d/.hidden", "z"}) WriteText(name, "");
  const fs::path names[] = {"z", "d"};
  EXPECT_EQ(LiteratureFiles(names), (std::vector<fs::path>{"z", "d/a.xml", "d/b.txt"}));
  const fs::path empty[] = {"d/below"};
  ExpectFault<InputError>("the folder holds no files", [&] { LiteratureFiles(empty); });
  const fs::path none[] = {"none"};
  ExpectFault<InputError>("no such file or folder", [&] { LiteratureFiles(none); });
}

}  // namespace selvane::tests
