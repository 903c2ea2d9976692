// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/matching/CorrespondenceRows.h"

#include <algorithm>
#include <cmath>

#include "flight/matching/GroundTruth.h"
#include "flight/surfaces/SearchPlaces.h"
#include "platform/geomra/Degree.h"

namespace Velorn::Flights {
namespace {

constexpr double unknown = CorrespondenceRow::unknown;
constexpr point nowhere{unknown, unknown, unknown};

/// Whether the neighbourhoods of both points were looked at.
bool hasPlanes(Fate fate) {
  return fate == Fate::kept || fate == Fate::roughness || fate == Fate::outlier ||
         fate == Fate::thinned;
}

vector unit(const vector& normal) {
  return (1.0 / lengthOf(normal)) * normal;
}

double angleBetween(const vector& a, const vector& b) {
  const double cosine = dot(a, b) / (lengthOf(a) * lengthOf(b));
  return Geomra::degreesPerRadian * std::acos(std::clamp(cosine, -1.0, 1.0));
}

/// Points of a strip moved onto their planes, as they were measured.
class MovedPoints {
 public:
  MovedPoints(const MatchPoints& points, std::size_t count) : points_(points) {
    scanner_.reserve(count);
    times_.reserve(count);
  }
  void add(std::size_t k, double shift) {
    const auto being = shifted(points_.being(k), shift);
    scanner_.push_back(being.scannerPosition);
    times_.push_back(being.gpsTime);
  }
  std::vector<point> placesBy(const Solution& solution, const std::filesystem::path& file,
                              std::uint32_t strip, bool interpolationFlag) const {
    return Flights::placesBy(solution, file, strip, interpolationFlag,
                             {scanner_, times_, points_.week});
  }

 private:
  const MatchPoints& points_;
  std::vector<point> scanner_;
  std::vector<double> times_;
};

CorrespondenceRow rowOf(const MatchedPair& matched, const JudgedCandidate& candidate) {
  const Correspondence& pair = candidate.pair;
  const MatchPoints& points = matched.pointsOfI;
  CorrespondenceRow row;
  row.stripI = matched.i;
  row.stripJ = matched.j;
  row.fate = candidate.fate;
  row.code = pair.code;
  row.weekI = points.week;
  row.timeI = points.times[pair.i];
  row.placeI = shifted(points.places()[pair.i], points.beams[pair.i], pair.shiftI);
  row.normal = unit(points.normals[pair.i]);
  if (!points.roughness.empty()) row.roughnessI = points.roughness[pair.i];
  if (hasPlanes(candidate.fate)) row.roughnessI = pair.roughnessI;
  return row;
}

void addPartner(const MatchPoints& points, const JudgedCandidate& candidate,
                CorrespondenceRow& row) {
  const Correspondence& pair = candidate.pair;
  row.weekJ = points.week;
  row.timeJ = points.times[pair.j];
  row.placeJ = shifted(points.places()[pair.j], points.beams[pair.j], pair.shiftJ);
  row.angle = angleBetween(row.normal, points.normals[pair.j]);
  if (hasPlanes(candidate.fate)) row.roughnessJ = pair.roughnessJ;
  row.before = dot(row.normal, row.placeJ - row.placeI);
}

void addPartner(const GroundTruth& known, const Correspondence& pair, CorrespondenceRow& row) {
  row.patch = known.patchOf(pair.j);
  row.placeJ = known.points().places[pair.j];
  row.angle = angleBetween(row.normal, known.points().normals[pair.j]);
  row.normal = known.points().normals[pair.j];
  row.before = dot(row.normal, row.placeJ - row.placeI);
}

/// The places of the partners by the model; those of the ground truth stay.
std::vector<point> partnersBy(const Solution& adjusted, const MatchedPair& matched,
                              const std::vector<CorrespondenceRow>& rows, bool interpolationFlag) {
  std::vector<point> places;
  places.reserve(rows.size());
  for (const CorrespondenceRow& row : rows) places.push_back(row.placeJ);
  if (matched.isWithGroundTruth()) return places;
  MovedPoints partners(*matched.pointsOfJ, rows.size());
  std::vector<std::size_t> numbers;
  for (std::size_t k = 0; k < rows.size(); ++k) {
    const Correspondence& pair = matched.candidates[k].pair;
    if (pair.j == noPoint) continue;
    partners.add(pair.j, pair.shiftJ);
    numbers.push_back(k);
  }
  const auto found = partners.placesBy(adjusted, matched.surfaces.files(matched.j).planar,
                                       matched.j, interpolationFlag);
  std::ranges::fill(places, nowhere);
  for (std::size_t k = 0; k < numbers.size(); ++k) places[numbers[k]] = found[k];
  return places;
}

void addAfter(const MatchedPair& matched, const Solution& adjusted, bool interpolationFlag,
              std::vector<CorrespondenceRow>& rows) {
  MovedPoints candidates(matched.pointsOfI, rows.size());
  for (const auto& [pair, fate] : matched.candidates) candidates.add(pair.i, pair.shiftI);
  const auto& files = matched.surfaces.files(matched.i);
  const auto from =
      candidates.placesBy(adjusted, matched.isWithGroundTruth() ? files.planar : files.raster,
                          matched.i, interpolationFlag);
  const auto to = partnersBy(adjusted, matched, rows, interpolationFlag);
  for (std::size_t k = 0; k < rows.size(); ++k) {
    rows[k].after = dot(rows[k].normal, to[k] - from[k]);
  }
}

}  // namespace

std::vector<CorrespondenceRow> rowsOf(const MatchedPair& matched, const Solution* adjusted,
                                      bool interpolationFlag) {
  std::vector<CorrespondenceRow> rows;
  rows.reserve(matched.candidates.size());
  for (const JudgedCandidate& candidate : matched.candidates) {
    CorrespondenceRow& row = rows.emplace_back(rowOf(matched, candidate));
    if (candidate.pair.j == noPoint) continue;
    if (matched.isWithGroundTruth()) {
      addPartner(matched.groundTruth, candidate.pair, row);
    } else {
      addPartner(*matched.pointsOfJ, candidate, row);
    }
  }
  if (adjusted) addAfter(matched, *adjusted, interpolationFlag, rows);
  return rows;
}

}  // namespace Velorn::Flights
