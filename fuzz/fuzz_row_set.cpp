#include <roaring/roaring.h>

#include <algorithm>
#include <memory>

#include "base/error.h"
#include "data/row_set.h"
#include "fuzzing.h"

using namespace selvane;

namespace {

struct RoaringFree {
  void operator()(roaring_bitmap_t* set) const noexcept { roaring_bitmap_free(set); }
};
using RoaringSet = std::unique_ptr<roaring_bitmap_t, RoaringFree>;

}  // namespace

// What we take for a set, the library takes for the same set, and it survives being written again.
int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const std::uint32_t block = data[0];
  const std::string_view bytes = TextOf(data + 1, size - 1);
  std::vector<std::uint32_t> rows = {7};
  try {
    AppendRows(bytes, block, rows);
  } catch (const InputError&) {
    Require(rows.size() == 1);
    return 0;
  }
  rows.erase(rows.begin());
  Require(!rows.empty() && rows.size() <= kRowsOfBlock);
  Require(std::adjacent_find(rows.begin(), rows.end(), std::greater_equal<>()) == rows.end());
  Require(rows.front() / kRowsOfBlock == block && rows.back() / kRowsOfBlock == block);
  const RoaringSet set(roaring_bitmap_portable_deserialize_safe(bytes.data(), bytes.size()));
  Require(set && roaring_bitmap_get_cardinality(set.get()) == rows.size());
  std::vector<std::uint32_t> theirs(rows.size());
  roaring_bitmap_to_uint32_array(set.get(), theirs.data());
  Require(theirs == rows);
  theirs.clear();
  AppendRows(EncodeRows(rows), block, theirs);
  Require(theirs == rows);
  return 0;
}
