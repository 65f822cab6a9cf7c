// Files of literature to records, against walking over the same bytes by lines or by tags.
#include <fmt/format.h>
#include <sys/resource.h>

#include <cstdlib>
#include <ctime>
#include <random>

#include "base/file.h"
#include "base/line_source.h"
#include "base/xml_stream.h"
#include "bench_input.h"
#include "literature/record_reading.h"

namespace selvane {
namespace {

namespace fs = std::filesystem;

// Megabytes of a made file.
std::uint64_t InputSize() {
  const char* const given = std::getenv("SELVANE_LITERATURE_MB");
  return (given != nullptr ? std::strtoull(given, nullptr, 10) : 100) * 1'000'000;
}

// Texts of the length of real ones: some words of a few thousand, one in fifty beyond ASCII.
class TextMaker {
 public:
  std::string Words(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
      const auto number = random_() % 5000;
      text += fmt::format("{}{}{}", i == 0 ? "" : " ", number % 50 == 0 ? "\xCE\xB2-" : "",
                          kStems[number % kStems.size()]);
      text.append(number % 7, 'e');
    }
    return text += '.';
  }
  unsigned Number(unsigned below) { return static_cast<unsigned>(random_() % below); }

 private:
  static constexpr std::array<const char*, 11> kStems = {
      "of", "the", "patient", "treat", "in", "and", "asthma", "with", "dos", "inhal", "respons"};
  std::mt19937 random_{1};
};

std::string Wrapped(std::string_view text) {
  std::string lines;
  while (text.size() > 80) {
    const std::size_t end = text.rfind(' ', 80);
    lines.append(text.substr(0, end)).append("\n      ");
    text.remove_prefix(end + 1);
  }
  return lines.append(text);
}

std::string MedlineRecord(TextMaker& make, unsigned pmid) {
  std::string record =
      fmt::format("PMID- {}\nOWN - NLM\nSTAT- MEDLINE\nDP  - 2017 Apr 17\nTI  - {}\nAB  - {}\n", pmid,
                  Wrapped(make.Words(14)), Wrapped(make.Words(180)));
  for (int i = 0; i < 4; ++i) {
    record +=
        fmt::format("FAU - Author, Some {0}\nAU  - Author S{0}\nAD  - {1}\n", i, Wrapped(make.Words(15)));
  }
  record +=
      "LA  - eng\nPT  - Journal Article\nTA  - J Made\nJT  - Journal of the made\nRN  - 0 (Some Acid)\n";
  for (int i = 0; i < 10; ++i)
    record += fmt::format("MH  - {}Term {}/*drug effects\n", i % 3 == 0 ? "*" : "", make.Number(30000));
  return record += "EDAT- 2017/04/20 06:00\nSO  - J Made. 2017 Apr 19;12(4):1.\n\n";
}

std::string PubtatorRecord(TextMaker& make, unsigned pmid) {
  const std::string title = make.Words(14);
  const std::string text = make.Words(180);
  std::string record = fmt::format("{0}|t|{1}\n{0}|a|{2}\n", pmid, title, text);
  std::size_t character = 0;
  int rows = 0;
  // Words of the text, each at its place.
  for (std::size_t at = 0; at < title.size() && rows < 5; ++at) {
    if ((static_cast<unsigned char>(title[at]) & 0xC0U) == 0x80U) continue;
    const std::size_t end = title.find_first_of(" .", at);
    const bool is_plain =
        end != std::string::npos && end > at && title.substr(at, end - at).find('\xCE') == std::string::npos;
    const bool is_start = at == 0 || title[at - 1] == ' ';
    if (is_start && is_plain) {
      for (int i = 0; i < 3; ++i)
        record += fmt::format("{}\t{}\t{}\t{}\tDisease\tMESH:D{:06}\n", pmid, character, character + end - at,
                              title.substr(at, end - at), make.Number(30000));
      ++rows;
    }
    ++character;
  }
  return record += fmt::format("{}\tCID\tD000001\tD000002\n\n", pmid);
}

std::string PubmedXmlRecord(TextMaker& make, unsigned pmid) {
  std::string record = fmt::format(
      "<PubmedArticle>\n    <MedlineCitation Status=\"MEDLINE\" Owner=\"NLM\">\n        <PMID "
      "Version=\"1\">{}</PMID>\n"
      "        <DateRevised>\n            <Year>2009</Year>\n            <Month>12</Month>\n        "
      "</DateRevised>\n"
      "        <Article>\n            <Journal>\n                <JournalIssue>\n                    "
      "<PubDate>\n"
      "                        <Year>2009</Year>\n                    </PubDate>\n                "
      "</JournalIssue>\n"
      "                <Title>Journal of the made</Title>\n            </Journal>\n            "
      "<ArticleTitle>{}</ArticleTitle>\n"
      "            <Abstract>\n                <AbstractText Label=\"AIM\">{}</AbstractText>\n"
      "                <AbstractText>CO<sub>2</sub> {}</AbstractText>\n            </Abstract>\n            "
      "<AuthorList>\n",
      pmid, make.Words(14), make.Words(60), make.Words(120));
  for (int i = 0; i < 4; ++i) {
    record += fmt::format(
        "                <Author ValidYN=\"Y\">\n                    <LastName>Author</LastName>\n"
        "                    <Initials>S{}</Initials>\n                    <AffiliationInfo>\n"
        "                        <Affiliation>{}</Affiliation>\n                    </AffiliationInfo>\n"
        "                </Author>\n",
        i, make.Words(15));
  }
  record += "            </AuthorList>\n        </Article>\n        <MeshHeadingList>\n";
  for (int i = 0; i < 10; ++i) {
    const unsigned term = make.Number(30000);
    record += fmt::format(
        "            <MeshHeading>\n                <DescriptorName UI=\"D{0:06}\" MajorTopicYN=\"N\">Term "
        "{0}</DescriptorName>\n"
        "                <QualifierName UI=\"Q000187\" MajorTopicYN=\"Y\">drug effects</QualifierName>\n     "
        "       </MeshHeading>\n",
        term);
  }
  return record +=
         "        </MeshHeadingList>\n    </MedlineCitation>\n    <PubmedData>\n        <History>\n"
         "            <PubMedPubDate PubStatus=\"entrez\">\n                <Year>2009</Year>\n            "
         "</PubMedPubDate>\n"
         "        </History>\n    </PubmedData>\n</PubmedArticle>\n";
}

std::string BiocRecord(TextMaker& make, unsigned pmid) {
  std::string record = fmt::format(
      "<document>\n  <id>{}</id>\n  <passage>\n    <infon key=\"type\">title</infon>\n    "
      "<offset>0</offset>\n"
      "    <text>asthma {}</text>\n",
      pmid, make.Words(14));
  for (int i = 0; i < 12; ++i) {
    record += fmt::format(
        "    <annotation id=\"{}\">\n      <infon key=\"type\">Disease</infon>\n      <infon "
        "key=\"MESH\">D{:06}</infon>\n"
        "      <location offset=\"0\" length=\"6\"/>\n      <text>asthma</text>\n    </annotation>\n",
        i, make.Number(30000));
  }
  return record += fmt::format(
             "  </passage>\n  <passage>\n    <infon key=\"type\">abstract</infon>\n    <offset>200</offset>\n"
             "    <text>{}</text>\n  </passage>\n</document>\n",
             make.Words(180));
}

using MakeRecord = std::string (*)(TextMaker&, unsigned);

void MakeFile(const fs::path& path, MakeRecord make_record, std::string_view head, std::string_view tail) {
  TextMaker make;
  OutputFile file(path);
  file.Write(head);
  for (unsigned pmid = 1; file.position() < InputSize(); ++pmid) file.Write(make_record(make, pmid));
  file.Write(tail);
  file.Close();
}

struct CountingVisitor : RecordVisitor {
  void OnRecord(Record&& record) override {
    ++records;
    mentions += static_cast<double>(record.mentions.size());
  }
  void OnProblem(std::string_view, std::string_view) override { ++problems; }
  double records = 0;
  double mentions = 0;
  double problems = 0;
};

struct DeafHandler : XmlHandler {
  void OnStart(std::string_view, const XmlAttributes&) override {}
  void OnEnd(std::string_view) override {}
  void OnText(std::string_view) override {}
};

// Seconds of the processor: other programs may run beside.
template <typename Call>
double ProcessorSecondsOf(const Call& call) {
  const std::clock_t start = std::clock();
  call();
  return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

void WalkOver(const fs::path& path, bool is_xml) {
  ByteSource source(path);
  if (is_xml) {
    DeafHandler handler;
    XmlStream stream(source, handler);
    while (stream.Step()) {
    }
  } else {
    LineSource lines(source);
    std::size_t bytes = 0;
    for (std::string_view line; lines.Next(line);) bytes += line.size();
    benchmark::DoNotOptimize(bytes);
  }
}

void Read(benchmark::State& state, MakeRecord make_record, std::string_view head, std::string_view tail) {
  const BenchFolder folder;
  const fs::path path = folder / "literature";
  MakeFile(path, make_record, head, tail);
  const double megabytes = static_cast<double>(fs::file_size(path)) / 1e6;
  for ([[maybe_unused]] auto _ : state) {
    CountingVisitor visitor;
    SilentProgress progress;
    const double seconds = ProcessorSecondsOf([&] { ReadRecords(path, visitor, progress); });
    const double walk = ProcessorSecondsOf([&] { WalkOver(path, !head.empty()); });
    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    state.counters["MB_per_s"] = megabytes / seconds;
    state.counters["walk_MB_per_s"] = megabytes / walk;
    state.counters["ratio_to_walk"] = seconds / walk;
    state.counters["records"] = visitor.records;
    state.counters["mentions"] = visitor.mentions;
    state.counters["problems"] = visitor.problems;
    state.counters["most_memory_MB"] = static_cast<double>(usage.ru_maxrss) / 1024;
  }
}

#define READ(name, ...) \
  BENCHMARK_CAPTURE(Read, name, __VA_ARGS__)->Iterations(1)->Repetitions(3)->Unit(benchmark::kMillisecond)
READ(nbib, &MedlineRecord, "", "");
READ(pubtator, &PubtatorRecord, "", "");
READ(pubmed_xml, &PubmedXmlRecord, "<?xml version=\"1.0\"?>\n<PubmedArticleSet>\n", "</PubmedArticleSet>\n");
READ(bioc, &BiocRecord, "<?xml version=\"1.0\"?>\n<collection>\n<source>made</source>\n", "</collection>\n");

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
