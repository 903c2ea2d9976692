// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/ControlMisfits.h"

#include <cmath>
#include <map>
#include <utility>

#include "flight/matching/Rejection.h"
#include "flight/strips/BlockName.h"
#include "flight/strips/OrFail.h"
#include "flight/surfaces/SearchPlaces.h"
#include <velorn/CorrespondenceBlock.h>

namespace Velorn::Flights {
namespace {

struct Distances {
  std::vector<double> before, after;
};

void add(const Velorn::CorrespondenceBlock& block, std::uint32_t strip, const GroundTruth& known,
         const Solution& adjusted, bool interpolationFlag,
         std::map<std::uint32_t, Distances>& all) {
  constexpr double samePlace = 1e-4;  // [m]
  const auto &measured = block.sideI(), &surveyed = block.sideJ();
  const auto places = placesBy(adjusted, block.path(), strip, interpolationFlag,
                               {*measured.scanner, *measured.times, measured.weekNumber});
  for (std::size_t k = 0; k < places.size(); ++k) {
    const point& q = (*surveyed.world)[k];
    const Neighbour same = known.nearest(q, samePlace);
    if (!(same.square < infinite) || !std::isfinite(places[k].x)) continue;
    const vector& normal = known.points().normals[same.number];
    Distances& one = all[known.patchOf(same.number)];
    one.before.push_back(dot(normal, q - (*measured.world)[k]));
    one.after.push_back(dot(normal, q - places[k]));
  }
}

}  // namespace

std::vector<ControlMisfit> controlMisfits(const std::vector<std::filesystem::path>& blocks,
                                          const GroundTruth& known, const Solution& adjusted,
                                          const Velorn::InputParameter& configuration) {
  std::map<std::uint32_t, Distances> all;
  for (const auto& file : blocks) {
    const auto name = blockNameIn(file.filename().string());
    if (known.empty() || !name || !name->isGroundTruth) continue;
    const Velorn::CorrespondenceBlock block(file, configuration.Storage);
    orFail(block.errorText());
    add(block, name->i, known, adjusted, configuration.InterpolationFlag, all);
  }
  std::vector<ControlMisfit> items;
  for (auto& [id, distances] : all) {
    const std::size_t count = distances.before.size();
    items.push_back({id, count, spreadOf(std::move(distances.before)).median,
                     spreadOf(std::move(distances.after)).median});
  }
  return items;
}

}  // namespace Velorn::Flights
