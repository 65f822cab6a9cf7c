#include "apriori/itemset_trie.h"

#include <algorithm>

namespace selvane {

namespace {

// More items than this have more subsets than can be visited.
constexpr std::size_t kLargestItemset = 30;

}  // namespace

std::uint32_t ItemsetTrie::NodeOf(std::span<const std::uint32_t> items) const {
  std::uint32_t node = 0;
  for (const std::uint32_t item : items) {
    const auto begin = item_.begin() + first_child_[node];
    const auto end = item_.begin() + first_child_[node + 1];
    const auto found = std::lower_bound(begin, end, item);
    if (found == end || *found != item) return kNone;
    node = static_cast<std::uint32_t>(found - item_.begin());
  }
  return node;
}

std::optional<std::uint32_t> ItemsetTrie::Find(std::span<const std::uint32_t> items) const {
  const std::uint32_t node = NodeOf(items);
  if (node == kNone) return std::nullopt;
  return count_[node];
}

// Appends one level's nodes, the children of those that are there; false when an itemset stands there twice.
// Sorted by parent they come in the order of the level before, so that the children of every node are side by
// side and the children of node n end where those of node n + 1 begin.
bool ItemsetTrie::AddLevel(std::vector<Entry>& level) {
  std::sort(level.begin(), level.end(), [](const Entry& a, const Entry& b) {
    return a.parent != b.parent ? a.parent < b.parent : a.item < b.item;
  });
  const std::size_t parents = item_.size();
  for (std::size_t i = 0; i < level.size(); ++i) {
    const Entry& entry = level[i];
    if (i > 0 && level[i - 1].parent == entry.parent && level[i - 1].item == entry.item) return false;
    while (first_child_.size() <= entry.parent)
      first_child_.push_back(static_cast<std::uint32_t>(item_.size()));
    item_.push_back(entry.item);
    count_.push_back(entry.count);
  }
  // The last parents, and those after the last with a child, have their children end here.
  first_child_.resize(parents + 1, static_cast<std::uint32_t>(item_.size()));
  level.clear();
  return true;
}

std::optional<ItemsetTrie> ItemsetTrie::Load(const std::filesystem::path& path, std::uint32_t itemset_count,
                                             std::size_t budget, Progress& progress) {
  // A level is held as entries while its nodes are made, so twice the nodes are counted.
  if (itemset_count * sizeof(Entry) * 2 > budget) return std::nullopt;
  ItemsetTrie trie;
  ItemsetFile file;
  file.OpenForReading(path);
  ItemsetRecord record;
  std::vector<Entry> level;
  std::vector<std::uint32_t> beginning;
  std::uint32_t parent = 0;
  std::size_t size = 1;
  for (std::uint32_t i = 0; i < itemset_count; ++i) {
    file.ReadNext(record);
    if (record.items.size() == size + 1) {
      if (!trie.AddLevel(level)) return std::nullopt;
      ++size;
      beginning.clear();
    }
    if (record.items.size() != size || size > kLargestItemset) return std::nullopt;
    // Neighbours in the file mostly share their beginning, whose node is looked up once.
    const auto leading = std::span(record.items).first(size - 1);
    if (size > 1 && (beginning.empty() ||
                     !std::equal(leading.begin(), leading.end(), beginning.begin(), beginning.end()))) {
      beginning.assign(leading.begin(), leading.end());
      parent = trie.NodeOf(leading);
      if (parent == kNone) return std::nullopt;
    }
    level.push_back({parent, record.items.back(), record.support_count});
    if (i % 16384 == 0) progress.Pulse();
  }
  if (!trie.AddLevel(level)) return std::nullopt;
  trie.first_child_.resize(trie.item_.size() + 1, static_cast<std::uint32_t>(trie.item_.size()));
  return trie;
}

namespace {

struct TrieNodes {
  std::span<const std::uint32_t> item;
  std::span<const std::uint32_t> count;
  std::span<const std::uint32_t> first_child;
};

// Walks the tree with the nodes of all subsets of the path at hand: subset m of the path's items, a bit for
// each depth. A child adds one subset for each that is there already, found among the children of that
// subset's node by a cursor that only moves forward. `Visit` gets the items and the counts of the subsets.
template <typename Visit>
class SubsetWalk {
 public:
  SubsetWalk(const TrieNodes& trie, const Visit& visit, Progress& progress)
      : trie_(trie), visit_(visit), progress_(progress) {}

