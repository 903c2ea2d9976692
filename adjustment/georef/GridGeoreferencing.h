// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Georeferencing of the grid of a strip, between a container's loading and its saving.
#pragma once

#include <stdexcept>
#include <string>

namespace Strandel {
class Grid;
}

namespace Velorn {

class SolverParameters;
class Trajectory;

/// Which strip, and what is to be done to it.
struct StripTask {
  const SolverParameters& parameters;
  const Trajectory& trajectory;
  std::string file;    ///< of the strip, as messages name it
  unsigned index = 0;  ///< its place in the list of strips
  bool inverse = false;
  bool interpolationFlag = false;
};

/// Values that lie in the strip's file cannot be read; says which and why.
class UnreadableColumn : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Sets the world points and beam directions of all fragments from their scanner points or, for an
/// inverse task, the scanner points from the world points. Besides the arrays of one fragment only
/// what was computed is held in memory.
/// @return empty, or one message: what is missing, or the last one of the operations on points. The
///         fragments for which there is none have their new points.
/// @throws UnreadableColumn, std::bad_alloc
std::string georeference(Strandel::Grid& grid, const StripTask& task);

}  // namespace Velorn
