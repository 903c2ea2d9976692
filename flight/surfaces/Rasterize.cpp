// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/surfaces/Rasterize.h"

#include <algorithm>

#include <fmt/format.h>

#include "flight/strips/EnoughMemory.h"
#include "flight/surfaces/Cubes.h"
#include "flight/surfaces/PointClasses.h"
#include "flight/surfaces/RasterFile.h"
#include "flight/surfaces/Representatives.h"
#include "flight/surfaces/SearchPlaces.h"
#include "flight/surfaces/SelectedPoints.h"
#include "flight/surfaces/StripAttributes.h"
#include "flight/surfaces/TerrainClasses.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t classes = std::tuple_size_v<PerClass>;

/// One strip from its container to its raster.
class StripRasterizing {
 public:
  StripRasterizing(const fs::path& path, const Velorn::InputParameter& configuration,
                   const RasterSettings& options, Kestrum::LoaderProgress& progress)
      : configuration_(configuration),
        options_(options),
        progress_(progress),
        selection_(configuration.SelectionStr),
        strip_(path, configuration),
        text_("rasterizing " + path.stem().string()) {}

  RasterCounts run(const SurfaceFiles& files, const StripView& view) {
    MatchPoints points;
    std::vector<std::uint32_t> numbers, chosen;
    {
      const auto delivered = begin();
      const auto placed = view.solution ? placesOf(view) : std::vector<point>();
      const std::span<const point> places = view.solution ? placed : *delivered;
      const Surface surface = classify(places, 0.0);
      chosen = choose(places);
      numbers = planarPoints();
      addPlanes(surface, numbers, points);
    }
    MatchPoints ofChosen = points.at(placesIn(numbers, chosen));
    addMeasured(strip_, chosen, ofChosen);
    saveRaster(std::move(ofChosen), chosen, files.raster);
    Strandel::Bundle made = planarBundle(strip_, std::move(numbers), std::move(points.normals),
                                         std::move(points.codes));
    save(made, files.planar);
    return counts_;
  }

  RasterCounts runView(const StripView& view, const fs::path& raster) {
    MatchPoints points;
    std::vector<std::uint32_t> numbers;
    {
      const auto delivered = begin();
      const auto placed = view.solution ? placesOf(view) : std::vector<point>();
      const std::span<const point> places = view.solution ? placed : *delivered;
      const Surface surface = classify(places, view.side);
      numbers = planarPoints();
      addPlanes(surface, numbers, points);
    }
    for (const std::uint32_t i : numbers) ++counts_.surface[classIndexOf(codes_[i])];
    counts_.representatives = counts_.surface;
    addMeasured(strip_, numbers, points);
    saveRaster(std::move(points), numbers, raster);
    return counts_;
  }

 private:
  /// Looks for what is missing before any work.
  std::shared_ptr<const std::vector<point>> begin() {
    checkStrip(strip_);
    checkNames(selection_, strip_);
    progress_.report(text_, 0, strip_.size());
    return strip_.world<point>("Positions").whole();
  }

  /// Places of some numbers in a list of numbers that holds them all; both ascend.
  static std::vector<std::uint32_t> placesIn(std::span<const std::uint32_t> all,
                                             std::span<const std::uint32_t> some) {
    std::vector<std::uint32_t> places;
    places.reserve(some.size());
    for (std::uint32_t k = 0; k < all.size() && places.size() < some.size(); ++k) {
      if (all[k] == some[places.size()]) places.push_back(k);
    }
    return places;
  }

  void saveRaster(MatchPoints points, std::span<const std::uint32_t> numbers,
                  const fs::path& file) const {
    Strandel::Bundle bundle = rasterBundle(strip_, std::move(points), numbers);
    save(bundle, file);
  }

  void save(Strandel::Bundle& bundle, const fs::path& file) const {
    saveBundle(bundle, file, *storageOf(configuration_));
  }

  std::vector<point> placesOf(const StripView& view) const {
    const auto scanner = strip_.scanner<point>("Positions").whole();
    const auto times = strip_.world<double>("GPSTime").whole();
    return placesBy(*view.solution, strip_.path(), view.strip, configuration_.InterpolationFlag,
                    {*scanner, *times, strip_.week()});
  }

