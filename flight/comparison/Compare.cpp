// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <array>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "flight/comparison/Globals.h"
#include "flight/comparison/PairFit.h"
#include "flight/comparison/WorldErrors.h"
#include "flight/records/FinishedRun.h"
#include "flight/records/RunFolder.h"
#include "flight/strips/AdjustedName.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/GridFile.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/Watcher.h"
#include <velorn/InputParameter.h>
#include <velorn/flight/Compare.h>

namespace Velorn::Flights::Comparison {
namespace {

namespace fs = std::filesystem;
using Geomra::PhysicalSpace::point;
using Velorn::TerrainType;

fs::path adjustedFile(const fs::path& folder, const TrueStrip& strip) {
  return folder / adjustedNameOf(strip.file);
}

/// Places of the strips that have a result.
std::vector<std::size_t> stripsWithResult(const Truth& truth, const fs::path& adjusted) {
  std::vector<std::size_t> places;
  std::error_code ignored;
  for (std::size_t i = 0; i < truth.strips.size(); ++i) {
    if (fs::is_regular_file(adjustedFile(adjusted, truth.strips[i]), ignored)) places.push_back(i);
  }
  if (!places.empty()) return places;
  throw Error(fmt::format(
      "{}: holds no adjusted strip of the flight ({} and so on). RESULT is the root folder of a "
      "run; --adjusted names the folder of its strips when they lie elsewhere",
      adjusted.string(), adjustedFile({}, truth.strips.at(0)).string()));
}

Velorn::Trajectory trajectoryOf(const Truth& truth) {
  Velorn::Trajectory trajectory({truth.trajectory});
  orFail(trajectory.importTrajectory());
  return trajectory;
}

/// For the strips of the truth in their order.
class AdjustedModel {
 public:
  AdjustedModel(const Truth& truth, const std::optional<ModelFiles>& files) {
    if (!files) return;
    std::vector<fs::path> strips, unknown;
    for (const TrueStrip& strip : truth.strips) strips.push_back(strip.file);
    parameters_ = Velorn::SolverParameters(strips, Velorn::InputParameter());
    orFail(parameters_->restore(files->sections, files->parameters, files->stripIds, &unknown));
    for (const auto& strip : unknown) unknown_.push_back(strip.filename().string());
  }

  const Velorn::SolverParameters* parameters() const {
    return parameters_ ? &*parameters_ : nullptr;
  }
  const std::vector<std::string>& unknown() const { return unknown_; }

 private:
  std::optional<Velorn::SolverParameters> parameters_;
  std::vector<std::string> unknown_;
};

/// Ids of a run on all strips of the flight.
StripNames namesOf(const Truth& truth, const std::optional<ModelFiles>& files) {
  if (files) return stripNamesIn(files->stripIds);
  StripNames names;
  for (const TrueStrip& strip : truth.strips) {
    names.emplace(static_cast<std::uint32_t>(names.size()), strip.file.filename().string());
  }
  return names;
}

/// A strip of another flight may have the same times; one that was georeferenced has kept its
/// scanner coordinates.
void checkSameMeasurements(const GridFile& after, const StripPoints& points, const fs::path& result,
                           const TrueStrip& strip) {
  const auto refused = [&](const char* why) {
    return Error(fmt::format("{}: does not hold the points of {}: other {}", result.string(),
                             strip.file.string(), why));
  };
  if (*after.world<double>("GPSTime").whole() != points.times) throw refused("GPS times");
  const auto scanner = after.grid().chart(Strandel::scannerChartName);
  if (!scanner || !scanner->field("Positions")) return;
  if (*after.scanner<point>("Positions").whole() != points.scanner) {
    throw refused("scanner coordinates");
  }
}

StripPoints pointsOf(const Truth& truth, std::size_t strip, const fs::path& adjusted,
                     const Velorn::Trajectory& trajectory) {
  const fs::path result = adjustedFile(adjusted, truth.strips[strip]);
  const GridFile delivered(truth.strips[strip].file), after(result);
  StripPoints points;
  points.times = *delivered.scanner<double>("GPSTime").whole();
  points.scanner = *delivered.scanner<point>("Positions").whole();
  points.delivered = *delivered.world<point>("Positions").whole();
  points.adjusted = *after.world<point>("Positions").whole();
  checkSameMeasurements(after, points, result, truth.strips[strip]);
  points.real = trueWorld(truth, trajectory, strip, points.scanner, points.times);
  return points;
}

std::vector<TerrainType> kindsOf(const Truth& truth, std::size_t strip, std::size_t points) {
  const fs::path& file = truth.strips[strip].planes;
  const auto planes = GridFile(file).world<std::uint32_t>("Plane").whole();
  const bool known = std::ranges::all_of(
      *planes, [&](std::uint32_t plane) { return plane < truth.kindOfPlane.size(); });
  if (planes->size() != points || !known) {
    throw Error(file.string() + ": does not belong to the points and planes of the flight");
  }
  std::vector<TerrainType> kinds;
  kinds.reserve(points);
  for (const std::uint32_t plane : *planes) kinds.push_back(truth.kindOfPlane[plane]);
  return kinds;
}

/// Errors of both models.
struct BeforeAndAfter {
  explicit BeforeAndAfter(std::size_t strips) : before(strips), after(strips) {}

