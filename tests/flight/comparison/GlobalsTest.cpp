// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a sum of corrections does not see must hardly move the points.
#include <cmath>
#include <numbers>

#include <gtest/gtest.h>

#include "flight/comparison/Globals.h"
#include "platform/geomra/Degree.h"
#include "tests/flight/simulation/TrueWorld.h"

using namespace Velorn::Flights;

using Velorn::Flights::Comparison::Points, Comparison::Truth;

namespace {

using Geomra::degree;

class SeparableSums : public testing::Test {
 protected:
  SeparableSums() : truth(simulated(folder)), trajectory(trajectoryIn(folder.path())) {
    for (const auto& strip : truth.strips) {
      const OneGridFile file(strip.file);
      scanner.push_back(
          file.column<Geomra::PhysicalSpace::point>("ScannerCoordinateSystem", "Positions"));
      times.push_back(file.column<double>("ScannerCoordinateSystem", "GPSTime"));
      shape.add(scanner.back());
    }
    EXPECT_EQ(model.setEmptySections({}, {}), "");
  }

  static Truth simulated(const TemporaryFolder& folder) {
    auto options = smallFlight();
    options.points = 4000;
    make(folder.path(), options);
    return Comparison::readTruth(folder.path());
  }

  /// Root mean square of how far another mounting moves the points [m].
  double movement(const Simulation::MountingValues& mounting) const {
    Truth other = truth;
    other.real = mounting;
    double squares = 0.0, number = 0.0;
    for (std::size_t i = 0; i < scanner.size(); ++i) {
      const Points here = Comparison::trueWorld(truth, trajectory, i, scanner[i], times[i]);
      const Points there = Comparison::trueWorld(other, trajectory, i, scanner[i], times[i]);
      for (std::size_t k = 0; k < here.size(); ++k) {
        const auto d = there[k] - here[k];
        squares += dot(d, d);
        number += 1.0;
      }
    }
    return std::sqrt(squares / number);
  }

  double sum(const Simulation::MountingValues& mounting, std::size_t axis) const {
    Truth other = truth;
    other.real = mounting;
    return Comparison::separableSums(other, shape, model).at(axis).real;
  }

  /// A turn of the mounting, undone by a change of something else.
  template <typename Change>
  void expectSame(int axis, const Change& undo) const {
    constexpr double turn = 0.01 * degree;
    Simulation::MountingValues turned = truth.real, undone = truth.real;
    turned.misalignment[axis] += turn;
    undone.misalignment[axis] += turn;
    undo(undone, turn);
    const auto a = static_cast<std::size_t>(axis);
    EXPECT_NEAR(sum(turned, a) - sum(truth.real, a), 0.01, 1e-12);
    EXPECT_NEAR(sum(undone, a), sum(truth.real, a), 1e-12);
    EXPECT_GT(movement(turned), 0.01);
    EXPECT_LT(movement(undone), 0.3 * movement(turned));
  }

  TemporaryFolder folder;
  Truth truth;
  Velorn::Trajectory trajectory;
  std::vector<Points> scanner;
  std::vector<std::vector<double>> times;
  Comparison::ScanShape shape;
  Velorn::SolverParameters model{{"strip.kx"}, Velorn::InputParameter()};
};

}  // namespace

TEST_F(SeparableSums, AboutRollDoNotSeeWhatLeavesThePointsWhereTheyAre) {
  expectSame(0, [](auto& mounting, double turn) { mounting.offsets[2] -= turn; });
  expectSame(
      0, [](auto& mounting, double turn) { mounting.scales[2] -= turn / (std::numbers::pi / 2); });
  expectSame(
      0, [this](auto& mounting, double turn) { mounting.leverArm[1] += turn * shape.meanDepth(); });
}

TEST_F(SeparableSums, AboutPitchDoNotSeeWhatLeavesThePointsWhereTheyAre) {
  expectSame(1, [](auto& mounting, double turn) { mounting.offsets[1] -= turn; });
  expectSame(
      1, [this](auto& mounting, double turn) { mounting.leverArm[0] -= turn * shape.meanDepth(); });
}

TEST_F(SeparableSums, AboutYawDoNotSeeAScaleOfTheAngleForwardOfTheScanPlane) {
  EXPECT_NEAR(std::abs(shape.slope()), 0.2 * degree, 0.01 * degree);  // the mirror's axis is off
  expectSame(2,
             [this](auto& mounting, double turn) { mounting.scales[1] += turn / shape.slope(); });
}
