// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "flight/simulation/Control.h"
#include "flight/simulation/Correspondences.h"
#include "flight/simulation/OutputFolder.h"
#include "flight/simulation/Survey.h"
#include "flight/simulation/TruthFile.h"
#include "flight/strips/EnoughMemory.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/ParallelLoop.h"
#include "flight/strips/Surfaces.h"
#include "flight/strips/Watcher.h"
#include "platform/geomra/Degree.h"
#include "platform/plome/ReplacedFile.h"
#include <velorn/flight/Containers.h>
#include <velorn/flight/Simulate.h>

namespace Velorn::Flights::Simulation {
namespace {

using Geomra::degree;

point pointOf(const Eigen::Vector3d& v) {
  return {v[0], v[1], v[2]};
}

TrajectoryColumns trajectoryColumns(const Track& track, const MountingValues& mounting,
                                    std::uint32_t epsg) {
  TrajectoryColumns columns;
  columns.week = FlightPlan::week;
  columns.epsgSpatial = epsg;
  columns.epsgHeight = ellipsoidalHeightCode(epsg);
  columns.leverArm = pointOf(mounting.leverArm);
  columns.misalignment = pointOf(mounting.misalignment / degree);
  for (std::size_t i = 0; i < track.size(); ++i) {
    const Pose& pose = track.pose(i);
    columns.times.push_back(track.time(i));
    columns.positions.push_back(pose.position);
    columns.roll.push_back(pose.attitude.x / degree);
    columns.pitch.push_back(pose.attitude.y / degree);
    columns.yaw.push_back(pose.attitude.z / degree);
  }
  return columns;
}

GroundTruthColumns groundTruthColumns(const std::vector<Patch>& patches, const Terrain& terrain) {
  GroundTruthColumns columns;
  for (const Patch& patch : patches) {
    const Plane& plane = terrain.planes()[patch.plane];
    for (const point& p : patch.points) {
      columns.positions.push_back(p);
      columns.normals.push_back(plane.normal);
      columns.classification.push_back(static_cast<std::uint8_t>(plane.surface));
    }
  }
  return columns;
}

/// The flight with its true and its delivered state.
class SimulatedFlight {
 public:
  explicit SimulatedFlight(const SimulationSettings& options)
      : options_(options),
        projection_(Projection::UTMfromEPSG(options.epsg)),
        plan_(options),
        terrain_(plan_.reach(), options.seed, options.terrainScale),
        truth_(flownTrack(plan_, Motion(options.seed), projection_)),
        real_(trueMounting(options)),
        nominal_(nominalMounting()),
        survey_(options_, plan_, terrain_, truth_, real_, projection_) {
    for (std::size_t i = 0; i < plan_.strips().size(); ++i) {
      errors_.push_back(drawnErrors(options, i, survey_.firstTime(i)));
      if (!options.slowErrors) errors_.back().removeSlowPart();
    }
    delivered_ = deliveredTrack(truth_, plan_.strips(), errors_);
  }

  SimulatedFlight(const SimulatedFlight&) = delete;  // the survey refers to its parts
  SimulatedFlight& operator=(const SimulatedFlight&) = delete;

  std::size_t strips() const { return plan_.strips().size(); }
  const Terrain& terrain() const { return terrain_; }
  std::vector<Patch> control() const { return controlPatches(terrain_, plan_, options_); }
  std::string truthText(const std::vector<StripTruth>& strips) const {
    return Simulation::truthText(options_, nominal_, real_, strips);
  }

  void saveTrajectory(const std::filesystem::path& file) const {
    Flights::saveTrajectory(file, trajectoryColumns(delivered_, nominal_, options_.epsg));
  }

  std::vector<Echo> scan(std::size_t strip, const std::function<void()>& ask) const {
    return survey_.scan(strip, ask);
  }
  DeliveredPoint deliver(const Echo& echo) const;

  /// Writes a strip and where its points truly fell.
  StripTruth saveStrip(std::size_t strip, const std::vector<Echo>& echoes,
                       const std::filesystem::path& file,
                       const std::filesystem::path& surfaces) const {
    Flights::saveStrip(file, stripColumns(echoes, strip));
    saveSurfaces(surfaces, surfacesOf(echoes));
    return {file.filename().string(), plan_.strips()[strip], errors_[strip], echoes.size(),
            echoes.back().time};
  }

 private:
  StripColumns stripColumns(const std::vector<Echo>& echoes, std::size_t strip) const;
  void georeference(const std::vector<Echo>& echoes, StripColumns& columns) const;
  static SurfaceColumns surfacesOf(const std::vector<Echo>& echoes);

