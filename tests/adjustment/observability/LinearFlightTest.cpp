// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A priori knowledge and cofactors together, on flights whose truth is known.
#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <set>
#include <vector>

#include <gmock/gmock.h>

#include "adjustment/observability/SelectedInverse.h"
#include "adjustment/observability/WeakDirections.h"
#include "tests/adjustment/observability/LinearFlight.h"
#include "tests/adjustment/observability/SmallAdjustment.h"

using namespace Velorn;

namespace {

constexpr Eigen::Index global = 24 * LinearFlight::sections;

/// What is looked at.
struct Asked {
  const char* name;
  LinearSum sum;
};

std::vector<Asked> askedOf(const LinearFlight& flight) {
  const auto height = [&](double time) {
    return correctionAt(flight.corrections[2], LinearFlight::tc, time);
  };
  return {{"misalignment roll", {{global + 6, 1.0}}},
          {"misalignment pitch", {{global + 7, 1.0}}},
          {"range offset", {{global, 1.0}}},
          {"scale of the forward angle", {{global + 4, 1.0}}},
          {"world point, east",
           flight.displacement(1, LinearFlight::startOf(1) + 7.0, 0.3, 600.0, {1, 0, 0})},
          {"world point, height",
           flight.displacement(2, LinearFlight::startOf(2) + 29.0, -0.4, 700.0, {0, 0, 1})},
          {"height in a strip", height(LinearFlight::startOf(0) + 20.0).sum}};
}

}  // namespace

TEST(LinearFlight, ErrorsOfAThousandFlightsAreWhatTheirCofactorsTell) {
  const LinearFlight flight(1);
  const NormalMatrix normal = flight.observed + flight.prior;
  const Cofactors cofactors(normal);
  const auto asked = askedOf(flight);
  // The estimate's error is Q (A'P e + N_prior x), e the noise, x the truth where zero is expected:
  // f'Q times the columns of both, once for all flights.
  const auto count = static_cast<Eigen::Index>(asked.size());
  Eigen::MatrixXd solved(LinearFlight::unknowns, count);
  for (Eigen::Index k = 0; k < count; ++k)
    solved.col(k) = cofactors.times(asked[static_cast<std::size_t>(k)].sum);
  const Eigen::MatrixXd byPrior = flight.prior * solved;
  Eigen::MatrixXd byNoise(static_cast<Eigen::Index>(flight.observations.size()), count);
  for (Eigen::Index i = 0; i < byNoise.rows(); ++i) {
    for (Eigen::Index k = 0; k < count; ++k) {
      byNoise(i, k) = valueOf(flight.observations[static_cast<std::size_t>(i)], solved.col(k));
    }
  }
  std::mt19937 random(2);
  constexpr int draws = 1000;
  Eigen::ArrayXd squares = Eigen::ArrayXd::Zero(count), means = squares;
  for (int draw = 0; draw < draws; ++draw) {
    const Eigen::VectorXd error =
        byNoise.transpose() * SmallAdjustment::drawn(byNoise.rows(), random) -
        byPrior.transpose() * flight.drawnUnknowns(random);
    for (Eigen::Index k = 0; k < count; ++k) {
      const double normalised =
          error[k] / cofactors.standardDeviation(asked[static_cast<std::size_t>(k)].sum);
      squares[k] += normalised * normalised / draws;
      means[k] += normalised / draws;
    }
  }
  const auto [lowest, highest] = chiSquareLimits(draws);
  for (Eigen::Index k = 0; k < count; ++k) {
    SCOPED_TRACE(asked[static_cast<std::size_t>(k)].name);
    EXPECT_GT(squares[k], lowest);
    EXPECT_LT(squares[k], highest);
    EXPECT_NEAR(means[k], 0.0, 3.29 / std::sqrt(draws));
  }
}

TEST(LinearFlight, TellsNothingOfTheForwardAnglesScaleAndOfSumsThatAreOne) {
  const LinearFlight flight(3);
  const SelectedInverse ofPrior{Cofactors(flight.prior)};
  const Eigen::VectorXd sigmas = ofPrior.diagonal().cwiseSqrt();
  for (const auto& [component, unknown] : {std::pair{2, 8}, {3, 12 + 24}}) {
    EXPECT_NEAR(sigmas[unknown], flight.sigmas[static_cast<std::size_t>(component)],
                0.03 * sigmas[unknown]);
  }
  const auto weak = weakDirections(flight.observed, sigmas, 8);
  // Misalignment and lever arm against what all strips have in common. The scan angle's offset is a
  // third in the sum of rolls, which leaves two directions of it; the forward angle's scale is
  // alone.
  const std::set<std::size_t> sums[] = {
      {}, {24 + 2, 24 + 6, 12}, {24 + 7, 16}, {24 + 8, 20}, {24 + 11, 8}};
  std::array<int, std::size(sums)> found{};
  for (const auto& [eigenvalue, direction, effect] : weak) {
    if (eigenvalue > 1e-4) continue;
    // The height of the lever arm cancels in pairs: control alone sees it, which is little.
    std::set<std::size_t> kinds;
    for (const auto& part : participations(effect, 0.005)) kinds.insert(part.kind);
    if (kinds.empty()) {
      EXPECT_GT(direction[global + 4] * direction[global + 4], 0.999);
    }
    if (kinds.contains(12) || kinds.contains(24 + 6)) kinds.insert({24 + 2, 24 + 6, 12});
    for (std::size_t k = 0; k < found.size(); ++k) found[k] += kinds == sums[k] ? 1 : 0;
  }
  EXPECT_THAT(found, testing::ElementsAre(1, 2, 1, 1, 1));
  const Cofactors cofactors(flight.observed + flight.prior);
  const Eigen::VectorXd shares = SelectedInverse(cofactors).sharesOf(flight.prior);
  EXPECT_NEAR(shares[global + 4], 1.0, 1e-6) << "told by the data sheet alone";
  EXPECT_LT(cofactors.standardDeviation({{global + 2, 1.0}, {global + 6, 1.0}, {12, 1.0}}), 1e-4);
}
