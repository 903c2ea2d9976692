// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/AdjustmentProblem.h"

#include <ceres/dynamic_autodiff_cost_function.h>
#include <ceres/loss_function.h>
#include <fmt/format.h>

#include "adjustment/correspondence/ClassCode.h"
#include "adjustment/optimization/CorrespondenceFolder.h"
#include "adjustment/optimization/ParameterBlocks.h"
#include "adjustment/optimization/PointToPlaneCostFunction.h"
#include "adjustment/optimization/SectionReport.h"

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
ceres::LossFunction* lossFunction(std::uint8_t classCode) {
  return classCode == firstClassCode ? nullptr : new ceres::HuberLoss(1.0);
}

class Filling {
 public:
  Filling(ceres::Problem& problem, const ProblemInputs& inputs)
      : problem_(problem),
        inputs_(inputs),
        run_{inputs.trajectory, inputs.configuration.CellSizeWeights,
             inputs.configuration.InterpolationFlag,
             std::make_shared<const Projection>(projectionOf(inputs.trajectory.getMercator()))} {}

  std::string add(const CorrespondenceFile& file, const CorrespondenceBlock& block) {
    for (std::uint32_t i = 0; i < block.size(); ++i) {
      const bool isAdded =
          block.isGroundTruth() ? addGroundTruth(file, block, i) : addPair(file, block, i);
      if (!isAdded) {
        return fmt::format(
            "CeresOptimization::run: {}: correspondence {}: a point lies in no section of its "
            "strip",
            file.path.string(), i);
      }
    }
    return {};
  }

  /// Unless there are no residuals, and so no blocks.
  void holdGlobals() {
    if (problem_.NumParameterBlocks() == 0) return;
    const auto blocks = parameterBlocks(inputs_.parameters, {});
    const auto& settings = inputs_.settings;
    const bool estimated[] = {settings.estimateOffsets, settings.estimateScales,
                              settings.estimateMisalignment, settings.estimateLeverArm};
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      if (!estimated[i]) problem_.SetParameterBlockConstant(blocks[i]);
    }
  }

  std::size_t groundTruth() const { return groundTruth_; }

 private:
  bool addPair(const CorrespondenceFile& file, const CorrespondenceBlock& block,
               std::uint32_t index) {
    const auto [first, second] = block.get(index);
    const auto i = sectionOf(file.firstStrip, first), j = sectionOf(file.secondStrip, second);
    if (i.invalid || j.invalid) return false;
    add(new pointToPlaneCostFunction(run_, {first, block.sideI().weekNumber, i},
                                     {second, block.sideJ().weekNumber, j}),
        first.classification, {i, j});
    return true;
  }

  bool addGroundTruth(const CorrespondenceFile& file, const CorrespondenceBlock& block,
                      std::uint32_t index) {
    const auto [first, second] = block.get(index);
    const auto i = sectionOf(file.firstStrip, first);
    if (i.invalid) return false;
    add(new pointToPlaneCostFunction(run_, {first, block.sideI().weekNumber, i},
                                     second.worldPosition),
        first.classification, {i});
    ++groundTruth_;
    return true;
  }

  Section sectionOf(unsigned int strip, const SphericalBeing& being) const {
    return inputs_.parameters.getSectionInStrip(strip, being.gpsTime);
  }

  void add(pointToPlaneCostFunction* functor, std::uint8_t classCode,
           const std::vector<Section>& sections) {
    const auto blocks = parameterBlocks(inputs_.parameters, sections);
    problem_.AddResidualBlock(costFunction(functor), lossFunction(classCode), blocks);
    for (std::size_t i = 0; i < sections.size(); ++i) {
      if (!isConstant(sections[i])) continue;
      for (const std::size_t block : {4 + 2 * i, 5 + 2 * i}) {
        problem_.SetParameterBlockConstant(blocks[block]);
      }
    }
  }

  bool isConstant(const Section& section) const {
    return inputs_.correspondencesPerSection.at(section.sectionID) < fewestCorrespondences ||
           inputs_.configuration.LockedStrips.contains(static_cast<int>(section.stripIndex));
  }

  ceres::Problem& problem_;
  const ProblemInputs& inputs_;
  pointToPlaneCostFunction::Run run_;
  std::size_t groundTruth_ = 0;
};

}  // namespace

std::string fill(ceres::Problem& problem, const ProblemInputs& inputs, std::size_t& groundTruth) {
  Filling filling(problem, inputs);
  auto fault =
      walkCorrespondences(inputs.configuration, "feeding ceres #",
                          [&](const CorrespondenceFile& file, const CorrespondenceBlock& block) {
                            return filling.add(file, block);
                          });
  if (fault.empty()) filling.holdGlobals();
  groundTruth = filling.groundTruth();
  return fault;
}

}  // namespace Velorn
