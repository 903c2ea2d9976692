// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One thread's way through the measurements of a strip, which usually stand in order of time: as
// long as they stay within one interval of the trajectory its model serves them.
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "adjustment/georef/StripModel.h"

namespace Velorn {

class PointWalk {
 public:
  /// All three must live as long as the walk.
  /// @param first  number of the measurement that the walk begins with; it has the model that a
  ///               walk from the strip's beginning would come with, whoever went there
  PointWalk(const StripModel& model, const std::vector<Geomra::PhysicalSpace::point>& scannerPoints,
            const std::vector<double>& gpsTimes, std::size_t first)
      : model_(model),
        scannerPoints_(scannerPoints),
        gpsTimes_(gpsTimes),
        projection_(projectionOf(model.zone())) {
    for (std::size_t k = first; k-- > 0;) {
      const auto found = worthwhileInterval(k);
      if (!found) continue;
      interval_ = IntervalModel::of(*found, model_.mounting(), projection_);
      return;
    }
  }

  // The interval's model points to the projection.
  PointWalk(const PointWalk&) = delete;
  PointWalk& operator=(const PointWalk&) = delete;

  /// What the strip's model says of measurement i.
  Georeferenced georeference(std::size_t i) {
    if (isServed(i)) {
      if (auto result = interval_->georeference(scannerPoints_[i], gpsTimes_[i])) return *result;
    }
    return model_.georeference(scannerPoints_[i], gpsTimes_[i]);
  }

 private:
  bool isServed(std::size_t i) {
    if (interval_ && interval_->holds(gpsTimes_[i])) return true;
    const auto found = worthwhileInterval(i);
    if (!found) return false;
    interval_ = IntervalModel::of(*found, model_.mounting(), projection_);
    return interval_.has_value();
  }

  /// The interval of measurement i, if the next ones lie in it, too: its model costs as much as
  /// two of them without it.
  std::optional<Interval> worthwhileInterval(std::size_t i) const {
    constexpr std::size_t next = 3;
    if (gpsTimes_.size() - i <= next) return {};
    auto found = model_.intervalAbout(gpsTimes_[i]);
    for (std::size_t k = i + 1; found && k <= i + next; ++k) {
      if (!found->holds(gpsTimes_[k])) found.reset();
    }
    return found;
  }

  const StripModel& model_;
  const std::vector<Geomra::PhysicalSpace::point>& scannerPoints_;
  const std::vector<double>& gpsTimes_;
  Projection projection_;
  std::optional<IntervalModel> interval_;
};

}  // namespace Velorn
