#include "closed/closed_result_files.h"

#include <fmt/format.h>

#include <string>
#include <system_error>

#include "base/error.h"

namespace selvane {

ClosedResultFiles::ClosedResultFiles() {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    std::string reason = "a folder has this name";
    try {
      std::error_code error;
      if (!std::filesystem::is_directory(kNames[i], error)) {
        files_[i].emplace(kNames[i]);
        continue;
      }
    } catch (const FileError& error) {
      reason = error.what();
    }
    std::error_code gone;
    throw FileError(fmt::format(
        "the current folder {} cannot take {}, one of the files that this extraction leaves there: {}; "
        "start the program in another folder",
        std::filesystem::current_path(gone).string(), kNames[i], reason));
  }
}

void ClosedResultFiles::AddPair(const EncodedRecord& generator, const EncodedRecord& larger) {
  // Only the closure stands in as many rows as the generator.
  const bool is_closure = generator.support_count == larger.support_count;
  if (is_closure) files_[kGenerators]->records.WriteEncoded(generator.bytes);
  if (generator.size() == larger.size()) return;
  const std::string_view both(generator.bytes.data(), generator.bytes.size() + larger.bytes.size());
  files_[is_closure ? kExact : kApproximate]->records.WriteEncoded(both);
  files_[kAllRules]->records.WriteEncoded(both);
}

void ClosedResultFiles::Close() {
  for (auto& file : files_) file->records.Close();
}

std::vector<NewFile*> ClosedResultFiles::files() {
  std::vector<NewFile*> all;
  for (auto& file : files_) all.push_back(&file->made);
  return all;
}

}  // namespace selvane
