// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>

#include <ceres/dynamic_autodiff_cost_function.h>
#include <gmock/gmock.h>

#include "adjustment/optimization/PointToPlaneCostFunction.h"
#include "tests/adjustment/georef/StripOfPoints.h"
#include "tests/support/ConsoleLines.h"

using Geomra::PhysicalSpace::point, Geomra::PhysicalSpace::vector;
using Velorn::pointToPlaneCostFunction, Velorn::Sec_Type, Velorn::Section, Velorn::SphericalBeing;

namespace {

using Blocks = std::vector<std::vector<double>>;

std::vector<const double*> pointersTo(const Blocks& blocks) {
  std::vector<const double*> pointers(blocks.size());
  std::transform(blocks.begin(), blocks.end(), pointers.begin(),
                 [](const auto& block) { return block.data(); });
  return pointers;
}

/// Zeros in blocks of the same sizes.
Blocks zerosLike(const Blocks& blocks) {
  Blocks zeros(blocks.size());
  std::transform(blocks.begin(), blocks.end(), zeros.begin(),
                 [](const auto& block) { return std::vector<double>(block.size()); });
  return zeros;
}

/// Two measurements of one strip, its sections being those of two strips.
class Residual : public testing::Test {
 protected:
  Residual() {
    Points points(route, 2);
    EXPECT_EQ(points.georeference(parameters, trajectory), "");
    for (std::size_t i = 0; i < 2; ++i) {
      beings[i] = {points.world[i], points.scanner[i],     points.times[i],
                   normal,          vector{0.0, 0.0, 1.0}, std::uint8_t{12}};
      worldPoints[i] = points.world[i];
    }
    beings[0].classification = 11;
  }

  pointToPlaneCostFunction::Run run() const {
    return {
        trajectory, weights, interpolationFlag,
        std::make_shared<const Velorn::Projection>(Velorn::projectionOf(trajectory.getMercator()))};
  }
  pointToPlaneCostFunction pairOf() const {
    return {run(), {beings[0], week, sections[0]}, {beings[1], week, sections[1]}};
  }
  pointToPlaneCostFunction control(const point& fixed) const {
    return {run(), {beings[0], week, sections[0]}, fixed};
  }

  /// The unknowns of the parameters, in the order of the blocks.
  Blocks blocks(std::size_t count) const {
    const auto& v = corrections;
    const auto part = [&](std::size_t first, std::size_t size) {
      const auto from = v.begin() + static_cast<std::ptrdiff_t>(first);
      return std::vector<double>(from, from + static_cast<std::ptrdiff_t>(size));
    };
    Blocks all{part(48, 3), part(51, 3),  part(54, 3),  part(57, 3),
               part(0, 12), part(12, 12), part(24, 12), part(36, 12)};
    all.resize(count);
    return all;
  }

  /// @return residual, or NaN when the evaluation fails
  static double valueOf(const pointToPlaneCostFunction& functor, const Blocks& x) {
    const auto pointers = pointersTo(x);
    double residual = 0;
    return functor(pointers.data(), &residual) ? residual : NAN;
  }

  static std::unique_ptr<ceres::CostFunction> cost(const pointToPlaneCostFunction& functor) {
    auto made = std::make_unique<ceres::DynamicAutoDiffCostFunction<pointToPlaneCostFunction, 4>>(
        new pointToPlaneCostFunction(functor));
    for (const int size : functor.blockSizes()) made->AddParameterBlock(size);
    made->SetNumResiduals(1);
    return made;
  }

  Route route;
  std::vector<int> starts{400000, 400010};
  std::vector<double> corrections = someCorrections(2);
  Velorn::Trajectory trajectory = trajectoryOf(route);
  Velorn::SolverParameters parameters = restoredModel(starts, corrections);
  Section sections[2] = {{Sec_Type::SPLINE, 0, 400000, 0, false, 0},
                         {Sec_Type::SPLINE, 1, 400010, 1, false, 0}};
  vector normal{0.6, -0.48, 0.64};
  SphericalBeing beings[2];
  point worldPoints[2];
  std::vector<double> weights{1, 2, 3, 4, 5};
  bool interpolationFlag = true;
  ConsoleLines console;
};

}  // namespace

TEST_F(Residual, IsTheWeightedDistanceOfThePointsThatGeoreferencingGives) {
  const double distance = dot(normal, worldPoints[1] - worldPoints[0]);
  EXPECT_NEAR(valueOf(pairOf(), blocks(8)), 2 * distance, 2e-8);
  beings[0].classification = 14;
  EXPECT_NEAR(valueOf(pairOf(), blocks(8)), 5 * distance, 5e-8);
  EXPECT_NEAR(valueOf(control(worldPoints[1]), blocks(6)), 5 * distance, 5e-8);
  EXPECT_NEAR(valueOf(control(worldPoints[0]), blocks(6)), 0, 5e-8);
  const vector along = worldPoints[1] - worldPoints[0];
  beings[0].normal = {along.y, -along.x, 0};
  EXPECT_NEAR(valueOf(pairOf(), blocks(8)) / std::hypot(along.x, along.y), 0, 5e-8);
}

