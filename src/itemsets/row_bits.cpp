#include "itemsets/row_bits.h"

#include <bit>

#if defined(__x86_64__)
#include <immintrin.h>
#define SELVANE_HAS_AVX2 1
#endif

namespace selvane {

namespace {

std::uint32_t PlainCountAnd(const RowWord* a, const RowWord* b, std::size_t words) {
  std::uint32_t count = 0;
  for (std::size_t i = 0; i < words; ++i) count += static_cast<std::uint32_t>(std::popcount(a[i] & b[i]));
  return count;
}

void PlainStoreAnd(const RowWord* a, const RowWord* b, RowWord* result, std::size_t words) {
  for (std::size_t i = 0; i < words; ++i) result[i] = a[i] & b[i];
}

bool PlainAnyOutside(const RowWord* a, const RowWord* b, const RowWord* c, std::size_t words) {
  for (std::size_t i = 0; i < words; ++i) {
    if ((a[i] & b[i] & ~c[i]) != 0) return true;
  }
  return false;
}

// Fills words from their lowest bit on.
class WordPacker {
 public:
  explicit WordPacker(RowWord* next) : next_(next) {}
  // `bits` has nothing from bit `count` on; `count` is at most 64.
  void Add(RowWord bits, unsigned count) {
    // What does not fit is carried into the next word, but for a full word on an empty one: shifting by 64
    // is undefined, and there is nothing to carry.
    word_ |= bits << used_;
    if (used_ + count < 64) {
      used_ += count;
      return;
    }
    *next_++ = word_;
    word_ = used_ == 0 ? 0 : bits >> (64 - used_);
    used_ = used_ + count - 64;
  }
  void Finish() {
    if (used_ > 0) *next_ = word_;
  }

 private:
  RowWord* next_;
  RowWord word_ = 0;
  unsigned used_ = 0;
};

void PlainPack(const RowWord* a, const RowWord* mask, RowWord* result, std::size_t words) {
  WordPacker packer(result);
  for (std::size_t i = 0; i < words; ++i) {
    for (RowWord left = mask[i]; left != 0; left &= left - 1) packer.Add((a[i] & left & -left) != 0, 1);
  }
  packer.Finish();
}

#ifdef SELVANE_HAS_AVX2

#define SELVANE_AVX2 __attribute__((target("avx2,popcnt")))

// Counts by carry-save adders over blocks of vectors, after W. Mula, N. Kurz and D. Lemire, Faster population
// counts using AVX2 instructions, The Computer Journal 61 (2018).
SELVANE_AVX2 inline __m256i Load(const RowWord* words) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words));
}

SELVANE_AVX2 inline __m256i Both(const RowWord* a, const RowWord* b, std::size_t vector) {
  return _mm256_and_si256(Load(a + vector * 4), Load(b + vector * 4));
}

// The bits of each 64-bit lane, counted by looking up nibbles.
SELVANE_AVX2 inline __m256i CountLanes(__m256i v) {
  const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4,  //
                                         0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
  const __m256i nibbles = _mm256_set1_epi8(0x0F);
  const __m256i low = _mm256_shuffle_epi8(table, _mm256_and_si256(v, nibbles));
  const __m256i high = _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(v, 4), nibbles));
  return _mm256_sad_epu8(_mm256_add_epi8(low, high), _mm256_setzero_si256());
}

// A full adder on each bit: sum and carry of three.
SELVANE_AVX2 inline __m256i Add(__m256i& sum, __m256i a, __m256i b) {
  const __m256i half = _mm256_xor_si256(sum, a);
  const __m256i carry = _mm256_or_si256(_mm256_and_si256(sum, a), _mm256_and_si256(half, b));
  sum = _mm256_xor_si256(half, b);
  return carry;
}

SELVANE_AVX2 inline std::uint32_t SumLanes(__m256i v) {
  const __m128i halves = _mm_add_epi64(_mm256_castsi256_si128(v), _mm256_extracti128_si256(v, 1));
  return static_cast<std::uint32_t>(_mm_cvtsi128_si64(halves) + _mm_extract_epi64(halves, 1));
}

SELVANE_AVX2 std::uint32_t Avx2CountAnd(const RowWord* a, const RowWord* b, std::size_t words) {
  const std::size_t vectors = words / 4;
  __m256i total = _mm256_setzero_si256();
  __m256i ones = total;
  __m256i twos = total;
  __m256i fours = total;
  std::size_t i = 0;
  for (; i + 8 <= vectors; i += 8) {
    const __m256i twos_a = Add(ones, Both(a, b, i), Both(a, b, i + 1));
    const __m256i twos_b = Add(ones, Both(a, b, i + 2), Both(a, b, i + 3));
    const __m256i fours_a = Add(twos, twos_a, twos_b);
    const __m256i twos_c = Add(ones, Both(a, b, i + 4), Both(a, b, i + 5));
    const __m256i twos_d = Add(ones, Both(a, b, i + 6), Both(a, b, i + 7));
    const __m256i fours_b = Add(twos, twos_c, twos_d);
    const __m256i eights = Add(fours, fours_a, fours_b);
    total = _mm256_add_epi64(total, CountLanes(eights));
  }
  total = _mm256_slli_epi64(total, 3);
  total = _mm256_add_epi64(total, _mm256_slli_epi64(CountLanes(fours), 2));
  total = _mm256_add_epi64(total, _mm256_slli_epi64(CountLanes(twos), 1));
  total = _mm256_add_epi64(total, CountLanes(ones));
  for (; i < vectors; ++i) total = _mm256_add_epi64(total, CountLanes(Both(a, b, i)));
  return SumLanes(total);
}

SELVANE_AVX2 void Avx2StoreAnd(const RowWord* a, const RowWord* b, RowWord* result, std::size_t words) {
  for (std::size_t i = 0; i < words / 4; ++i) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(result + i * 4), Both(a, b, i));
  }
}

SELVANE_AVX2 bool Avx2AnyOutside(const RowWord* a, const RowWord* b, const RowWord* c, std::size_t words) {
  for (std::size_t i = 0; i < words / 4; ++i) {
    if (_mm256_testc_si256(Load(c + i * 4), Both(a, b, i)) == 0) return true;
  }
  return false;
}

__attribute__((target("bmi2,popcnt"))) void Bmi2Pack(const RowWord* a, const RowWord* mask, RowWord* result,
                                                     std::size_t words) {
  WordPacker packer(result);
  for (std::size_t i = 0; i < words; ++i) {
    packer.Add(_pext_u64(a[i], mask[i]), static_cast<unsigned>(_mm_popcnt_u64(mask[i])));
  }
  packer.Finish();
}

#endif

}  // namespace

RowBitsOperations PlainRowBitsOperations() {
  return {PlainCountAnd, PlainStoreAnd, PlainAnyOutside, PlainPack};
}

RowBitsOperations FastRowBitsOperations() {
#ifdef SELVANE_HAS_AVX2
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("popcnt")) {
    const bool has_bmi2 = __builtin_cpu_supports("bmi2") != 0;
    return {Avx2CountAnd, Avx2StoreAnd, Avx2AnyOutside, has_bmi2 ? Bmi2Pack : PlainPack};
  }
#endif
  return PlainRowBitsOperations();
}

}  // namespace selvane
