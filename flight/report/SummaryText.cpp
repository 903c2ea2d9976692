// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/SummaryText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <utility>

#include <fmt/format.h>

#include "flight/report/ControlText.h"

namespace Velorn::Flights {

namespace {

constexpr double centimetres = 100.0;
constexpr std::array<const char*, 5> classNames{"ground_truth", "roof", "slope", "bed", "flat"};

/// Right-aligned, "-" where it is not known.
std::string number(double value, double factor, int width, int decimals) {
  if (!std::isfinite(value)) return fmt::format("{:>{}}", "-", width);
  return fmt::format("{:>{}.{}f}", factor * value, width, decimals);
}

std::string sumText(const PerClass& counts) {
  return std::to_string(std::accumulate(counts.begin(), counts.end(), std::size_t{0}));
}

std::string stripTable(const RunReport& run) {
  std::string text = fmt::format("{:<4}{:<28}{:>12}{:>16}{:>16}\n", "id", "strip", "points",
                                 "planar surface", "in the raster");
  for (const auto& strip : run.strips) {
    const std::string name = strip.file.filename().string();
    std::string surface = "-", raster = "-";
    if (run.rasterizing) {
      for (const auto& its : run.rasterizing->strips) {
        if (its.name != name) continue;
        surface = sumText(its.counts.surface);
        raster = sumText(its.counts.representatives);
      }
    }
    text += fmt::format("{:<4}{:<28}{:>12}{:>16}{:>16}\n", strip.id, name, strip.points, surface,
                        raster);
  }
  return text;
}

std::string funnelRow(const std::string& name, const Funnel& funnel) {
  std::string text = fmt::format("{:<16}", name);
  for (const auto count : {funnel.candidates, funnel.tooFar, funnel.angle, funnel.roughness,
                           funnel.outlier, funnel.thinned, funnel.kept}) {
    text += fmt::format("{:>11}", count);
  }
  return text + "\n";
}

std::string funnelHead(const char* what) {
  std::string text = fmt::format("{:<16}", what);
  for (const char* title :
       {"candidates", "too far", "angle", "rough", "outlier", "thinned", "kept"}) {
    text += fmt::format("{:>11}", title);
  }
  return text + "\n";
}

/// Rows in the order in which their names came first.
class FunnelTable {
 public:
  void add(const std::string& name, const Funnel& funnel) {
    const auto row = std::ranges::find(rows_, name, &Row::first);
    if (row == rows_.end()) {
      rows_.emplace_back(name, funnel);
    } else {
      row->second += funnel;
    }
  }
  std::string text(const char* what) const {
    std::string all = funnelHead(what);
    for (const auto& [name, funnel] : rows_) all += funnelRow(name, funnel);
    return all;
  }

