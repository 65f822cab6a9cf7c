// Hierarchical clustering by the mean distance between clusters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "base/progress.h"

namespace selvane {

// The distances between each two of some points, which are whole numbers.
class PairDistances {
 public:
  explicit PairDistances(std::size_t points)
      : points_(points), distances_(points < 2 ? 0 : points * (points - 1) / 2) {}

  // The memory that the distances of so many points take.
  static constexpr std::uint64_t Bytes(std::uint64_t points) {
    return points * (points - 1) / 2 * sizeof(std::uint64_t);
  }

  std::size_t size() const { return points_; }
  // Of two different points, in either order.
  std::uint64_t& operator()(std::size_t a, std::size_t b) { return distances_[Place(a, b)]; }
  std::uint64_t operator()(std::size_t a, std::size_t b) const { return distances_[Place(a, b)]; }

 private:
  static std::size_t Place(std::size_t a, std::size_t b) {
    return a > b ? a * (a - 1) / 2 + b : b * (b - 1) / 2 + a;
  }

  std::size_t points_;
  std::vector<std::uint64_t> distances_;
};

// Divides points into at most this many clusters: the two clusters that are nearest are joined until so many
// are left. The distance of two clusters is the mean over their points; of equally near pairs the first is
// joined, clusters being in the order of their first points. Points and clusters keep that order. Takes time
// in the square of the number of points. Throws Interrupted.
//
// By chains of nearest neighbours: F. Murtagh, A survey of recent advances in hierarchical clustering
// algorithms, 1983.
std::vector<std::vector<std::size_t>> ClusterByMeanDistance(PairDistances distances, std::size_t clusters,
                                                            Progress& progress);

}  // namespace selvane
