#include "base/error.h"
#include "base/file.h"
#include "fuzzing.h"
#include "mining/itemset_file.h"
#include "rules/rules_info.h"

using namespace selvane;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const ScratchFolder kScratch;
  const std::filesystem::path path = kScratch.path / "Infox.dat";
  OutputFile file(path);
  file.Write(TextOf(data, size));
  file.Close();
  bool is_read = false;
  RulesInfo info;
  try {
    info = ReadRulesInfo(kScratch.path / "x.mdb");
    is_read = true;
  } catch (const FileError&) {
  }
  if (is_read) {
    WriteRulesInfo({}, std::vector{7, kMostItems - 1}, info.texts, kScratch.path / "Infoback");
    const RulesInfo back = ReadRulesInfo(kScratch.path / "back.mdb");
    Require(back.texts == info.texts && back.first_map.size() == kMostItems && back.second_map.back() == 10);
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
  return 0;
}
