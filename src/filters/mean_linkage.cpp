#include "filters/mean_linkage.h"

#include <algorithm>
#include <numeric>

namespace selvane {

namespace {

// The mean of the distances between the points of two clusters, as an exact fraction.
struct MeanDistance {
  std::uint64_t sum = 0;
  std::uint64_t pairs = 1;

  friend bool operator<(const MeanDistance& a, const MeanDistance& b) {
    const double x = static_cast<double>(a.sum) / static_cast<double>(a.pairs);
    const double y = static_cast<double>(b.sum) / static_cast<double>(b.pairs);
    if (x != y) return x < y;
    // Quotients that round alike are so near that the difference of the products fits 64 bits, though the
    // products themselves may have wrapped.
    return static_cast<std::int64_t>(a.sum * b.pairs - b.sum * a.pairs) < 0;
  }
};

// Two clusters that are joined, each named by its first point; `kept` names the joined one.
struct Join {
  MeanDistance distance;
  std::size_t kept = 0;
  std::size_t gone = 0;
  friend bool operator<(const Join& a, const Join& b) {
    if (a.distance < b.distance) return true;
    if (b.distance < a.distance) return false;
    return a.kept != b.kept ? a.kept < b.kept : a.gone < b.gone;
  }
};

// All joins down to one cluster. A chain goes from a cluster to its nearest neighbour, to that one's nearest,
// and so on, until two are nearest to each other. These two will be joined whatever happens elsewhere: a mean
// lies between what it is a mean of, so no join brings a cluster nearer to a third one than the nearer of its
// parts was. Ties keep that, since pairs are ordered by distance and then by their first points: where the
// joined cluster is as near as the nearest part was, both parts were, and the joined one has the earlier
// name.
class NeighbourChain {
 public:
  explicit NeighbourChain(PairDistances distances)
      : sums_(std::move(distances)), sizes_(sums_.size(), 1), left_(sums_.size()) {
    std::iota(left_.begin(), left_.end(), std::size_t{0});
  }

  std::vector<Join> AllJoins(Progress& progress) {
    std::vector<Join> joins;
    std::vector<std::size_t> chain;
    while (left_.size() > 1) {
      if (chain.empty()) chain.push_back(left_.front());
      const std::size_t last = chain.back();
      const std::size_t nearest = NearestTo(last);
      if (chain.size() < 2 || chain[chain.size() - 2] != nearest) {
        chain.push_back(nearest);
        continue;
      }
      joins.push_back({Mean(last, nearest), std::min(last, nearest), std::max(last, nearest)});
      JoinClusters(joins.back().kept, joins.back().gone);
      chain.resize(chain.size() - 2);
      progress.Pulse();
    }
    return joins;
  }

 private:
  MeanDistance Mean(std::size_t a, std::size_t b) const { return {sums_(a, b), sizes_[a] * sizes_[b]}; }

  // The first of the nearest ones.
  std::size_t NearestTo(std::size_t cluster) const {
    std::size_t nearest = cluster;
    MeanDistance least;
    for (const std::size_t other : left_) {
      if (other == cluster) continue;
      const MeanDistance distance = Mean(cluster, other);
      if (nearest != cluster && !(distance < least)) continue;
      nearest = other;
      least = distance;
    }
    return nearest;
  }

  void JoinClusters(std::size_t kept, std::size_t gone) {
    left_.erase(std::lower_bound(left_.begin(), left_.end(), gone));
    sizes_[kept] += sizes_[gone];
    for (const std::size_t other : left_) {
      // Sums stay exact, while means would be rounded anew at each join and ties would be lost.
      if (other != kept) sums_(kept, other) += sums_(gone, other);
    }
  }

  PairDistances sums_;  // over the pairs of points of two clusters
  std::vector<std::size_t> sizes_;
  std::vector<std::size_t> left_;  // the clusters, in order
};

}  // namespace

std::vector<std::vector<std::size_t>> ClusterByMeanDistance(PairDistances distances, std::size_t clusters,
                                                            Progress& progress) {
  const std::size_t points = distances.size();
  std::vector<Join> joins = NeighbourChain(std::move(distances)).AllJoins(progress);
  // Joined one after the other, always the nearest pair, they would have come in this order.
  std::sort(joins.begin(), joins.end());
  joins.resize(std::min(joins.size(), points - std::min(points, std::max<std::size_t>(clusters, 1))));
  std::vector<std::size_t> first(points);  // of the cluster that a point is in
  std::iota(first.begin(), first.end(), std::size_t{0});
  for (const Join& join : joins) first[join.gone] = join.kept;
  std::vector<std::vector<std::size_t>> result;
  std::vector<std::size_t> place(points);  // of a cluster in the result, by its first point
  for (std::size_t point = 0; point < points; ++point) {
    first[point] = first[first[point]];  // that of an earlier point is final
    if (first[point] == point) {
      place[point] = result.size();
      result.emplace_back();
    }
    result[place[first[point]]].push_back(point);
  }
  return result;
}

}  // namespace selvane
