// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <Eigen/Cholesky>
#include <cmath>
#include <limits>
#include <random>
#include <stdexcept>
#include <string>

#include <gmock/gmock.h>

#include "adjustment/stochastics/GaussMarkov.h"

using namespace Velorn;
using testing::HasSubstr;

namespace {

constexpr double correlationTime = 60.0;
constexpr GaussMarkovSettings settings{.correlationTime = correlationTime, .largestStep = 0.001};

/// One after the other from `start` on; the unknowns of each begin four after those of the last.
StripCorrection stripOf(const std::vector<int>& powers, double start, double length, double sigma,
                        Eigen::Index firstUnknown = 0) {
  StripCorrection strip{{}, sigma};
  for (const int count : powers) {
    strip.pieces.push_back({firstUnknown, count, start, length});
    start += length;
    firstUnknown += 4;
  }
  return strip;
}

double squaredNorm(const GaussMarkovRows& rows, const Eigen::VectorXd& x) {
  double sum = 0.0;
  for (const auto* some : {&rows.process, &rows.joints}) {
    for (const auto& row : *some) sum += row.residuals(x).squaredNorm();
  }
  return sum;
}

/// c'K⁻¹c of values at single times, K the covariance matrix: the norm itself, as the times become
/// dense.
double normOfSamples(const std::vector<double>& times, const std::vector<double>& normalised) {
  const auto n = static_cast<Eigen::Index>(times.size());
  Eigen::MatrixXd covariance(n, n);
  for (Eigen::Index i = 0; i < n; ++i) {
    for (Eigen::Index j = 0; j < n; ++j) {
      covariance(i, j) = std::exp(
          -std::abs(times[static_cast<std::size_t>(i)] - times[static_cast<std::size_t>(j)]) /
          correlationTime);
    }
  }
  const Eigen::Map<const Eigen::VectorXd> c(normalised.data(), n);
  return c.dot(covariance.llt().solve(c));
}

/// The same of corrections over strips, each sampled in so many steps per section.
double normOfStrips(const std::vector<StripCorrection>& strips, const Eigen::VectorXd& x,
                    int steps) {
  std::vector<double> times, values;
  for (const auto& strip : strips) {
    for (std::size_t i = 0; i < strip.pieces.size(); ++i) {
      const auto& piece = strip.pieces[i];
      for (int k = i == 0 ? 0 : 1; k <= steps; ++k) {
        const double dt = piece.length * k / steps;
        times.push_back(piece.start + dt);
        values.push_back(valueOf(piece.valueAt(dt), x) / strip.sigma);
      }
    }
  }
  return normOfSamples(times, values);
}

/// Unknowns of continuous corrections: the first entry of each piece is the end of the one before,
/// its slope too if it is of a higher degree.
Eigen::VectorXd continuousUnknowns(const std::vector<StripCorrection>& strips, unsigned seed) {
  std::mt19937 random(seed);
  std::normal_distribution<double> normal;
  Eigen::VectorXd x = Eigen::VectorXd::Constant(64, std::numeric_limits<double>::quiet_NaN());
  for (const auto& strip : strips) {
    for (std::size_t i = 0; i < strip.pieces.size(); ++i) {
      const auto& piece = strip.pieces[i];
      for (int m = 0; m < piece.powers; ++m) {
        x[piece.firstUnknown + m] = strip.sigma * normal(random) / std::pow(piece.length, m);
      }
      if (i == 0) continue;
      const auto& before = strip.pieces[i - 1];
      x[piece.firstUnknown] = valueOf(before.valueAt(before.length), x);
      if (piece.powers > 2) x[piece.firstUnknown + 1] = valueOf(before.slopeAt(before.length), x);
    }
  }
  return x;
}

}  // namespace

TEST(GaussMarkov, SquaresSumUpToTheNormOfTheProcessOverStripsSectionsAndGaps) {
  const std::vector<StripCorrection> flights[] = {
      {stripOf({1}, 1000.0, 40.0, 0.05)},
      {stripOf({2}, 1000.0, 300.0, 0.05)},
      {stripOf({2, 4, 4}, 1000.0, 20.0, 0.03)},
      {stripOf({2, 2, 2}, 1000.0, 10.0, 0.05), stripOf({4}, 1045.0, 30.0, 0.02, 12)},
      {stripOf({4}, 1000.0, 30.0, 0.05), stripOf({1}, 1030.5, 30.0, 0.05, 4),
       stripOf({2}, 2500.0, 30.0, 0.05, 8)}};
  for (const auto& strips : flights) {
    SCOPED_TRACE(strips.size() + 10 * strips.front().pieces.size());
    const Eigen::VectorXd x = continuousUnknowns(strips, 7);
    const double coarse = normOfStrips(strips, x, 40), fine = normOfStrips(strips, x, 80);
    const double limit = fine + (fine - coarse) / 3.0;  // the error falls as the steps' square
    EXPECT_NEAR(squaredNorm(gaussMarkovRows(strips, settings), x), limit, 2e-3 * limit);
  }
}

