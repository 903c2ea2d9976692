// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include <fmt/format.h>

#include "flight/strips/GridFile.h"
#include "flight/strips/OrFail.h"
#include "flight/strips/Surfaces.h"
#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/flight/Containers.h>

namespace Velorn::Flights {
namespace {

/// Slice at time 0 with one grid, as every file of a run has it.
class OneGrid {
 public:
  OneGrid(std::filesystem::path file, const char* name)
      : file_(std::move(file)), grid_(bundle_.makeSlice(0.0)->makeGrid(name)) {}

  Strandel::Grid& grid() { return *grid_; }
  Strandel::ChartPtr world() { return grid_->makeChart(Strandel::worldChartName); }
  Strandel::ChartPtr scanner() { return grid_->makeChart(Strandel::scannerChartName); }

  template <typename T>
  Strandel::FieldPtr add(Strandel::Chart& chart, const char* name, std::vector<T> values) {
    Strandel::FieldPtr field = chart.makeField(name, Strandel::valueTypeOf<T>());
    orFail(field->setValues<T>({0}, std::move(values)));
    return field;
  }

  template <typename T>
  void addUnlessEmpty(Strandel::Chart& chart, const char* name, std::vector<T> values) {
    if (!values.empty()) add(chart, name, std::move(values));
  }

  void save() {
    if (const auto unequal = grid_->unequalLengths(); !unequal.empty()) {
      throw Error(fmt::format("{}: not written: {}", file_.string(), unequal));
    }
    orFail(Strandel::MyStorage(0, 0, 0, 1).save(bundle_, file_, "wd"), Error::NoSpace);
  }

 private:
  std::filesystem::path file_;
  Strandel::Bundle bundle_;
  Strandel::GridPtr grid_;
};

/// What is in a column may be left out of a container.
template <Strandel::Value T>
void readIfThere(const GridFile& file, const char* chart, const char* name,
                 std::vector<T>& column) {
  const auto values = file.grid().chart(chart);
  if (!values || !values->field(name)) return;
  const bool isWorld = chart == std::string(Strandel::worldChartName);
  column = *(isWorld ? file.world<T>(name) : file.scanner<T>(name)).whole();
}

CorrespondenceColumns::Side sideOf(const Velorn::SphericalBeingData& data) {
  return {data.weekNumber, *data.world,   *data.scanner,
          *data.times,     *data.normals, *data.directionDeltas};
}

}  // namespace

void saveStrip(const std::filesystem::path& file, StripColumns columns) {
  OneGrid one(file, "strip");
  one.grid().attributes().set("WeekNumber", columns.week);
  const auto world = one.world();
  one.add(*world, "Positions", std::move(columns.world));
  const auto times = one.add(*world, "GPSTime", std::move(columns.times));
  one.addUnlessEmpty(*world, "NormalVector", std::move(columns.normals));
  one.addUnlessEmpty(*world, "ReturnNumber", std::move(columns.returnNumber));
  one.addUnlessEmpty(*world, "NumberOfReturns", std::move(columns.numberOfReturns));
  one.addUnlessEmpty(*world, "Classification", std::move(columns.classification));
  one.addUnlessEmpty(*world, "Amplitude", std::move(columns.amplitude));
  one.addUnlessEmpty(*world, "PointSourceID", std::move(columns.pointSourceId));
  one.addUnlessEmpty(*world, "SourceIndex", std::move(columns.sourceIndex));
  if (!columns.sourceFile.empty()) one.grid().attributes().set("SourceFile", columns.sourceFile);
  if (!columns.scanner.empty() || !columns.directions.empty()) {
    const auto scanner = one.scanner();
    one.add(*scanner, "Positions", std::move(columns.scanner));
    scanner->shareField(times);
    one.addUnlessEmpty(*scanner, "Waveforms.DirectionDelta", std::move(columns.directions));
  }
  one.save();
}

void saveTrajectory(const std::filesystem::path& file, TrajectoryColumns columns) {
  OneGrid one(file, "trajectory");
  const auto world = one.world();
  auto& attributes = world->attributes();
  attributes.set("WeekNumber", columns.week);
  attributes.set("EPSG_SPATIAL", columns.epsgSpatial);
  attributes.set("EPSG_HEIGHT", columns.epsgHeight);
  attributes.set("LeverArm", columns.leverArm);
  attributes.set("Misalignment", columns.misalignment);
  one.add(*world, "Positions", std::move(columns.positions));
  one.add(*world, "GPSTime", std::move(columns.times));
  one.add(*world, "Roll", std::move(columns.roll));
  one.add(*world, "Pitch", std::move(columns.pitch));
  one.add(*world, "Yaw", std::move(columns.yaw));
  one.save();
}

void saveGroundTruth(const std::filesystem::path& file, GroundTruthColumns columns) {
  OneGrid one(file, "ground_truth");
  const auto world = one.world();
  one.add(*world, "Positions", std::move(columns.positions));
  one.add(*world, "NormalVector", std::move(columns.normals));
  one.add(*world, "Classification", std::move(columns.classification));
  one.save();
}

void saveSurfaces(const std::filesystem::path& file, SurfaceColumns columns) {
  OneGrid one(file, "surfaces");
  const auto world = one.world();
  one.add(*world, "Positions", std::move(columns.positions));
  one.add(*world, "Plane", std::move(columns.plane));
  one.save();
}

StripColumns loadStrip(const std::filesystem::path& path) {
  const GridFile file(path);
  StripColumns strip;
  strip.week = file.week();
  strip.world = *file.world<Geomra::PhysicalSpace::point>("Positions").whole();
  strip.times = *file.world<double>("GPSTime").whole();
  constexpr auto* world = Strandel::worldChartName;
  constexpr auto* scanner = Strandel::scannerChartName;
  readIfThere(file, scanner, "Positions", strip.scanner);
  readIfThere(file, scanner, "Waveforms.DirectionDelta", strip.directions);
  readIfThere(file, world, "NormalVector", strip.normals);
  readIfThere(file, world, "ReturnNumber", strip.returnNumber);
  readIfThere(file, world, "NumberOfReturns", strip.numberOfReturns);
  readIfThere(file, world, "Classification", strip.classification);
  readIfThere(file, world, "Amplitude", strip.amplitude);
  readIfThere(file, world, "PointSourceID", strip.pointSourceId);
  readIfThere(file, world, "SourceIndex", strip.sourceIndex);
  strip.sourceFile = file.grid().attributes().text("SourceFile").value_or("");
  return strip;
}

CorrespondenceColumns loadCorrespondences(const std::filesystem::path& path) {
  const Velorn::CorrespondenceBlock block(path, std::make_shared<Strandel::MyStorage>(0, 0, 0, 1));
  orFail(block.errorText());
  if (block.sideI().size() != block.sideJ().size()) {
    throw Error(fmt::format("{}: its sides have {} and {} points", path.string(),
                            block.sideI().size(), block.sideJ().size()));
  }
  return {sideOf(block.sideI()), sideOf(block.sideJ()), block.isGroundTruth(),
          *block.sideI().classes};
}

}  // namespace Velorn::Flights
