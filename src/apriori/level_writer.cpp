#include "apriori/level_writer.h"

#include <algorithm>

#include "base/error.h"

namespace selvane {

// Only the first failure is worth telling: the later ones follow from it.
template <typename Operation>
void LevelWriter::Try(const Operation& operation) {
  if (!error_.empty()) return;
  try {
    operation();
  } catch (const FileError& error) {
    error_ = error.what();
  }
}

LevelWriter::LevelWriter(const std::filesystem::path& path, std::span<const NodeNumber> nodes)
    : nodes_(nodes) {
  Try([&] { file_.OpenForWriting(path); });
}

void LevelWriter::Write(const Level& level) {
  record_items_.resize(level.set_size);
  for (std::size_t i = 0; i < level.size(); ++i) {
    const auto set = level.Set(i);
    std::transform(set.begin(), set.end(), record_items_.begin(),
                   [this](std::uint32_t item) { return static_cast<std::uint32_t>(nodes_[item]); });
    Try([&] { file_.Write(record_items_, level.support_counts[i]); });
  }
  written_ += static_cast<std::uint32_t>(level.size());
}

void LevelWriter::Close() {
  Try([this] { file_.Close(); });
}

}  // namespace selvane
