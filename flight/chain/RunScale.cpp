// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/chain/RunScale.h"

#include <algorithm>

#include "flight/strips/OrFail.h"
#include "flight/surfaces/Rasterize.h"

namespace Velorn::Flights {
namespace {

StripScale once(const std::filesystem::path& strip, const RunFolder& folder,
                const FlightSettings& settings) {
  const StepRecord record = folder.record("scale_" + strip.stem().string());
  StepKey key("scale");
  key.add("GridName", settings.configuration().GridName);
  key.addFiles("input", {strip});
  const auto done = settings.force ? std::nullopt : record.valid<StripScale>(key);
  if (done) return *done;
  const StripScale scale = scaleOfStrip(strip, settings.configuration());
  record.finish(key, {}, scale);
  return scale;
}

void replaceZero(double& value, double by) {
  if (value == 0.0) value = by;
}

}  // namespace

std::optional<ScaleReport> followPoints(const std::vector<std::string>& strips,
                                        const RunFolder& folder, FlightSettings& settings) {
  auto& configuration = settings.configuration();
  double &cell = configuration.MinCellSize, &radius = configuration.SearchRadius;
  double &reach = settings.raster.neighbourRadius, &roughness = settings.raster.maxRoughness;
  if (cell > 0.0 && radius > 0.0 && reach > 0.0 && roughness > 0.0) return {};
  std::vector<StripScale> scales;
  scales.reserve(strips.size());
  for (const auto& strip : strips) scales.push_back(once(strip, folder, settings));
  const StripScale all = together(scales);
  const WorkLengths lengths = lengthsFor(all);
  if (cell == 0.0) {
    for (std::size_t k = 1; k < configuration.CellSizeScaler.size(); ++k) {
      double& scaler = configuration.CellSizeScaler[k];
      scaler = std::min(scaler, lengths.largestCell / lengths.cell);
    }
  }
  replaceZero(cell, lengths.cell);
  replaceZero(radius, lengths.searchRadius);
  replaceZero(reach, lengths.neighbourRadius);
  replaceZero(roughness, lengths.maxRoughness);
  orFail(configuration.check());
  return ScaleReport{all.spacing,
                     all.noise,
                     cell,
                     radius,
                     reach,
                     roughness,
                     settings.raster.neighbours,
                     std::max(settings.raster.neighbours, settings.raster.mostNeighbours)};
}

}  // namespace Velorn::Flights
