// Numbers for the ids of rows.
#pragma once

#include <cstdint>
#include <vector>

namespace selvane {

// Gives each row id a place from 0 on, in order of first appearance. An id has 16 bits, signed or not: one
// that was widened with its sign is the same as without.
class RowPlaces {
 public:
  std::size_t PlaceOf(std::uint32_t row_id) {
    std::uint32_t& place = places_[row_id & 0xFFFFU];
    if (place == kNone) place = size_++;
    return place;
  }
  std::size_t size() const { return size_; }

 private:
  static constexpr std::uint32_t kNone = UINT32_MAX;
  std::uint32_t size_ = 0;
  std::vector<std::uint32_t> places_ = std::vector<std::uint32_t>(65536, kNone);
};

}  // namespace selvane
