// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How far the patches of the ground truth lie off the strips, by the blocks of an adjustment.
#pragma once

#include <filesystem>
#include <vector>

#include "flight/matching/GroundTruth.h"
#include "flight/surfaces/Solution.h"
#include <velorn/InputParameter.h>
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

/// Of the patches that have correspondences, by id: medians of n · (Q − P) over those of all
/// strips, with unit normals. Correspondences with points that are none of the ground truth's, and
/// those whose time the model does not hold, do not count.
/// @param blocks  files; those of pairs of strips are passed over
/// @throws Error that names the file
std::vector<ControlMisfit> controlMisfits(const std::vector<std::filesystem::path>& blocks,
                                          const GroundTruth& known, const Solution& adjusted,
                                          const Velorn::InputParameter& configuration);

}  // namespace Velorn::Flights
