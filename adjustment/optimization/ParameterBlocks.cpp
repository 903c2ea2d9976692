// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/ParameterBlocks.h"

#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/model/Layout.h"

namespace Velorn {
namespace {

constexpr std::size_t ofSection = localParameters, ofPosition = positionParameters,
                      globals = globalParameters;

}  // namespace

std::vector<double*> parameterBlocks(SolverParameters& parameters,
                                     const std::vector<Section>& sections) {
  auto& unknowns = parameters.parameters;
  if (unknowns.size() < globals) {
    throw std::out_of_range("parameterBlocks: the parameters have no sections yet");
  }
  double* const global = unknowns.data() + unknowns.size() - globals;
  std::vector<double*> blocks{global, global + 3, global + 6, global + 9};
  for (const Section& section : sections) {
    const std::size_t first = ofSection * std::size_t{section.sectionID};
    if (section.invalid || first + ofSection + globals > unknowns.size()) {
      throw std::out_of_range(fmt::format("parameterBlocks: section {} of strip {} has no unknowns",
                                          section.sectionID, section.stripIndex));
    }
    blocks.push_back(unknowns.data() + first);
    blocks.push_back(unknowns.data() + first + ofPosition);
  }
  return blocks;
}

std::span<const double> unknownsOf(SolverParameters& parameters) {
  const std::size_t count = parameters.getNumberOfParameters();
  return {parameterBlocks(parameters, {}).front() + globals - count, count};
}

}  // namespace Velorn
