// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// One adjustment: from the correspondences of a folder to the unknowns of all strips.
//
//     const auto adjustment = std::make_shared<Velorn::CeresOptimization>(parameters, trajectory,
//                                                                         configuration, files);
//     const std::string fault = adjustment->run();
//     if (fault.empty() && adjustment->result().end.isConvergence()) ...
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/kestrum/Ownership.h"
#include <velorn/APrioriKnowledge.h>
#include <velorn/AdjustmentResult.h>
#include <velorn/FileContainer.h>
#include <velorn/InputParameter.h>
#include <velorn/SolverParameters.h>
#include <velorn/Trajectory.h>
#include <velorn/Visibility.h>

namespace Velorn {

class CorrespondenceBlock;
struct CorrespondenceFile;

/// How residuals and their derivatives are computed. Both lead along the same path to the same
/// result, but for rounding.
enum class Evaluation {
  Reference,  ///< one by one, with the solver's automatic derivatives
  Condensed   ///< many at a time, by the engine: some forty times as fast, in a tenth of the
              ///< memory
};

/// What a host may want otherwise. The defaults estimate everything.
struct AdjustmentSettings {
  bool estimateOffsets = true;  ///< of range and angles
  bool estimateScales = true;   ///< of range and angles
  bool estimateMisalignment = true;
  bool estimateLeverArm = true;
  Evaluation evaluation = Evaluation::Reference;
  /// Adds rows for what is known before, and weighs everything by standard deviations, which are
  /// estimated from the residuals, in place of the configuration's weights. Sections with few
  /// correspondences are then estimated, too, and the solver goes on until its cost changes by no
  /// more than 1e-7 of it, without inner iterations. The parameters must know when their strips
  /// begin and end.
  std::optional<APrioriKnowledge> knowledge;
  /// Sums of unknowns whose standard deviations the result shall have: place in the vector of
  /// unknowns -> factor. Only with `knowledge`.
  std::vector<std::map<std::ptrdiff_t, double>> sums;
  /// Correspondences with the ground truth that a run needs. 0 makes a relative adjustment:
  /// nothing then controls absolute position and tilt.
  unsigned int fewestGroundTruth = 100;
  bool drawsPlots = true;  ///< into the statistic folder
  /// Asked before the solver begins and after each of its steps, on the caller's thread; true ends
  /// the run. Must not throw. Empty: never.
  std::function<bool()> isCancelled;
};

/// The driver. It keeps references only: all four must outlive it. It runs on the caller's thread;
/// the solver takes one thread fewer than OpenMP's maximum, which must therefore be at least 2.
class VELORN_EXPORT CeresOptimization : public Kestrum::ReferenceBase<CeresOptimization> {
 public:
  /// @param parameters  with sections; receives the estimated unknowns
  /// @param trajectory  imported
  CeresOptimization(SolverParameters& parameters, const Trajectory& trajectory,
                    const InputParameter& configuration, const FileContainer& files);

  /// To be set before run.
  AdjustmentSettings settings;

  /// Checks the correspondences, solves, writes the parameter file, the solver's status and the
  /// statistics. A second call goes on from the unknowns that the first one left.
  /// A cancelled run writes no result and leaves the unknowns as they were.
  /// @return empty, or the first fault. A solver that fails for another reason than its number of
  ///         iterations, so for want of a thread, counts as finished, and the unknowns that are
  ///         written are those before it: the console is warned, and result() tells.
  /// @throws std::filesystem::filesystem_error, std::ios_base::failure and std::out_of_range for a
  ///         folder or a file that cannot be used, and a number in a file name that does not fit
  std::string run();

  /// False once a run's solver has ended with anything but "NO_CONVERGENCE" and a cancellation.
  bool failed() const { return !solved; }

  /// Reads all correspondences and counts them per section and class; writes the section listing
  /// and the histogram into the status folder.
  /// @param correspondencesPerSection  one zero per section of the parameters
  /// @return empty when the run may go on
  /// @throws as run
  std::string check(std::vector<unsigned>& correspondencesPerSection);

  /// Compares the correspondences as stored with those under the present unknowns, and draws the
  /// plots of the statistic folder.
  /// @throws as run
  std::string doStatistics() const;

  /// Of the last run; the default before.
  const AdjustmentResult& result() const { return outcome; }

 private:
  struct Counts;

  std::string faultOfInputs(std::size_t counters) const;
  std::string countCorrespondences(Counts& counts) const;
  void count(const CorrespondenceFile& file, const CorrespondenceBlock& block, std::uint32_t index,
             Counts& counts) const;
  bool reportSections(const std::vector<unsigned>& correspondencesPerSection,
                      const InputParameter& configuration, const SolverParameters& model,
                      const FileContainer& inputs);
  void reportNumbers(const Counts& counts) const;
  std::string solve(const std::vector<unsigned>& correspondencesPerSection,
                    std::string& fullReport);
  void warnOfFailure() const;
  void warnOfResidualRatio() const;
  std::string computeStatistics(AdjustmentResult& figures) const;
  void writeStatus(const std::string& name, const std::string& text, bool echo = false) const;
  void removeStatus(const std::string& name) const;

  SolverParameters& solverParameters;
  const Trajectory& trajectory;
  const InputParameter& inputParameter;
  const FileContainer& fileContainer;
  bool solved = false;
  AdjustmentResult outcome;
};

}  // namespace Velorn
