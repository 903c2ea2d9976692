// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/matching/MatchPoints.h"

#include <cmath>
#include <limits>
#include <utility>

#include <fmt/format.h>

#include "host/Failure.h"
#include "host/matching/Correspondence.h"
#include "host/matching/SearchLoop.h"
#include "platform/morvane/Console.h"
#include "platform/strandel/Bundle.h"
#include <velorn/DataBlock.h>

namespace Matching {
namespace {

using std::filesystem::path;

[[noreturn]] void refuse(const path& file, const std::string& fault) {
  throw Failure(fmt::format("{}: {}", file.string(), fault));
}

/// The grid of a file's points; empty for a container that holds nothing.
class PointFile {
 public:
  PointFile(path file, const Velorn::InputParameter& configuration) : file_(std::move(file)) {
    if (!configuration.Storage) refuse(file_, "there is no storage to load it");
    orFail(configuration.Storage->load(file_, bundle_));
    if (bundle_.empty()) return;
    const auto slice = bundle_.slices().front();
    if (slice->numberOfGrids() == 0) return;
    grid_ = slice->numberOfGrids() == 1 ? slice->uniqueGrid() : slice->grid(configuration.GridName);
    if (!grid_) refuse(file_, fmt::format("has no grid \"{}\"", configuration.GridName));
  }

  /// All attributes of all points; of a file without points an empty block.
  Velorn::DataBlock points(bool worldOnly) const {
    Velorn::DataBlock block;
    for (const auto id : fragments()) {
      const auto fault = block.appendData(*grid_, std::make_shared<Strandel::FragmentId>(id),
                                          worldOnly, !worldOnly);
      if (!fault.empty()) refuse(file_, fault + rasterizeFirst(worldOnly));
    }
    if (block.world->size() > std::numeric_limits<std::uint32_t>::max()) {
      refuse(file_, "has more points than can be numbered (4,294,967,295)");
    }
    return block;
  }

  std::vector<double> column(const char* name) const {
    std::vector<double> all;
    const auto chart = grid_ ? grid_->cartesian() : nullptr;
    const auto field = chart ? chart->field(name) : nullptr;
    for (const auto id : fragments()) {
      if (!field) refuse(file_, fmt::format("no raster of a strip: it has no field {}", name));
      const auto read = field->values<double>(id);
      if (!read) refuse(file_, read.error);
      all.insert(all.end(), read.values->begin(), read.values->end());
    }
    return all;
  }

  /// @return 0 for a file without points
  std::uint32_t week() const {
    if (fragments().empty()) return 0;
    const auto week = grid_->attributes().unsigned32("WeekNumber");
    if (!week) refuse(file_, "has no attribute WeekNumber");
    return *week;
  }

 private:
  static const char* rasterizeFirst(bool worldOnly) {
    return worldOnly ? "" : "; a strip must be rasterized before it is matched";
  }

  /// Those with points.
  std::vector<Strandel::FragmentId> fragments() const {
    const auto chart = grid_ ? grid_->cartesian() : nullptr;
    const auto positions = chart ? chart->field("Positions") : nullptr;
    if (grid_ && !grid_->charts().empty() && !positions) refuse(file_, "has no positions");
    auto all = positions ? positions->fragments() : std::vector<Strandel::FragmentId>();
    std::erase_if(all, [&](auto id) { return positions->size(id) == 0; });
    return all;
  }

