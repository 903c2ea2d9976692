// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How well the strips fit before an adjustment ("Bevore") or after it ("After"), and how far it
// moved them.
//
//     Velorn::AdjustmentStatistic after("After", files.getStripFiles(), configuration);
//     for (...) fault = after.addData(parameters, trajectory, block, first, second, true);
//     after.hist();
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "adjustment/statistics/MovementHistogram.h"
#include "platform/geomra/PhysicalSpace.h"
#include "platform/orvek/Statistic.h"
#include <velorn/CorrespondenceBlock.h>
#include <velorn/InputParameter.h>
#include <velorn/PhaseFigures.h>
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>

namespace Velorn {

/// The statistics of one phase. Keeps 4 bytes per correspondence. Not for use by several threads at
/// once.
class AdjustmentStatistic {
 public:
  /// @param name           of the phase, part of the files' names: "Bevore" or "After"
  /// @param stripFiles     a strip is known by its place in this list
  /// @param configuration  copied
  AdjustmentStatistic(std::string name, const std::vector<std::filesystem::path>& stripFiles,
                      const InputParameter& configuration);

  /// Takes in all correspondences of a block: their differences, and the movements of their points
  /// when they are georeferenced anew. The normal and the class are those of the first side; with a
  /// zero normal there is no difference, which counts among those that are not numbers.
  /// @param firstStrip   of side I
  /// @param secondStrip  of side J; not read for a block with the ground truth, whose side J is
  ///                     taken as it is stored
  /// @param adjusted     false: the points as they are stored; true: georeferenced with
  /// `parameters`
  /// @return empty, or one message; nothing was taken in then: "AdjustmentStatistic::addData
  ///         differnet size" for sides of unequal length, the text of scanner2world (the console is
  ///         told the file and the strip), or one that names the file and the fault: columns of
  ///         unequal length, a strip beyond the list, a normal that is not finite
  std::string addData(const SolverParameters& parameters, const Trajectory& trajectory,
                      const CorrespondenceBlock& block, unsigned firstStrip, unsigned secondStrip,
                      bool adjusted);

  /// Writes the pages of this phase into the statistic folder, which is made if it is missing, and
  /// removes the text files there from which pages are drawn (StatisticFolder.h). Whatever fails is
  /// told on the console.
  void hist();

  /// Of all that was taken in so far.
  PhaseFigures figures();

 private:
  using Points = std::vector<Geomra::PhysicalSpace::point>;

  std::string faultOf(const CorrespondenceBlock& block, unsigned firstStrip,
                      unsigned secondStrip) const;
  std::string georeference(const SolverParameters& parameters, const Trajectory& trajectory,
                           const std::filesystem::path& file, const SphericalBeingData& side,
                           unsigned strip, Points& world) const;
  void addMovements(const std::filesystem::path& file, const Points& stored, const Points& moved,
                    unsigned strip);
  void addDifferences(const CorrespondenceBlock& block, const Points& first, const Points& second);
  void addClasses(const std::vector<std::uint8_t>& classes);

  std::string name_;
  std::vector<std::filesystem::path> stripFiles_;
  InputParameter configuration_;
  OrvekStatistic::Statistic groundTruth_{-2.0, 2.0, 0.02};
  OrvekStatistic::Statistic pairs_{-2.0, 2.0, 0.02};
  std::vector<std::uint64_t> classCounts_;
  std::vector<MovementHistogram> vertical_, horizontal_;  // one per strip
};

}  // namespace Velorn
