// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// An adjustment in a few lines for people: how well the strips fit before and after, how the solver
// ended, and which sections were held constant and why.
#include <fmt/format.h>

#include "flight/report/RedundancyText.h"
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {
namespace {

constexpr double centimetres = 100.0;

std::string row(const char* name, const Fit& before, const Fit& after) {
  if (before.count == 0) return fmt::format("{:<16}{:>10}\n", name, 0);
  return fmt::format("{:<16}{:>10}{:>12.2f}{:>10.2f}{:>12.2f}{:>10.2f}\n", name, before.count,
                     centimetres * before.rms, centimetres * before.nmad, centimetres * after.rms,
                     centimetres * after.nmad);
}

std::string fit(const FitReport& before, const FitReport& after) {
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

std::string heldSections(const std::vector<HeldSection>& sections) {
  std::string text;
  for (const auto& section : sections) {
    const char* const why = section.isLocked ? "locked" : "too few correspondences";
    text += fmt::format("held constant: section {} of {} ({} correspondences): {}\n",
                        section.section, section.strip, section.correspondences, why);
  }
  return text;
}

}  // namespace

std::string textOf(const AdjustmentReport& adjustment, bool isControlled) {
  std::string text;
  if (adjustment.after.pairs.count > 0 || adjustment.after.groundTruth.count > 0) {
    text += fit(adjustment.before, adjustment.after);
  }
  text += heldSections(adjustment.heldSections) + solverLine(adjustment.solver);
  for (const auto& line : redundancyWarnings(adjustment)) text += "WARNING: " + line + "\n";
  if (!isControlled) {
    text +=
        "No ground truth was asked for: absolute position and tilt of the block are not "
        "controlled.\n";
  }
  return text;
}

}  // namespace Velorn::Flights
