// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <ceres/jet.h>
#include <gmock/gmock.h>

#include "adjustment/engine/PointChain.h"
#include "tests/adjustment/georef/Measurements.h"

namespace {

using Velorn::Vector3;
using Jet = ceres::Jet<double, Exact::unknowns>;
using Row = std::array<double, Exact::unknowns>;

/// Two evaluations in double of northings up to 9300 km.
constexpr double tenNanometres = 1e-8;
constexpr double agreement = 1e-9;  // of derivatives, in shares of each

Vector3<double> triple(const double* values) {
  return {values[0], values[1], values[2]};
}

/// By all 36 unknowns of one point.
Row derivativesOf(const Case& c, const Velorn::PointGradient<double>& gradient) {
  const auto polar = Velorn::polarForm(c.scanner);
  Row row;
  for (int k = 0; k < 3; ++k) {
    const auto i = static_cast<std::size_t>(k);
    row[i] = gradient.polar[k];
    row[3 + i] = gradient.polar[k] * polar[k];
    row[6 + i] = gradient.misalignment[k];
    row[9 + i] = gradient.leverArm[k];
    double power = 1;
    for (std::size_t m = 0; m < 4; ++m) {
      row[12 + 4 * i + m] = gradient.position[k] * power;
      row[24 + 4 * i + m] = gradient.attitude[k] * power;
      power *= c.dt;
    }
  }
  return row;
}

/// Compares world point and derivatives along `normal` with those of the model on jets.
void expectAgreement(const Case& c, const Vector3<double>& normal, const char* what) {
  const double* const u = c.unknowns.data();
  const auto projection = Velorn::projectionOf(c.zone);
  const Velorn::Turn<double> misalignment(triple(u + 6));
  const Velorn::PointChain<double> chain(
      Velorn::correctedPolarForm(Velorn::polarForm(c.scanner), triple(u), triple(u + 3)),
      Velorn::correctedPose(c.pose, u + 12, u + 24, {4, 4}, c.dt), misalignment, triple(u + 9),
      projection);
  const Row found = derivativesOf(c, chain.gradient(normal));

  std::array<Jet, Exact::unknowns> jets;
  for (std::size_t i = 0; i < jets.size(); ++i) jets[i] = Jet(u[i], static_cast<int>(i));
  const Vector3<Jet> expected = worldPointOf(c, jets);
  const Vector3<double> world = chain.world();
  for (int k = 0; k < 3; ++k) EXPECT_NEAR(world[k], expected[k].a, tenNanometres) << what;
  for (int i = 0; i < static_cast<int>(Exact::unknowns); ++i) {
    double derivative = 0, largest = 0;
    for (int k = 0; k < 3; ++k) {
      derivative += normal[k] * expected[k].v[i];
      largest = std::max(largest, std::abs(normal[k] * expected[k].v[i]));
    }
    // One that the normal cancels is only as exact as what it is the difference of.
    const double size = std::max(std::abs(derivative), 1e-3 * largest);
    EXPECT_NEAR(found[static_cast<std::size_t>(i)], derivative, agreement * size)
        << what << ", unknown " << i;
  }
}

}  // namespace

TEST(PointChain, HasTheDerivativesOfTheModelOnJets) {
  RandomCases cases(41);
  std::mt19937_64 random(42);
  std::normal_distribution<double> component;
  for (int i = 0; i < 500; ++i) {
    const Vector3<double> normal(component(random), component(random), component(random));
    expectAgreement(cases.next(), normal.normalized(), std::to_string(i).c_str());
  }
}

TEST(PointChain, HasThemWhereFormulasMightDivideByZero) {
  RandomCases cases(43);
  const Case ordinary = cases.next();
  const auto expectWith = [&](const char* what, auto change) {
    Case c = ordinary;
    change(c);
    expectAgreement(c, {0.36, -0.48, 0.8}, what);
  };
  const auto at = [](double easting, double northing) {
    return [=](Case& c) { c.pose.position = {easting, northing, 1000}; };
  };
  expectWith("nadir", [](Case& c) { c.scanner = beam(600, 0, 0); });
  expectWith("edge of the swath", [](Case& c) { c.scanner = beam(900, 0, 1.3); });
  expectWith("large angles", [](Case& c) { c.pose.attitude = {-3.1, 1.5, 40}; });
  expectWith("no corrections", [](Case& c) { c.unknowns = {}; });
  expectWith("start of the section", [](Case& c) { c.dt = 0; });
  expectWith("central meridian", at(500000, 5e6));
  expectWith("equator", at(500000, 0));
  expectWith("edge of the zone", at(890000, 10000));
  expectWith("84 degrees north", at(465000, 9.33e6));
}
