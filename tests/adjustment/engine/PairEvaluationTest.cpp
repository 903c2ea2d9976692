// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <numeric>

#include <gmock/gmock.h>

#include "adjustment/engine/PairEvaluation.h"
#include "tests/adjustment/georef/StripOfPoints.h"

using Velorn::PairEvaluation, Velorn::Sec_Type, Velorn::Section;

namespace {

/// Correspondences of two cubic sections, and of one with the ground truth, of several classes,
/// not in order of time; residuals are metres, so that Huber's function acts on most.
class Evaluated : public testing::Test {
 protected:
  Evaluated() {
    const Points first(route, count), second(route, count);
    for (std::size_t k = 0; k < count; ++k) {
      const std::size_t i = k * 17 % count;
      const auto classCode = static_cast<std::uint8_t>(10 + k % 5);
      const auto a = being(first, i, classCode), b = being(second, (i + 3) % count, classCode);
      store.addPair({a, week, sections[0]}, {b, week, sections[1]});
      if (k % 4 == 0) store.addGroundTruth({a, week, sections[0]}, {600100, 5250100, 10});
    }
    store.close();
  }

  static Velorn::SphericalBeing being(const Points& points, std::size_t i, std::uint8_t classCode) {
    return {{}, points.scanner[i], points.times[i], {0.006, -0.0048, 0.0064}, {}, classCode};
  }

  std::vector<const double*> unknowns() const {
    const double* const x = values.data();
    return {x + 48, x + 51, x + 54, x + 57, x, x + 12, x + 24, x + 36};
  }

  PairEvaluation evaluation(
      std::size_t pair, const Velorn::BatchKernel& kernel = Velorn::batchKernels().back()) const {
    return {store, store.pairs()[pair], unknowns().data(), kernel};
  }

  /// Where an unknown stands in `values`.
  static std::size_t placeOf(const Velorn::Columns::Place& place) {
    const std::size_t firsts[] = {48, 51, 54, 57, 0, 12, 24, 36};
    return firsts[place.block] + static_cast<std::size_t>(place.entry);
  }

  static constexpr std::size_t count = 203;
  Route route;
  Velorn::Trajectory trajectory = trajectoryOf(route);
  std::vector<double> values = someCorrections(2);
  Section sections[2] = {{Sec_Type::SPLINE, 0, 399990, 0, false, 0},
                         {Sec_Type::HYBRID, 1, 400000, 1, false, 0}};
  Velorn::CorrespondenceStore store{trajectory, {1, 2, 3, 4, 5}, true};
};

}  // namespace

TEST_F(Evaluated, HasChunksOfOneClassAndOneSecond) {
  ASSERT_EQ(store.pairs().size(), 2U);
  EXPECT_EQ(store.pairs()[0].size(), count);
  for (const auto& run : store.pairs()[0].runs) {
    std::size_t next = 0;
    for (const auto& chunk : run.chunks) {
      EXPECT_EQ(chunk.first, next);
      next += chunk.count;
      EXPECT_EQ(std::floor(run.records[chunk.first].first.time),
                std::floor(run.records[next - 1].first.time));
      const bool isLast = next == run.records.size();
      EXPECT_TRUE(isLast || std::floor(run.records[next].first.time) >
                                std::floor(run.records[chunk.first].first.time));
    }
    EXPECT_EQ(next, run.records.size());
  }
}

/// By the polynomials about a place, and where the two are far apart, by the formulas.
TEST(PairEvaluation, HasTheResidualsOfWorldPointsHoweverFarApartTheirSensorsAre) {
  const Route route{.speed = 600};
  constexpr std::size_t count = 100;
  constexpr double rounding = 5e-8;  // [m]; twice 2e-8 and 1e-12 of the distance
  Points points(route, 2 * count);
  const auto trajectory = trajectoryOf(route);
  const auto values = someCorrections(1);
  ASSERT_EQ(points.georeference(restoredModel({400000}, values), trajectory), "");
  const double* const x = values.data();
  const std::vector<const double*> unknowns{x + 24, x + 27, x + 30, x + 33, x, x + 12, x, x + 12};
  const Section section{Sec_Type::SPLINE, 0, 400000, 0, false, 0};
  const Geomra::PhysicalSpace::vector normal{0.6, -0.48, 0.64};
  Velorn::CorrespondenceStore store(trajectory, {1}, true);
  const auto being = [&](std::size_t i) {
    return Velorn::SphericalBeing{{}, points.scanner[i], points.times[i], normal, {}, 10};
  };
  const auto partner = [](std::size_t i) { return 2 * count - 1 - i; };
  for (std::size_t i = 0; i < count; ++i) {
    const auto first = being(i), second = being(partner(i));
    store.addPair({first, week, section}, {second, week, section});
  }
  store.close();
  const auto& pair = store.pairs().front();
  for (const auto& kernel : Velorn::batchKernels()) {
    const PairEvaluation evaluation(store, pair, unknowns.data(), kernel);
    for (std::uint32_t i = 0; i < count; ++i) {
      const auto &p = points.world[i], &q = points.world[partner(i)];
      const double r = normal.x * (q.x - p.x) + normal.y * (q.y - p.y) + normal.z * (q.z - p.z);
      const auto sums = evaluation.sums(pair.runs.front(), {i, 1}, {});
      EXPECT_NEAR(std::sqrt(sums.twiceCost), std::abs(r), rounding) << kernel.name << " " << i;
    }
  }
}

