// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/RasterFile.h"

#include <velorn/DataBlock.h>

namespace Velorn::Flights {
namespace {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;

constexpr Strandel::FragmentId only{0};

template <typename T>
Strandel::FieldPtr add(Strandel::Chart& chart, const char* name, std::vector<T> values) {
  auto field = chart.makeField(name, Strandel::valueTypeOf<T>());
  orFail(field->template setValues<T>(only, std::move(values)));
  return field;
}

/// What a matching will read must be readable.
void checkRaster(const GridFile& strip, const Strandel::Grid& raster) {
  Velorn::DataBlock block;
  const auto fragment = std::make_shared<Strandel::FragmentId>(only);
  const std::string fault = block.getData(raster, fragment, false, true);
  if (!fault.empty()) strip.refuse("", fault);
}

}  // namespace

void refuseSameFile(const std::filesystem::path& points, const std::filesystem::path& raster) {
  std::error_code missing;  // there is no raster yet
  if (std::filesystem::equivalent(points, raster, missing)) {
    throw Error(raster.string() + ": the raster would replace the points it is made of");
  }
}

Strandel::Bundle rasterOfStrip(const GridFile& strip, std::span<const std::uint32_t> chosen,
                               PlanesOfRaster planes) {
  Strandel::Bundle bundle;
  const auto grid = bundle.makeSlice(0.0)->makeGrid(strip.grid().name());
  grid->attributes().set("WeekNumber", std::int64_t{strip.week()});
  const auto world = grid->makeChart(Strandel::worldChartName);
  const auto scanner = grid->makeChart(Strandel::scannerChartName);
  const auto copy = [&]<typename T>(T, const char* name) {
    return add(*world, name, strip.world<T>(name).at(chosen));
  };
  copy(point{}, "Positions");
  copy(vector{}, "NormalVector");
  scanner->shareField(copy(double{}, "GPSTime"));
  copy(double{}, "Amplitude");
  for (const char* name :
       {"ReturnNumber", "NumberOfReturns", "Classification", "RigorousClassification"}) {
    copy(std::uint8_t{}, name);
  }
  const auto source = strip.worldField("PointSourceID");
  if (source && source->valueType() == Strandel::ValueType::UInt16) {
    copy(std::uint16_t{}, "PointSourceID");
  }
  add(*world, "Roughness", std::move(planes.roughness));
  add(*world, "PlaneDistance", std::move(planes.distance));
  add(*scanner, "Positions", strip.scanner<point>("Positions").at(chosen));
  add(*scanner, "Waveforms.DirectionDelta",
      strip.scanner<vector>("Waveforms.DirectionDelta").at(chosen));
  if (!chosen.empty()) checkRaster(strip, *grid);
  return bundle;
}

}  // namespace Velorn::Flights
