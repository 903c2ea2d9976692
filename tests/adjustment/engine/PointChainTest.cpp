// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <ceres/jet.h>
#include <gmock/gmock.h>

#include "adjustment/engine/LocalEarth.h"
#include "adjustment/engine/LocalPlaces.h"
#include "adjustment/engine/PointChain.h"
#include "tests/adjustment/georef/Measurements.h"

namespace {

using Velorn::Vector3;
using Jet = ceres::Jet<double, Exact::unknowns>;
using Row = std::array<double, Exact::unknowns>;

/// Two evaluations in double of northings up to 9300 km.
constexpr double tenNanometres = 1e-8;
constexpr double agreement = 1e-9;  // of derivatives, in shares of each

class RandomDirections {
 public:
  Vector3<double> next() {
    const double x = component_(random_), y = component_(random_), z = component_(random_);
    return Vector3<double>(x, y, z).normalized();
  }

 private:
  std::mt19937_64 random_{42};
  std::normal_distribution<double> component_;
};

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

template <typename Earth>
Velorn::PointChain<double, Earth> chainOf(const Case& c, const Velorn::Turn<double>& misalignment,
                                          const Earth& earth) {
  const double* const u = c.unknowns.data();
  auto pose = Velorn::correctedPose(c.pose, u + 12, u + 24, {4, 4}, c.dt);
  pose.position -= triple(earth.centre());
  return {Velorn::correctedPolarForm(Velorn::polarForm(c.scanner), triple(u), triple(u + 3)), pose,
          misalignment, triple(u + 9), earth};
}

/// Compares world point and derivatives along `normal` with those of the model on jets.
template <typename Earth>
void expectAgreement(const Case& c, const Vector3<double>& normal, const Earth& earth,
                     const std::string& what) {
  const double* const u = c.unknowns.data();
  const Velorn::Turn<double> misalignment(triple(u + 6));
  const auto chain = chainOf(c, misalignment, earth);
  const Row found = derivativesOf(c, chain.gradient(normal));

  std::array<Jet, Exact::unknowns> jets;
  for (std::size_t i = 0; i < jets.size(); ++i) jets[i] = Jet(u[i], static_cast<int>(i));
  const Vector3<Jet> expected = worldPointOf(c, jets);
  const Vector3<double> world = chain.world() + triple(earth.centre());
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
  RandomDirections directions;
  for (int i = 0; i < 500; ++i) {
    const Case c = cases.next();
    const auto projection = Velorn::projectionOf(c.zone);
    expectAgreement(c, directions.next(), Velorn::ExactEarth(projection), std::to_string(i));
  }
}

TEST(PointChain, HasThemByPolynomialsWhereTheseAreNear) {
  RandomCases cases(44);
  RandomDirections directions;
  int near = 0;
  for (int i = 0; i < 500; ++i) {
    const Case c = cases.next();
    const auto projection = Velorn::projectionOf(c.zone);
    const Velorn::Turn<double> misalignment(triple(&c.unknowns[6]));
    const auto world = chainOf(c, misalignment, Velorn::ExactEarth(projection)).world();
    const double distance = 9.0 * i;
    const auto place = Velorn::localPlaceAbout(world + distance * directions.next(), projection);
    const Velorn::LocalEarth earth(place);
    const auto chain = chainOf(c, misalignment, earth);
    const double aside = (c.pose.position - triple(earth.centre())).head<2>().norm();
    const double share = std::max(distance / Velorn::widestOfPoint, aside / Velorn::widestOfSensor);
    if (std::abs(share - 1) > 2e-3) {  // the projection's scale, and corrections of the position
      EXPECT_EQ(chain.isNear(), share < 1) << i;
    }
    if (!chain.isNear()) continue;
    ++near;
    expectAgreement(c, directions.next(), earth, std::to_string(i));
  }
  EXPECT_GT(near, 400);
}

TEST(PointChain, HasThemWhereFormulasMightDivideByZero) {
  RandomCases cases(43);
  const Case ordinary = cases.next();
  const auto expectWith = [&](const char* what, auto change) {
    Case c = ordinary;
    change(c);
    const auto projection = Velorn::projectionOf(c.zone);
    const Vector3<double> normal{0.36, -0.48, 0.8};
    expectAgreement(c, normal, Velorn::ExactEarth(projection), what);
    const auto place = Velorn::localPlaceAbout(c.pose.position, projection);
    expectAgreement(c, normal, Velorn::LocalEarth(place), what);
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
