// The items of the maps of a rules information file.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "taxonomy/taxonomy_store.h"

namespace selvane {

// The places of all entries above 0, which are the numbers of the items.
inline std::vector<NodeNumber> ItemsOfMap(std::span<const std::int32_t> map) {
  std::vector<NodeNumber> items;
  for (std::size_t place = 0; place < map.size(); ++place) {
    if (map[place] > 0) items.push_back(static_cast<NodeNumber>(place));
  }
  return items;
}

}  // namespace selvane
