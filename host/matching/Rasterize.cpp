// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/matching/Rasterize.h"

#include <algorithm>
#include <new>

#include <fmt/format.h>

#include "host/Failure.h"
#include "host/matching/PointClasses.h"
#include "host/matching/RasterFile.h"
#include "host/matching/Representatives.h"
#include "host/matching/SelectedPoints.h"
#include "host/matching/StripAttributes.h"
#include "host/matching/TerrainClasses.h"

namespace Matching {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t classes = std::tuple_size_v<PerClass>;

/// One strip from its container to its raster.
class StripRasterizing {
 public:
  StripRasterizing(const fs::path& path, const Velorn::InputParameter& configuration,
                   const RasterOptions& options, Kestrum::LoaderProgress& progress)
      : configuration_(configuration),
        options_(options),
        progress_(progress),
        selection_(configuration.SelectionStr),
        strip_(path, configuration),
        text_("rasterizing " + path.stem().string()) {}

  RasterCounts run(const fs::path& raster) {
    checkStrip(strip_);
    checkNames(selection_, strip_);
    progress_.report(text_, 0, strip_.size());
    const auto places = strip_.world<point>("Positions").whole();
    Surface surface = classify(*places);
    deselectByAmplitude();
    counts_.notSelected += deselect(selection_, strip_, codes_);
    const auto chosen = choose(*places);
    PlanesOfRaster planes = planesOf(surface, chosen);
    setFields(surface);
    Strandel::Bundle made = rasterOfStrip(strip_, chosen, std::move(planes));
    strip_.save();
    PointCloud::saveBundle(made, raster, *PointCloud::storageOf(configuration_));
    return counts_;
  }

 private:
  Surface classify(std::span<const point> places) {
    const auto echoes = echoesOf(strip_, places);
    const Neighbourhood neighbourhood{options_.neighbours, options_.neighbourRadius};
    Surface surface = surfaceOf(places, echoes, neighbourhood, [&](std::size_t done) {
      progress_.report(text_, done, strip_.size());
    });
    const auto lasClasses = strip_.world<std::uint8_t>("Classification").whole();
    const auto given = givenClasses(strip_);
    codes_ = classCodes({places, echoes, surface, *lasClasses, given}, options_, counts_);
    return surface;
  }

  void deselectByAmplitude() {
    strip_.world<double>("Amplitude").forEachBlock([&](std::size_t first, auto amplitudes) {
      for (std::size_t i = 0; i < amplitudes.size(); ++i) {
        std::uint8_t& code = codes_[first + i];
        if (!isSurface(code)) continue;
        const double limit = configuration_.Amplitude[classIndexOf(code)];
        if (limit <= -100.0 || amplitudes[i] >= limit) continue;
        code = noTerrain;
        ++counts_.notSelected;
      }
    });
  }

  /// The representatives of all classes, in the order of the strip.
  std::vector<std::uint32_t> choose(std::span<const point> places) {
    std::vector<std::uint32_t> chosen;
    for (std::size_t type = 1; type < classes; ++type) {
      std::vector<std::uint32_t> members;
      for (std::size_t i = 0; i < codes_.size(); ++i) {
        if (isSurface(codes_[i]) && classIndexOf(codes_[i]) == type) {
          members.push_back(static_cast<std::uint32_t>(i));
        }
      }
      const auto ofType = representatives(places, members, configuration_.CellSize[type]);
      counts_.surface[type] = members.size();
      counts_.representatives[type] = ofType.size();
      chosen.insert(chosen.end(), ofType.begin(), ofType.end());
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
  }

  static PlanesOfRaster planesOf(const Surface& surface, std::span<const std::uint32_t> chosen) {
    PlanesOfRaster planes;
    for (const std::uint32_t i : chosen) {
      planes.roughness.push_back(static_cast<double>(surface.roughness[i]));
      planes.distance.push_back(static_cast<double>(surface.distance[i]));
    }
    return planes;
  }

  void setFields(Surface& surface) {
    keepGiven(strip_);
    for (const auto& field :
         {strip_.set(normalsName, surface.normals), strip_.set(classesName, codes_)}) {
      field->attributes().set(originName, std::string(originText));
    }
    surface = {};
  }

  const Velorn::InputParameter& configuration_;
  const RasterOptions& options_;
  Kestrum::LoaderProgress& progress_;
  Selection selection_;
  GridFile strip_;
  std::string text_;
  std::vector<std::uint8_t> codes_;
  RasterCounts counts_;
};

}  // namespace

RasterCounts rasterizeStrip(const fs::path& strip, const fs::path& raster,
                            const Velorn::InputParameter& configuration,
                            const RasterOptions& options, Kestrum::LoaderProgress& progress) {
  check(configuration, options);
  refuseSameFile(strip, raster);
  try {
    return StripRasterizing(strip, configuration, options, progress).run(raster);
  } catch (const std::bad_alloc&) {
    throw Failure(strip.string() + ": not enough memory");
  }
}

}  // namespace Matching
