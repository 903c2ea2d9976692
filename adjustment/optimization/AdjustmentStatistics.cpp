// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The statistics of CeresOptimization: all correspondences before and after.
#include "adjustment/optimization/CorrespondenceFolder.h"
#include "adjustment/statistics/AdjustmentStatistic.h"
#include <velorn/CeresOptimization.h>

namespace Velorn {

std::string CeresOptimization::doStatistics() const {
  AdjustmentResult notKept;
  return computeStatistics(notKept);
}

std::string CeresOptimization::computeStatistics(AdjustmentResult& figures) const {
  const auto strips = fileContainer.getStripFiles();
  AdjustmentStatistic before("Bevore", strips, inputParameter);
  AdjustmentStatistic after("After", strips, inputParameter);
  auto fault =
      walkCorrespondences(inputParameter, "statistic #",
                          [&](const CorrespondenceFile& file, const CorrespondenceBlock& block) {
                            const auto add = [&](AdjustmentStatistic& phase, bool adjusted) {
                              return phase.addData(solverParameters, trajectory, block,
                                                   file.firstStrip, file.secondStrip, adjusted);
                            };
                            auto text = add(before, false);
                            return text.empty() ? add(after, true) : text;
                          });
  if (!fault.empty()) return fault;
  if (settings.drawsPlots) {
    before.hist();
    after.hist();
  }
  figures.before = before.figures();
  figures.after = after.figures();
  return {};
}

}  // namespace Velorn
