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
  for (const std::size_t piece : {7UL, 64UL, ByteSource::kPieceSize}) {
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
