// Input of the size of real input, made anew for each program and removed at its end.
#pragma once

#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

namespace selvane {

// A folder of its own, removed in the end.
class BenchFolder {
 public:
  BenchFolder();
  BenchFolder(const BenchFolder&) = delete;
  BenchFolder& operator=(const BenchFolder&) = delete;
  ~BenchFolder();
  std::filesystem::path operator/(const char* name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

// The file that an environment variable names, or else the made one.
std::filesystem::path TaxonomyInput(const BenchFolder& folder);
std::filesystem::path AbstractsInput(const BenchFolder& folder);

// A taxonomy of 16 categories in which each node has `children` children, `levels` deep. Terms are called "T
// 12".
void MakeTaxonomy(const std::filesystem::path& path, int children, int levels);
// A term table T over some terms: rows come from a few themes, so that terms go together.
void MakeTermTable(const std::filesystem::path& path, const std::vector<std::string>& terms, int rows,
                   double terms_a_row);
// A term table T in groups of `group` terms that go together: by chains, each term implies the one before it
// in its group and stands in nine tenths of its rows; otherwise each is the group's first with one row in a
// hundred turned.
enum class Correlation { kChains, kCopies };
void MakeCorrelatedTable(const std::filesystem::path& path, const std::vector<std::string>& terms, int rows,
                         std::size_t group, Correlation kind);
// Up to `count` terms of the taxonomy at the lowest levels, spread over it, whose names can be columns.
std::vector<std::string> LeafTerms(const std::filesystem::path& taxonomy, int count);

// Seconds that a call takes.
template <typename Call>
double SecondsOf(const Call& call) {
  const auto start = std::chrono::steady_clock::now();
  call();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace selvane