 private:
  using Row = std::pair<std::string, Funnel>;
  std::vector<Row> rows_;
};

/// Where the candidates of the last matching went, by class and by pair.
std::string funnelTables(const MatchReport& matching) {
  FunnelTable classes, pairs;
  for (const auto& pair : matching.pairs) {
    pairs.add(pair.isGroundTruth ? fmt::format("{} - control", pair.i)
                                 : fmt::format("{} - {}", pair.i, pair.j),
              pair.sum());
    for (std::size_t i = 0; i < pair.classes.size(); ++i) {
      if (pair.classes[i].candidates > 0) classes.add(classNames[i], pair.classes[i]);
    }
  }
  return classes.text("class") + "\n" + pairs.text("strips");
}

std::string fitRow(const char* name, const Fit& before, const Fit& after) {
  std::string text = fmt::format("{:<14}{:>9}", name, before.count);
  for (const auto* phase : {&before, &after}) {
    for (const double figure : {phase->rms, phase->nmad, phase->q05, phase->q95}) {
      text += number(figure, centimetres, 9, 2);
    }
  }
  return text + "\n";
}

std::string fitTable(const FitReport& before, const FitReport& after) {
  return fmt::format("{:<14}{:>9}{:>36}{:>36}\n", "fit [cm]", "", "---- as delivered ----",
                     "---- adjusted ----") +
         fmt::format("{:<14}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}\n", "point to plane",
                     "number", "RMS", "NMAD", "5 %", "95 %", "RMS", "NMAD", "5 %", "95 %") +
         fitRow("strip pairs", before.pairs, after.pairs) +
         fitRow("ground truth", before.groundTruth, after.groundTruth);
}

std::string globalsRow(const char* name, const GlobalCorrections::Three& three,
                       std::array<const char*, 3> parts, std::array<const char*, 3> units,
                       int decimals) {
  std::string text = fmt::format("{:<22}", name);
  for (std::size_t i = 0; i < 3; ++i) {
    text += fmt::format("{:>14} {}{}", parts[i], number(three[i], 1.0, 11, decimals),
                        *units[i] ? std::string(" ") + units[i] : "");
  }
  return text + "\n";
}

std::string sumsText(const std::vector<EstimatedSum>& sums) {
  std::string text;
  for (const auto& sum : sums) {
    text += fmt::format("  {:<10}{} +-{} {}\n", sum.name, number(sum.value, 1.0, 11, 4),
                        number(sum.sigma, 1.0, 8, 4), sum.unit);
  }
  return text.empty() ? text
                      : "what the flight tells of the scanner, with standard deviations\n" + text;
}

std::string deviationsText(const std::vector<DeviationReport>& groups) {
  if (groups.empty()) return {};
  std::string text = fmt::format("{:<18}{:>10}{:>10}{:>9}{:>11}{:>12}\n", "standard deviations",
                                 "expected", "found", "number", "worth one", "redundancy");
  for (const auto& group : groups) {
    const bool isLength = !group.unit.empty();
    const double unit = isLength ? centimetres : 1.0;
    text +=
        fmt::format("  {:<17}{}{}{} {:>8}{}{}\n", group.name, number(group.expected, unit, 9, 2),
                    number(group.sigma, unit, 10, 2), isLength ? " cm" : "   ", group.count,
                    number(group.designEffect, 1.0, 8, 1), number(group.redundancy, 1.0, 12, 1));
  }
  return text;
}

std::string globalsTable(const GlobalCorrections& globals) {
  return globalsRow("offsets", globals.offsets, {"range", "forward angle", "scan angle"},
                    {"m", "deg", "deg"}, 6) +
         globalsRow("scales - 1", globals.scales, {"range", "forward angle", "scan angle"},
                    {"", "", ""}, 8) +
         globalsRow("misalignment", globals.misalignment, {"roll", "pitch", "yaw"},
                    {"deg", "deg", "deg"}, 6) +
         globalsRow("lever arm", globals.leverArm, {"forward", "right", "down"}, {"m", "m", "m"},
                    4);
}

double farthestForwardOf(const std::vector<StripFacts>& strips) {
  double farthest = 0.0;
  for (const auto& strip : strips) farthest = std::max(farthest, strip.farthestForward);
  return farthest;
}

std::string solverText(const AdjustmentReport& adjustment) {
  const auto& solver = adjustment.solver;
  std::string text = fmt::format(
      "solver: {} after {} steps in {:.1f} s; {} residuals, {} of {} unknowns estimated\n",
      solver.termination, solver.successfulSteps, solver.seconds, solver.residuals,
      solver.estimated, solver.parameters);
  for (const auto& section : adjustment.heldSections) {
    text += fmt::format("held constant: section {} of {} with {} correspondences: {}\n",
                        section.section, section.strip, section.correspondences,
                        section.isLocked ? "locked" : "too few correspondences");
  }
  return text;
}

std::string stabilityText(const StabilityReport& stability) {
  std::string text = fmt::format(
      "stability, {} starts {:.1f} cm beside the result: points within{} cm\n", stability.starts,
      centimetres * stability.length, number(stability.points, centimetres, 6, 2));
  for (const auto& sum : stability.sums) {
    text += fmt::format("  {:<13}{} {:<4} others from{} to{}\n", sum.name,
                        number(sum.value, 1.0, 10, 4), sum.unit, number(sum.low, 1.0, 10, 4),
                        number(sum.high, 1.0, 10, 4));
  }
  return text;
}

std::string datumText(const DatumReport& datum) {
  std::string text;
  for (const auto& line : datum.fixedBy) text += "datum: " + line + "\n";
  for (const auto& line : datum.warnings) text += "WARNING: " + line + "\n";
  return text;
}

std::string roundsText(const std::vector<RoundReport>& rounds) {
  std::string text;
  for (const auto& round : rounds) {
    text += fmt::format("round {}{}{}:", round.number, round.isCoarse() ? ", coarse" : "",
                        round.isTakenBack ? ", taken back" : "");
    if (round.matching) {
      text += fmt::format(" search radius {:.2f} m, {} correspondences",
                          round.matching->searchRadius, round.matching->correspondences);
    }
    if (round.adjustment) {
      text += fmt::format(", pairs fit to{} cm",
                          number(round.adjustment->after.pairs.rms, centimetres, 6, 2));
      if (std::isfinite(round.adjustment->moved)) {
        text += fmt::format(", points moved by{} cm",
                            number(round.adjustment->moved, centimetres, 7, 2));
      }
    }
    text += "\n";
  }
  return text;
}

/// As the last round has it.
std::string controlText(const RunReport& run) {
  if (run.rounds.empty() || !run.rounds.back().matching) return {};
  const auto table =
      controlTable(*run.rounds.back().matching, run.adjustment ? &*run.adjustment : nullptr);
  return table.empty() ? table : "\n" + table;
}

}  // namespace

std::string idleScaleText(double scale, double farthestForward) {
  constexpr double ofNoSensor = 0.01, tellable = 0.01;
  const double moved = std::abs(scale) * farthestForward;
  if (!(std::abs(scale) >= ofNoSensor) || !(moved <= tellable)) return {};
  return fmt::format(
      "The scanner looks at most {:.4f} m forward: its forward angle's scale moves no point by "
      "more than {:.4f} m.\n",
      farthestForward, moved);
}

std::string textOf(const ScaleReport& scale) {
  return fmt::format(
      "points {:.2g} m apart, noise {:.2g} cm: cells from {:.2g} m, planes of {} to {} points and "
      "up to {:.2g} cm rough, search radius {:.2g} m",
      scale.spacing, centimetres * scale.noise, scale.cell, scale.neighbours, scale.mostNeighbours,
      centimetres * scale.maxRoughness, scale.searchRadius);
}

std::string textOf(const RunReport& run) {
  std::string text = stripTable(run);
  if (run.scale) text += textOf(*run.scale) + "\n";
  if (!run.rounds.empty()) {
    text += "\n" + roundsText(run.rounds);
    if (!run.roundsEnd.empty()) text += "end of the rounds: " + run.roundsEnd + "\n";
    const auto& last = run.rounds.back();
    if (last.matching) text += "\n" + funnelTables(*last.matching);
  }
  if (run.adjustment) {
    const auto& adjustment = *run.adjustment;
    text += "\n" + fitTable(adjustment.before, adjustment.after);
  }
  text += controlText(run);
  if (run.adjustment) {
    const auto& adjustment = *run.adjustment;
    text += "\n" + sumsText(adjustment.sums) + deviationsText(adjustment.deviations) + "\n" +
            globalsTable(adjustment.globals);
    if (adjustment.globalSigmas) {
      text += "standard deviations of them\n" + globalsTable(*adjustment.globalSigmas);
    } else {
      text +=
          "Single values are only partly separable; judge by the fit and by where the points "
          "lie.\n";
    }
    text += idleScaleText(adjustment.globals.scales[1], farthestForwardOf(run.strips)) + "\n" +
            solverText(adjustment);
  }
  if (run.stability) text += stabilityText(*run.stability);
  if (run.datum) text += datumText(*run.datum);
  if (run.georeferencing) {
    text += "adjusted strips: " + run.georeferencing->folder.string() + "\n";
  }
  if (!run.failure.empty()) text += "FAILED: " + run.failure + "\n";
  return text + fmt::format("{:.1f} s, at most {:.2f} GB of memory\n", run.seconds,
                            static_cast<double>(run.peakMemory) / 1e9);
}

}  // namespace Velorn::Flights
