#include "termdb/term_table_building.h"

#include <gmock/gmock.h>

#include "taxonomy/mesh_loading.h"
#include "taxonomy/taxonomy_files.h"
#include "termdb/document_reader.h"
#include "termdb/row_spool.h"
#include "termdb/seen_pmids.h"
#include "termdb/term_table.h"

namespace selvane::tests {

using testing::ElementsAre;
using testing::HasSubstr;

const std::string kSamples = std::string(SELVANE_SOURCE_DIR) + "/samples/";

class TermTableBuildingTest : public FolderTest {
 protected:
  void LoadSampleHeadings() {
    SilentProgress progress;
    LoadMesh({kSamples + "headings.txt", "tax.mdb"}, progress);
  }

  // Builds terms.mdb anew; what is told of is in `told_`.
  BuildingReport Build(TermTableRequest request, Progress* progress = nullptr) {
    SilentProgress silent;
    fs::remove("terms.mdb");
    told_.clear();
    request.output = "terms.mdb";
    return BuildTermTable(
        request, TaxonomyStore("tax.mdb"), FixedClock(),
        [this](std::span<const BuildingNotice> notices) {
          for (const BuildingNotice& notice : notices) {
            const std::string example = notice.example.substr(notice.example.rfind(' ') + 1);
            told_.push_back(fmt::format("{}|{}|{}|{}", notice.kind, notice.count, notice.distinct, example));
          }
        },
        progress != nullptr ? *progress : silent);
  }
  BuildingReport BuildSamples(const ColumnChoice& columns, bool major = false, std::optional<int> from = {},
                              std::optional<int> to = {}) {
    TermTableRequest request;
    request.paths = {kSamples + "search.nbib", kSamples + "marks.pubtator"};
    request.columns = columns;
    request.major_only = major;
    request.from_year = from;
    request.to_year = to;
    return Build(request);
  }