TEST_F(Residual, HasTheDerivativesOfTheExactTwin) {
  for (const bool isControl : {false, true}) {
    const auto functor = isControl ? control({600100, 5250100, 10}) : pairOf();
    const auto x = blocks(isControl ? 6 : 8);
    const auto pointers = pointersTo(x);
    Blocks jacobian = zerosLike(x), expected = zerosLike(x);
    std::vector<double*> rows(x.size());
    std::transform(jacobian.begin(), jacobian.end(), rows.begin(),
                   [](auto& block) { return block.data(); });
    double residual = 0;
    ASSERT_TRUE(cost(functor)->Evaluate(pointers.data(), &residual, rows.data()));
    // r = w u (Q - P): globals by both points, sections by one each.
    for (std::size_t side = 0; side < (isControl ? 1U : 2U); ++side) {
      const ExactCase given(trajectory, starts, corrections, beings[side].scannerPosition,
                            beings[side].gpsTime);
      const auto derivatives =
          Exact::derivatives(given.measurement, given.unknowns, trajectory.getMercator());
      const double sign = side == 0 ? -weights[1] : weights[1];
      for (std::size_t i = 0; i < derivatives.size(); ++i) {
        const auto& d = derivatives[i];
        const auto slope = static_cast<double>(normal.x * d[0] + normal.y * d[1] + normal.z * d[2]);
        auto& entry =
            i < 12 ? expected[i / 3][i % 3] : expected[4 + 2 * side + (i - 12) / 12][i % 12];
        entry += sign * slope;
      }
    }
    for (std::size_t k = 0; k < expected.size(); ++k) {
      for (std::size_t i = 0; i < expected[k].size(); ++i) {
        EXPECT_NEAR(jacobian[k][i], expected[k][i], 1e-8 * std::max(10.0, std::abs(expected[k][i])))
            << k << " " << i;
      }
    }
  }
}

TEST_F(Residual, DoesNotDependOnCoefficientsThatTheSectionsTypeLeavesOut) {
  const auto usedBy = [&](Sec_Type type) {
    sections[0].type = sections[1].type = type;
    const auto functor = pairOf();
    const auto made = cost(functor);
    const auto x = blocks(8);
    const auto pointers = pointersTo(x);
    std::vector<double> row(12);
    std::string used;
    for (std::size_t k = 4; k < 8; ++k) {
      std::vector<double*> rows(8, nullptr);
      rows[k] = row.data();
      double residual = 0;
      EXPECT_TRUE(made->Evaluate(pointers.data(), &residual, rows.data()));
      for (std::size_t i = 0; i < 12; ++i) {
        used += row[i] == 0.0 ? '-' : static_cast<char>('0' + i % 4);
      }
      used += ' ';
    }
    return used;
  };
  EXPECT_EQ(usedBy(Sec_Type::BIAS), "0---0---0--- 0---0---0--- 0---0---0--- 0---0---0--- ");
  EXPECT_EQ(usedBy(Sec_Type::LINEAR), "01--01--01-- 01--01--01-- 01--01--01-- 01--01--01-- ");
  EXPECT_EQ(usedBy(Sec_Type::HYBRID), "0---0---0--- 01--01--01-- 0---0---0--- 01--01--01-- ");
  EXPECT_EQ(usedBy(Sec_Type::SPLINE), "012301230123 012301230123 012301230123 012301230123 ");
  EXPECT_EQ(usedBy(Sec_Type::UNKNOWN), "------------ ------------ ------------ ------------ ");
}

TEST_F(Residual, FailsWithAMessageWhereThereIsNoPoseOrNoWeight) {
  const std::string text = "GeoTransformationCeresReborn: linear interpolation of failed";
  beings[1].gpsTime = 399999;
  EXPECT_TRUE(std::isnan(valueOf(pairOf(), blocks(8))));
  EXPECT_EQ(console.back(), text);
  interpolationFlag = false;  // the line through the first two records goes on
  EXPECT_TRUE(std::isfinite(valueOf(pairOf(), blocks(8))));
  beings[0].classification = 15;
  EXPECT_TRUE(std::isnan(valueOf(pairOf(), blocks(8))));
  EXPECT_THAT(console.back(), testing::HasSubstr("no weight"));
  beings[0].classification = 9;
  EXPECT_TRUE(std::isnan(valueOf(pairOf(), blocks(8))));
}
