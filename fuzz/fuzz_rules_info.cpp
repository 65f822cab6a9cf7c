#include "base/error.h"
#include "fuzzing.h"
#include "itemsets/itemset_file.h"
#include "rules/rules_info.h"

using namespace selvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::filesystem::path path = AsFile("Infox.dat", data, size);  // of x.mdb
  try {
    ReadRulesInfo(path.parent_path() / "x.mdb");
  } catch (const FileError&) {
  }
  try {
    ItemsetFile itemsets;
    itemsets.OpenForReading(path);
    for (ItemsetRecord record;;) {
      itemsets.ReadNext(record);
      Require(record.items.size() * 4 < size);
    }
  } catch (const FileError&) {
  }
  try {
    std::string_view records = TextOf(data, size);
    for (std::vector<std::uint32_t> items; !records.empty();) {
      const EncodedRecord record = TakeRecord(records);
      record.CopyItems(items);
      Require(record.bytes.size() <= size && items.size() == record.size());
    }
  } catch (const FileError&) {
  }
  return 0;
}
