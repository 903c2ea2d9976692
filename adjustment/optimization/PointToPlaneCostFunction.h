// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How far two corresponding points lie apart along the normal of their surface: the residual of the
// adjustment.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "adjustment/optimization/GeoTransformationCeresReborn.h"
#include "platform/morvane/Console.h"

namespace Velorn {

/// The residual r = w u · (Q − P) of one correspondence, with the points P and Q georeferenced
/// under the current unknowns, or Q a fixed point of the ground truth; u is the normal and w the
/// weight of the class of the first record. As Ceres' functors are, over any scalar:
///
///     x[0] offsets, x[1] scales, x[2] misalignment [rad], x[3] lever arm,
///     x[4], x[5] corrections of position and angles of P's section (twelve each),
///     x[6], x[7] those of Q's section; not there for ground truth
class pointToPlaneCostFunction {
 public:
  /// What all functors of a run have in common.
  struct Run {
    const Trajectory& trajectory;
    const std::vector<double>& weights;  ///< by class code − 10; must outlive the functors
    bool interpolationFlag;
    std::shared_ptr<const Projection> projection;  ///< of the trajectory
  };

  /// One point with its GPS week and section.
  struct Side {
    const SphericalBeing& being;
    unsigned int week;
    const Section& section;
  };

  /// Between two strips.
  pointToPlaneCostFunction(const Run& run, const Side& first, const Side& second);

  /// Between a strip and the ground truth.
  pointToPlaneCostFunction(const Run& run, const Side& first,
                           const Geomra::PhysicalSpace::point& groundTruth);

  /// @return false after a message on the console: a pose could not be interpolated, or the class
  ///         has no weight; the residual is not set then
  template <typename T>
  bool operator()(T const* const* x, T* residual) const {
    const Mounting<T> mounting = mountingOf(x[0], x[1], x[2], x[3]);
    Vector3<T> p, q;
    if (!tell(first_(mounting, x[4], x[5], p))) return false;
    if (!second_) {
      q = groundTruth_.cast<T>();
    } else if (!tell((*second_)(mounting, x[6], x[7], q))) {
      return false;
    }
    if (weightIndex_ >= weights_->size()) return refuseClass();
    residual[0] = normal_.cast<T>().dot(q - p) * (*weights_)[weightIndex_];
    return true;
  }

  /// Parameter blocks that an evaluation takes.
  std::vector<int> blockSizes() const;

 private:
  /// @return whether there was nothing to tell
  static bool tell(const std::string& fault) {
    if (!fault.empty()) Morvane::Console::writeLine(fault);
    return fault.empty();
  }
  bool refuseClass() const;

  GeoTransformationCeresReborn first_;
  std::optional<GeoTransformationCeresReborn> second_;
  Vector3<double> groundTruth_ = Vector3<double>::Zero();
  Vector3<double> normal_;
  const std::vector<double>* weights_;
  std::size_t weightIndex_;
};

}  // namespace Velorn
