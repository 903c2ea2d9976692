// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/NeighbourTree.h"

#include <nanoflann.hpp>

namespace Velorn::Flights {
namespace {

constexpr std::size_t leafSize = 10;

/// The coordinates of the places, as nanoflann asks for them.
struct Coordinates {
  std::span<const point> places;

  std::size_t kdtree_get_point_count() const { return places.size(); }
  double kdtree_get_pt(std::size_t k, std::size_t axis) const {
    const point& p = places[k];
    return axis == 0 ? p.x : axis == 1 ? p.y : p.z;
  }
  template <typename Box>
  bool kdtree_get_bbox(Box& /*box*/) const {
    return false;
  }
};

/// Passes what the tree finds on.
struct Found {
  Neighbours& neighbours;
  std::span<const std::uint32_t> numbers;

  bool addPoint(double square, std::uint32_t k) {
    if (square < neighbours.limit()) add({numbers.empty() ? k : numbers[k], square});
    return neighbours.limit() > 0.0;  // nothing is nearer than at the place itself
  }
  void add(const Neighbour& neighbour) {
    if (neighbours.isWanted(neighbour.number)) neighbours.add(neighbour);
  }
  double worstDist() const { return neighbours.limit(); }
  bool full() const { return true; }
  std::size_t size() const { return neighbours.found().size(); }
};

}  // namespace

class NeighbourTree::Index {
 public:
  explicit Index(std::span<const point> places)
      : coordinates_{places}, tree_(3, coordinates_, {leafSize}) {}

  void search(const point& place, Found found) const {
    tree_.findNeighbors(found, &place.x, nanoflann::SearchParams());
  }

 private:
  Coordinates coordinates_;
  nanoflann::KDTreeSingleIndexAdaptor<nanoflann::L2_Simple_Adaptor<double, Coordinates>,
                                      Coordinates, 3, std::uint32_t>
      tree_;
};

NeighbourTree::NeighbourTree(std::span<const point> places, std::span<const std::uint32_t> numbers)
    : numbers_(numbers), index_(std::make_unique<Index>(places)) {}

NeighbourTree::~NeighbourTree() = default;
NeighbourTree::NeighbourTree(NeighbourTree&&) noexcept = default;

void NeighbourTree::search(const point& place, Neighbours& neighbours) const {
  index_->search(place, {neighbours, numbers_});
}

}  // namespace Velorn::Flights
