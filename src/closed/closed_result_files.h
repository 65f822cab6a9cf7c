// The files that an extraction by closed itemsets leaves behind (docs/formats/closed-itemsets.md).
#pragma once

#include <array>
#include <filesystem>
#include <optional>
#include <string_view>
#include <vector>

#include "base/new_file.h"
#include "itemsets/itemset_file.h"

namespace selvane {

// The files that stay in the current folder. They appear when their caller commits them, all together. Throws
// FileError, which names the folder when it takes no files.
class ClosedResultFiles {
 public:
  static constexpr std::array<const char*, 5> kNames = {"FCI.dat", "Generator.dat", "ExactRules.dat",
                                                        "ApproxRules.dat", "Rules.dat"};
  ClosedResultFiles();

  void AddClosedItemsets(std::string_view records) { files_[kClosed]->records.WriteEncoded(records); }
  // A generator with its closure, or with a larger closed itemset, which stands behind it in memory.
  void AddPair(const EncodedRecord& generator, const EncodedRecord& larger);
  // What was added is complete when this returns; to be called before the rest.
  void Close();
  // The file of closed itemsets before the commit.
  const std::filesystem::path& closed_itemsets() const { return files_[kClosed]->made.temporary(); }
  // All of them, to be named with what else the run makes.
  std::vector<NewFile*> files();

 private:
  // Places in kNames.
  enum Place : std::size_t { kClosed, kGenerators, kExact, kApproximate, kAllRules };
  struct File {
    explicit File(const char* name) : made(name, ExistingFile::kReplace) {
      records.OpenForWriting(made.temporary(), made.path());
    }
    NewFile made;
    ItemsetFile records;
  };
  std::array<std::optional<File>, kNames.size()> files_;
};

}  // namespace selvane
