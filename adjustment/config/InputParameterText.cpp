// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The configuration as a text for people. Each label brings the line feed before it, each value the
// blank after it.
#include <fmt/format.h>

#include <velorn/InputParameter.h>

namespace Velorn {
namespace {

std::string aboutPoints(const InputParameter& p) {
  constexpr auto perClass = "\n{} (ground-truth,roof,slope,bed and flat): {} ";
  std::string text;
  text += fmt::format(perClass, "CellSize", fmt::join(p.CellSize, ","));
  text += fmt::format(perClass, "Weights ", fmt::join(p.CellSizeWeights, ","));
  text += fmt::format(perClass, "Amplitude ", fmt::join(p.Amplitude, ","));
  text += fmt::format("\nMinCellSize : {} ", p.MinCellSize);
  text += fmt::format("\nselection string: {} ", p.SelectionStr);
  return text;
}

std::string aboutFiles(const InputParameter& p) {
  const std::string strips = p.StripFiles ? fmt::format("{}", p.StripFiles->size()) : " 0! ";
  return fmt::format("\nTrajectorie(s): {} ", p.Trajectories) +
         fmt::format("\nGround-Truth: {} ", p.GroundTruth) +
         fmt::format("\nNumber of flight strips: {} ", strips);
}

std::string aboutModel(const InputParameter& p) {
  std::string text;
  text += fmt::format("\nNumber of iterations: {} ", p.NumberOfIterations);
  text += fmt::format("\nrooth folder: {} ", p.RootPath.string());
  text += fmt::format("\ntype/model: {} ", p.TypeModel);
  text +=
      fmt::format("\nDefault interval: (bias,linear,spline){} ", fmt::join(p.DefaultInterval, ","));
  text += fmt::format("\nGrid name: {} ", p.GridName);
  text += fmt::format("\nSearch radius: {} ", p.SearchRadius);
  text += fmt::format("\nThreshold max angle [\u00b0] : {} ", p.ThresholdMaxAngle);
  text += fmt::format("\nSplitBackStrips?: {} ", p.SplitBackStrips ? "Yes" : "No");
  text += fmt::format("\nOptions: {} ", p.Options.text());
  return text;
}

std::string aboutOverwrittenStrips(const std::map<int, double>& strips, std::string_view model) {
  std::string text;
  for (const auto& [id, interval] : strips) {
    text += fmt::format("\nOverwrite strip id: {} to {}; interval: {} ", id, model, interval);
  }
  return text;
}

std::string aboutLockedStrips(const std::set<int>& strips) {
  return strips.empty() ? "" : fmt::format("\nLocked strip(s): {} ", fmt::join(strips, " "));
}

}  // namespace

std::string InputParameter::speak() const {
  return "################\nInput Flags:" + aboutPoints(*this) + aboutFiles(*this) +
         aboutModel(*this) + aboutLockedStrips(LockedStrips) +
         aboutOverwrittenStrips(OverwriteToLinear, "linear") +
         aboutOverwrittenStrips(OverwriteToSpline, "spline") + "\n################";
}

}  // namespace Velorn
