// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/PlanHull.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <tuple>

namespace Velorn::Flights {
namespace {

/// Andrew: Another efficient algorithm for convex hulls in two dimensions, 1979.
template <typename Corner>
std::vector<Corner> hullOf(std::vector<Corner> points) {
  const auto before = [](const Corner& a, const Corner& b) {
    return std::tie(a.x, a.y) < std::tie(b.x, b.y);
  };
  const auto turnsLeft = [](const Corner& a, const Corner& b, const Corner& c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x) > 0.0;
  };
  std::sort(points.begin(), points.end(), before);
  std::vector<Corner> hull;
  for (int half = 0; half < 2; ++half) {
    const std::size_t begin = hull.size();
    for (const Corner& p : points) {
      while (hull.size() >= begin + 2 && !turnsLeft(hull[hull.size() - 2], hull.back(), p)) {
        hull.pop_back();
      }
      hull.push_back(p);
    }
    hull.pop_back();  // the other half begins with it
    std::reverse(points.begin(), points.end());
  }
  if (hull.empty()) hull.push_back(points.front());
  return hull;
}

}  // namespace

PlanHull::PlanHull(std::span<const point> points) {
  if (points.empty()) return;
  origin_ = {points.front().x, points.front().y};
  corners_.reserve(points.size());
  for (const point& p : points) corners_.push_back({p.x - origin_.x, p.y - origin_.y});
  corners_ = hullOf(std::move(corners_));
  const auto addSide = [this](double east, double north) {
    double reach = -std::numeric_limits<double>::infinity();
    for (const Corner& c : corners_) reach = std::max(reach, c.x * east + c.y * north);
    sides_.push_back({east, north, reach});
  };
  for (const double sign : {-1.0, 1.0}) {
    addSide(sign, 0.0);
    addSide(0.0, sign);
  }
  for (std::size_t k = 0; k < corners_.size(); ++k) {
    const Corner &a = corners_[k], &b = corners_[(k + 1) % corners_.size()];
    const double length = std::hypot(b.x - a.x, b.y - a.y);
    if (length > 0.0) addSide((b.y - a.y) / length, (a.x - b.x) / length);
  }
}

bool PlanHull::holds(const point& place, double growth) const {
  const double x = place.x - origin_.x, y = place.y - origin_.y;
  return !empty() && std::all_of(sides_.begin(), sides_.end(), [&](const HalfPlane& side) {
    return x * side.east + y * side.north <= side.reach + growth;
  });
}

bool PlanHull::hasSideBetween(const PlanHull& other, double gap) const {
  const Corner away{other.origin_.x - origin_.x, other.origin_.y - origin_.y};
  return std::any_of(sides_.begin(), sides_.end(), [&](const HalfPlane& side) {
    return std::all_of(other.corners_.begin(), other.corners_.end(), [&](const Corner& c) {
      return (c.x + away.x) * side.east + (c.y + away.y) * side.north > side.reach + gap;
    });
  });
}

bool PlanHull::isApartFrom(const PlanHull& other, double gap) const {
  return empty() || other.empty() || hasSideBetween(other, gap) || other.hasSideBetween(*this, gap);
}

}  // namespace Velorn::Flights
