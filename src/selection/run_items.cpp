#include "selection/run_items.h"

#include <algorithm>
#include <bit>

namespace selvane {

RunItems::RunItems(std::span<const NodeNumber> nodes, const RowBits& rows, const ItemHierarchy& hierarchy,
                   const DistinctWitnesses* witnesses)
    : rows_(rows), hierarchy_(hierarchy), witnesses_(witnesses), below_(nodes.size()) {
  for (std::uint32_t place = 0; place < nodes.size(); ++place) {
    places_.emplace(nodes[place], place);
    counts_.push_back(CountRows({rows[place], rows.words()}));
  }
  for (std::uint32_t place = 0; place < nodes.size(); ++place) {
    for (const NodeNumber above : hierarchy.Above(nodes[place])) {
      const auto found = places_.find(above);
      if (found != places_.end()) below_[found->second].push_back(place);
    }
  }
}

void RunItems::PlacesOf(std::span<const std::uint32_t> nodes, std::vector<std::uint32_t>& places) const {
  places.clear();
  for (const std::uint32_t node : nodes) places.push_back(places_.at(static_cast<NodeNumber>(node)));
}

void RunItems::HoldingRows(std::span<const std::uint32_t> places, std::vector<RowWord>& rows) const {
  rows.assign(rows_[places[0]], rows_[places[0]] + words());
  for (const std::uint32_t place : places.subspan(1)) {
    const RowWord* const more = rows_[place];
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i] &= more[i];
  }
}

void RunItems::SupportingRows(std::span<const std::uint32_t> places, std::vector<RowWord>& rows) const {
  HoldingRows(places, rows);
  if (witnesses_ != nullptr) witnesses_->ClearUnsupporting(places, rows);
}

std::uint32_t CountRows(std::span<const RowWord> rows) {
  std::uint32_t count = 0;
  for (const RowWord word : rows) count += static_cast<std::uint32_t>(std::popcount(word));
  return count;
}

}  // namespace selvane
