// Numbers for the ids of rows.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <vector>

namespace selvane {

// Gives each row id a place from 0 on, in order of first appearance. Memory goes by the ids that there are,
// 65,536 of them at a time, not by how great they are.
class RowPlaces {
 public:
  std::size_t PlaceOf(std::uint32_t row_id) {
    const std::size_t page = row_id / kPage;
    if (page >= pages_.size()) pages_.resize(page + 1);
    if (!pages_[page]) {
      pages_[page] = std::make_unique<Page>();
      pages_[page]->fill(kNone);
    }
    std::uint32_t& place = (*pages_[page])[row_id % kPage];
    if (place == kNone) place = size_++;
    return place;
  }
  std::size_t size() const { return size_; }

 private:
  static constexpr std::uint32_t kPage = 65536;
  static constexpr std::uint32_t kNone = UINT32_MAX;
  using Page = std::array<std::uint32_t, kPage>;

  std::uint32_t size_ = 0;
  std::vector<std::unique_ptr<Page>> pages_;
};

}  // namespace selvane
