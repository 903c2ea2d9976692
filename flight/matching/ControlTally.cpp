// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/ControlTally.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "flight/matching/Rejection.h"
#include "platform/geomra/Degree.h"

namespace Velorn::Flights {
namespace {

using Geomra::degree;

constexpr double inclined = 10.0 * degree;  // controls more than heights

std::string reasonOf(const ControlItem& item) {
  if (item.correspondences > 0) return {};
  if (item.thinned > 0) return "no room: max-correspondences is too low";
  if (item.rough == 0 && item.turnedAway == 0) return "no surface in reach";
  return item.rough > item.turnedAway ? "the surface is rough" : "the surface is turned away";
}

}  // namespace

ControlTally::ControlTally(const GroundTruth& known)
    : known_(known), items_(known.patches()), distances_(known.patches()) {
  std::vector<vector> normals(items_.size());
  const KnownPoints& points = known.points();
  for (std::size_t k = 0; k < points.places.size(); ++k) {
    const std::uint32_t id = known.patchOf(k);
    ControlItem& item = items_[id];
    item.id = id;
    const auto count = static_cast<double>(++item.points);
    const std::array<double, 3> place{points.places[k].x, points.places[k].y, points.places[k].z};
    for (std::size_t axis = 0; axis < 3; ++axis) {  // a running mean loses no digits of a northing
      item.place[axis] += (place[axis] - item.place[axis]) / count;
    }
    normals[id] = normals[id] + points.normals[k];
  }
  for (std::size_t id = 0; id < items_.size(); ++id) {
    const double length = lengthOf(normals[id]);
    items_[id].isInclined = std::abs(normals[id].z) < std::cos(inclined) * length;
  }
}

void ControlTally::countGone(const std::vector<Correspondence>& before,
                             const std::vector<Correspondence>& after,
                             std::size_t ControlItem::*counter) {
  for (const Correspondence& one : before) ++(items_[known_.patchOf(one.j)].*counter);
  for (const Correspondence& one : after) --(items_[known_.patchOf(one.j)].*counter);
}

void ControlTally::add(const std::vector<Correspondence>& kept) {
  std::vector<std::uint8_t> isHit(items_.size(), 0);
  for (const Correspondence& one : kept) {
    const std::uint32_t id = known_.patchOf(one.j);
    isHit[id] = 1;
    ++items_[id].correspondences;
    distances_[id].push_back(one.distance);
  }
  for (std::size_t id = 0; id < items_.size(); ++id) items_[id].strips += isHit[id];
}

std::vector<ControlItem> ControlTally::items() const {
  auto items = items_;
  for (std::size_t id = 0; id < items.size(); ++id) {
    items[id].misfit = spreadOf(distances_[id]).median;
    items[id].leftOut = reasonOf(items[id]);
  }
  return items;
}

void leaveOtherSurfaces(std::vector<Correspondence>& pairs, const GroundTruth& known,
                        CandidateTally& tally) {
  constexpr double width = 3.0, farOff = 0.1;  // [m]
  std::map<std::uint32_t, std::vector<double>> distances;
  for (const Correspondence& one : pairs) distances[known.patchOf(one.j)].push_back(one.distance);
  std::map<std::uint32_t, Spread> spreads;
  for (auto& [item, values] : distances) spreads[item] = spreadOf(std::move(values));
  std::erase_if(pairs, [&](const Correspondence& one) {
    const Spread& spread = spreads.at(known.patchOf(one.j));
    const bool isOther =
        std::abs(one.distance - spread.median) > std::max(farOff, width * spread.nmad);
    if (isOther) tally.judge(one, Fate::outlier);
    return isOther;
  });
}

}  // namespace Velorn::Flights