  path file_;
  Strandel::Bundle bundle_;
  Strandel::GridPtr grid_;
};

/// The entries of a column that are kept; an empty column stays so.
template <typename T>
void keepOf(std::vector<T>& column, const std::vector<std::uint32_t>& numbers) {
  if (column.empty()) return;
  for (std::size_t k = 0; k < numbers.size(); ++k) column[k] = column[numbers[k]];
  column.resize(numbers.size());
  column.shrink_to_fit();
}

enum class Use : std::uint8_t { no, yes, notFinite };

Use useOf(const Velorn::DataBlock& block, std::size_t k, const Wanted& wanted) {
  const std::uint8_t code = (*block.rigorousClasses)[k];
  if (!isSurface(code)) return Use::no;
  const vector& beam = (*block.directionDeltas)[k];
  const bool isSound = isOnEarth((*block.world)[k]) && isOnEarth((*block.scanner)[k]) &&
                       std::isfinite(lengthOf(beam)) && std::isfinite((*block.times)[k]);
  if (!isSound) return Use::notFinite;
  return wanted((*block.world)[k]) ? Use::yes : Use::no;
}

void tellLeftOut(const path& file, std::size_t count, const char* why) {
  if (count == 0) return;
  Morvane::Console::writeLine(
      fmt::format("match: {}: {} points are left out: {}", file.string(), count, why));
}

/// Numbers of the points that are wanted.
std::vector<std::uint32_t> chosen(const path& file, const Velorn::DataBlock& block,
                                  const Wanted& wanted) {
  std::vector<Use> uses(block.world->size());
  forEachInParallel(0, uses.size(), 4096,
                    [&](std::size_t k) { uses[k] = useOf(block, k, wanted); });
  std::vector<std::uint32_t> numbers;
  std::size_t notFinite = 0;
  for (std::size_t k = 0; k < uses.size(); ++k) {
    if (uses[k] == Use::yes) numbers.push_back(static_cast<std::uint32_t>(k));
    notFinite += uses[k] == Use::notFinite ? 1 : 0;
  }
  tellLeftOut(file, notFinite, "a coordinate, beam or time is not finite or beyond 1e9");
  return numbers;
}

/// Columns that the matching has no use for go first.
MatchPoints pointsOf(const PointFile& file, Velorn::DataBlock block,
                     const std::vector<std::uint32_t>& numbers) {
  for (auto* column : {&block.returnNumbers, &block.numbersOfReturns, &block.classes}) {
    column->reset();
  }
  block.amplitudes.reset();
  MatchPoints points;
  points.delivered = std::move(*block.world);
  points.scanner = std::move(*block.scanner);
  points.times = std::move(*block.times);
  points.normals = std::move(*block.normals);
  points.beams = std::move(*block.directionDeltas);
  points.codes = std::move(*block.rigorousClasses);
  points.week = file.week();
  points.keep(numbers);
  return points;
}

}  // namespace

void MatchPoints::keep(const std::vector<std::uint32_t>& numbers) {
  for (auto* column : {&delivered, &searched, &scanner}) keepOf(*column, numbers);
  for (auto* column : {&normals, &beams}) keepOf(*column, numbers);
  for (auto* column : {&times, &roughness, &heights}) keepOf(*column, numbers);
  keepOf(codes, numbers);
}

MatchPoints readStrip(const path& file, const Velorn::InputParameter& configuration,
                      const Wanted& wanted) {
  const PointFile container(file, configuration);
  Velorn::DataBlock block = container.points(false);
  const auto numbers = chosen(file, block, wanted);
  return pointsOf(container, std::move(block), numbers);
}

MatchPoints readRaster(const path& file, const Velorn::InputParameter& configuration,
                       const Wanted& wanted) {
  const PointFile container(file, configuration);
  Velorn::DataBlock block = container.points(false);
  const std::size_t count = block.world->size();
  const auto numbers = chosen(file, block, wanted);
  MatchPoints points = pointsOf(container, std::move(block), numbers);
  points.roughness = container.column("Roughness");
  points.heights = container.column("PlaneDistance");
  if (points.roughness.size() != count || points.heights.size() != count) {
    refuse(file, fmt::format("has {} points, {} values of Roughness and {} of PlaneDistance", count,
                             points.roughness.size(), points.heights.size()));
  }
  keepOf(points.roughness, numbers);
  keepOf(points.heights, numbers);
  return points;
}

std::uint32_t readWeek(const path& file, const Velorn::InputParameter& configuration) {
  return PointFile(file, configuration).week();
}

KnownPoints readGroundTruth(const path& file, const Velorn::InputParameter& configuration) {
  const auto block = PointFile(file, configuration).points(true);
  KnownPoints known;
  for (std::size_t k = 0; k < block.world->size(); ++k) {
    const vector& normal = (*block.normals)[k];
    const double length = lengthOf(normal);
    if (!isOnEarth((*block.world)[k]) || !std::isfinite(length) || !(length > 0.0)) continue;
    known.places.push_back((*block.world)[k]);
    known.normals.push_back((1.0 / length) * normal);
    known.codes.push_back(block.classes->empty() ? std::uint8_t{0} : (*block.classes)[k]);
  }
  tellLeftOut(file, block.world->size() - known.places.size(),
              "a coordinate is not finite or beyond 1e9, or there is no normal");
  return known;
}

}  // namespace Matching