  // `node` is that of the whole path, of `depth` items, and nodes_ and counts_ hold those of its subsets.
  void Walk(std::uint32_t node, std::size_t depth) {
    const std::uint32_t end = trie_.first_child[node + 1];
    if (trie_.first_child[node] == end) return;
    const std::size_t subsets = std::size_t{1} << depth;
    MakeRoom(depth);
    cursors_[depth].clear();
    for (std::size_t m = 0; m < subsets; ++m) {
      const std::uint32_t subset = nodes_[m];
      cursors_[depth].push_back(
          subset == kNone ? Cursor{} : Cursor{trie_.first_child[subset], trie_.first_child[subset + 1]});
    }
    for (std::uint32_t child = trie_.first_child[node]; child < end; ++child) {
      items_[depth] = trie_.item[child];
      std::vector<Cursor>& cursors = cursors_[depth];
      for (std::size_t m = 0; m < subsets; ++m) {
        const std::uint32_t found = cursors[m].MoveTo(items_[depth], trie_.item);
        nodes_[subsets + m] = found;
        counts_[subsets + m] = found == kNone ? kNone : trie_.count[found];
      }
      // The upper half of the subsets, those with the child's item, is written anew for each child; what is
      // below in the recursion writes behind it.
      if (depth > 0) visit_(std::span(items_).first(depth + 1), std::span(counts_).first(2 * subsets));
      if (depth == 0) progress_.SetPosition(static_cast<int>(100 * std::uint64_t{child} / end));
      Pulse(2 * subsets);
      Walk(child, depth + 1);
    }
  }

 private:
  static constexpr std::uint32_t kNone = ItemsetTrie::kNoCount;
  static constexpr std::uint64_t kPulseEvery = 4'000'000;  // subsets

  struct Cursor {
    std::uint32_t at = 0;
    std::uint32_t end = 0;
    std::uint32_t MoveTo(std::uint32_t item, std::span<const std::uint32_t> items) {
      while (at < end && items[at] < item) ++at;
      return at < end && items[at] == item ? at : kNone;
    }
  };

  void MakeRoom(std::size_t depth) {
    const std::size_t subsets = std::size_t{2} << depth;
    if (nodes_.size() < subsets) nodes_.resize(subsets, 0);
    if (counts_.size() < subsets) counts_.resize(subsets, 0);
    if (cursors_.size() <= depth) cursors_.resize(depth + 1);
    if (items_.size() <= depth) items_.resize(depth + 1);
  }

  void Pulse(std::uint64_t subsets) {
    visited_ += subsets;
    if (visited_ < kPulseEvery) return;
    visited_ = 0;
    progress_.Pulse();
  }

  const TrieNodes trie_;
  const Visit& visit_;
  Progress& progress_;
  std::vector<std::uint32_t> items_;
  std::vector<std::uint32_t> nodes_ = {0};
  std::vector<std::uint32_t> counts_ = {kNone};
  std::vector<std::vector<Cursor>> cursors_;  // by depth
  std::uint64_t visited_ = 0;                 // subsets since the last pulse
};

// Counts the divisions of itemsets that reach a minimum confidence.
class DivisionCounter {
 public:
  DivisionCounter(float minimum_confidence, RuleTally& tally)
      : minimum_confidence_(minimum_confidence), tally_(tally) {}

  // Subset m is the antecedent of one division, for each m but the first and the last.
  void Count(std::span<const std::uint32_t> counts) {
    const std::uint32_t support_count = counts.back();
    const std::uint32_t greatest = GreatestAntecedent(support_count);
    for (std::size_t m = 1; m + 1 < counts.size(); ++m) {
      if (counts[m] <= greatest) {
        tally_.Add(static_cast<float>(support_count) / static_cast<float>(counts[m]), support_count);
      }
    }
  }

 private:
  // The greatest count of an antecedent with which the confidence still reaches the minimum.
  std::uint32_t GreatestAntecedent(std::uint32_t support_count) {
    if (greatest_.size() <= support_count) greatest_.resize(support_count + std::size_t{1}, 0);
    std::uint32_t& greatest = greatest_[support_count];
    if (greatest != 0) return greatest;
    // The quotient may be rounded either way, so the walk starts above the bound and goes down to it.
    const double bound = static_cast<double>(support_count) / static_cast<double>(minimum_confidence_) + 2;
    greatest = static_cast<std::uint32_t>(std::min(bound, 4e9));
    while (greatest > support_count &&
           static_cast<float>(support_count) / static_cast<float>(greatest) < minimum_confidence_) {
      --greatest;
    }
    return greatest;
  }

  float minimum_confidence_;
  RuleTally& tally_;
  std::vector<std::uint32_t> greatest_;  // by support, 0 where it is not known yet
};

}  // namespace

void ItemsetTrie::ForEachWithSubsets(const VisitSubsets& visit, Progress& progress) const {
  SubsetWalk({item_, count_, first_child_}, visit, progress).Walk(0, 0);
}

void ItemsetTrie::CountRules(float minimum_confidence, RuleTally& tally, Progress& progress) const {
  DivisionCounter counter(minimum_confidence, tally);
  const auto count = [&counter](std::span<const std::uint32_t>, std::span<const std::uint32_t> counts) {
    counter.Count(counts);
  };
  SubsetWalk({item_, count_, first_child_}, count, progress).Walk(0, 0);
}

}  // namespace selvane