  Texts told_;
};

TEST_F(TermTableBuildingTest, CountsWhatItTakesAndWhatItDoesNot) {
  LoadSampleHeadings();
  const BuildingReport report = BuildSamples({});
  EXPECT_EQ(fmt::format("{} {} {}", report.records, report.rows, report.terms), "11 9 11");
  EXPECT_THAT(told_, ElementsAre("names that are no terms of the taxonomy|1|1|90000107",
                                 "records with neither headings nor marks|1|0|90000108",
                                 "identifiers that the taxonomy does not have|1|1|90000110",
                                 "records that stand twice|1|0|90000101"));
  EXPECT_EQ(report.columns,
            (Texts{"Humans", "Asthma", "Adult", "Albuterol", "Pulmonary Disease, Chronic Obstructive",
                   "Smoking", "Terbutaline", "Hypertension", "Child", "Atenolol"}));
  EXPECT_EQ(Rows("terms.mdb", "SELECT * FROM 14_05_23_11_MESHTERMS")[7], "8|0|1|0|0|0|0|1|0|0|0");
}

TEST_F(TermTableBuildingTest, ChoosesColumns) {
  LoadSampleHeadings();
  WriteText("out.txt", "# of no use\r\n\r\nCOPD\r\n B01 \n");
  const struct {
    ColumnChoice columns;
    bool major;
    std::optional<int> from, to;
    std::uint32_t rows;
    Texts expected;
  } cases[] = {
      {{2, 1, {}}, false, {}, {}, 9, {"Humans", "Asthma"}},
      {{2, 1, {"Humans", "C08", "M.01"}}, false, {}, {}, 9, {"Albuterol", "Smoking"}},
      {{2, 1, {"@out.txt", "D001249"}}, false, {}, {}, 9, {"Adult", "Albuterol"}},
      {{{}, 3, {}},
       false,
       {},
       {},
       9,
       {"Adult", "Albuterol", "Asthma", "Humans", "Pulmonary Disease, Chronic Obstructive", "Smoking"}},
      {{}, true, {}, 2016, 2, {"Albuterol", "Asthma"}},
      {{}, false, 2019, {}, 2, {"Humans", "Hypertension", "Propranolol", "Smoking", "Albuterol", "Asthma"}},
  };
  for (const auto& c : cases) {
    const BuildingReport report = BuildSamples(c.columns, c.major, c.from, c.to);
    EXPECT_EQ(report.rows, c.rows);
    EXPECT_EQ(report.columns, c.expected);
  }
  EXPECT_THAT(told_,
              testing::IsSupersetOf({"records of other years|5|0|90000101",
                                     "records without a year, which are of no wanted year|3|0|90000109"}));
  ExpectFault<InputError>("no position \"Humbug\"", [&] { BuildSamples({10, 1, {"Humbug"}}); });
  ExpectFault<InputError>("none of 11 terms", [&] { BuildSamples({10, 10, {}}); });
  ExpectFault<InputError>("first year", [&] { BuildSamples({}, false, 2020, 2019); });
  EXPECT_THAT(FileNames("."), ElementsAre("out.txt", "tax.mdb"));
}

TEST_F(TermTableBuildingTest, TaggedTextsGiveWhatTheyAlwaysGave) {
  SilentProgress progress;
  LoadTaxonomy(kSamples + "taxonomy.xml", "tax.mdb", ExistingFile::kRefuse, progress);
  std::vector<fs::path> files = {kSamples + "abstracts", kSamples + "abstracts/sample-001.txt"};
  const TermCollection collection = CollectTerms(TaxonomyStore("tax.mdb"), QueryFiles(files), {}, progress);
  const TermTableReport old =
      WriteTermTable(collection, "old.mdb", ExistingFile::kRefuse, FixedClock(), progress);
  TermTableRequest request;
  request.paths = files;
  const BuildingReport report = Build(request);
  EXPECT_EQ(report.columns, old.columns);
  const std::string table = "SELECT * FROM 14_05_23_11_MESHTERMS";
  EXPECT_EQ(Rows("terms.mdb", table), Rows("old.mdb", table));
  // Of equal PMIDs the last is of a tagged text too, and stays a row.
  EXPECT_EQ(report.rows, 31U);
  std::string words;
  DocumentReader reader("terms.mdb", report.table);
  reader.ForEach(
      std::vector<std::uint32_t>{31},
      [&](const Document& document) {
        const DocumentMark& mark = document.marks.at(0);
        words = document.pmid + ' ' + reader.terms()[mark.term] + '=' +
                (document.title + ' ' + document.text).substr(mark.offset, mark.length);
      },
      progress);
  EXPECT_EQ(words, "90000001 Asthma=asthma");
}

TEST_F(TermTableBuildingTest, MakesSetsWhereRowsDoNotSuffice) {
  std::string lines = NodeLine("Diseases", "C");
  std::string record = "PMID- 1\n";
  for (int i = 0; i < 1991; ++i) {
    lines += NodeLine("Term " + std::to_string(i), "C" + std::to_string(i + 1));
    record += "MH  - Term " + std::to_string(i) + "\n";
  }
  LoadText(lines, "tax.mdb");
  WriteText("1.nbib", record + "\nPMID- 2\nMH  - Term 7\n");
  TermTableRequest request;
  request.paths = {"1.nbib"};
  const auto form = [&](std::size_t most, std::optional<TermTableForm> wanted) {
    request.columns.most = most;
    request.form = wanted;
    return Build(request).form;
  };
  EXPECT_EQ(form(1990, {}), TermTableForm::kRows);
  EXPECT_EQ(form(1991, {}), TermTableForm::kSets);
  ExpectFault<InputError>("choose the form of sets", [&] { form(1991, TermTableForm::kRows); });
  EXPECT_EQ(form(1, TermTableForm::kSets), TermTableForm::kSets);
  EXPECT_EQ(Rows("terms.mdb", "SELECT Name,Rows FROM sys_Sets"), (Texts{"Index|2", "Term 7|2"}));
}

TEST_F(TermTableBuildingTest, LeavesNothingWhenItStops) {
  LoadSampleHeadings();
  TermTableRequest request;
  request.paths = {kSamples + "search.nbib"};
  int stopped = 0;
  for (RecordingProgress progress; progress.interrupt_at < 200; progress.pulses = 0, ++stopped) {
    ++progress.interrupt_at;
    try {
      Build(request, &progress);
      break;
    } catch (const Interrupted&) {
      EXPECT_EQ(FileNames("."), Texts{"tax.mdb"});
    }
  }
  EXPECT_GT(stopped, 2);
  fs::remove("terms.mdb");
  WriteText("none.nbib", "PMID- 1\nMH  - Humbug\n");
  request.paths = {"none.nbib"};
  EXPECT_THROW(Build(request), NoTerms);
  EXPECT_THAT(told_, ElementsAre(HasSubstr("no terms of the taxonomy|1|1|1"), HasSubstr("without a term")));
  EXPECT_THAT(FileNames("."), ElementsAre("none.nbib", "tax.mdb"));
}

// Rows larger and smaller than the buffer, and PMIDs that are none.
TEST_F(TermTableBuildingTest, KeepsRowsAndPmids) {
  RowSpool spool("");
  std::vector<std::vector<std::uint32_t>> rows;
  for (const std::size_t size : {3U, 0U, 65535U, 65536U, 200000U, 1U}) {
    rows.emplace_back(size, static_cast<std::uint32_t>(rows.size()));
    spool.Add(rows.back());
  }
  std::vector<std::vector<std::uint32_t>> read;
  spool.ForEach([&](std::span<const std::uint32_t> row) { read.emplace_back(row.begin(), row.end()); });
  EXPECT_TRUE(read == rows);
  EXPECT_TRUE(FileNames(".").empty());
  SeenPmids seen;
  for (const char* const pmid : {"65536", "1", "007", "99999999999", "x", ""}) {
    EXPECT_TRUE(seen.IsNew(pmid)) << pmid;
    seen.Add(pmid);
    EXPECT_EQ(seen.IsNew(pmid), *pmid == '\0') << pmid;
  }
  EXPECT_TRUE(seen.IsNew("7"));
}

}  // namespace selvane::tests
