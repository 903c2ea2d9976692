// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/report/SummaryText.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include <fmt/format.h>

namespace Velorn::Flights {

namespace {

constexpr double centimetres = 100.0;

std::string textOf(const Json& value) {
  return value.get<std::string>();
}

std::uint64_t countOf(const Json& object, const char* key) {
  return object.value(key, std::uint64_t{0});
}

/// Right-aligned, "-" where it is not known.
std::string number(const Json& value, double factor, int width, int decimals) {
  if (!value.is_number()) return fmt::format("{:>{}}", "-", width);
  return fmt::format("{:>{}.{}f}", factor * value.get<double>(), width, decimals);
}

std::string stripTable(const Json& summary) {
  std::string text = fmt::format("{:<4}{:<28}{:>12}{:>16}{:>16}\n", "id", "strip", "points",
                                 "planar surface", "in the raster");
  for (const auto& strip : summary["strips"]) {
    const std::string file = textOf(strip["file"]);
    const std::string name = file.substr(file.find_last_of('/') + 1);
    std::string surface = "-", raster = "-";
    if (summary.contains("rasterize")) {
      for (const auto& counts : summary["rasterize"]["strips"]) {
        if (textOf(counts["name"]) != name) continue;
        std::uint64_t points = 0, chosen = 0;
        for (const auto& count : counts["surface"]) points += count.get<std::uint64_t>();
        for (const auto& count : counts["representatives"]) chosen += count.get<std::uint64_t>();
        surface = std::to_string(points);
        raster = std::to_string(chosen);
      }
    }
    text += fmt::format("{:<4}{:<28}{:>12}{:>16}{:>16}\n", countOf(strip, "id"), name,
                        countOf(strip, "points"), surface, raster);
  }
  return text;
}

using Counts = std::map<std::string, std::uint64_t>;

constexpr std::array<const char*, 7> gates{"candidates", "too_far", "angle", "roughness",
                                           "outlier",    "thinned", "kept"};

std::string funnelRow(const std::string& name, const Counts& counts) {
  std::string text = fmt::format("{:<16}", name);
  for (const char* gate : gates)
    text += fmt::format("{:>11}", counts.contains(gate) ? counts.at(gate) : 0);
  return text + "\n";
}

void add(Counts& counts, const Json& funnel) {
  for (const char* gate : gates) counts[gate] += countOf(funnel, gate);
}

/// Where the candidates of the last matching went, by class and by pair.
std::string funnelTables(const Json& matching) {
  std::map<std::string, Counts> classes, pairs;
  std::vector<std::string> classOrder, pairOrder;
  const auto entry = [](auto& table, auto& order, const std::string& name) -> Counts& {
    if (!table.contains(name)) order.push_back(name);
    return table[name];
  };
  for (const auto& pair : matching["pairs"]) {
    const std::string name = pair["ground_truth"].get<bool>()
                                 ? fmt::format("{} - control", countOf(pair, "i"))
                                 : fmt::format("{} - {}", countOf(pair, "i"), countOf(pair, "j"));
    auto& ofPair = entry(pairs, pairOrder, name);
    if (!pair.contains("classes")) continue;
    for (const auto& [kind, funnel] : pair["classes"].items()) {
      add(entry(classes, classOrder, kind), funnel);
      add(ofPair, funnel);
    }
  }
  const auto head = [](const char* what) {
    std::string text = fmt::format("{:<16}", what);
    for (const char* title :
         {"candidates", "too far", "angle", "rough", "outlier", "thinned", "kept"}) {
      text += fmt::format("{:>11}", title);
    }
    return text + "\n";
  };
  std::string text = head("class");
  for (const auto& name : classOrder) text += funnelRow(name, classes[name]);
  text += "\n" + head("strips");
  for (const auto& name : pairOrder) text += funnelRow(name, pairs[name]);
  return text;
}

std::string fitRow(const char* name, const Json& before, const Json& after) {
  std::string text = fmt::format("{:<14}{:>9}", name, countOf(before, "count"));
  for (const auto* phase : {&before, &after}) {
    for (const char* figure : {"rms", "nmad", "q05", "q95"}) {
      text += number((*phase)[figure], centimetres, 9, 2);
    }
  }
  return text + "\n";
}

std::string fitTable(const Json& adjustment) {
  const auto& before = adjustment["before"];
  const auto& after = adjustment["after"];
  return fmt::format("{:<14}{:>9}{:>36}{:>36}\n", "fit [cm]", "", "---- as delivered ----",
                     "---- adjusted ----") +
         fmt::format("{:<14}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}{:>9}\n", "point to plane",
                     "number", "RMS", "NMAD", "5 %", "95 %", "RMS", "NMAD", "5 %", "95 %") +
         fitRow("strip pairs", before["pairs"], after["pairs"]) +
         fitRow("ground truth", before["ground_truth"], after["ground_truth"]);
}

std::string globalsRow(const char* name, const Json& three, std::array<const char*, 3> parts,
                       std::array<const char*, 3> units, int decimals) {
  std::string text = fmt::format("{:<22}", name);
  for (std::size_t i = 0; i < 3; ++i) {
    text += fmt::format("{:>14} {}{}", parts[i], number(three[i], 1.0, 11, decimals),
                        *units[i] ? std::string(" ") + units[i] : "");
  }
  return text + "\n";
}

std::string globalsTable(const Json& globals) {
  return globalsRow("offsets", globals["offsets"], {"range", "forward angle", "scan angle"},
                    {"m", "deg", "deg"}, 6) +
         globalsRow("scales - 1", globals["scales"], {"range", "forward angle", "scan angle"},
                    {"", "", ""}, 8) +
         globalsRow("misalignment", globals["misalignment"], {"roll", "pitch", "yaw"},
                    {"deg", "deg", "deg"}, 6) +
         globalsRow("lever arm", globals["lever_arm"], {"forward", "right", "down"},
                    {"m", "m", "m"}, 4) +
         "Single values are only partly separable; judge by the fit and by where the points lie.\n";
}

double farthestForward(const Json& strips) {
  double farthest = 0.0;
  for (const auto& strip : strips) {
    farthest = std::max(farthest, strip["farthest_forward"].get<double>());
  }
  return farthest;
}

std::string solverText(const Json& adjustment) {
  const auto& solver = adjustment["solver"];
  std::string text = fmt::format(
      "solver: {} after {} steps in {:.1f} s; {} residuals, {} of {} unknowns estimated\n",
      textOf(solver["termination"]), solver["steps"].get<int>(), solver["seconds"].get<double>(),
      solver["residuals"].get<int>(), solver["estimated"].get<int>(),
      solver["unknowns"].get<int>());
  for (const auto& section : adjustment["held_sections"]) {
    const bool isLocked = section["locked"].get<bool>();
    text += fmt::format("held constant: section {} of {} with {} correspondences: {}\n",
                        countOf(section, "section"), textOf(section["strip"]),
                        countOf(section, "correspondences"),
                        isLocked ? "locked" : "too few correspondences");
  }
  return text;
}

std::string datumText(const Json& datum) {
  std::string text;
  for (const auto& line : datum["fixed_by"]) text += "datum: " + textOf(line) + "\n";
  for (const auto& line : datum["warnings"]) text += "WARNING: " + textOf(line) + "\n";
  return text;
}

std::string roundsText(const Json& rounds) {
  std::string text;
  for (const auto& round : rounds) {
    text += fmt::format("round {}{}:", countOf(round, "round"),
                        round.contains("scale") ? ", coarse" : "");
    if (round.contains("matching")) {
      text += fmt::format(" search radius {:.2f} m, {} correspondences",
                          round["matching"]["search_radius"].get<double>(),
                          countOf(round["matching"], "correspondences"));
    }
    if (round.contains("adjustment")) {
      text += fmt::format(", pairs fit to{} cm",
                          number(round["adjustment"]["after"]["pairs"]["rms"], centimetres, 6, 2));
    }
    text += "\n";
  }
  return text;
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

std::string summaryText(const Json& summary) {
  std::string text = stripTable(summary);
  if (summary.contains("rounds")) {
    text += "\n" + roundsText(summary["rounds"]);
    const auto& last = summary["rounds"].back();
    if (last.contains("matching")) text += "\n" + funnelTables(last["matching"]);
  }
  if (summary.contains("adjustment")) {
    const auto& adjustment = summary["adjustment"];
    const auto& globals = adjustment["globals"];
    const auto& forwardScale = globals["scales"][1];
    text += "\n" + fitTable(adjustment) + "\n" + globalsTable(globals) +
            idleScaleText(forwardScale.is_number() ? forwardScale.get<double>() : 0.0,
                          farthestForward(summary["strips"])) +
            "\n" + solverText(adjustment);
  }
  if (summary.contains("datum")) text += datumText(summary["datum"]);
  if (summary.contains("georeference")) {
    text += "adjusted strips: " + textOf(summary["georeference"]["folder"]) + "\n";
  }
  if (summary.contains("failure")) text += "FAILED: " + textOf(summary["failure"]) + "\n";
  return text + fmt::format("{:.1f} s, at most {:.2f} GB of memory\n",
                            summary["seconds"].get<double>(),
                            summary["peak_memory"].get<double>() / 1e9);
}

}  // namespace Velorn::Flights
