// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/PriorCostFunction.h"

#include <algorithm>

#include "adjustment/model/Layout.h"
#include "adjustment/optimization/ParameterBlocks.h"

namespace Velorn {
namespace {

/// The block of an unknown, its size, and the place of the unknown in it.
struct BlockOfUnknown {
  double* block;
  int size;
  int entry;
};

BlockOfUnknown blockOf(Eigen::Index unknown, SolverParameters& parameters) {
  constexpr Eigen::Index ofSection = localParameters, ofPosition = positionParameters,
                         ofGlobal = globalBlock;
  const Eigen::Index section = unknown / ofSection;
  if (section < parameters.numberOfSectionsForAllStrips()) {
    Section its;
    its.sectionID = static_cast<std::uint32_t>(section);
    its.invalid = false;
    const auto blocks = parameterBlocks(parameters, {its});
    const Eigen::Index entry = unknown % ofSection;
    const bool isPosition = entry < ofPosition;
    return {blocks[isPosition ? 4 : 5], static_cast<int>(ofPosition),
            static_cast<int>(entry % ofPosition)};
  }
  const Eigen::Index global = unknown - ofSection * parameters.numberOfSectionsForAllStrips();
  return {parameterBlocks(parameters, {})[static_cast<std::size_t>(global / ofGlobal)],
          static_cast<int>(ofGlobal), static_cast<int>(global % ofGlobal)};
}

}  // namespace

PriorCostFunction::PriorCostFunction(PriorRows rows, std::vector<Place> places,
                                     const std::vector<int>& sizes)
    : rows_(std::move(rows)), places_(std::move(places)) {
  mutable_parameter_block_sizes()->assign(sizes.begin(), sizes.end());
  set_num_residuals(static_cast<int>(rows_.rows.rows()));
}

bool PriorCostFunction::Evaluate(double const* const* parameters, double* residuals,
                                 double** jacobians) const {
  Eigen::VectorXd values(static_cast<Eigen::Index>(places_.size()));
  for (std::size_t i = 0; i < places_.size(); ++i) {
    values[static_cast<Eigen::Index>(i)] = parameters[places_[i].block][places_[i].entry];
  }
  Eigen::VectorXd::Map(residuals, num_residuals()) = rows_.rows * values - rows_.expected;
  if (!jacobians) return true;
  const auto& sizes = parameter_block_sizes();
  for (std::size_t k = 0; k < sizes.size(); ++k) {
    if (jacobians[k]) std::fill_n(jacobians[k], num_residuals() * sizes[k], 0.0);
  }
  for (std::size_t i = 0; i < places_.size(); ++i) {
    const auto [block, entry] = places_[i];
    if (!jacobians[block]) continue;
    for (int row = 0; row < num_residuals(); ++row) {
      jacobians[block][row * sizes[block] + entry] = rows_.rows(row, static_cast<Eigen::Index>(i));
    }
  }
  return true;
}

void addPrior(PriorRows rows, SolverParameters& parameters, ceres::Problem& problem) {
  if (rows.unknowns.empty()) return;
  std::vector<double*> blocks;
  std::vector<int> sizes;
  std::vector<PriorCostFunction::Place> places;
  for (const Eigen::Index unknown : rows.unknowns) {
    const auto [block, size, entry] = blockOf(unknown, parameters);
    const auto known = std::ranges::find(blocks, block);
    places.push_back({static_cast<std::size_t>(known - blocks.begin()), entry});
    if (known != blocks.end()) continue;
    blocks.push_back(block);
    sizes.push_back(size);
  }
  problem.AddResidualBlock(new PriorCostFunction(std::move(rows), std::move(places), sizes),
                           nullptr, blocks);
}

}  // namespace Velorn
