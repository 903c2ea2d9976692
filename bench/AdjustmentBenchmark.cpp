// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Evaluations of the adjustment's residuals, alone and with their Jacobian, when all that holds no
// unknown is computed once, against a functor that interpolates the trajectory and computes the
// polar form in every pass. Both call the same model with the solver's automatic derivatives, four
// in a pass.
//
// Then the sums of the engine over the same pairs, residuals and Jacobian included, against the
// Jacobians alone, one pair after the other.
//
//     VELORN_BENCH_PAIRS     pairs of measurements, 2000 unless set
//     VELORN_BENCH_SECONDS   of the trajectory at 200 Hz, 1500 unless set
#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <ceres/dynamic_autodiff_cost_function.h>

#include "adjustment/engine/PairEvaluation.h"
#include "adjustment/georef/PhysicalSpace.h"
#include "adjustment/optimization/PointToPlaneCostFunction.h"
#include "bench/Settings.h"
#include "platform/tessaly/PolarCoordinates.h"
#include "tests/adjustment/georef/StripOfPoints.h"

namespace {

using Geomra::PhysicalSpace::point;
using Geomra::PhysicalSpace::vector;
using Velorn::pointToPlaneCostFunction;
using Velorn::Section;
using Velorn::SphericalBeing;
using Velorn::Vector3;
using Run = pointToPlaneCostFunction::Run;
using Side = pointToPlaneCostFunction::Side;

constexpr std::array<int, 8> blockSizes{3, 3, 3, 3, 12, 12, 12, 12};

/// The baseline: keeps the two measurements as they were read.
class InterpolatesInEveryPass {
 public:
  InterpolatesInEveryPass(const Run& run, const Side& first, const Side& second)
      : run_(run), first_(first), second_(second) {}

  template <typename T>
  bool operator()(T const* const* x, T* residual) const {
    const auto mounting = Velorn::mountingOf(x[0], x[1], x[2], x[3]);
    Vector3<T> p, q;
    if (!place(first_, mounting, x[4], x[5], p) || !place(second_, mounting, x[6], x[7], q)) {
      return false;
    }
    const Vector3<T> normal = Velorn::vectorOf(first_.being.normal).cast<T>();
    residual[0] = normal.dot(q - p) * run_.weights[first_.being.classification - 10U];
    return true;
  }

 private:
  template <typename T>
  bool place(const Side& side, const Velorn::Mounting<T>& mounting, const T* position,
             const T* angles, Vector3<T>& world) const {
    point sensor;
    vector attitude;
    if (!run_.trajectory.interpolateTrajectory(side.being.gpsTime, side.week, sensor, attitude,
                                               run_.interpolationFlag)) {
      return false;
    }
    const auto polar = Tessaly::polarCoordinatesFromCartesian(side.being.scannerPosition);
    const Velorn::Pose<double> pose{Velorn::vectorOf(sensor), Velorn::vectorOf(attitude)};
    const auto corrected =
        Velorn::correctedPose(pose, position, angles, Velorn::usedPowers(side.section.type),
                              side.being.gpsTime - side.section.t);
    world = Velorn::worldPoint(Velorn::vectorOf(polar), corrected, mounting, *run_.projection);
    return true;
  }

  const Run& run_;
  const Side first_, second_;
};

/// Pairs between the way there and the way back of a flight, each being one section.
struct Flight {
  Route route{.seconds = std::stod(setting("VELORN_BENCH_SECONDS", "1500")),
              .isThereAndBack = true};
  std::size_t pairs = std::stoul(setting("VELORN_BENCH_PAIRS", "2000"));
  Velorn::Trajectory trajectory = trajectoryOf(route);
  std::vector<double> weights{1, 2, 3, 4, 5};
  Run run{
      trajectory, weights, true,
      std::make_shared<const Velorn::Projection>(Velorn::projectionOf(trajectory.getMercator()))};
  std::array<Section, 2> sections{
      {{Velorn::Sec_Type::LINEAR, 0, route.start, 0, false, 0},
       {Velorn::Sec_Type::LINEAR, 1, route.start + route.seconds / 2, 1, false, 0}}};
  std::vector<SphericalBeing> beings;
  std::vector<double> corrections = someCorrections(2);

  Flight() {
    const Points points(route, 2 * pairs);
    for (std::size_t i = 0; i < points.times.size(); ++i) {
      beings.emplace_back(points.world[i], points.scanner[i], points.times[i],
                          vector{0.6, -0.48, 0.64}, vector{0, 0, 1}, std::uint8_t{11});
    }
  }

