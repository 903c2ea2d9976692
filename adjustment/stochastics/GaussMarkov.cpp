// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/stochastics/GaussMarkov.h"

#include <Eigen/Cholesky>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <stdexcept>

#include <fmt/format.h>

namespace Velorn {
namespace {

void checkPositive(double value, const char* name) {
  if (!(value > 0.0 && std::isfinite(value))) {
    throw std::invalid_argument(fmt::format("gaussMarkovRows: the {} is {}", name, value));
  }
}

void check(const StripCorrection& strip) {
  checkPositive(strip.sigma, "standard deviation");
  if (strip.pieces.empty()) throw std::invalid_argument("gaussMarkovRows: a strip has no pieces");
  for (std::size_t i = 0; i < strip.pieces.size(); ++i) {
    const CorrectionPiece& piece = strip.pieces[i];
    checkPositive(piece.length, "length of a section");
    checkPositive(piece.powers, "number of powers of time");
    if (i == 0) continue;
    const double gap = piece.start - strip.pieces[i - 1].end();
    // Starts of sections are accumulated: rounding of a day's seconds over thousands of them.
    if (!(std::abs(gap) < 1e-6)) {
      throw std::invalid_argument(fmt::format(
          "gaussMarkovRows: the section from {} s begins {} s after the one before ends",
          piece.start, gap));
    }
  }
}

/// i!/(i−d)!
double fallingFactorial(int i, int d) {
  double product = 1.0;
  for (int k = 0; k < d; ++k) product *= i - k;
  return product;
}

LinearSum scaled(const LinearSum& sum, double factor) {
  return sumOf({}, sum, factor);
}

class RowMaker {
 public:
  explicit RowMaker(const GaussMarkovSettings& settings) : settings_(settings) {}

  void addStrip(const StripCorrection& strip) {
    for (std::size_t i = 0; i < strip.pieces.size(); ++i) {
      const bool steps[] = {isStep(strip, i), isStep(strip, i + 1)};
      const double halves = 0.5 * (steps[0] + steps[1]);
      rows_.degreesOfFreedom += static_cast<std::size_t>(strip.pieces[i].powers);
      addNorm(strip.pieces[i], (1.0 - halves) * strip.pieces[i].length, strip.sigma);
      if (i == 0) continue;
      const CorrectionPiece &before = strip.pieces[i - 1], &after = strip.pieces[i];
      if (steps[0]) {
        addLink(scaled(before.valueAt(0.0), 1.0 / strip.sigma),
                scaled(after.valueAt(0.0), 1.0 / strip.sigma), 0.5 * (before.length + after.length),
                strip.sigma);
      } else {
        addJoint(before, after);
      }
    }
  }

  /// A free end of the process.
  void addEnd(const LinearSum& value, double sigma) {
    rows_.process.push_back(rowsOf({scaled(value, 1.0 / (std::numbers::sqrt2 * sigma))}));
  }

  void addGap(const StripCorrection& before, const StripCorrection& after) {
    addLink(scaled(before.atEnd(), 1.0 / before.sigma), scaled(after.atStart(), 1.0 / after.sigma),
            after.start() - before.end(), std::min(before.sigma, after.sigma));
  }

  GaussMarkovRows taken() { return std::move(rows_); }

 private:
  /// Whether the border before piece `i` lies between two constants.
  static bool isStep(const StripCorrection& strip, std::size_t i) {
    return i > 0 && i < strip.pieces.size() && strip.pieces[i - 1].powers == 1 &&
           strip.pieces[i].powers == 1;
  }

  /// 1/(2σ²) [ Tc ∫ c'² dt + 1/Tc ∫ c² dt ]
  void addNorm(const CorrectionPiece& piece, double length, double sigma) {
    if (!(length > 0.0)) return;
    const double tc = settings_.correlationTime;
    const Eigen::MatrixXd norm = (tc * derivativeIntegral(1, piece.powers, length) +
                                  derivativeIntegral(0, piece.powers, length) / tc) /
                                 (2.0 * sigma * sigma);
    PriorRows prior;
    for (int m = 0; m < piece.powers; ++m) prior.unknowns.push_back(piece.firstUnknown + m);
    prior.rows = norm.llt().matrixU();
    prior.expected.setZero(piece.powers);
    rows_.process.push_back(prior);
  }

