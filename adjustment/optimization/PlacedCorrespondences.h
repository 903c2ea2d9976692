// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The correspondences of a run with the sections that their points lie in, and which unknowns of a
// problem are not estimated.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>

#include <ceres/problem.h>

#include "adjustment/optimization/AdjustmentProblem.h"
#include <velorn/Section.h>
#include <velorn/SphericalBeing.h>

namespace Velorn {

/// One point with its GPS week and section.
struct PlacedPoint {
  SphericalBeing being;
  unsigned int week;
  Section section;
};

/// Two corresponding points, or a point and its ground truth.
struct PlacedCorrespondence {
  PlacedPoint first;
  std::optional<PlacedPoint> second;         ///< none for the ground truth
  Geomra::PhysicalSpace::point groundTruth;  ///< set without a second point
};

/// Hands on every correspondence of the run's folder, in the order of the files' names.
/// @return empty, or the first fault: a file, a point in no section
/// @throws as CeresOptimization::run
std::string walkPlacedCorrespondences(
    const ProblemInputs& inputs, const std::function<void(const PlacedCorrespondence&)>& visit);

/// The sections of a correspondence.
std::vector<Section> sectionsOf(const PlacedCorrespondence& correspondence);

/// Whether the unknowns of a section are not estimated: its strip is locked, or its correspondences
/// are few and nothing is known before.
bool isConstant(const ProblemInputs& inputs, const Section& section);

/// Whether offsets, scales, misalignment and lever arm are estimated.
std::array<bool, 4> estimatedGlobals(const AdjustmentSettings& settings);

/// Holds weak and locked ones of these sections constant.
/// @param blocks  as parameterBlocks gives them for the sections
void holdSections(ceres::Problem& problem, const ProblemInputs& inputs,
                  const std::vector<Section>& sections, const std::vector<double*>& blocks);

/// Adds what is known before, and holds the sections of locked strips constant that only this
/// brings into the problem.
void addPriors(ceres::Problem& problem, const ProblemInputs& inputs);

/// Holds the global blocks constant that are not to be estimated, unless there are no residuals,
/// and so no blocks.
void holdGlobals(ceres::Problem& problem, const ProblemInputs& inputs);

}  // namespace Velorn