TEST_F(Evaluated, CondensesWhatItsChunksAddUpTo) {
  for (std::size_t pair = 0; pair < 2; ++pair) {
    const auto whole = evaluation(pair).condensed(PairEvaluation::everyBlock, 2);
    const auto size = static_cast<Eigen::Index>(whole.columns.size());
    EXPECT_EQ(size, pair == 0 ? 12 + 24 + 9 : 12 + 24);
    const Eigen::MatrixXd found = whole.rows.transpose() * whole.rows;
    Eigen::MatrixXd sum = Eigen::MatrixXd::Zero(size + 1, size + 1);
    double twiceCost = 0;
    std::size_t correspondences = 0;
    for (const auto& run : store.pairs()[pair].runs) {
      for (const auto& chunk : run.chunks) {
        const auto part = evaluation(pair).sums(run, chunk, PairEvaluation::everyBlock);
        sum += part.products;
        twiceCost += part.twiceCost;
        correspondences += part.count;
      }
    }
    EXPECT_EQ(correspondences, store.pairs()[pair].size());
    EXPECT_NEAR(evaluation(pair).twiceCost(2), twiceCost, 1e-13 * twiceCost);
    EXPECT_GT(twiceCost, 1.01 * sum(size, size)) << "Huber's function acts";
    sum(size, size) = twiceCost;
    for (Eigen::Index i = 0; i <= size; ++i) {
      for (Eigen::Index j = 0; j <= size; ++j) {
        EXPECT_NEAR(found(i, j), sum(i, j), 1e-12 * std::sqrt(sum(i, i) * sum(j, j))) << i << j;
      }
    }
  }
}

TEST_F(Evaluated, HasTheGradientOfItsCost) {
  const auto whole = evaluation(0).condensed(PairEvaluation::everyBlock, 1);
  const Eigen::VectorXd residuals = whole.rows.rightCols<1>();
  for (std::size_t i = 0; i < whole.columns.size(); ++i) {
    double& unknown = values[placeOf(whole.columns[i])];
    const auto column = whole.rows.col(static_cast<Eigen::Index>(i));
    const double kept = unknown, step = 1e-4 * residuals.norm() / column.norm();
    const auto costAt = [&](double change) {
      unknown = kept + change;
      return 0.5 * evaluation(0).twiceCost(1);
    };
    const double difference = (costAt(step) - costAt(-step)) / (2 * step);
    unknown = kept;
    // The step turns some residuals over Huber's corner, where the cost has no second derivative.
    EXPECT_NEAR(difference, column.dot(residuals), 1e-6 * column.norm() * residuals.norm()) << i;
  }
}

TEST_F(Evaluated, MultipliesAFurtherColumnAsItsOwn) {
  const auto& run = store.pairs()[0].runs[2];
  const auto& chunk = run.chunks.front();
  ASSERT_GT(chunk.count, 1U);
  std::vector<double> further(chunk.count);
  std::iota(further.begin(), further.end(), 1.0);
  const auto sums = evaluation(0).sums(run, chunk, PairEvaluation::everyBlock, further);
  Eigen::VectorXd expected = Eigen::VectorXd::Zero(sums.furtherProducts().size());
  for (std::uint32_t i = 0; i < chunk.count; ++i) {
    const auto single = evaluation(0).sums(run, {chunk.first + i, 1}, PairEvaluation::everyBlock,
                                           std::vector<double>{1.0});
    Eigen::VectorXd part = single.furtherProducts() * further[i];
    part[part.size() - 1] *= further[i];
    expected += part;
  }
  EXPECT_LT((sums.furtherProducts() - expected).norm(), 1e-12 * expected.norm());
  // Of a range offset's column, the further one has the products of the column itself.
  const auto offset = evaluation(0).sums(run, {chunk.first, 1}, PairEvaluation::everyBlock,
                                         std::vector<double>{1.0});
  const double r = offset.furtherProducts()[offset.furtherProducts().size() - 2];
  EXPECT_NEAR(r * r, offset.sumOfSquares() * offset.furtherProducts().tail<1>()[0], 1e-9 * r * r);
}

TEST_F(Evaluated, GivesTheSameByEveryKernel) {
  for (const auto& kernel : Velorn::batchKernels()) {
    for (std::size_t pair = 0; pair < 2; ++pair) {
      SCOPED_TRACE(kernel.name);
      const auto expected = evaluation(pair), found = evaluation(pair, kernel);
      const double cost = expected.twiceCost(1);
      EXPECT_NEAR(found.twiceCost(1), cost, 1e-8 * cost);
      for (const auto& run : store.pairs()[pair].runs) {
        const Eigen::MatrixXd a =
            expected.sums(run, run.chunks[0], PairEvaluation::everyBlock).products;
        const Eigen::MatrixXd b =
            found.sums(run, run.chunks[0], PairEvaluation::everyBlock).products;
        for (Eigen::Index i = 0; i < a.rows(); ++i) {
          for (Eigen::Index j = 0; j < a.cols(); ++j) {
            EXPECT_NEAR(a(i, j), b(i, j), 1e-8 * std::sqrt(a(i, i) * a(j, j))) << i << " " << j;
          }
        }
      }
    }
  }
}
