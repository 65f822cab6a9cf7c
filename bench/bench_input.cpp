#include "bench_input.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <random>

#include "base/text.h"
#include "data/bulk_insert.h"
#include "data/database.h"
#include "taxonomy/taxonomy_store.h"

namespace selvane {

namespace fs = std::filesystem;

BenchFolder::BenchFolder() {
  std::string name = (fs::temp_directory_path() / "selvane-bench-XXXXXX").string();
  if (::mkdtemp(name.data()) == nullptr) std::abort();
  path_ = name;
}

BenchFolder::~BenchFolder() {
  std::error_code ignored;
  fs::remove_all(path_, ignored);
}

fs::path TaxonomyInput(const BenchFolder& folder) {
  if (const char* const given = std::getenv("SELVANE_MESH")) return given;
  fs::path made = folder / "taxonomy.xml";
  if (!fs::exists(made)) MakeTaxonomy(made, 8, 4);
  return made;
}

fs::path AbstractsInput(const BenchFolder& folder) {
  if (const char* const given = std::getenv("SELVANE_ABSTRACTS")) return given;
  fs::path made = folder / "abstracts";
  fs::create_directory(made);
  std::mt19937 random(1);
  for (int i = 0; i < 20000; ++i) {
    std::string text = "PMID- 1\nTI  - A title\nAB  - \n";
    for (int mark = 0; mark < 15; ++mark) {
      text +=
          "      Some words of an abstract that runs on for a while, as they do, up to\n      "
          "<DictTerm DictCanon=\"T " +
          std::to_string(random() % 9000) + "\">a term</DictTerm> and more words, with p < 0.05 in them.\n";
    }
    std::ofstream(made / fmt::format("{:05}.txt", i)) << text << "AD  - Nowhere.\n";
  }
  return made;
}

void MakeTaxonomy(const fs::path& path, int children, int levels) {
  std::ofstream file(path);
  int number = 0;
  std::vector<std::string> level;
  for (char letter = 'A'; letter < 'A' + 16; ++letter) level.emplace_back(1, letter);
  for (int depth = 0; depth <= levels; ++depth) {
    std::vector<std::string> next;
    for (const std::string& code : level) {
      file << fmt::format("<node canonical=\"T {}\" type=\"d\" tree=\"{}\"/>\n", number++, code);
      for (int child = 0; child < children; ++child) {
        next.push_back(fmt::format("{}{}{:03}", code, code.size() == 1 ? "" : ".", child * 37 + 1));
      }
    }
    level = std::move(next);
  }
}

std::vector<std::string> LeafTerms(const fs::path& taxonomy, int count) {
  const TaxonomyStore store(taxonomy);
  std::vector<std::string> deep;
  store.working().ForEachNode([&deep](const TaxonomyNode& node) {
    if (std::count(node.code.begin(), node.code.end(), '.') == 4) deep.push_back(node.term);
  });
  std::vector<std::string> terms;
  for (std::size_t i = 0; i < deep.size() && static_cast<int>(terms.size()) < count;
       i += std::max<std::size_t>(1, deep.size() / static_cast<std::size_t>(count))) {
    const std::string lower = LowerCase(deep[i]);
    const bool known = std::any_of(terms.begin(), terms.end(),
                                   [&lower](const std::string& term) { return LowerCase(term) == lower; });
    if (!known) terms.push_back(deep[i]);
  }
  return terms;
}

namespace {

// Makes the table T; `fill` gives the terms of one row, one after the other.
void MakeTable(const fs::path& path, const std::vector<std::string>& terms, int rows,
               const std::function<void(std::vector<bool>&)>& fill) {
  Database database = Database::Create(path);
  std::vector<Field> fields = {{"Index", FieldType::kInt16}};
  std::vector<std::string> names = {"Index"};
  for (const std::string& term : terms) {
    fields.push_back({term, FieldType::kInt16});
    names.push_back(term);
  }
  database.CreateTable("T", fields);
  Transaction transaction(database);
  BulkInsert insert = database.OpenBulkInsert("T", names);
  std::vector<bool> values(terms.size());
  for (int row = 1; row <= rows; ++row) {
    insert.Set(0, std::int64_t{row});
    fill(values);
    for (std::size_t i = 0; i < terms.size(); ++i)
      insert.Set(static_cast<int>(i + 1), std::int64_t{values[i]});
    insert.Insert();
  }
  transaction.Commit();
}

}  // namespace

void MakeTermTable(const fs::path& path, const std::vector<std::string>& terms, int rows,
                   double terms_a_row) {
  constexpr std::size_t kThemes = 10;
  std::mt19937 random(7);
  std::uniform_real_distribution<double> chance(0, 1);
  MakeTable(path, terms, rows, [&](std::vector<bool>& row) {
    const std::size_t theme = random() % kThemes;
    for (std::size_t i = 0; i < row.size(); ++i) {
      // Two thirds of a row's terms are those of its theme.
      const double share = i % kThemes == theme ? terms_a_row * 2 / 3 * kThemes : terms_a_row / 3;
      row[i] = chance(random) < share / static_cast<double>(row.size());
    }
  });
}

void MakeCorrelatedTable(const fs::path& path, const std::vector<std::string>& terms, int rows,
                         std::size_t group, Correlation kind) {
  std::mt19937 random(7);
  std::uniform_real_distribution<double> chance(0, 1);
  MakeTable(path, terms, rows, [&](std::vector<bool>& row) {
    bool first = false;
    for (std::size_t i = 0; i < row.size(); ++i) {
      if (i % group == 0) {
        row[i] = first = chance(random) < 0.3;
      } else if (kind == Correlation::kChains) {
        row[i] = row[i - 1] && chance(random) < 0.9;
      } else {
        row[i] = first != (chance(random) < 0.01);
      }
    }
  });
}

}  // namespace selvane
