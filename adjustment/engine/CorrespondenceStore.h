// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// All correspondences of an adjustment as compact records: by pair of sections, class and time.
#pragma once

#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "adjustment/engine/CorrespondenceRecord.h"
#include "adjustment/engine/LocalPlaces.h"
#include "adjustment/engine/PoseIntervals.h"
#include <velorn/Section.h>
#include <velorn/SphericalBeing.h>

namespace Velorn {

/// Correspondences whose first points were measured within a second, of one pair of sections and
/// one class: the smallest set that sums are formed of.
struct Chunk {
  std::size_t first;
  std::uint32_t count;
};

/// The correspondences of one class between two sections, in order of the first points' times.
struct ClassRun {
  std::uint8_t classCode;
  double weight;
  double factor;  ///< of the costs
  bool hasHuber;  ///< all but those of the ground truth's class
  std::vector<CorrespondenceRecord> records;
  std::vector<Chunk> chunks;
};

/// The correspondences between two sections, or between one and the ground truth.
struct SectionPair {
  Section first;
  std::optional<Section> second;  ///< none for the ground truth
  std::vector<ClassRun> runs;     ///< in order of the classes
  /// Middle of the times of the first and of the second points, since the starts of the sections
  /// [s].
  std::array<double, 2> middles{};
  std::string fault;  ///< why no residual can be evaluated: a time without a pose, a class
                      ///< without a weight; otherwise empty

  std::size_t size() const;
};

class CorrespondenceStore {
 public:
  /// One point with its GPS week and section.
  struct Side {
    const SphericalBeing& being;
    std::uint32_t week;
    const Section& section;
  };

  /// @param weights              by class code − 10
  /// @param isReportingOfTimes   as Trajectory::interpolateTrajectory
  /// @param factors              of the costs, by class code − 10; those that are missing are one
  CorrespondenceStore(const Trajectory& trajectory, std::vector<double> weights,
                      bool isReportingOfTimes, std::vector<double> factors = {});

  void addPair(const Side& first, const Side& second);
  void addGroundTruth(const Side& first, const Geomra::PhysicalSpace::point& groundTruth);

  /// Other weights and factors for what has been added.
  void weigh(std::vector<double> weights, std::vector<double> factors);

  /// Sorts the records and makes the chunks; nothing is added afterwards.
  void close();

  /// In the order in which the first of their correspondences came.
  const std::vector<SectionPair>& pairs() const { return pairs_; }
  const PoseIntervals& intervals() const { return intervals_; }
  const LocalPlaces& places() const { return places_; }
  const Projection& projection() const { return projection_; }  ///< of the trajectory

 private:
  SectionPair& pairOf(const Section& first, const Section* second);
  ClassRun& runOf(SectionPair& pair, std::uint8_t classCode);
  double factorOf(std::size_t classIndex) const;
  std::uint32_t intervalOf(const Side& side, SectionPair& pair);
  void putPlaces(ClassRun& run);

  std::vector<double> weights_, factors_;
  PoseIntervals intervals_;
  Projection projection_;
  LocalPlaces places_;
  std::vector<SectionPair> pairs_;
  std::map<std::pair<std::uint32_t, std::uint64_t>, std::size_t> numbers_;  // by section numbers
};

}  // namespace Velorn
