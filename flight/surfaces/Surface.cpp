// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/Surface.h"

#include <algorithm>
#include <limits>
#include <nanoflann.hpp>

#include "flight/strips/ParallelLoop.h"
#include "flight/surfaces/Tiles.h"

namespace Velorn::Flights {
namespace {

/// The points of a tile, in the order of its tree's interface.
struct TileCloud {
  std::vector<point> places;

  std::size_t kdtree_get_point_count() const { return places.size(); }
  double kdtree_get_pt(std::uint32_t i, int axis) const {
    const point& place = places[i];
    return axis == 0 ? place.x : axis == 1 ? place.y : place.z;
  }
  template <typename Box>
  bool kdtree_get_bbox(Box& /*box*/) const {
    return false;
  }
};

using Metric = nanoflann::L2_Simple_Adaptor<double, TileCloud>;
using Tree = nanoflann::KDTreeSingleIndexAdaptor<Metric, TileCloud, 3, std::uint32_t>;

/// The nearest points within a radius, as the tree's search fills it.
class Nearest {
 public:
  Nearest(std::size_t most, double radius)
      : squares_(most), numbers_(most), limit_(std::nextafter(radius * radius, 1e300)) {}

  void clear() { count_ = 0, worst_ = limit_; }

  /// A search is over when all neighbours are at the very place: else each of a million points at
  /// one place would look at all of them.
  double worstDist() const { return worst_ > 0.0 ? worst_ : -1.0; }

  bool addPoint(double square, std::uint32_t number) {
    if (square >= worst_) return true;  // the search looks at the worst once per leaf
    if (count_ < squares_.size()) ++count_;
    std::size_t i = count_ - 1;
    for (; i > 0 && squares_[i - 1] > square; --i) {
      squares_[i] = squares_[i - 1];
      numbers_[i] = numbers_[i - 1];
    }
    squares_[i] = square;
    numbers_[i] = number;
    if (count_ == squares_.size()) worst_ = squares_.back();
    return true;
  }

  bool full() const { return true; }
  std::span<const std::uint32_t> numbers() const { return std::span(numbers_).first(count_); }

 private:
  std::vector<double> squares_;  // of the distances, ascending
  std::vector<std::uint32_t> numbers_;
  double limit_;
  double worst_ = limit_;
  std::size_t count_ = 0;
};

/// A tile's points and their tree.
class TileSearch {
 public:
  TileSearch(std::span<const point> points, std::span<const std::uint32_t> numbers,
             const Neighbourhood& neighbourhood)
      : cloud_(cloudOf(points, numbers)),
        tree_(3, cloud_, nanoflann::KDTreeSingleIndexAdaptorParams(leafSize)),
        nearest_(neighbourhood.points, neighbourhood.radius) {}

  const point& place(std::size_t i) const { return cloud_.places[i]; }

  PlaneFit planeAbout(std::size_t i) {
    nearest_.clear();
    tree_.findNeighbors(nearest_, &cloud_.places[i].x, nanoflann::SearchParams());
    neighbours_.clear();
    for (const std::uint32_t number : nearest_.numbers()) {
      neighbours_.push_back(cloud_.places[number]);
    }
    return planeThrough(neighbours_);
  }

 private:
  static constexpr std::size_t leafSize = 10;

  static TileCloud cloudOf(std::span<const point> points, std::span<const std::uint32_t> numbers) {
    TileCloud cloud;
    cloud.places.reserve(numbers.size());
    for (const std::uint32_t number : numbers) cloud.places.push_back(points[number]);
    return cloud;
  }

  TileCloud cloud_;
  Tree tree_;
  Nearest nearest_;
  std::vector<point> neighbours_;
};

/// Points between two looks at whether to go on: well below a second.
constexpr std::size_t block = 20'000;

/// The planes of one cloud.
class CloudWork {
 public:
  CloudWork(std::span<const point> points, const Neighbourhood& neighbourhood, Surface& surface)
      : points_(points), neighbourhood_(neighbourhood), surface_(surface) {}

  /// @param before  points done before this cloud
  void run(const Tiles& tiles, std::size_t before, const std::function<void(std::size_t)>& tell) {
    ParallelLoop loop(tell, before);
    loop.run(0, tiles.size(), 1, [&](std::size_t tile) {
      const auto own = tiles.own(tile);
      TileSearch search(points_, tiles.withHalo(tile), neighbourhood_);
      bool goesOn = true;
      for (std::size_t first = 0; first < own.size() && goesOn; first += block) {
        const std::size_t end = std::min(first + block, own.size());
        for (std::size_t i = first; i < end; ++i) {
          keep(own[i], search.planeAbout(i), search.place(i));
        }
        goesOn = loop.doneBy(tile, end - first);
      }
    });
  }

 private:
  void keep(std::uint32_t number, const PlaneFit& plane, const point& place) {
    if (!plane.exists()) return;
    surface_.normals[number] = plane.normal;
    surface_.roughness[number] = static_cast<float>(plane.roughness);
    surface_.distance[number] = static_cast<float>(plane.distanceOf(place));
  }

  std::span<const point> points_;
  const Neighbourhood& neighbourhood_;
  Surface& surface_;
};

}  // namespace

std::vector<std::uint32_t> membersOf(std::span<const Cloud> clouds, Cloud cloud) {
  std::vector<std::uint32_t> members;
  members.reserve(static_cast<std::size_t>(std::count(clouds.begin(), clouds.end(), cloud)));
  for (std::size_t i = 0; i < clouds.size(); ++i) {
    if (clouds[i] == cloud) members.push_back(static_cast<std::uint32_t>(i));
  }
  return members;
}

Surface surfaceOf(std::span<const point> points, std::span<const Cloud> clouds,
                  const Neighbourhood& neighbourhood,
                  const std::function<void(std::size_t)>& tell) {
  constexpr float none = std::numeric_limits<float>::quiet_NaN();
  Surface surface;
  surface.normals.resize(points.size());
  surface.roughness.assign(points.size(), none);
  surface.distance.assign(points.size(), none);
  std::size_t before = 0;
  for (const Cloud cloud : {Cloud::last, Cloud::notLast}) {
    const auto members = membersOf(clouds, cloud);
    const Tiles tiles(points, members, neighbourhood.radius);
    CloudWork(points, neighbourhood, surface).run(tiles, before, tell);
    before += members.size();
    tell(before);  // the calling thread may have had no tile
  }
  return surface;
}

}  // namespace Velorn::Flights