TEST(GaussMarkov, ConstantsAfterEachOtherAreSamplesOfTheProcessBetweenTheirMiddles) {
  const auto strip = stripOf({1, 1, 1}, 0.0, 20.0, 0.05);
  Eigen::VectorXd x = Eigen::VectorXd::Zero(9);
  x[0] = 0.03;
  x[4] = -0.05;
  x[8] = 0.02;
  std::vector<double> times, values;
  for (int i = 0; i <= 600; ++i) {
    const double t = 0.1 * i;
    if (t > 10.05 && t < 49.95) continue;  // nothing but the middle of the second section
    times.push_back(t);
    values.push_back(t < 30.0 ? x[0] / 0.05 : x[8] / 0.05);
  }
  times.push_back(30.0);
  values.push_back(x[4] / 0.05);
  const double limit = normOfSamples(times, values);
  EXPECT_NEAR(squaredNorm(gaussMarkovRows({strip}, settings), x), limit, 1e-3 * limit);
}

TEST(GaussMarkov, StepsAndBendsBetweenSectionsCountInUnitsOfTheLargestStep) {
  for (const int powers : {2, 4}) {
    const auto strip = stripOf({powers, powers}, 0.0, 20.0, 0.05);
    const auto rows = gaussMarkovRows({strip}, settings);
    Eigen::VectorXd x = continuousUnknowns({strip}, 3);
    const double continuous = squaredNorm(rows, x);
    ASSERT_EQ(rows.joints.size(), 1U);
    const PriorRows& joint = rows.joints.front();
    x[4] += 0.003;
    EXPECT_NEAR(joint.residuals(x)[0], 3.0, 1e-9);
    EXPECT_GT(squaredNorm(rows, x), continuous + 8.0);
    EXPECT_EQ(joint.rows.rows(), powers == 2 ? 1 : 2) << "straight lines may bend";
    EXPECT_EQ(rows.degreesOfFreedom, powers == 2 ? 3U : 6U);
    if (powers == 2) continue;
    x[5] += 0.0001;
    EXPECT_NEAR(joint.residuals(x)[1], 2.0, 1e-9) << "0.1 mm/s over 20 s";
  }
}

TEST(GaussMarkov, StripsFlownAtOneTimeAreIndependentAndTheirOrderDoesNotMatter) {
  const auto first = stripOf({2}, 0.0, 30.0, 0.05), same = stripOf({2}, 10.0, 30.0, 0.05, 4),
             later = stripOf({2}, 60.0, 30.0, 0.05, 8);
  const Eigen::VectorXd x = continuousUnknowns({first, same, later}, 5);
  const auto norm = [&](const std::vector<StripCorrection>& strips) {
    return squaredNorm(gaussMarkovRows(strips, settings), x);
  };
  EXPECT_NEAR(norm({first, same}), norm({first}) + norm({same}), 1e-9);
  EXPECT_NEAR(norm({later, first, same}), norm({first}) + norm({same, later}), 1e-9);
  EXPECT_GT(std::abs(norm({same, later}) - norm({same}) - norm({later})), 1e-3);
}

TEST(GaussMarkov, OutsideTheStripsTheCorrectionIsTheConditionalMean) {
  const std::vector<StripCorrection> strips{stripOf({2}, 100.0, 30.0, 0.05),
                                            stripOf({4}, 170.0, 30.0, 0.05, 4)};
  const Eigen::VectorXd x = continuousUnknowns(strips, 9);
  const double ends[] = {100.0, 130.0, 170.0, 200.0};
  Eigen::Vector4d values;
  Eigen::Matrix4d covariance;
  for (int i = 0; i < 4; ++i) {
    values[i] = valueOf(correctionAt(strips, correlationTime, ends[i]).sum, x);
    for (int j = 0; j < 4; ++j)
      covariance(i, j) = std::exp(-std::abs(ends[i] - ends[j]) / correlationTime);
  }
  EXPECT_NEAR(values[1], x[0] + 30.0 * x[1], 1e-15);
  for (const double time : {40.0, 99.999, 130.001, 142.0, 169.0, 201.0, 5000.0}) {
    Eigen::Vector4d with;
    for (int i = 0; i < 4; ++i) with[i] = std::exp(-std::abs(ends[i] - time) / correlationTime);
    const Eigen::Vector4d weights = covariance.llt().solve(with);
    const CorrectionAt at = correctionAt(strips, correlationTime, time);
    EXPECT_NEAR(valueOf(at.sum, x), weights.dot(values), 1e-12) << time;
    EXPECT_NEAR(at.freeShare, 1.0 - weights.dot(with), 1e-12) << time;
  }
  EXPECT_EQ(correctionAt(strips, correlationTime, 115.0).freeShare, 0.0);
  EXPECT_NEAR(valueOf(correctionAt(strips, correlationTime, 115.0).sum, x), x[0] + 15.0 * x[1],
              1e-15);
  EXPECT_EQ(correctionAt({}, correlationTime, 115.0).freeShare, 1.0);
}

