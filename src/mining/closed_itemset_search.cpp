#include "mining/closed_itemset_search.h"

#include <algorithm>
#include <bit>

#include "mining/generalized_apriori.h"

namespace selvane {

namespace {

constexpr int kFirstPosition = 10;  // of the bar, and the one in the end
constexpr int kLastPosition = 90;

// True when all `sets` hold a row that is not in `rows`.
bool MeetOutside(std::span<const RowWord* const> sets, const RowWord* rows, std::size_t words) {
  for (std::size_t i = 0; i < words; ++i) {
    RowWord all = ~rows[i];
    for (const RowWord* const set : sets) all &= set[i];
    if (all != 0) return true;
  }
  return false;
}

}  // namespace

ClosedItemsetSearch::ClosedItemsetSearch(const RowBits& rows, Options options, ClosedItemsetSink& sink,
                                         Progress& progress)
    : items_(rows), options_(options), sink_(sink), progress_(progress), larger_(rows) {}

ClosedItemsetSearch::Frame& ClosedItemsetSearch::FrameAt(std::size_t depth) {
  if (frames_.size() <= depth) {
    frames_.emplace_back().rows.resize(items_.words());
    frames_.back().critical = RowBits(depth, items_.words() * 64);
  }
  return frames_[depth];
}

void ClosedItemsetSearch::Run() {
  Frame& root = FrameAt(0);
  std::fill(root.rows.begin(), root.rows.end(), ~RowWord{0});
  for (std::size_t item = 0; item < items_.size(); ++item) {
    const std::uint32_t support = operations_.count_and(items_[item], items_[item], items_.words());
    root.support = std::max(root.support, support);
    if (support >= options_.least_rows) root.rest.push_back({static_cast<std::uint32_t>(item), support});
  }
  for (std::size_t i = 0; i < root.rest.size(); ++i) {
    Descend(0, root.rest[i]);
    progress_.SetPosition(kFirstPosition +
                          static_cast<int>((i + 1) * (kLastPosition - kFirstPosition) / root.rest.size()));
    progress_.Pulse();
  }
}

// To the generator with one more item.
void ClosedItemsetSearch::Descend(std::size_t depth, const ItemSupport& next) {
  if (++visited_ % 1024 == 0) progress_.Pulse();
  const Frame& parent = frames_[depth];
  Frame& frame = FrameAt(depth + 1);
  generator_.push_back(next.item);
  frame.support = next.support;
  operations_.store_and(parent.rows.data(), items_[next.item], frame.rows.data(), items_.words());
  frame.closure = parent.closure;
  frame.closure.push_back(next.item);
  // The rows that a larger closed itemset must have, and more than which no item needs to be counted.
  const std::uint32_t enough =
      std::max(options_.least_rows, LeastRows(options_.min_confidence, frame.support));
  CountRest(parent, next.item, enough, frame);
  std::sort(frame.closure.begin(), frame.closure.end());
  sink_.OnGenerator(generator_, frame.closure, frame.support, IsFirst(frame));
  TellLarger(frame, enough);
  ExtendAll(depth + 1);
  generator_.pop_back();
}

// Which items join the closure, and which may extend it. An item before the last one of the generator extends
// no generator any more; it is counted only when its count with the parent is enough for the closure or for a
// larger itemset, and keeps that greater count otherwise.
void ClosedItemsetSearch::CountRest(const Frame& parent, std::uint32_t item, std::uint32_t enough,
                                    Frame& frame) {
  frame.rest.clear();
  for (const ItemSupport& other : parent.rest) {
    if (other.item == item) continue;
    std::uint32_t count = other.support;
    if (other.item > item || count >= enough) {
      count = operations_.count_and(frame.rows.data(), items_[other.item], items_.words());
      if (count == frame.support) {
        frame.closure.push_back(other.item);
        continue;
      }
    }
    if (count >= options_.least_rows) frame.rest.push_back({other.item, count});
  }
}

void ClosedItemsetSearch::TellLarger(const Frame& frame, std::uint32_t enough) {
  candidates_.clear();
  std::copy_if(frame.rest.begin(), frame.rest.end(), std::back_inserter(candidates_),
               [enough](const ItemSupport& other) { return other.support >= enough; });
  if (candidates_.empty()) return;
  const auto tell = [this](std::span<const std::uint32_t> larger, std::uint32_t support) {
    sink_.OnLarger(larger, support);
  };
  if (options_.covers_only) {
    larger_.ForEachCover(frame.closure, frame.rows.data(), candidates_, tell);
  } else {
    larger_.ForEach(frame.closure, frame.rows.data(), candidates_, enough, tell);
  }
}

// A closed itemset has one minimal generator of which no item can give way to earlier items of the closure:
// what is left when its items are dropped as long as the rows stay the same, the last one first.
bool ClosedItemsetSearch::IsFirst(const Frame& frame) {
  if (frame.closure.size() == generator_.size()) return true;
  for (std::size_t i = 0; i < generator_.size(); ++i) {
    chosen_.clear();
    for (const std::uint32_t item : frame.closure) {
      if (item < generator_[i]) chosen_.push_back(items_[item]);
    }
    for (std::size_t j = i + 1; j < generator_.size(); ++j) chosen_.push_back(items_[generator_[j]]);
    if (!chosen_.empty() && !MeetOutside(chosen_, frame.rows.data(), items_.words())) return false;
  }
  return true;
}

void ClosedItemsetSearch::ExtendAll(std::size_t depth) {
  Frame& frame = frames_[depth];
  bool has_critical = false;
  for (std::size_t i = 0; i < frame.rest.size(); ++i) {
    const ItemSupport& next = frame.rest[i];
    if (next.item < generator_.back()) continue;
    if (!has_critical) MakeCritical(frames_[depth - 1], frame);
    has_critical = true;
    if (StaysMinimal(frame, next.item)) Descend(depth, next);
  }
}

void ClosedItemsetSearch::MakeCritical(const Frame& parent, Frame& frame) const {
  const RowWord* const last = items_[generator_.back()];
  const std::size_t size = generator_.size();
  for (std::size_t i = 0; i + 1 < size; ++i) {
    operations_.store_and(parent.critical[i], last, frame.critical[i], items_.words());
  }
  for (std::size_t word = 0; word < items_.words(); ++word) {
    frame.critical[size - 1][word] = parent.rows[word] & ~last[word];
  }
}

bool ClosedItemsetSearch::StaysMinimal(const Frame& frame, std::uint32_t item) const {
  for (std::size_t i = 0; i < generator_.size(); ++i) {
    const RowWord* const critical = frame.critical[i];
    if (!operations_.any_outside(critical, items_[item], frame.rows.data(), items_.words())) return false;
  }
  return true;
}

}  // namespace selvane