  /// The unknowns: globals first, as the blocks are.
  std::array<const double*, 8> unknowns() const {
    const double* const x = corrections.data();
    return {x + 48, x + 51, x + 54, x + 57, x, x + 12, x + 24, x + 36};
  }
};

const Flight& flight() {
  static const Flight only;
  return only;
}

template <typename Functor>
std::vector<std::unique_ptr<ceres::CostFunction>> costs() {
  const auto& f = flight();
  std::vector<std::unique_ptr<ceres::CostFunction>> all;
  for (std::size_t i = 0; i < f.pairs; ++i) {
    auto made = std::make_unique<ceres::DynamicAutoDiffCostFunction<Functor, 4>>(
        new Functor(f.run, {f.beings[i], week, f.sections[0]},
                    {f.beings[2 * f.pairs - 1 - i], week, f.sections[1]}));
    for (const int size : blockSizes) made->AddParameterBlock(size);
    made->SetNumResiduals(1);
    all.push_back(std::move(made));
  }
  return all;
}

/// One residual and its derivatives.
struct Evaluation {
  double residual = 0;
  std::array<double, 60> derivatives{};

  void evaluate(const ceres::CostFunction& cost, bool isWithJacobian) {
    const auto x = flight().unknowns();
    std::array<double*, 8> rows;
    double* row = derivatives.data();
    for (std::size_t k = 0; k < rows.size(); ++k) {
      rows[k] = row;
      row += blockSizes[k];
    }
    if (!cost.Evaluate(x.data(), &residual, isWithJacobian ? rows.data() : nullptr)) {
      throw std::runtime_error("a residual could not be evaluated");
    }
  }
};

template <typename Functor>
void evaluate(benchmark::State& state, bool isWithJacobian) {
  const auto all = costs<Functor>();
  Evaluation evaluation;
  for (auto _ : state) {
    for (const auto& cost : all) {
      evaluation.evaluate(*cost, isWithJacobian);
      benchmark::DoNotOptimize(evaluation);
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(all.size()));
}

/// The ratio says something only if both cases compute the same.
void compareCases() {
  const auto expected = costs<InterpolatesInEveryPass>(), found = costs<pointToPlaneCostFunction>();
  Evaluation a, b;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    a.evaluate(*expected[i], true);
    b.evaluate(*found[i], true);
    if (a.residual != b.residual || a.derivatives != b.derivatives) {
      throw std::runtime_error("the two cases differ at pair " + std::to_string(i));
    }
  }
}

/// The pairs as the engine keeps them.
const Velorn::CorrespondenceStore& store() {
  static const auto only = [] {
    const auto& f = flight();
    auto made = std::make_unique<Velorn::CorrespondenceStore>(f.trajectory, f.weights, true);
    for (std::size_t i = 0; i < f.pairs; ++i) {
      made->addPair({f.beings[i], week, f.sections[0]},
                    {f.beings[2 * f.pairs - 1 - i], week, f.sections[1]});
    }
    made->close();
    return made;
  }();
  return *only;
}

Velorn::PairEvaluation evaluationBy(const Velorn::BatchKernel& kernel) {
  return {store(), store().pairs().front(), flight().unknowns().data(), kernel};
}

void sum(benchmark::State& state, const Velorn::BatchKernel& kernel) {
  for (auto _ : state) {
    benchmark::DoNotOptimize(evaluationBy(kernel).condensed(Velorn::PairEvaluation::everyBlock, 1));
  }
}

void sumOfSquares(benchmark::State& state, const Velorn::BatchKernel& kernel) {
  for (auto _ : state) benchmark::DoNotOptimize(evaluationBy(kernel).twiceCost(1));
}

void addSums(const std::string& group, bool isWithJacobian) {
  benchmark::RegisterBenchmark((group + "/reference").c_str(), evaluate<pointToPlaneCostFunction>,
                               isWithJacobian)
      ->Unit(benchmark::kMillisecond);
  for (const auto& kernel : Velorn::batchKernels()) {
    benchmark::RegisterBenchmark((group + "/" + kernel.name).c_str(),
                                 isWithJacobian ? sum : sumOfSquares, kernel)
        ->Unit(benchmark::kMillisecond);
  }
}

void add(const std::string& group, bool isWithJacobian) {
  benchmark::RegisterBenchmark((group + "/interpolatesInEveryPass").c_str(),
                               evaluate<InterpolatesInEveryPass>, isWithJacobian)
      ->Unit(benchmark::kMillisecond);
  benchmark::RegisterBenchmark((group + "/precomputed").c_str(), evaluate<pointToPlaneCostFunction>,
                               isWithJacobian)
      ->Unit(benchmark::kMillisecond)
      ->Setup([](const benchmark::State&) { compareCases(); });
}

const bool added = [] {
  add("Residual", false);
  add("Jacobian", true);
  addSums("SumOfSquares", false);
  addSums("NormalMatrix", true);
  return true;
}();

}  // namespace
