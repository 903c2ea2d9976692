// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Parameters with any values, brought in by the files of an adjustment.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "tests/adjustment/model/ParameterTexts.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/SolverParameters.h>

/// LINEAR sections of one strip, or one for each of several strips.
/// @param starts  of the sections [s], whole numbers
/// @param values  24 per section and 12
inline Velorn::SolverParameters restoredModel(const std::vector<int>& starts,
                                              const std::vector<double>& values,
                                              const std::vector<std::filesystem::path>& strips = {
                                                  "strip.kx"}) {
  const TemporaryFolder folder;
  std::string sections, ids;
  for (std::size_t i = 0; i < starts.size(); ++i) {
    sections += "StripID: " + std::to_string(strips.size() > 1 ? i : 0) +
                ", sectionID: " + std::to_string(i) + ", t: " + std::to_string(starts[i]) +
                ".000000000000000, type: LINEAR\n";
  }
  for (std::size_t i = 0; i < strips.size(); ++i) {
    ids += "id: " + std::to_string(i) + " file: " + strips[i].string() + " type: strip\n";
  }
  writeContent(folder / "sections", sections);
  writeContent(folder / "parameters", parameterText(values));
  writeContent(folder / "parameters.exact", companionBytes(values));
  writeContent(folder / "ids", ids);
  Velorn::SolverParameters model(strips, Velorn::InputParameter());
  const auto fault = model.restore(folder / "sections", folder / "parameters", folder / "ids");
  if (!fault.empty()) throw std::runtime_error(fault);
  return model;
}
