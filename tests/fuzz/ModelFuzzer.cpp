// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Section file, parameter file, its exact companion and strip ids are refused, or restored.
#include "tests/fuzz/FolderOfParts.h"
#include <velorn/SolverParameters.h>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  const auto folder = FolderOfParts::written(
      bytes, size, {"sections.txt", "parameters.txt", "strips.txt", "parameters.txt.exact"});
  Velorn::SolverParameters parameters({"strip_01.kx", "strip_02.kx"}, Velorn::InputParameter());
  parameters.restore(folder / "sections.txt", folder / "parameters.txt", folder / "strips.txt");
  return 0;
}