TEST(GaussMarkov, DerivativeIntegralsAreThoseOfQuadrature) {
  const double length = 7.5;
  const Eigen::Vector4d a(0.3, -0.8, 0.21, 0.04);
  // Simpson's rule is not exact beyond the third degree; the squares have six.
  const auto quadrature = [&](auto function) {
    double sum = 0.0;
    const int n = 2000;
    for (int i = 0; i <= n; ++i) {
      const double value = function(length * i / n);
      sum += value * value * (i == 0 || i == n ? 1.0 : (i % 2 == 1 ? 4.0 : 2.0));
    }
    return sum * length / (3.0 * n);
  };
  const double expected[] = {
      quadrature([&](double t) { return a[0] + t * (a[1] + t * (a[2] + t * a[3])); }),
      quadrature([&](double t) { return a[1] + t * (2 * a[2] + 3 * t * a[3]); }),
      quadrature([&](double t) { return 2 * a[2] + 6 * t * a[3]; })};
  for (int d = 0; d < 3; ++d) {
    EXPECT_NEAR(a.dot(derivativeIntegral(d, 4, length) * a), expected[d], 1e-9 * expected[d]) << d;
  }
}

TEST(CorrectionPiece, TakesItsUnknownsFromSectionTypeAndComponent) {
  StripSections strip;
  strip.maxTime = 125.0;
  for (const auto& [start, id, type] : {std::tuple{100.0, 7U, Sec_Type::LINEAR},
                                        {110.0, 8U, Sec_Type::SPLINE},
                                        {120.0, 9U, Sec_Type::HYBRID}}) {
    strip.sections[start] = {type, id, start, 0, false};
  }
  const auto height = piecesOf(strip, TrajectoryComponent::Height);
  const auto roll = piecesOf(strip, TrajectoryComponent::Roll);
  ASSERT_EQ(height.size(), 3U);
  EXPECT_EQ(height[0].firstUnknown, 24 * 7 + 8);
  EXPECT_EQ(roll[1].firstUnknown, 24 * 8 + 12);
  EXPECT_EQ(height[0].powers, 2);
  EXPECT_EQ(height[1].powers, 4);
  EXPECT_EQ(height[2].powers, 1);
  EXPECT_EQ(roll[2].powers, 2);
  EXPECT_EQ(height[1].length, 10.0);
  EXPECT_EQ(height[2].length, 5.0);
}

TEST(GaussMarkov, RefusesWhatHasNoMeaningByName) {
  const auto told = [](const auto& call) -> std::string {
    try {
      call();
    } catch (const std::invalid_argument& fault) {
      return fault.what();
    }
    return "not refused";
  };
  const auto good = stripOf({2, 2}, 0.0, 10.0, 0.05);
  const auto with = [&](auto change) {
    auto strip = good;
    change(strip);
    return told([&] { gaussMarkovRows({strip}, settings); });
  };
  EXPECT_THAT(with([](auto& strip) { strip.sigma = 0.0; }), HasSubstr("standard deviation is 0"));
  EXPECT_THAT(with([](auto& strip) { strip.sigma = std::nan(""); }), HasSubstr("is nan"));
  EXPECT_THAT(with([](auto& strip) { strip.pieces.clear(); }), HasSubstr("has no pieces"));
  EXPECT_THAT(with([](auto& strip) { strip.pieces[1].start = 11.0; }),
              HasSubstr("the section from 11 s begins 1 s after the one before ends"));
  EXPECT_THAT(told([&] { gaussMarkovRows({good}, {.correlationTime = 60.0}); }),
              HasSubstr("step between sections is 0"));
  StripSections strip;
  strip.stripIndex = 3;
  strip.maxTime = 5.0;
  strip.sections[9.0] = {Sec_Type::LINEAR, 0, 9.0, 3, false};
  EXPECT_THAT(told([&] { piecesOf(strip, TrajectoryComponent::Roll); }),
              HasSubstr("strip 3: section from 9 s: its length [s] is -4"));
  strip.sections[9.0].type = Sec_Type::UNKNOWN;
  EXPECT_THAT(told([&] { piecesOf(strip, TrajectoryComponent::Roll); }), HasSubstr("strip 3"));
}
