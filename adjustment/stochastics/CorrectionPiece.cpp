// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/CorrectionPiece.h"

#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/georef/TrajectoryCorrection.h"
#include "adjustment/model/Layout.h"

namespace Velorn {
namespace {

constexpr int mostPowers = 4;

int powersOf(Sec_Type type, TrajectoryComponent component) {
  const UsedPowers used = usedPowers(type);
  return component < TrajectoryComponent::Roll ? used.position : used.angles;
}

void check(const CorrectionPiece& piece, std::uint32_t strip) {
  const auto refuse = [&](const char* fault, double value) {
    throw std::invalid_argument(fmt::format("piecesOf: strip {}: section from {} s: {} {}", strip,
                                            piece.start, fault, value));
  };
  if (piece.powers == 0) refuse("a type with unknowns is needed, powers of time:", 0);
  if (!(piece.length > 0.0 && std::isfinite(piece.length)))
    refuse("its length [s] is", piece.length);
}

}  // namespace

LinearSum CorrectionPiece::valueAt(double dt) const {
  LinearSum sum;
  double power = 1.0;
  for (int m = 0; m < powers; ++m, power *= dt) sum[firstUnknown + m] = power;
  return sum;
}

LinearSum CorrectionPiece::slopeAt(double dt) const {
  LinearSum sum;
  double power = 1.0;
  for (int m = 1; m < powers; ++m, power *= dt) sum[firstUnknown + m] = m * power;
  return sum;
}

std::vector<CorrectionPiece> piecesOf(const StripSections& strip, TrajectoryComponent component) {
  std::vector<CorrectionPiece> pieces;
  for (auto section = strip.sections.begin(); section != strip.sections.end(); ++section) {
    const auto next = std::next(section);
    CorrectionPiece piece;
    piece.firstUnknown = static_cast<Eigen::Index>(localParameters * section->second.sectionID) +
                         mostPowers * static_cast<Eigen::Index>(component);
    piece.powers = powersOf(section->second.type, component);
    piece.start = section->first;
    piece.length = (next == strip.sections.end() ? strip.maxTime : next->first) - piece.start;
    check(piece, strip.stripIndex);
    pieces.push_back(piece);
  }
  return pieces;
}

}  // namespace Velorn
