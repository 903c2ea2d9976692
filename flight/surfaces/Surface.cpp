// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/Surface.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "flight/strips/ParallelLoop.h"
#include "flight/surfaces/NeighbourTree.h"
#include "flight/surfaces/Tiles.h"

namespace Velorn::Flights {
namespace {

std::vector<point> placesOf(std::span<const point> points, std::span<const std::uint32_t> numbers) {
  std::vector<point> places;
  places.reserve(numbers.size());
  for (const std::uint32_t number : numbers) places.push_back(points[number]);
  return places;
}

/// A tile's points and their tree.
class TileSearch {
 public:
  TileSearch(std::span<const point> points, std::span<const std::uint32_t> numbers,
             const Neighbourhood& neighbourhood)
      : places_(placesOf(points, numbers)),
        tree_(places_),
        least_(neighbourhood.points),
        plane_(neighbourhood) {}

  const point& place(std::size_t i) const { return places_[i]; }

  PlaneFit planeAbout(std::size_t i) {
    return plane_.about([&](Neighbours& nearest) { tree_.search(places_[i], nearest); },
                        [&](std::uint32_t k) { return places_[k]; });
  }

  /// Calls use(k) for the other points that the plane found last serves: within a third of its
  /// radius, and not off it by more than its roughness explains.
  template <typename Use>
  void forEachServed(const PlaneFit& plane, const Use& use) const {
    constexpr double middle = 1.0 / 3.0, off = 3.0;
    if (!plane.exists() || plane.points < 2 * least_) return;
    const auto nearest = plane_.neighbours().first(plane.points);
    for (const Neighbour& one : nearest.subspan(1)) {
      if (one.square > middle * middle * nearest.back().square) return;
      const double height = plane.distanceOf(places_[one.number]);
      if (std::abs(height) <= off * plane.roughness) use(one.number);
    }
  }

 private:
  std::vector<point> places_;
  NeighbourTree tree_;
  std::size_t least_;
  GrowingPlane plane_;
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
      std::vector<std::uint8_t> isServed(own.size());
      bool goesOn = true;
      for (std::size_t first = 0; first < own.size() && goesOn; first += block) {
        const std::size_t end = std::min(first + block, own.size());
        for (std::size_t i = first; i < end; ++i) {
          if (isServed[i] != 0) continue;
          const PlaneFit plane = search.planeAbout(i);
          keep(own[i], plane, search.place(i));
          search.forEachServed(plane, [&](std::uint32_t k) {
            if (k <= i || k >= own.size() || isServed[k] != 0) return;
            isServed[k] = 1;
            keep(own[k], plane, search.place(k));
          });
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
