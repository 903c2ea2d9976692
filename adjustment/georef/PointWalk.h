// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One thread's way through a list of points, from frame to frame.
//
//     PointWalk walk({[&](double t) { return model.intervalAbout(t); }, mounting, projection});
//     walk.serve(batch, operation);
//
// A frame is made from its interval alone, so that a point's result does not depend on where in the
// list it stands, or which thread comes there.
#pragma once

#include <cmath>
#include <cstddef>
#include <functional>
#include <map>
#include <optional>

#include "adjustment/georef/IntervalFrame.h"
#include "adjustment/georef/Projection.h"

namespace Velorn {

/// What frames are made from.
struct FrameSource {
  /// The interval of a time; empty where no frame serves.
  std::function<std::optional<Interval>(double t)> intervalAbout;
  Mounting<double> mounting;
  Projection projection;
};

class PointWalk {
 public:
  explicit PointWalk(FrameSource source) : source_(std::move(source)) {}

  // The frame points to the walk's polynomials.
  PointWalk(const PointWalk&) = delete;
  PointWalk& operator=(const PointWalk&) = delete;

  /// Computes the results of a batch, in any order; the fewer changes between intervals the faster.
  /// @param operation  has `bool inFrame(const IntervalFrame&, const PointBatch&)`, see toWorld and
  ///                   toScanner, and `void alone(const PointBatch&, std::size_t i)` for a point
  ///                   that no frame serves
  template <typename Operation>
  void serve(const PointBatch& batch, Operation& operation) {
    for (std::size_t i = 0; i < batch.count;) {
      goTo(batch.times[i]);
      std::size_t end = i + 1;
      while (end < batch.count && isHere(batch.times[end])) ++end;
      serveRun(partOf(batch, i, end), operation);
      i = end;
    }
  }

 private:
  template <typename Operation>
  void serveRun(const PointBatch& run, Operation& operation) {
    if (frame_ && operation.inFrame(*frame_, run)) return;
    for (std::size_t i = 0; i < run.count; ++i) {
      if (!frame_ || std::isnan(run.results[3 * i])) operation.alone(run, i);
    }
  }

  bool isHere(double t) const { return t > from_ && t <= until_; }
  void goTo(double t);
  const LocalPolynomials& polynomialsAt(const Vector3<double>& sensor);

  FrameSource source_;
  double from_ = 0.0, until_ = 0.0;     // of the interval where the walk is; none at first
  std::optional<IntervalFrame> frame_;  // of that interval
  std::map<Cell, LocalPolynomials> polynomials_;
};

}  // namespace Velorn
