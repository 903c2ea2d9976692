// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/RasterFile.h"

#include <system_error>
#include <utility>

#include "flight/surfaces/StripAttributes.h"

namespace Velorn::Flights {
namespace {

template <typename T>
Strandel::FieldPtr add(Strandel::Chart& chart, const char* name, std::vector<T> values) {
  auto field = chart.makeField(name, Strandel::valueTypeOf<T>());
  orFail(field->template setValues<T>({0}, std::move(values)));
  return field;
}

Strandel::GridPtr makeGrid(Strandel::Bundle& bundle, const GridFile& strip) {
  auto grid = bundle.makeSlice(0.0)->makeGrid(strip.grid().name());
  grid->attributes().set("WeekNumber", std::int64_t{strip.week()});
  return grid;
}

/// @return the world chart
Strandel::ChartPtr addPoints(Strandel::Bundle& bundle, const GridFile& strip, MatchPoints points) {
  const auto grid = makeGrid(bundle, strip);
  auto world = grid->makeChart(Strandel::worldChartName);
  const auto scanner = grid->makeChart(Strandel::scannerChartName);
  add(*world, "Positions", std::move(points.delivered));
  add(*world, normalsName, std::move(points.normals));
  scanner->shareField(add(*world, "GPSTime", std::move(points.times)));
  add(*world, classesName, std::move(points.codes));
  add(*world, "Roughness", std::move(points.roughness));
  add(*world, "PlaneDistance", std::move(points.heights));
  add(*scanner, "Positions", std::move(points.scanner));
  add(*scanner, "Waveforms.DirectionDelta", std::move(points.beams));
  return world;
}

}  // namespace

void refuseSameFile(const std::filesystem::path& points, const std::filesystem::path& made) {
  std::error_code missing;  // there is none yet
  if (std::filesystem::equivalent(points, made, missing)) {
    throw Error(made.string() + ": what is made would replace the points it is made of");
  }
}

Strandel::Bundle planarBundle(const GridFile& strip, std::vector<std::uint32_t> numbers,
                              std::vector<vector> normals, std::vector<std::uint8_t> codes) {
  Strandel::Bundle bundle;
  const auto world = makeGrid(bundle, strip)->makeChart(Strandel::worldChartName);
  add(*world, numbersName, std::move(numbers));
  add(*world, normalsName, std::move(normals));
  add(*world, classesName, std::move(codes));
  return bundle;
}

Strandel::Bundle rasterBundle(const GridFile& strip, MatchPoints points,
                              std::span<const std::uint32_t> numbers) {
  Strandel::Bundle bundle;
  const auto world = addPoints(bundle, strip, std::move(points));
  const auto copy = [&]<typename T>(T, const char* name) {
    add(*world, name, strip.world<T>(name).at(numbers));
  };
  copy(double{}, "Amplitude");
  for (const char* name : {"ReturnNumber", "NumberOfReturns", "Classification"}) {
    copy(std::uint8_t{}, name);
  }
  const auto source = strip.worldField("PointSourceID");
  if (source && source->valueType() == Strandel::ValueType::UInt16) {
    copy(std::uint16_t{}, "PointSourceID");
  }
  return bundle;
}

}  // namespace Velorn::Flights