  SimulationSettings options_;
  Projection projection_;
  FlightPlan plan_;
  Terrain terrain_;
  Track truth_, delivered_;
  MountingValues real_, nominal_;
  Survey survey_;
  std::vector<StripErrors> errors_;
};

StripColumns SimulatedFlight::stripColumns(const std::vector<Echo>& echoes,
                                           std::size_t strip) const {
  StripColumns columns;
  columns.week = FlightPlan::week;
  columns.returnNumber.assign(echoes.size(), 1);
  columns.numberOfReturns.assign(echoes.size(), 1);
  columns.pointSourceId.assign(echoes.size(), static_cast<std::uint16_t>(strip + 1));
  for (const Echo& echo : echoes) {
    columns.times.push_back(echo.time);
    columns.scanner.push_back(echo.scanner);
    columns.amplitude.push_back(echo.brightness);
    columns.classification.push_back(
        static_cast<std::uint8_t>(terrain_.planes()[echo.plane].surface));
  }
  georeference(echoes, columns);
  return columns;
}

/// World point and direction under the delivered trajectory and the nominal mounting.
DeliveredPoint SimulatedFlight::deliver(const Echo& echo) const {
  const Pose pose = delivered_.at(echo.time);
  const Beams beams(pose, nominal_.misalignment, nominal_.leverArm, projection_);
  const point world = beams.world(echo.scanner);
  return {world, pose.position - world};
}

void SimulatedFlight::georeference(const std::vector<Echo>& echoes, StripColumns& columns) const {
  columns.world.resize(echoes.size());
  columns.directions.resize(echoes.size());
  forEachInParallel(0, echoes.size(), 1024, [&](std::size_t i) {
    const auto delivered = deliver(echoes[i]);
    columns.world[i] = delivered.world;
    columns.directions[i] = delivered.direction;
  });
}

SurfaceColumns SimulatedFlight::surfacesOf(const std::vector<Echo>& echoes) {
  SurfaceColumns columns;
  for (const Echo& echo : echoes) {
    columns.positions.push_back(echo.place);
    columns.plane.push_back(echo.plane);
  }
  return columns;
}

void writeText(const std::filesystem::path& file, const std::string& text) {
  orFail(Plome::replaceFile(file, text), Error::NoSpace);
}

SimulationReport written(const std::filesystem::path& folder, const SimulationSettings& options,
                         bool overwrite, Watcher& watcher) {
  const SimulatedFlight flight(options);
  const auto patches = flight.control();
  OutputFolder out(folder, overwrite);
  SimulationReport summary{
      flight.strips(), 0, patches.size(), flight.terrain().planes().size(), 0, 0};
  flight.saveTrajectory(out.trajectory());
  saveGroundTruth(out.groundTruth(), groundTruthColumns(patches, flight.terrain()));
  writeText(out.planes(), planesText(flight.terrain()));
  std::vector<StripTruth> strips;
  std::vector<std::vector<Echo>> echoes;
  for (std::size_t i = 0; i < flight.strips(); ++i) {
    watcher.report("simulating", i, flight.strips());
    auto measured = flight.scan(i, [&] { watcher.goOn("simulating"); });
    strips.push_back(flight.saveStrip(i, measured, out.strip(i), out.planesOfStrip(i)));
    if (options.correspondences > 0) echoes.push_back(std::move(measured));
    summary.points += strips.back().points;
    watcher.tell(fmt::format("{}: {} points", strips.back().file, strips.back().points));
  }
  if (options.correspondences > 0) {
    const auto deliver = [&](const Echo& echo) { return flight.deliver(echo); };
    summary.correspondences =
        saveCorrespondences({flight.terrain().planes(), patches, echoes, deliver}, options, out);
    watcher.tell(fmt::format("{} correspondences", summary.correspondences));
  }
  out.removeRemains();
  writeText(out.truth(), flight.truthText(strips));
  summary.files = out.numberOfFiles();
  return summary;
}

}  // namespace
}  // namespace Velorn::Flights::Simulation

namespace Velorn::Flights {

SimulationReport simulate(const std::filesystem::path& folder, const SimulationSettings& options,
                          bool overwrite, const Watch& watch) {
  Simulation::check(options);
  Watcher watcher(watch);
  return withMemoryFor(folder.string(),
                       [&] { return Simulation::written(folder, options, overwrite, watcher); });
}

}  // namespace Velorn::Flights
