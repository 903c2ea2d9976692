// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The parameter file: two header lines, an empty one, then the unknowns with 15 decimals, a line
// per section and one for the global ones.
#pragma once

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace Velorn {

/// @param parameters  at least the global ones
void writeParameters(std::ostream& file, const std::vector<double>& parameters);

/// Reads a file of exactly that form.
/// @return empty, or "<file>: line <n>: <fault>"; `parameters` is then as before
std::string readParameterFile(const std::filesystem::path& path, std::vector<double>& parameters);

}  // namespace Velorn