  void add(std::size_t strip, const StripPoints& points, const std::vector<TerrainType>& kinds) {
    for (std::size_t k = 0; k < kinds.size(); ++k) {
      before.add(strip, kinds[k], points.delivered[k] - points.real[k]);
      after.add(strip, kinds[k], points.adjusted[k] - points.real[k]);
    }
  }

  WorldErrors before, after;
};

WorldReport reportOf(const BeforeAndAfter& errors, const Truth& truth,
                     const std::vector<std::size_t>& places) {
  constexpr std::array kinds{
      std::pair{"roof", TerrainType::ROOF}, std::pair{"slope", TerrainType::SLOPE},
      std::pair{"bed", TerrainType::BED_POINTS}, std::pair{"flat", TerrainType::FLAT}};
  WorldReport report;
  report.kinds.push_back({"all", errors.before.all(), errors.after.all()});
  for (const auto& [name, kind] : kinds) {
    report.kinds.push_back({name, errors.before.ofKind(kind), errors.after.ofKind(kind)});
  }
  for (std::size_t i = 0; i < truth.strips.size(); ++i) {
    const std::string name = truth.strips[i].file.filename().string();
    if (std::ranges::find(places, i) == places.end()) {
      report.missing.push_back(name);
    } else {
      report.strips.push_back({name, errors.before.ofStrip(i), errors.after.ofStrip(i)});
    }
  }
  report.shiftBefore = errors.before.shift();
  report.shiftAfter = errors.after.shift();
  report.notFinite = errors.after.notFinite();
  return report;
}

/// What a root holds for a comparison; only the adjusted strips have to be there.
struct Result {
  Result(const fs::path& root, const fs::path& folder)
      : adjusted(folder.empty() ? RunFolder(root).adjusted() : folder),
        blocks(RunFolder(root).blocks()) {
    if (RunState::isIn(root)) files = FinishedRun(root).model();
  }

  fs::path adjusted, blocks;
  std::optional<ModelFiles> files;
};

ComparisonReport compared(const Truth& truth, const Result& result, Watcher& watcher) {
  const auto places = stripsWithResult(truth, result.adjusted);
  ComparisonReport report;
  report.files = result.files;
  const auto trajectory = trajectoryOf(truth);
  const AdjustedModel model(truth, report.files);
  PairFit fit(truth, result.blocks, namesOf(truth, report.files));
  BeforeAndAfter errors(truth.strips.size());
  ScanShape shape;
  for (std::size_t k = 0; k < places.size(); ++k) {
    watcher.report("comparing", k, places.size());
    const StripPoints points = pointsOf(truth, places[k], result.adjusted, trajectory);
    errors.add(places[k], points, kindsOf(truth, places[k], points.times.size()));
    shape.add(points.scanner);
    fit.addStrip(places[k], points, trajectory, model.parameters());
  }
  report.world = reportOf(errors, truth, places);
  report.unknown = model.unknown();
  report.pairs = fit.ofPairs();
  report.groundTruth = fit.ofGroundTruth();
  if (model.parameters()) {
    report.globals = globalsOf(truth, *model.parameters());
    report.sums = separableSums(truth, shape, *model.parameters());
  }
  return report;
}

}  // namespace
}  // namespace Velorn::Flights::Comparison

namespace Velorn::Flights {

ComparisonReport compare(const std::filesystem::path& truth, const std::filesystem::path& result,
                         const std::filesystem::path& adjusted, const Watch& watch) {
  Watcher watcher(watch);
  return withMemoryFor(truth.string(), [&] {
    return Comparison::compared(Comparison::readTruth(truth), {result, adjusted}, watcher);
  });
}

}  // namespace Velorn::Flights
