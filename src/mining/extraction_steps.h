// Steps that both extractors take.
#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "data/transaction_source.h"
#include "mining/extraction.h"

namespace selvane {

// The rules table that an extraction makes.
inline constexpr const char* kExtractedTable = "Extracted";

class StageTimer {
 public:
  double Seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start_).count();
  }

 private:
  std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

// Throws InputError for thresholds outside (0, 1], a table that is too long or has no plain name, and
// FileError when the copy of the itemset file cannot be made.
void CheckRequest(const TransactionSource& source, const ExtractionRequest& request);

// True when both names lead to one file, or would.
bool IsSamePlace(const std::filesystem::path& a, const std::filesystem::path& b);

// Copies the itemset file, unless `copy` is empty. Throws FileError.
void KeepCopy(const std::filesystem::path& itemsets, const std::filesystem::path& copy);

// What the information file tells of the run.
std::vector<std::string> InformationTexts(const ExtractionRequest& request, std::uint32_t rows,
                                          std::vector<std::string> taxonomies);

}  // namespace selvane
