// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <Eigen/Dense>
#include <cmath>
#include <random>
#include <stdexcept>

#include <gmock/gmock.h>

#include "adjustment/stochastics/GaussMarkov.h"
#include "adjustment/stochastics/VarianceComponents.h"

using namespace Velorn;

namespace {

constexpr Eigen::Index strips = 25, sections = 4, nodes = sections + 1;
constexpr double length = 15.0, gap = 300.0, tc = 60.0;

/// Adds rows of a group to a normal matrix.
void add(const std::vector<PriorRows>& rows, Eigen::MatrixXd& normal) {
  for (const auto& row : rows)
    normal(row.unknowns, row.unknowns) += row.rows.transpose() * row.rows;
}

/// A process of σ = 1 at the borders of all sections of all strips.
Eigen::VectorXd processAtNodes(std::mt19937& random) {
  std::normal_distribution<double> normal;
  Eigen::VectorXd values(strips * nodes);
  for (Eigen::Index i = 0; i < values.size(); ++i) {
    const double since = i % nodes == 0 ? gap : length;
    const double rho = i == 0 ? 0.0 : std::exp(-since / tc);
    values[i] = (i == 0 ? 0.0 : rho * values[i - 1]) + std::sqrt(1.0 - rho * rho) * normal(random);
  }
  return values;
}

std::vector<StripCorrection> linearStrips(double sigma) {
  std::vector<StripCorrection> all;
  for (Eigen::Index s = 0; s < strips; ++s) {
    StripCorrection strip{{}, sigma};
    const double start = static_cast<double>(s) * (gap + sections * length);
    for (Eigen::Index k = 0; k < sections; ++k) {
      strip.pieces.push_back(
          {2 * (s * sections + k), 2, start + length * static_cast<double>(k), length});
    }
    all.push_back(strip);
  }
  return all;
}

}  // namespace

TEST(VarianceComponents, FindTheStandardDeviationsOfAProcessAndOfObservationsOfIt) {
  constexpr double processTruth = 0.05, noiseTruth = 0.02;
  constexpr int perSection = 6;
  std::mt19937 random(21);
  std::normal_distribution<double> normal;
  const Eigen::Index unknowns = 2 * strips * sections, count = strips * sections * perSection;
  Eigen::MatrixXd a = Eigen::MatrixXd::Zero(count, unknowns);
  Eigen::VectorXd fractions(count);
  for (Eigen::Index i = 0; i < count; ++i) {
    fractions[i] = (static_cast<double>(i % perSection) + 0.5) / perSection;
    a(i, 2 * (i / perSection)) = 1.0;
    a(i, 2 * (i / perSection) + 1) = fractions[i] * length;
  }
  const Eigen::MatrixXd products = a.transpose() * a;
  double processFound = 0.0, noiseFound = 0.0;
  constexpr int draws = 10;
  for (int draw = 0; draw < draws; ++draw) {
    const Eigen::VectorXd values = processTruth * processAtNodes(random);
    Eigen::VectorXd y(count);
    for (Eigen::Index i = 0; i < count; ++i) {
      const Eigen::Index section = i / perSection, node = section + section / sections;
      const double f = fractions[i];
      y[i] = (1.0 - f) * values[node] + f * values[node + 1] + noiseTruth * normal(random);
    }
    double process = 0.2, noise = 0.005;  // what is believed at first: four times off
    for (int round = 0; round < 5; ++round) {
      const auto rows = gaussMarkovRows(linearStrips(process), {tc, 1e-4});
      Eigen::MatrixXd ofProcess = Eigen::MatrixXd::Zero(unknowns, unknowns), ofJoints = ofProcess;
      add(rows.process, ofProcess);
      add(rows.joints, ofJoints);
      const Eigen::MatrixXd ofNoise = products / (noise * noise);
      const Eigen::MatrixXd q = (ofProcess + ofJoints + ofNoise).inverse();
      const Eigen::VectorXd x = q * (a.transpose() * y) / (noise * noise);
      const auto ofPrior =
          varianceFactorOf({x.dot(ofProcess * x), static_cast<double>(rows.degreesOfFreedom),
                            q.cwiseProduct(ofProcess).sum()});
      const auto ofRest =
          varianceFactorOf({(y - a * x).squaredNorm() / (noise * noise), static_cast<double>(count),
                            q.cwiseProduct(ofNoise).sum()});
      ASSERT_TRUE(ofPrior.isEstimated && ofRest.isEstimated);
      process *= ofPrior.standardDeviation();
      noise *= ofRest.standardDeviation();
    }
    processFound += process / draws;
    noiseFound += noise / draws;
  }
  // 125 values of the process: 6 % in each draw, and its straight lines cut its corners.
  EXPECT_NEAR(processFound, processTruth, 0.05 * processTruth);
  EXPECT_NEAR(noiseFound, noiseTruth, 0.02 * noiseTruth);
}

TEST(VarianceComponents, ASmallGroupKeepsItsValueAndSaysSo) {
  const auto small = varianceFactorOf({500.0, 14.0, 4.5}),
             enough = varianceFactorOf({40.0, 14.0, 4.0});
  EXPECT_FALSE(small.isEstimated);
  EXPECT_EQ(small.variance, 1.0);
  EXPECT_EQ(small.redundancy, 9.5);
  EXPECT_TRUE(enough.isEstimated);
  EXPECT_NEAR(enough.standardDeviation(), 2.0, 1e-12);
  EXPECT_EQ(varianceFactorOf({0.0, 1000.0, 4.0}).variance, 0.01) << "weights stay finite";
  EXPECT_EQ(varianceFactorOf({0.0, 3.0, 4.0}).redundancy, 0.0);
  EXPECT_THROW(varianceFactorOf({std::nan(""), 1.0, 0.0}), std::invalid_argument);
  EXPECT_THROW(varianceFactorOf({1.0, -1.0, 0.0}), std::invalid_argument);
}
