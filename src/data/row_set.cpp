#include "data/row_set.h"

#include <fmt/format.h>
#include <roaring/roaring.h>

#include <bit>
#include <memory>
#include <new>

#include "base/error.h"

namespace selvane {

namespace {

struct RoaringFree {
  void operator()(roaring_bitmap_t* set) const noexcept { roaring_bitmap_free(set); }
};

// The first word of a set without runs, and the low half of that of a set with runs.
constexpr std::uint32_t kWithoutRuns = 12346;
constexpr std::uint32_t kWithRuns = 12347;
// A list has at most so many rows; a bitset has more.
constexpr std::uint32_t kLongestList = 4096;
// What a set of one block needs while it is made, several times over.
constexpr std::size_t kRoomOfSet = std::size_t{64} << 10;

[[noreturn]] void Damaged(const char* how) {
  throw InputError(fmt::format("the set of rows is damaged ({})", how));
}

// Takes little-endian numbers from the bytes of a file.
class ByteTaker {
 public:
  explicit ByteTaker(std::string_view bytes) : bytes_(bytes) {}

  std::uint64_t Take(std::size_t size) {
    if (bytes_.size() < size) Damaged("it ends too early");
    std::uint64_t value = 0;
    for (std::size_t i = size; i-- > 0;) value = value << 8 | static_cast<unsigned char>(bytes_[i]);
    bytes_.remove_prefix(size);
    return value;
  }
  std::uint32_t Take16() { return static_cast<std::uint32_t>(Take(2)); }
  std::uint32_t Take32() { return static_cast<std::uint32_t>(Take(4)); }
  bool AtEnd() const { return bytes_.empty(); }

 private:
  std::string_view bytes_;
};

// What stands before the rows of a block: how many they are, and whether they are stored as runs.
struct Head {
  std::uint32_t count = 0;
  bool has_runs = false;
};

Head TakeHead(ByteTaker& bytes, std::uint32_t block) {
  Head head;
  const std::uint32_t cookie = bytes.Take32();
  std::uint32_t blocks = (cookie >> 16) + 1;
  if ((cookie & 0xFFFFU) == kWithRuns) {
    head.has_runs = (bytes.Take(1) & 1) != 0;
  } else if (cookie == kWithoutRuns) {
    blocks = bytes.Take32();
  } else {
    Damaged("it does not begin as a set in the portable Roaring format");
  }
  if (blocks != 1) Damaged("it does not hold exactly one block");
  if (bytes.Take16() != block) Damaged("its rows are those of another block");
  head.count = bytes.Take16() + 1;
  // A set with runs states the place of its rows only where it has several blocks.
  if (cookie == kWithoutRuns && bytes.Take32() != 16) Damaged("its rows stand at another place");
  return head;
}

void TakeRuns(ByteTaker& bytes, std::uint32_t first, std::vector<std::uint32_t>& rows) {
  std::uint32_t next = 0;
  for (std::uint32_t runs = bytes.Take16(); runs > 0; --runs) {
    const std::uint32_t begin = bytes.Take16();
    const std::uint32_t end = begin + bytes.Take16() + 1;
    if (begin < next || end > kRowsOfBlock) Damaged("its runs of rows do not ascend");
    for (std::uint32_t row = begin; row < end; ++row) rows.push_back(first + row);
    next = end;
  }
}

void TakeList(ByteTaker& bytes, std::uint32_t first, std::uint32_t count, std::vector<std::uint32_t>& rows) {
  std::uint32_t next = 0;
  for (; count > 0; --count) {
    const std::uint32_t row = bytes.Take16();
    if (row < next) Damaged("its rows do not ascend");
    rows.push_back(first + row);
    next = row + 1;
  }
}

void TakeBitset(ByteTaker& bytes, std::uint32_t first, std::vector<std::uint32_t>& rows) {
  for (std::uint32_t word = 0; word < kRowsOfBlock / 64; ++word) {
    for (std::uint64_t bits = bytes.Take(8); bits != 0; bits &= bits - 1) {
      rows.push_back(first + word * 64 + static_cast<std::uint32_t>(std::countr_zero(bits)));
    }
  }
}

}  // namespace

std::string EncodeRows(std::span<const std::uint32_t> rows) {
  // The library ends the process where memory is short. Asked for beforehand, its lack can be told of.
  ::operator delete(::operator new(kRoomOfSet));
  const std::unique_ptr<roaring_bitmap_t, RoaringFree> set(roaring_bitmap_of_ptr(rows.size(), rows.data()));
  if (!set) throw std::bad_alloc();
  roaring_bitmap_run_optimize(set.get());
  std::string bytes(roaring_bitmap_portable_size_in_bytes(set.get()), '\0');
  roaring_bitmap_portable_serialize(set.get(), bytes.data());
  return bytes;
}

void AppendRows(std::string_view bytes, std::uint32_t block, std::vector<std::uint32_t>& rows) {
  const std::size_t before = rows.size();
  const std::uint32_t first = block * kRowsOfBlock;
  ByteTaker rest(bytes);
  try {
    const Head head = TakeHead(rest, block);
    if (head.has_runs) {
      TakeRuns(rest, first, rows);
    } else if (head.count <= kLongestList) {
      TakeList(rest, first, head.count, rows);
    } else {
      TakeBitset(rest, first, rows);
    }
    if (rows.size() - before != head.count) Damaged("it has another number of rows than it says");
    if (!rest.AtEnd()) Damaged("bytes follow it");
  } catch (const InputError&) {
    rows.resize(before);
    throw;
  }
}

}  // namespace selvane
