// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/engine/CorrespondenceStore.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "adjustment/correspondence/ClassCode.h"
#include "adjustment/georef/PhysicalSpace.h"
#include "platform/tessaly/PolarCoordinates.h"
#include <velorn/Trajectory.h>

namespace Velorn {
namespace {

/// No section has this number.
constexpr std::uint64_t groundTruthKey = std::numeric_limits<std::uint64_t>::max();

std::array<double, 3> arrayOf(const Vector3<double>& v) {
  return {v[0], v[1], v[2]};
}

MeasurementRecord recordOf(const SphericalBeing& being) {
  return {arrayOf(vectorOf(Tessaly::polarCoordinatesFromCartesian(being.scannerPosition))),
          being.gpsTime};
}

/// Chunks end where the second of the first point changes.
std::vector<Chunk> chunksOf(const std::vector<CorrespondenceRecord>& records) {
  std::vector<Chunk> chunks;
  double second = std::nan("");
  for (std::size_t i = 0; i < records.size(); ++i) {
    const double of = std::floor(records[i].first.time);
    if (of != second) chunks.push_back({i, 0});
    second = of;
    ++chunks.back().count;
  }
  chunks.shrink_to_fit();
  return chunks;
}

/// @param which  the points of a side
double middleOf(const SectionPair& pair, MeasurementRecord CorrespondenceRecord::*which) {
  double first = std::numeric_limits<double>::infinity(), last = -first;
  for (const auto& run : pair.runs) {
    for (const auto& record : run.records) {
      first = std::min(first, (record.*which).time);
      last = std::max(last, (record.*which).time);
    }
  }
  return 0.5 * (first + last);
}

}  // namespace

std::size_t SectionPair::size() const {
  std::size_t sum = 0;
  for (const auto& run : runs) sum += run.records.size();
  return sum;
}

CorrespondenceStore::CorrespondenceStore(const Trajectory& trajectory, std::vector<double> weights,
                                         bool isReportingOfTimes, std::vector<double> factors)
    : weights_(std::move(weights)),
      factors_(std::move(factors)),
      intervals_(trajectory, isReportingOfTimes),
      projection_(projectionOf(trajectory.getMercator())),
      places_(projection_) {}

void CorrespondenceStore::addPair(const Side& first, const Side& second) {
  SectionPair& pair = pairOf(first.section, &second.section);
  runOf(pair, first.being.classification)
      .records.push_back({recordOf(first.being), recordOf(second.being),
                          arrayOf(vectorOf(first.being.normal)), intervalOf(first, pair),
                          intervalOf(second, pair), LocalPlaces::none});
}

void CorrespondenceStore::addGroundTruth(const Side& first,
                                         const Geomra::PhysicalSpace::point& groundTruth) {
  SectionPair& pair = pairOf(first.section, nullptr);
  const MeasurementRecord fixed{arrayOf(vectorOf(groundTruth)), 0.0};
  runOf(pair, first.being.classification)
      .records.push_back({recordOf(first.being), fixed, arrayOf(vectorOf(first.being.normal)),
                          intervalOf(first, pair), 0, LocalPlaces::none});
}

void CorrespondenceStore::weigh(std::vector<double> weights, std::vector<double> factors) {
  weights_ = std::move(weights);
  factors_ = std::move(factors);
  for (auto& pair : pairs_) {
    for (auto& run : pair.runs) {
      const std::size_t index = classIndex(run.classCode);
      if (index < weights_.size()) run.weight = weights_[index];
      run.factor = factorOf(index);
    }
  }
}

double CorrespondenceStore::factorOf(std::size_t classIndex) const {
  return classIndex < factors_.size() ? factors_[classIndex] : 1.0;
}

void CorrespondenceStore::close() {
  numbers_.clear();
  intervals_.close();
  for (auto& pair : pairs_) {
    for (auto& run : pair.runs) {
      run.records.shrink_to_fit();
      std::stable_sort(run.records.begin(), run.records.end(),
                       [](const auto& a, const auto& b) { return a.first.time < b.first.time; });
      run.chunks = chunksOf(run.records);
      putPlaces(run);
    }
    pair.middles[0] = middleOf(pair, &CorrespondenceRecord::first) - pair.first.t;
    if (pair.second) {
      pair.middles[1] = middleOf(pair, &CorrespondenceRecord::second) - pair.second->t;
    }
  }
}

void CorrespondenceStore::putPlaces(ClassRun& run) {
  std::uint32_t last = LocalPlaces::none;
  for (auto& record : run.records) {
    const auto& [polar, time] = record.first;
    Vector3<double> ground = intervals_[record.firstInterval].at(time).position;
    ground[2] -= polar[0];
    record.place = last = places_.near(ground, last);
  }
}

SectionPair& CorrespondenceStore::pairOf(const Section& first, const Section* second) {
  const auto [entry, isNew] = numbers_.try_emplace(
      {first.sectionID, second ? second->sectionID : groundTruthKey}, pairs_.size());
  if (isNew) {
    pairs_.push_back({first, second ? std::optional(*second) : std::nullopt, {}, {}, {}});
  }
  return pairs_[entry->second];
}

ClassRun& CorrespondenceStore::runOf(SectionPair& pair, std::uint8_t classCode) {
  const auto place =
      std::lower_bound(pair.runs.begin(), pair.runs.end(), classCode,
                       [](const ClassRun& run, std::uint8_t code) { return run.classCode < code; });
  if (place != pair.runs.end() && place->classCode == classCode) return *place;
  const std::size_t index = classIndex(classCode);
  const bool hasWeight = index < weights_.size();
  if (!hasWeight) {
    pair.fault = fmt::format("no weight for the class {}; there are {} for the codes from {} on",
                             classCode, weights_.size(), firstClassCode);
  }
  return *pair.runs.insert(place, {classCode,
                                   hasWeight ? weights_[index] : 0.0,
                                   factorOf(index),
                                   classCode != firstClassCode,
                                   {},
                                   {}});
}

/// Any interval, and a fault of the pair, where there is none.
std::uint32_t CorrespondenceStore::intervalOf(const Side& side, SectionPair& pair) {
  const auto interval = intervals_.add(side.being.gpsTime, side.week);
  if (!interval) {
    pair.fault = fmt::format("no pose of the trajectory at the GPS time {} of week {}",
                             side.being.gpsTime, side.week);
  }
  return interval.value_or(0);
}

}  // namespace Velorn
