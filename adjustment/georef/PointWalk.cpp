// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/georef/PointWalk.h"

namespace Velorn {

void PointWalk::goTo(double t) {
  if (isHere(t)) return;
  frame_.reset();
  const auto interval = source_.intervalAbout(t);
  if (!interval) {
    from_ = until_ = 0.0;  // holds no time
    return;
  }
  from_ = interval->from();
  until_ = interval->until();
  const IntervalPath path(*interval);
  if (!isInZone(path.middle(), source_.projection)) return;
  frame_ = path.frame(source_.mounting, polynomialsAt(path.middle()));
}

const LocalPolynomials& PointWalk::polynomialsAt(const Vector3<double>& sensor) {
  constexpr std::size_t most = 1000;  // 500 km of flight, 1.6 MB
  const Cell cell = cellOf(sensor);
  if (const auto found = polynomials_.find(cell); found != polynomials_.end()) return found->second;
  if (polynomials_.size() == most) polynomials_.clear();  // there is no frame now
  return polynomials_.emplace(cell, polynomialsAbout(centreOf(cell), source_.projection))
      .first->second;
}

}  // namespace Velorn
