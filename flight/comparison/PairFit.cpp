// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/comparison/PairFit.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <numeric>
#include <system_error>

#include <fmt/format.h>

#include "flight/strips/BlockName.h"
#include "flight/strips/OrFail.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/Georeferencing.h>

namespace Velorn::Flights::Comparison {
namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;
using Velorn::SphericalBeing;

/// By name, so that sums are the same wherever the run was.
std::map<fs::path, BlockName> blocksIn(const fs::path& folder) {
  std::map<fs::path, BlockName> blocks;
  std::error_code fault;
  for (const auto& entry : fs::directory_iterator(folder, fault)) {
    if (const auto name = blockNameIn(entry.path().filename().string())) {
      blocks.emplace(entry.path(), *name);
    }
  }
  return blocks;
}

std::size_t placeOf(std::uint32_t id, const fs::path& block, const Truth& truth,
                    const StripNames& names) {
  const auto name = names.find(id);
  if (name == names.end()) {
    throw Error(fmt::format("{}: the strip id file has no strip {}", block.string(), id));
  }
  for (std::size_t place = 0; place < truth.strips.size(); ++place) {
    if (truth.strips[place].file.filename() == name->second) return place;
  }
  throw Error(fmt::format("{}: strip {}, {}, is none of the synthetic flight's", block.string(), id,
                          name->second));
}

vector fromOrigin(const point& p) {
  return p - point{0, 0, 0};
}

/// Finds points of a strip by their times, which several echoes of one pulse share.
class PointFinder {
 public:
  explicit PointFinder(const StripPoints& points) : points_(points), order_(points.times.size()) {
    std::iota(order_.begin(), order_.end(), std::size_t{0});
    if (std::ranges::is_sorted(points.times)) return;
    std::ranges::stable_sort(order_, {}, [&](std::size_t k) { return points.times[k]; });
  }

  /// The point of that very time whose range and angles are nearest.
  std::optional<std::size_t> find(double time, const point& scanner) const {
    const auto timeOf = [this](std::size_t k) { return points_.times[k]; };
    auto place = std::ranges::lower_bound(order_, time, {}, timeOf);
    std::optional<std::size_t> nearest;
    for (; place != order_.end() && timeOf(*place) == time; ++place) {
      const auto distance = [&](std::size_t k) { return lengthOf(points_.scanner[k] - scanner); };
      if (!nearest || distance(*place) < distance(*nearest)) nearest = *place;
    }
    return nearest;
  }

 private:
  const StripPoints& points_;
  std::vector<std::size_t> order_;
};

}  // namespace

PairFit::PairFit(const Truth& truth, const fs::path& folder, const StripNames& names)
    : truth_(truth), measured_(truth.strips.size()) {
  const auto storage = std::make_shared<Strandel::MyStorage>(0, 0, 0, 1);
  for (const auto& [path, name] : blocksIn(folder)) {
    const Velorn::CorrespondenceBlock block(path, storage);
    orFail(block.errorText());
    const auto place = [&, &file = path](std::uint32_t id) {
      return static_cast<std::uint32_t>(placeOf(id, file, truth, names));
    };
    addBlock(block, place(name.i),
             name.isGroundTruth ? std::nullopt : std::optional(place(name.j)));
  }
}

void PairFit::addBlock(const Velorn::CorrespondenceBlock& block, std::uint32_t i,
                       std::optional<std::uint32_t> j) {
  for (std::uint32_t k = 0; k < block.size(); ++k) {
    const auto [first, second] = block.get(k);
    Record record;
    const double length = lengthOf(first.normal);  // a weight where it is control
    record.normal = length > 0.0 ? (1.0 / length) * first.normal : first.normal;
    record.origin = first.worldPosition;
    record.isGroundTruth = !j;
    records_.push_back(record);
    addPoint(i, first, -1.0);
    if (j) {
      addPoint(*j, second, 1.0);
    } else {
      addFixed(second);
    }
  }
}