  /// With ends e and s of the process in units of σ, `gap` apart, and ρ = exp(−gap / Tc):
  /// ((1+ρ²) (e² + s²) / 2 − 2ρ e s) / (1−ρ²), which is what the transition from e to s adds
  /// beyond the halves of e² and s² that their own sides leave. It has the eigenvectors s ± e, and
  /// (1−ρ) / (1+ρ) = tanh(gap / 2Tc).
  void addLink(const LinearSum& e, const LinearSum& s, double gap, double sigma) {
    const double tanh = std::tanh(0.5 * gap / settings_.correlationTime);
    const double step = settings_.largestStep / sigma;  // where there is hardly a gap
    rows_.process.push_back(
        rowsOf({scaled(sumOf(s, e, -1.0), 1.0 / std::max(2.0 * std::sqrt(tanh), step)),
                scaled(sumOf(s, e), 0.5 * std::sqrt(tanh))}));
  }

  void addJoint(const CorrectionPiece& before, const CorrectionPiece& after) {
    std::vector<LinearSum> sums{sumOf(after.valueAt(0.0), before.valueAt(before.length), -1.0)};
    if (std::max(before.powers, after.powers) > 2) {
      const double over = std::min(before.length, after.length);
      sums.push_back(scaled(sumOf(after.slopeAt(0.0), before.slopeAt(before.length), -1.0), over));
    }
    for (auto& sum : sums) sum = scaled(sum, 1.0 / settings_.largestStep);
    rows_.joints.push_back(rowsOf(sums));
    rows_.degreesOfFreedom -= sums.size();
  }

  GaussMarkovSettings settings_;
  GaussMarkovRows rows_;
};

}  // namespace

Eigen::MatrixXd derivativeIntegral(int derivative, int powers, double length) {
  Eigen::MatrixXd integral = Eigen::MatrixXd::Zero(powers, powers);
  for (int i = derivative; i < powers; ++i) {
    for (int j = derivative; j < powers; ++j) {
      const int power = i + j - 2 * derivative + 1;
      integral(i, j) = fallingFactorial(i, derivative) * fallingFactorial(j, derivative) *
                       std::pow(length, power) / power;
    }
  }
  return integral;
}

GaussMarkovRows gaussMarkovRows(std::vector<StripCorrection> strips,
                                const GaussMarkovSettings& settings) {
  checkPositive(settings.correlationTime, "correlation time");
  checkPositive(settings.largestStep, "step between sections");
  for (const auto& strip : strips) check(strip);
  std::sort(strips.begin(), strips.end(),
            [](const auto& a, const auto& b) { return a.start() < b.start(); });
  RowMaker rows(settings);
  for (std::size_t i = 0; i < strips.size(); ++i) {
    const auto follows = [&](std::size_t next) {
      return next > 0 && next < strips.size() && strips[next].start() >= strips[next - 1].end();
    };
    rows.addStrip(strips[i]);
    if (follows(i)) {
      rows.addGap(strips[i - 1], strips[i]);
    } else {
      rows.addEnd(strips[i].atStart(), strips[i].sigma);
    }
    if (!follows(i + 1)) rows.addEnd(strips[i].atEnd(), strips[i].sigma);
  }
  return rows.taken();
}

CorrectionAt correctionAt(const std::vector<StripCorrection>& strips, double correlationTime,
                          double time) {
  const StripCorrection* before = nullptr;
  const StripCorrection* after = nullptr;
  for (const auto& strip : strips) {
    if (time < strip.start()) {
      if (!after) after = &strip;
    } else if (time > strip.end()) {
      if (!before || strip.end() > before->end()) before = &strip;
    } else {
      const auto next = std::find_if(strip.pieces.begin() + 1, strip.pieces.end(),
                                     [&](const auto& piece) { return piece.start > time; });
      const CorrectionPiece& piece = *std::prev(next);
      return {piece.valueAt(time - piece.start), 0.0};
    }
  }
  // 1 − exp(−2 d / Tc) of the distances d to both ends; an end that is missing is infinitely far.
  const auto told = [&](double distance) { return -std::expm1(-2.0 * distance / correlationTime); };
  const double infinite = std::numeric_limits<double>::infinity();
  const double sinceEnd = before ? time - before->end() : infinite;
  const double untilStart = after ? after->start() - time : infinite;
  const double whole = told(sinceEnd + untilStart);
  CorrectionAt at;
  at.freeShare = told(sinceEnd) * told(untilStart) / whole;
  if (before) {
    at.sum =
        scaled(before->atEnd(), std::exp(-sinceEnd / correlationTime) * told(untilStart) / whole);
  }
  if (after) {
    at.sum = sumOf(at.sum, after->atStart(),
                   std::exp(-untilStart / correlationTime) * told(sinceEnd) / whole);
  }
  return at;
}

}  // namespace Velorn