  /// Planes, classes and what speaks against a point.
  /// @param side  of the cubes of which one point counts [m]; 0: all points count
  Surface classify(std::span<const point> places, double side) {
    auto clouds = cloudsOf(strip_, places);
    if (side > 0.0) thinOut(places, side, clouds);
    Surface surface = surfaceOf(places, clouds);
    deselectByAmplitude();
    counts_.notSelected += deselect(selection_, strip_, codes_);
    return surface;
  }

  /// Leaves one last echo per cube, and no other echoes.
  void thinOut(std::span<const point> places, double side, std::vector<Cloud>& clouds) {
    const auto last = onePerCube(places, membersOf(clouds, Cloud::last), side);
    const auto leftOut = std::ranges::count(clouds, Cloud::leftOut);
    counts_.notFirst = clouds.size() - static_cast<std::size_t>(leftOut) - last.size();
    std::ranges::fill(clouds, Cloud::leftOut);
    for (const std::uint32_t i : last) clouds[i] = Cloud::last;
  }

  Surface surfaceOf(std::span<const point> places, const std::vector<Cloud>& clouds) {
    const Neighbourhood neighbourhood{options_.neighbours, options_.neighbourRadius,
                                      options_.mostNeighbours, options_.maxRoughness};
    Surface surface = Flights::surfaceOf(places, clouds, neighbourhood, [&](std::size_t done) {
      progress_.report(text_, done, strip_.size());
    });
    const auto lasClasses = strip_.world<std::uint8_t>("Classification").whole();
    const auto given = givenClasses(strip_);
    codes_ = classCodes({places, clouds, surface, *lasClasses, given}, options_, counts_);
    counts_.notFinite -= counts_.notFirst;
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

  std::vector<std::uint32_t> planarPoints() const {
    std::vector<std::uint32_t> numbers;
    for (std::size_t i = 0; i < codes_.size(); ++i) {
      if (isSurface(codes_[i])) numbers.push_back(static_cast<std::uint32_t>(i));
    }
    return numbers;
  }

  void addPlanes(const Surface& surface, std::span<const std::uint32_t> numbers,
                 MatchPoints& points) const {
    points.normals.reserve(numbers.size());
    points.codes.reserve(numbers.size());
    points.roughness.reserve(numbers.size());
    points.heights.reserve(numbers.size());
    for (const std::uint32_t i : numbers) {
      points.normals.push_back(surface.normals[i]);
      points.codes.push_back(codes_[i]);
      points.roughness.push_back(static_cast<double>(surface.roughness[i]));
      points.heights.push_back(static_cast<double>(surface.distance[i]));
    }
  }

  const Velorn::InputParameter& configuration_;
  const RasterSettings& options_;
  Kestrum::LoaderProgress& progress_;
  Selection selection_;
  GridFile strip_;
  std::string text_;
  std::vector<std::uint8_t> codes_;
  RasterCounts counts_;
};

}  // namespace

RasterCounts rasterizeStrip(const SurfaceFiles& files, const Velorn::InputParameter& configuration,
                            const RasterSettings& options, Kestrum::LoaderProgress& progress,
                            const StripView& view) {
  check(configuration);
  for (const auto& file : {files.planar, files.raster}) refuseSameFile(files.strip, file);
  return withMemoryFor(files.strip.string(), [&] {
    return StripRasterizing(files.strip, configuration, options, progress).run(files, view);
  });
}

RasterCounts rasterizeView(const fs::path& strip, const StripView& view, const fs::path& raster,
                           const Velorn::InputParameter& configuration,
                           const RasterSettings& options, Kestrum::LoaderProgress& progress) {
  check(configuration);
  refuseSameFile(strip, raster);
  return withMemoryFor(strip.string(), [&] {
    return StripRasterizing(strip, configuration, options, progress).runView(view, raster);
  });
}

StripScale scaleOfStrip(const fs::path& strip, const Velorn::InputParameter& configuration) {
  return withMemoryFor(strip.string(), [&] {
    const GridFile file(strip, configuration);
    const auto places = file.world<point>("Positions").whole();
    return scaleOf(*places, membersOf(cloudsOf(file, *places), Cloud::last));
  });
}

double spacingOfStrip(const fs::path& strip, const Velorn::InputParameter& configuration,
                      double radius) {
  return withMemoryFor(strip.string(), [&] {
    const GridFile file(strip, configuration);
    const auto places = file.world<point>("Positions").whole();
    return spacingOf(*places, membersOf(cloudsOf(file, *places), Cloud::last), radius);
  });
}

}  // namespace Velorn::Flights
