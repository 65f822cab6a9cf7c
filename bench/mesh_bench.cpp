// 300 MB of descriptor records to a taxonomy database, against walking over their tags; and finding terms.
#include <fmt/format.h>
#include <sys/resource.h>

#include "base/file.h"
#include "base/text.h"
#include "base/xml_stream.h"
#include "bench_input.h"
#include "taxonomy/mesh_loading.h"
#include "taxonomy/taxonomy_file.h"
#include "taxonomy/term_finder.h"

namespace selvane {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kBytes = 300'000'000;

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) escaped += c == '&' ? "&amp;" : c == '<' ? "&lt;" : std::string(1, c);
  return escaped;
}

// A record as long as those of MeSH are in the mean: most of it is what nobody reads here.
std::string Descriptor(std::size_t number, const TaxonomyLine& line, std::size_t size) {
  const std::string name = Escaped(line.term);
  std::string text = fmt::format(
      "<DescriptorRecord DescriptorClass = \"1\">\n  <DescriptorUI>D{:06}</DescriptorUI>\n  "
      "<DescriptorName>\n"
      "   <String>{}</String>\n  </DescriptorName>\n  <TreeNumberList>\n",
      number, name);
  for (const std::string& code : line.codes)
    text += fmt::format("   <TreeNumber>{}{}</TreeNumber>\n", code[0],
                        code.substr(std::min<std::size_t>(2, code.size())));
  text += "  </TreeNumberList>\n  <ConceptList>\n   <Concept PreferredConceptYN=\"Y\">\n    <TermList>\n";
  for (int i = 0; i < 8; ++i) {
    text += fmt::format(
        "     <Term  ConceptPreferredTermYN=\"N\"  IsPermutedTermYN=\"N\"  LexicalTag=\"NON\">\n"
        "      <TermUI>T{}{}</TermUI>\n      <String>{}, form {}</String>\n      <DateCreated>\n"
        "       <Year>1999</Year>\n       <Month>01</Month>\n       <Day>01</Day>\n      </DateCreated>\n    "
        " </Term>\n",
        number, i, name, i);
  }
  text += "    </TermList>\n   </Concept>\n  </ConceptList>\n  <AllowableQualifiersList>\n";
  while (text.size() < size) {
    text +=
        "   <AllowableQualifier>\n    <QualifierReferredTo>\n     <QualifierUI>Q000031</QualifierUI>\n"
        "      <QualifierName>\n      <String>analogs &amp; derivatives</String>\n      </QualifierName>\n"
        "    </QualifierReferredTo>\n    <Abbreviation>AA</Abbreviation>\n   </AllowableQualifier>\n";
  }
  return text += "  </AllowableQualifiersList>\n</DescriptorRecord>\n";
}

void WriteDescriptors(const fs::path& taxonomy, const fs::path& path) {
  TaxonomyFile file;
  SilentProgress progress;
  ReadTaxonomyFile(taxonomy, file, progress);
  OutputFile out(path);
  out.Write("<?xml version=\"1.0\"?>\n<DescriptorRecordSet LanguageCode = \"eng\">\n");
  for (std::size_t i = 0; i < file.lines.size(); ++i) {
    out.Write(Descriptor(i + 1, file.lines[i], kBytes / file.lines.size()));
  }
  out.Write("</DescriptorRecordSet>\n");
  out.Close();
}

class Walker final : public XmlHandler {
 public:
  void OnStart(std::string_view, const XmlAttributes&) override {}
  void OnEnd(std::string_view) override {}
  void OnText(std::string_view) override {}
};

void LoadDescriptors(benchmark::State& state) {
  const BenchFolder folder;
  WriteDescriptors(TaxonomyInput(folder), folder / "desc.xml");
  const auto megabytes = static_cast<double>(fs::file_size(folder / "desc.xml")) / 1e6;
  SilentProgress progress;
  for ([[maybe_unused]] auto _ : state) {
    const double walk = SecondsOf([&] {
      ByteSource source(folder / "desc.xml");
      Walker walker;
      XmlStream stream(source, walker);
      while (stream.Step()) continue;
    });
    MeshLoadReport report;
    const double load = SecondsOf([&] {
      report =
          LoadMesh({folder / "desc.xml", folder / "tax.mdb", ExistingFile::kReplace, {}, false}, progress);
    });
    rusage usage{};
    ::getrusage(RUSAGE_SELF, &usage);
    state.counters["headings"] = static_cast<double>(report.counts.headings);
    state.counters["MB_per_s"] = megabytes / load;
    state.counters["load_s"] = load;
    state.counters["memory_MB"] = static_cast<double>(usage.ru_maxrss) / 1e3;
    state.counters["ratio_to_walk"] = load / walk;
  }
}

// A million mentions by identifier.
void FindMentions(benchmark::State& state) {
  const BenchFolder folder;
  WriteDescriptors(TaxonomyInput(folder), folder / "desc.xml");
  SilentProgress progress;
  const MeshLoadReport report =
      LoadMesh({folder / "desc.xml", folder / "tax.mdb", ExistingFile::kReplace, {}, false}, progress);
  constexpr int kMentions = 1'000'000;
  for ([[maybe_unused]] auto _ : state) {
    std::optional<TermFinder> finder;
    state.counters["fill_s"] = SecondsOf([&] { finder.emplace(TaxonomyStore(folder / "tax.mdb")); });
    std::vector<std::string> ids(1);
    long found = 0;
    const double seconds = SecondsOf([&] {
      for (int i = 0; i < kMentions; ++i) {
        ids[0] = fmt::format("D{:06}", 1 + i % report.counts.headings);
        found += static_cast<long>(finder->Find(ids, {}).terms.size());
      }
    });
    state.counters["found"] = static_cast<double>(found);
    state.counters["million_per_s"] = kMentions / 1e6 / seconds;
  }
}

BENCHMARK(LoadDescriptors)->Unit(benchmark::kMillisecond)->Iterations(1);
BENCHMARK(FindMentions)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace
}  // namespace selvane

BENCHMARK_MAIN();
