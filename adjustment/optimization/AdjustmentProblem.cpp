// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/AdjustmentProblem.h"

#include <ceres/dynamic_autodiff_cost_function.h>
#include <ceres/loss_function.h>

#include "adjustment/correspondence/ClassCode.h"
#include "adjustment/optimization/ParameterBlocks.h"
#include "adjustment/optimization/PlacedCorrespondences.h"
#include "adjustment/optimization/PointToPlaneCostFunction.h"

namespace Velorn {
namespace {

constexpr int stride = 4;  // derivatives per pass

ceres::CostFunction* costFunction(pointToPlaneCostFunction* functor) {
  using Cost = ceres::DynamicAutoDiffCostFunction<pointToPlaneCostFunction, stride>;
  auto* const cost = new Cost(functor);
  for (const int size : functor->blockSizes()) cost->AddParameterBlock(size);
  cost->SetNumResiduals(1);
  return cost;
}

/// The ground truth has none: a control point counts in full.
ceres::LossFunction* lossFunction(std::uint8_t classCode, const std::vector<double>& factors) {
  auto* const huber = classCode == firstClassCode ? nullptr : new ceres::HuberLoss(1.0);
  const std::size_t index = classIndex(classCode);
  if (index >= factors.size() || factors[index] == 1.0) return huber;
  return new ceres::ScaledLoss(huber, factors[index], ceres::TAKE_OWNERSHIP);
}

pointToPlaneCostFunction::Side sideOf(const PlacedPoint& point) {
  return {point.being, point.week, point.section};
}

pointToPlaneCostFunction* functorOf(const pointToPlaneCostFunction::Run& run,
                                    const PlacedCorrespondence& correspondence) {
  const auto first = sideOf(correspondence.first);
  return correspondence.second
             ? new pointToPlaneCostFunction(run, first, sideOf(*correspondence.second))
             : new pointToPlaneCostFunction(run, first, correspondence.groundTruth);
}

}  // namespace

const std::vector<double>& ProblemInputs::weights() const {
  return knowledge ? knowledge->model.weights() : configuration.CellSizeWeights;
}

std::vector<double> ProblemInputs::costFactors() const {
  return knowledge ? knowledge->model.costFactors()
                   : std::vector<double>(configuration.CellSizeWeights.size(), 1.0);
}

std::string fill(ceres::Problem& problem, const ProblemInputs& inputs, std::size_t& groundTruth) {
  const pointToPlaneCostFunction::Run run{
      inputs.trajectory, inputs.weights(), inputs.configuration.InterpolationFlag,
      std::make_shared<const Projection>(projectionOf(inputs.trajectory.getMercator()))};
  const auto factors = inputs.costFactors();
  groundTruth = 0;
  auto fault = walkPlacedCorrespondences(inputs, [&](const PlacedCorrespondence& correspondence) {
    const auto sections = sectionsOf(correspondence);
    const auto blocks = parameterBlocks(inputs.parameters, sections);
    problem.AddResidualBlock(costFunction(functorOf(run, correspondence)),
                             lossFunction(correspondence.first.being.classification, factors),
                             blocks);
    holdSections(problem, inputs, sections, blocks);
    if (!correspondence.second) ++groundTruth;
  });
  if (fault.empty()) addPriors(problem, inputs);
  if (fault.empty()) holdGlobals(problem, inputs);
  return fault;
}

}  // namespace Velorn