void PairFit::addPoint(std::size_t strip, const SphericalBeing& being, double sign) {
  Record& record = records_.back();
  const double cosine = dot(record.normal, being.directionDelta) / lengthOf(being.directionDelta);
  const Measured measured{records_.size() - 1, sign, being.gpsTime, being.scannerPosition, cosine};
  measured_[strip].push_back(measured);
  ++record.missing;
  add(measured, blockBefore, being.worldPosition);
}

/// A point of the ground truth is where it is.
void PairFit::addFixed(const SphericalBeing& being) {
  Record& record = records_.back();
  for (double& distance : record.distance) {
    distance += dot(record.normal, being.worldPosition - record.origin);
  }
}

void PairFit::add(const Measured& measured, Column column, const point& world) {
  Record& record = records_[measured.record];
  record.distance[column] += measured.sign * dot(record.normal, world - record.origin);
}

/// The noise of the range acts along the beam, that of the two angles across it:
///   σ² = σr² (n·b)² + σa² R² (1 − (n·b)²)
void PairFit::measureRaw(const Measured& measured, std::size_t k, const StripPoints& points) {
  add(measured, rawBefore, points.delivered[k]);
  add(measured, rawAfter, points.adjusted[k]);
  add(measured, rawTrue, points.real[k]);
  const double along = measured.cosine * measured.cosine;
  const double across = truth_.angleNoise * lengthOf(fromOrigin(points.scanner[k]));
  Record& record = records_[measured.record];
  record.variance +=
      truth_.rangeNoise * truth_.rangeNoise * along + across * across * (1.0 - along);
  --record.missing;
}

void PairFit::measureBlock(std::size_t strip, const Velorn::Trajectory& trajectory,
                           const Velorn::SolverParameters* parameters) {
  const auto& measured = measured_[strip];
  Points scanner;
  std::vector<double> times;
  for (const Measured& m : measured) {
    scanner.push_back(m.scanner);
    times.push_back(m.time);
  }
  const Points real = trueWorld(truth_, trajectory, strip, scanner, times);
  Points adjusted(scanner.size(), point{unknownFigure, unknownFigure, unknownFigure});
  std::vector<vector> directions(scanner.size());
  if (parameters) {
    orFail(Velorn::scanner2world(*parameters, trajectory, scanner, times, truth_.week,
                                 static_cast<unsigned>(strip), adjusted, directions, 0.0, false));
  }
  for (std::size_t k = 0; k < measured.size(); ++k) {
    add(measured[k], blockAfter, adjusted[k]);
    add(measured[k], blockTrue, real[k]);
  }
}

void PairFit::addStrip(std::size_t strip, const StripPoints& points,
                       const Velorn::Trajectory& trajectory,
                       const Velorn::SolverParameters* parameters) {
  const PointFinder finder(points);
  for (const Measured& measured : measured_[strip]) {
    if (const auto k = finder.find(measured.time, measured.scanner)) {
      measureRaw(measured, *k, points);
    }
  }
  measureBlock(strip, trajectory, parameters);
}

FitFigures PairFit::figures(bool groundTruth) const {
  FitFigures figures;
  std::array<double, columns> squares{};
  double variance = 0.0;
  for (const Record& record : records_) {
    if (record.isGroundTruth != groundTruth) continue;
    if (record.missing > 0) {
      ++figures.notFound;
      continue;
    }
    ++figures.correspondences;
    variance += record.variance;
    for (std::size_t c = 0; c < columns; ++c) squares[c] += record.distance[c] * record.distance[c];
  }
  if (figures.correspondences == 0) return figures;
  const auto rms = [&](double sum) {
    return std::sqrt(sum / static_cast<double>(figures.correspondences));
  };
  figures.rawBefore = rms(squares[rawBefore]);
  figures.rawAfter = rms(squares[rawAfter]);
  figures.rawTrue = rms(squares[rawTrue]);
  figures.blockBefore = rms(squares[blockBefore]);
  figures.blockAfter = rms(squares[blockAfter]);
  figures.blockTrue = rms(squares[blockTrue]);
  figures.floor = rms(variance);
  return figures;
}

}  // namespace Velorn::Flights::Comparison
