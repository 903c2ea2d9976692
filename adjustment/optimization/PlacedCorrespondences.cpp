// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/PlacedCorrespondences.h"

#include <fmt/format.h>

#include "adjustment/optimization/CorrespondenceFolder.h"
#include "adjustment/optimization/ParameterBlocks.h"
#include "adjustment/optimization/PriorCostFunction.h"
#include "adjustment/optimization/SectionReport.h"

namespace Velorn {
namespace {

PlacedPoint placed(const ProblemInputs& inputs, unsigned int strip, const SphericalBeing& being,
                   unsigned int week) {
  return {being, week, inputs.parameters.getSectionInStrip(strip, being.gpsTime)};
}

/// @return nothing for a point in no section
std::optional<PlacedCorrespondence> placed(const ProblemInputs& inputs,
                                           const CorrespondenceFile& file,
                                           const CorrespondenceBlock& block, std::uint32_t index) {
  const auto [first, second] = block.get(index);
  PlacedCorrespondence correspondence{
      placed(inputs, file.firstStrip, first, block.sideI().weekNumber), {}, {}};
  if (block.isGroundTruth()) {
    correspondence.groundTruth = second.worldPosition;
  } else {
    correspondence.second = placed(inputs, file.secondStrip, second, block.sideJ().weekNumber);
  }
  for (const auto& section : sectionsOf(correspondence)) {
    if (section.invalid) return {};
  }
  return correspondence;
}

}  // namespace

bool isConstant(const ProblemInputs& inputs, const Section& section) {
  const bool isLow = !inputs.knowledge &&
                     inputs.correspondencesPerSection.at(section.sectionID) < fewestCorrespondences;
  return isLow || inputs.configuration.LockedStrips.contains(static_cast<int>(section.stripIndex));
}

std::string walkPlacedCorrespondences(
    const ProblemInputs& inputs, const std::function<void(const PlacedCorrespondence&)>& visit) {
  return walkCorrespondences(
      inputs.configuration, "feeding ceres #",
      [&](const CorrespondenceFile& file, const CorrespondenceBlock& block) {
        for (std::uint32_t i = 0; i < block.size(); ++i) {
          const auto correspondence = placed(inputs, file, block, i);
          if (!correspondence) {
            return fmt::format(
                "CeresOptimization::run: {}: correspondence {}: a point lies in no section of its "
                "strip",
                file.path.string(), i);
          }
          visit(*correspondence);
        }
        return std::string();
      });
}

std::vector<Section> sectionsOf(const PlacedCorrespondence& correspondence) {
  std::vector<Section> sections{correspondence.first.section};
  if (correspondence.second) sections.push_back(correspondence.second->section);
  return sections;
}

void holdSections(ceres::Problem& problem, const ProblemInputs& inputs,
                  const std::vector<Section>& sections, const std::vector<double*>& blocks) {
  for (std::size_t i = 0; i < sections.size(); ++i) {
    if (!isConstant(inputs, sections[i])) continue;
    for (const std::size_t block : {4 + 2 * i, 5 + 2 * i}) {
      problem.SetParameterBlockConstant(blocks[block]);
    }
  }
}

void addPriors(ceres::Problem& problem, const ProblemInputs& inputs) {
  if (!inputs.knowledge) return;
  auto& parameters = inputs.parameters;
  for (auto& prior : rescaled(inputs.knowledge->priors, inputs.knowledge->model.priorFactors())) {
    for (auto* const rows : {&prior.rows, &prior.joints}) {
      for (auto& row : *rows) addPrior(std::move(row), parameters, problem);
    }
  }
  for (const auto& strip : parameters.getStripSections()) {
    for (const auto& [start, section] : strip.sections) {
      if (!isConstant(inputs, section)) continue;
      const auto blocks = parameterBlocks(parameters, {section});
      for (const std::size_t block : {4U, 5U}) {
        if (problem.HasParameterBlock(blocks[block])) {
          problem.SetParameterBlockConstant(blocks[block]);
        }
      }
    }
  }
}

std::array<bool, 4> estimatedGlobals(const AdjustmentSettings& settings) {
  return {settings.estimateOffsets, settings.estimateScales, settings.estimateMisalignment,
          settings.estimateLeverArm};
}

void holdGlobals(ceres::Problem& problem, const ProblemInputs& inputs) {
  if (problem.NumParameterBlocks() == 0) return;
  const auto blocks = parameterBlocks(inputs.parameters, {});
  const auto estimated = estimatedGlobals(inputs.settings);
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (!estimated[i]) problem.SetParameterBlockConstant(blocks[i]);
  }
}

}  // namespace Velorn
