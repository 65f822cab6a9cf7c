#include "closed/closed_itemset_search.h"

#include <algorithm>
#include <bit>

#include "itemsets/least_rows.h"

namespace selvane {

namespace {

constexpr int kFirstPosition = 10;  // of the bar, and the one in the end
constexpr int kLastPosition = 90;
constexpr std::size_t kProbedWords = 16;

// True when a row holds all `sets` that not all `others` hold.
bool MeetOutside(std::span<const RowWord* const> sets, std::span<const RowWord* const> others,
                 std::size_t words) {
  for (std::size_t i = 0; i < words; ++i) {
    RowWord all = ~RowWord{0};
    for (const RowWord* const set : sets) all &= set[i];
    for (const RowWord* const other : others) {
      if ((all & ~other[i]) != 0) return true;
    }
  }
  return false;
}

}  // namespace

ClosedItemsetSearch::ClosedItemsetSearch(const RowBits& rows, Options options, ClosedItemsetSink& sink,
                                         Progress& progress)
    : bits_(rows), items_(rows), options_(options), sink_(sink), progress_(progress) {}

ClosedItemsetSearch::Frame& ClosedItemsetSearch::FrameAt(std::size_t depth) {
  if (frames_.size() <= depth) {
    Frame& frame = frames_.emplace_back();
    frame.own_rows.resize(items_.words());
    frame.all_rows.resize(items_.words());
    frame.critical = RowBits(depth, items_.words() * 64);
  }
  return frames_[depth];
}

void ClosedItemsetSearch::Run() {
  Frame& root = FrameAt(0);
  // The empty set stands in all rows; bits beyond the last row are set too and meet only items' zeros.
  root.items = &items_;
  root.rows = root.own_rows.data();
  std::fill(root.own_rows.begin(), root.own_rows.end(), ~RowWord{0});
  root.all_rows = root.own_rows;
  root.has_critical = true;
  for (std::uint32_t item = 0; item < bits_.size(); ++item) {
    const std::uint32_t support_count = operations_.count_and(items_[item], items_[item], items_.words());
    if (support_count >= options_.least_rows) root.rest.push_back({item, support_count});
  }
  for (std::size_t i = 0; i < root.rest.size(); ++i) {
    Descend(0, root.rest[i]);
    progress_.SetPosition(kFirstPosition +
                          static_cast<int>((i + 1) * (kLastPosition - kFirstPosition) / root.rest.size()));
    progress_.Pulse();
  }
}

// To the generator with one more item. Frames live in a deque, so that `parent` stays where it is when a
// deeper one is made.
void ClosedItemsetSearch::Descend(std::size_t depth, const ItemSupport& next) {
  if (++visited_ % 64 == 0) progress_.Pulse();
  const Frame& parent = frames_[depth];
  Frame& frame = FrameAt(depth + 1);
  generator_.push_back(next.item);
  frame.support_count = next.support_count;
  frame.has_critical = false;
  if (parent.packed_items) {
    frame.items = &*parent.packed_items;
    frame.rows = (*frame.items)[next.item];
  } else {
    frame.items = parent.items;
    frame.rows = frame.own_rows.data();
    operations_.store_and(parent.rows, (*frame.items)[next.item], frame.own_rows.data(),
                          frame.items->words());
  }
  frame.closure = parent.closure;
  frame.closure.push_back(next.item);
  // How many rows a larger closed itemset must have. An item with fewer matters to extensions only.
  const std::uint32_t enough =
      std::max(options_.least_rows, LeastRows(options_.min_confidence, frame.support_count));
  CountRest(parent, next.item, enough, frame);
  std::sort(frame.closure.begin(), frame.closure.end());
  sink_.OnGenerator(generator_, frame.closure, frame.support_count, IsFirst(frame));
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
    std::uint32_t count = other.support_count;
    if (other.item > item || count >= enough) {
      count = operations_.count_and(frame.rows, (*frame.items)[other.item], frame.items->words());
      if (count == frame.support_count) {
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
               [enough](const ItemSupport& other) { return other.support_count >= enough; });
  if (candidates_.empty()) return;
  const auto tell = [this](std::span<const std::uint32_t> larger, std::uint32_t support_count) {
    if (++visited_ % 64 == 0) progress_.Pulse();
    sink_.OnLarger(larger, support_count);
  };
  if (options_.covers_only) {
    larger_.ForEachCover(*frame.items, frame.closure, frame.rows, candidates_, tell);
  } else {
    larger_.ForEach(*frame.items, frame.closure, frame.rows, candidates_, enough, tell);
  }
}

// A closed itemset has one minimal generator of which no item can give way to earlier items of the closure:
// what is left when its items are dropped as long as the rows stay the same, the last one first.
bool ClosedItemsetSearch::IsFirst(const Frame& frame) {
  if (frame.closure.size() == generator_.size()) return true;
  generator_rows_.clear();
  for (const std::uint32_t item : generator_) generator_rows_.push_back(items_[item]);
  // For each item: do the earlier items of the closure, with the later ones of the generator, give the same
  // rows already? Then another generator comes before this one.
  for (std::size_t i = 0; i < generator_.size(); ++i) {
    chosen_.clear();
    for (const std::uint32_t item : frame.closure) {
      if (item < generator_[i]) chosen_.push_back(items_[item]);
    }
    chosen_.insert(chosen_.end(), generator_rows_.begin() + static_cast<std::ptrdiff_t>(i) + 1,
                   generator_rows_.end());
    if (!chosen_.empty() && !MeetOutside(chosen_, generator_rows_, items_.words())) return false;
  }
  return true;
}

void ClosedItemsetSearch::ExtendAll(std::size_t depth) {
  Frame& frame = frames_[depth];
  frame.packed_items.reset();
  // Items before the last one were tried with it from their own frames.
  const auto first = std::find_if(frame.rest.begin(), frame.rest.end(), [this](const ItemSupport& other) {
    return other.item > generator_.back();
  });
  if (first == frame.rest.end()) return;
  if (frame.rest.end() - first >= options_.least_to_pack && frame.support_count < frame.items->words() * 32)
    Pack(frame);
  for (auto next = first; next != frame.rest.end(); ++next) {
    if (StaysMinimal(depth, next->item)) Descend(depth, *next);
  }
}

// Makes the critical rows of the generator's first `depth` items, and before those of its beginnings, which
// neighbouring generators share.
void ClosedItemsetSearch::MakeCritical(std::size_t depth) {
  Frame& frame = frames_[depth];
  if (frame.has_critical) return;
  MakeCritical(depth - 1);
  frame.has_critical = true;
  const Frame& parent = frames_[depth - 1];
  const RowWord* const last = items_[generator_[depth - 1]];
  operations_.store_and(parent.all_rows.data(), last, frame.all_rows.data(), items_.words());
  for (std::size_t i = 0; i + 1 < depth; ++i) {
    operations_.store_and(parent.critical[i], last, frame.critical[i], items_.words());
  }
  for (std::size_t word = 0; word < items_.words(); ++word) {
    frame.critical[depth - 1][word] = parent.all_rows[word] & ~last[word];
  }
}

// True when one of the first rows holds `item` and the generator without its item at place i.
bool ClosedItemsetSearch::ProbeCritical(std::size_t i, std::uint32_t item) const {
  const std::size_t words = std::min(items_.words(), kProbedWords);
  const RowWord* const rows = items_[item];
  for (std::size_t word = 0; word < words; ++word) {
    RowWord all = rows[word] & ~items_[generator_[i]][word];
    for (std::size_t j = 0; j < generator_.size(); ++j) {
      if (j != i) all &= items_[generator_[j]][word];
    }
    if (all != 0) return true;
  }
  return false;
}

// True when for each item of the generator a row holds the others and `item`, but not the item itself: then
// none of them can be left out beside `item`. That `item` cannot be left out either is known, as it is in the
// rest and not in the closure.
bool ClosedItemsetSearch::StaysMinimal(std::size_t depth, std::uint32_t item) {
  const Frame& frame = frames_[depth];
  for (std::size_t i = 0; i < generator_.size(); ++i) {
    if (ProbeCritical(i, item)) continue;
    MakeCritical(depth);
    // No row of the generator itself is critical.
    const RowWord* const critical = frame.critical[i];
    if (!operations_.any_outside(critical, items_[item], frame.all_rows.data(), items_.words())) return false;
  }
  return true;
}

// Only the rows of the generator matter below it. Side by side they are fewer words to count over, and the
// rest's own sets are copied into that space once.
void ClosedItemsetSearch::Pack(Frame& frame) {
  packed_order_.clear();
  frame.packed = RowBits(frame.rest.size(), frame.support_count);
  for (std::size_t i = 0; i < frame.rest.size(); ++i) {
    packed_order_.push_back(frame.rest[i].item);
    operations_.pack((*frame.items)[frame.rest[i].item], frame.rows, frame.packed[i], frame.items->words());
  }
  frame.packed_items.emplace(frame.packed, packed_order_, bits_.size());
}

}  // namespace selvane
