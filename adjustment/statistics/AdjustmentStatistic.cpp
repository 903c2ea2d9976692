// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/statistics/AdjustmentStatistic.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "adjustment/correspondence/ClassCode.h"
#include "adjustment/statistics/PointMeasures.h"
#include "adjustment/statistics/StatisticFolder.h"
#include "platform/morvane/Console.h"
#include <velorn/Georeferencing.h>

namespace Velorn {
namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::vector;
using Points = std::vector<Geomra::PhysicalSpace::point>;

constexpr double share = 0.9;  // of the points, in the quantiles of the movements

std::string aboutFile(const fs::path& file, const std::string& text) {
  return fmt::format("AdjustmentStatistic::addData: {}: {}", file.string(), text);
}

std::string faultOfColumns(const SphericalBeingData& side) {
  if (side.completeEntries() == side.size()) return {};
  return fmt::format("only {} of {} points have all that belongs to a point",
                     side.completeEntries(), side.size());
}

std::string faultOfNormals(const std::vector<vector>& normals) {
  const auto found = std::find_if_not(normals.begin(), normals.end(),
                                      [](const vector& normal) { return isFinite(normal); });
  if (found == normals.end()) return {};
  return fmt::format("the normal ({}, {}, {}) of correspondence {} is not finite", found->x,
                     found->y, found->z, found - normals.begin());
}

std::vector<double> quantilesOf(const std::vector<MovementHistogram>& strips) {
  std::vector<double> quantiles(strips.size());
  std::transform(strips.begin(), strips.end(), quantiles.begin(),
                 [](const MovementHistogram& strip) { return quantile(strip, share); });
  return quantiles;
}

}  // namespace

AdjustmentStatistic::AdjustmentStatistic(std::string name, const std::vector<fs::path>& stripFiles,
                                         const InputParameter& configuration)
    : name_(std::move(name)),
      stripFiles_(stripFiles),
      configuration_(configuration),
      classCounts_(configuration.getNumberOfClasses()),
      vertical_(stripFiles.size()),
      horizontal_(stripFiles.size()) {}

std::string AdjustmentStatistic::addData(const SolverParameters& parameters,
                                         const Trajectory& trajectory,
                                         const CorrespondenceBlock& block, unsigned firstStrip,
                                         unsigned secondStrip, bool adjusted) {
  if (std::string fault = faultOf(block, firstStrip, secondStrip); !fault.empty()) return fault;
  const SphericalBeingData &i = block.sideI(), &j = block.sideJ();
  if (!adjusted) {
    addDifferences(block, *i.world, *j.world);
    return {};
  }

  // Both sides before anything is counted, so that a block is taken in whole or not at all.
  const bool pair = !block.isGroundTruth();
  Points first, second;
  std::string fault = georeference(parameters, trajectory, block.path(), i, firstStrip, first);
  if (fault.empty() && pair) {
    fault = georeference(parameters, trajectory, block.path(), j, secondStrip, second);
  }
  if (!fault.empty()) return fault;

  addMovements(block.path(), *i.world, first, firstStrip);
  if (pair) addMovements(block.path(), *j.world, second, secondStrip);
  addDifferences(block, first, pair ? second : *j.world);
  return {};
}

std::string AdjustmentStatistic::faultOf(const CorrespondenceBlock& block, unsigned firstStrip,
                                         unsigned secondStrip) const {
  const SphericalBeingData& i = block.sideI();
  if (i.size() != block.sideJ().size()) return "AdjustmentStatistic::addData differnet size";
  for (const unsigned strip : {firstStrip, block.isGroundTruth() ? firstStrip : secondStrip}) {
    if (strip >= stripFiles_.size()) {
      return aboutFile(block.path(),
                       fmt::format("strip {} is none of the {} strips, which are counted from 0",
                                   strip, stripFiles_.size()));
    }
  }
  std::string fault = faultOfColumns(i);
  if (fault.empty()) fault = faultOfNormals(*i.normals);
  return fault.empty() ? fault : aboutFile(block.path(), fault);
}

/// World positions of a side under the parameters.
std::string AdjustmentStatistic::georeference(const SolverParameters& parameters,
                                              const Trajectory& trajectory, const fs::path& file,
                                              const SphericalBeingData& side, unsigned strip,
                                              Points& world) const {
  world = *side.world;
  std::vector<vector> directions(world.size());
  std::string fault =
      scanner2world(parameters, trajectory, *side.scanner, *side.times, side.weekNumber, strip,
                    world, directions, 0.0, configuration_.InterpolationFlag);
  if (!fault.empty()) {
    Morvane::Console::writeLine(aboutFile(file, fmt::format("strip {}: {}", strip, fault)));
  }
  return fault;
}

void AdjustmentStatistic::addMovements(const fs::path& file, const Points& stored,
                                       const Points& moved, unsigned strip) {
  MovementHistogram &vertical = vertical_[strip], &horizontal = horizontal_[strip];
  const auto notFinite = [&] { return vertical.notFinite + horizontal.notFinite; };
  const std::uint64_t before = notFinite();
  for (std::size_t k = 0; k < stored.size(); ++k) {
    countInto(vertical, verticalDistance(stored[k], moved[k]));
    countInto(horizontal, horizontalDistance(stored[k], moved[k]));
  }
  if (const std::uint64_t dropped = notFinite() - before; dropped > 0) {
    Morvane::Console::writeLine(
        aboutFile(file, fmt::format("{} vertical and horizontal movements in strip {} are not "
                                    "finite and enter no quantile",
                                    dropped, strip)));
  }
}

void AdjustmentStatistic::addDifferences(const CorrespondenceBlock& block, const Points& first,
                                         const Points& second) {
  OrvekStatistic::Statistic& differences = block.isGroundTruth() ? groundTruth_ : pairs_;
  const std::vector<vector>& normals = *block.sideI().normals;
  for (std::size_t k = 0; k < first.size(); ++k) {
    differences.addValue(pointToPlane(first[k], second[k], normals[k]));
  }
  addClasses(*block.sideI().classes);
}

void AdjustmentStatistic::addClasses(const std::vector<std::uint8_t>& classes) {
  for (const std::uint8_t code : classes) {
    if (const std::size_t place = classIndex(code); place < classCounts_.size()) {
      ++classCounts_[place];
    }
  }
}

void AdjustmentStatistic::hist() {
  const fs::path folder = configuration_.RootPath / configuration_.getStatisticPath();
  if (!makeStatisticFolder(folder)) return;
  plotDifferences(folder, "Strips_" + name_, pairs_);
  plotDifferences(folder, "GroundTruth_" + name_, groundTruth_);
  removeStatisticTexts(folder);
  plotQuantiles(folder / "Offset_q90_z.pdf", "Offset along z (quantile 90%)",
                quantilesOf(vertical_));
  plotQuantiles(folder / "Offset_q90_xy.pdf", "Spatial offset (quantile 90%)",
                quantilesOf(horizontal_));
}

PhaseFigures AdjustmentStatistic::figures() {
  pairs_.compute();
  groundTruth_.compute();
  PhaseFigures figures{pairs_.summary(), groundTruth_.summary(), classCounts_, {}};
  for (std::size_t s = 0; s < vertical_.size(); ++s) {
    const MovementHistogram &z = vertical_[s], &xy = horizontal_[s];
    figures.movements.push_back({quantile(z, share), quantile(xy, share), z.total, xy.total,
                                 z.beyond + xy.beyond, z.notFinite + xy.notFinite});
  }
  return figures;
}

}  // namespace Velorn
