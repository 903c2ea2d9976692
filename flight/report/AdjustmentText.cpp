// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/AdjustmentText.h"

#include <fmt/format.h>

namespace Velorn::Flights {

namespace {

using Velorn::PhaseFigures;

constexpr double centimetres = 100.0;

std::string row(const char* name, const OrvekStatistic::Summary& before,
                const OrvekStatistic::Summary& after) {
  const auto& [b, a] = std::pair(before.moments, after.moments);
  if (b.count == 0) return fmt::format("{:<16}{:>10}\n", name, 0);
  return fmt::format("{:<16}{:>10}{:>12.2f}{:>10.2f}{:>12.2f}{:>10.2f}\n", name, b.count,
                     centimetres * b.rms, centimetres * before.nmad, centimetres * a.rms,
                     centimetres * after.nmad);
}

std::string fit(const PhaseFigures& before, const PhaseFigures& after) {
  return fmt::format("{:<16}{:>10}{:>12}{:>10}{:>12}{:>10}\n", "point to plane", "number",
                     "RMS before", "NMAD", "RMS after", "NMAD [cm]") +
         row("strip pairs", before.pairs, after.pairs) +
         row("ground truth", before.groundTruth, after.groundTruth);
}

std::string solverLine(const Velorn::SolverEnd& end) {
  return fmt::format(
      "solver: {} after {} steps in {:.1f} s, cost {:.6g} to {:.6g}; {} residuals, "
      "{} of {} unknowns estimated\n",
      end.termination, end.successfulSteps, end.seconds, end.initialCost, end.finalCost,
      end.residuals, end.estimated, end.parameters);
}

std::string constantSections(const AdjustmentOutcome& outcome) {
  std::string text;
  for (const auto& section : outcome.result.sections) {
    if (!section.isConstant()) continue;
    const char* const why = section.isLocked ? (section.isLow ? "locked, and weak" : "locked")
                                             : "too few correspondences";
    text +=
        fmt::format("held constant: section {} of {} ({} correspondences): {}\n", section.section,
                    outcome.strips.at(section.strip), section.correspondences, why);
  }
  return text;
}

}  // namespace

std::string summaryOf(const AdjustmentOutcome& outcome, bool isControlled) {
  const auto& result = outcome.result;
  std::string text;
  if (result.after.pairs.moments.count > 0 || result.after.groundTruth.moments.count > 0) {
    text += fit(result.before, result.after);
  }
  text += constantSections(outcome) + solverLine(result.end);
  if (!isControlled) {
    text +=
        "No ground truth was asked for: absolute position and tilt of the block are not "
        "controlled.\n";
  }
  return text;
}

}  // namespace Velorn::Flights
