// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "host/matching/PointClasses.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "host/matching/TerrainClasses.h"

namespace Matching {
namespace {

class Classifier {
 public:
  Classifier(const KnownPoints& points, const RasterOptions& options)
      : points_(points),
        maxRoughness_(static_cast<float>(options.maxRoughness)),
        steepest_(std::cos(options.slopeLimit * std::numbers::pi / 180.0)) {
    if (points_.given) return;
    for (std::size_t i = 0; i < points_.places.size(); ++i) {
      if (isPlanar(i) && kind(i) != Kind::none) ground_.add(points_.places[i]);
    }
  }

  bool isPlanar(std::size_t i) const {
    return points_.echoes[i] == Echo::last && points_.surface.roughness[i] <= maxRoughness_;
  }

  /// Whether the classes alone say that a point is never matched.
  bool isExcluded(std::size_t i) const {
    return points_.given ? !isSurface((*points_.given)[i]) : kind(i) == Kind::none;
  }

  /// Of a planar point that is not excluded.
  std::uint8_t code(std::size_t i) const {
    if (points_.given) return (*points_.given)[i];
    return terrainClass(kind(i), points_.places[i], points_.surface.normals[i], ground_, steepest_);
  }

 private:
  Kind kind(std::size_t i) const { return kindOf(points_.lasClasses[i]); }

  const KnownPoints& points_;
  float maxRoughness_;
  double steepest_;
  LowestGround ground_;
};

double medianOf(std::vector<float> values) {
  if (values.empty()) return 0.0;
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return static_cast<double>(*middle);
}

}  // namespace

std::vector<std::uint8_t> classCodes(const KnownPoints& points, const RasterOptions& options,
                                     RasterCounts& counts) {
  const Classifier classifier(points, options);
  std::vector<std::uint8_t> codes(points.places.size(), noTerrain);
  std::vector<float> roughness;
  counts.points = codes.size();
  for (std::size_t i = 0; i < codes.size(); ++i) {
    if (points.echoes[i] == Echo::leftOut) {
      ++counts.notFinite;
    } else if (points.echoes[i] == Echo::notLast) {
      ++counts.notLast;
    } else if (classifier.isExcluded(i)) {
      ++counts.notTerrain;
    } else if (!classifier.isPlanar(i)) {
      ++counts.notPlanar;
    } else {
      codes[i] = classifier.code(i);
      roughness.push_back(points.surface.roughness[i]);
    }
  }
  counts.medianRoughness = medianOf(std::move(roughness));
  return codes;
}

}  // namespace Matching
