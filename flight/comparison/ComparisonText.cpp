// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a comparison found, as tables and as JSON.
#include <cmath>
#include <nlohmann/json.hpp>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <velorn/flight/Compare.h>

namespace Velorn::Flights::Comparison {
namespace {

using Geomra::PhysicalSpace::vector;
using Json = nlohmann::ordered_json;

constexpr double centimetres = 100.0;

std::string pair(const TwoParts& parts) {
  return fmt::format("{:>9.2f}{:>8.2f}", centimetres * parts.horizontal,
                     centimetres * parts.vertical);
}

std::string row(const ErrorRow& row) {
  return fmt::format("{:<16}{:>10}{}{}{}{}{}\n", row.name, row.after.points, pair(row.before.rms),
                     pair(row.before.median), pair(row.after.rms), pair(row.after.median),
                     pair(row.after.rmsWithoutShift));
}

std::string shift(const char* name, const vector& v) {
  return fmt::format("mean shift {}: east {:.2f}, north {:.2f}, height {:.2f} cm\n", name,
                     centimetres * v.x, centimetres * v.y, centimetres * v.z);
}

std::string worldText(const WorldReport& world) {
  std::string text = fmt::format("{:<26}{:>17}{:>17}{:>17}{:>17}{:>17}\n{:<16}{:>10}",
                                 "points against the truth", "before: RMS", "median", "after: RMS",
                                 "median", "RMS, unshifted", "[cm]", "points");
  for (int i = 0; i < 5; ++i) text += fmt::format("{:>9}{:>8}", "horiz.", "vert.");
  text += "\n";
  for (const auto& kind : world.kinds) text += row(kind);
  for (const auto& strip : world.strips) text += row(strip);
  text += shift("before", world.shiftBefore) + shift("after", world.shiftAfter);
  if (!world.missing.empty()) {
    text += fmt::format("not adjusted: {}\n", fmt::join(world.missing, ", "));
  }
  if (world.notFinite > 0) text += fmt::format("not finite: {} points\n", world.notFinite);
  return text;
}

std::string row(const char* name, const FitFigures& f) {
  const auto cm = [](double metres) { return centimetres * metres; };
  std::string text =
      fmt::format("{:<13}{:<12}{:>10}{:>9.2f}{:>9.2f}{:>12.2f}{:>9.2f}{:>9.3f}\n", name,
                  "as measured", f.correspondences, cm(f.rawBefore), cm(f.rawAfter), cm(f.rawTrue),
                  cm(f.floor), f.rawAfter / f.floor) +
      fmt::format("{:<13}{:<12}{:>10}{:>9.2f}{:>9.2f}{:>12.2f}\n", "", "in blocks",
                  f.correspondences, cm(f.blockBefore), cm(f.blockAfter), cm(f.blockTrue));
  if (f.notFound > 0) {
    text += fmt::format("{:<13}{} left out: not among the points compared\n", "", f.notFound);
  }
  return text;
}

std::string fitText(const ComparisonReport& report) {
  if (report.pairs.correspondences + report.groundTruth.correspondences + report.pairs.notFound +
          report.groundTruth.notFound ==
      0) {
    return "no correspondences of the run\n";
  }
  return fmt::format("{:<25}{:>10}{:>9}{:>9}{:>12}{:>9}{:>9}\n", "point to plane, RMS [cm]",
                     "number", "before", "after", "under truth", "floor", "ratio") +
         row("strip pairs", report.pairs) + row("ground truth", report.groundTruth);
}

std::string row(const GlobalFigure& figure) {
  const int decimals = figure.unit == "1e-6" ? 1 : figure.unit == "m" ? 4 : 5;
  return fmt::format("{:<20}{:>5}{:>13.{}f}{:>13.{}f}{:>13.{}f}{:>13.{}f}\n", figure.name,
                     figure.unit, figure.real, decimals, figure.nominal, decimals, figure.estimated,
                     decimals, figure.estimated - figure.real, decimals);
}

std::string globalsText(const ComparisonReport& report) {
  if (!report.files) return "no parameter files of the run\n";
  std::string text = fmt::format("{:<20}{:>5}{:>13}{:>13}{:>13}{:>13}\n", "global correction",
                                 "unit", "true", "nominal", "estimated", "difference");
  for (const auto& figure : report.globals) text += row(figure);
  text +=
      "Single values are only partly separable. These sums of what moves the points alike, with "
      "the\n"
      "mean correction of the trajectory, are; what counts in the end is where the points lie:\n";
  for (const auto& figure : report.sums) text += row(figure);
  for (const auto& strip : report.unknown) {
    text += fmt::format("{}: not in the adjustment\n", strip);
  }
  return text + fmt::format("parameters: {}\n", report.files->parameters.string());
}

Json jsonOf(const vector& v) {
  return {v.x, v.y, v.z};
}

Json jsonOf(const TwoParts& parts) {
  return {{"horizontal", parts.horizontal}, {"vertical", parts.vertical}};
}

Json jsonOf(const ErrorFigures& figures) {
  return {{"rms_m", jsonOf(figures.rms)},
          {"median_m", jsonOf(figures.median)},
          {"rms_without_shift_m", jsonOf(figures.rmsWithoutShift)}};
}

Json jsonOf(const std::vector<ErrorRow>& rows) {
  Json list = Json::array();
  for (const auto& row : rows) {
    list.push_back({{"name", row.name},
                    {"points", row.after.points},
                    {"before", jsonOf(row.before)},
                    {"after", jsonOf(row.after)}});
  }
  return list;
}

Json jsonOf(const WorldReport& world) {
  return {{"surfaces", jsonOf(world.kinds)},
          {"strips", jsonOf(world.strips)},
          {"shift_before_m", jsonOf(world.shiftBefore)},
          {"shift_after_m", jsonOf(world.shiftAfter)},
          {"not_finite", world.notFinite},
          {"not_adjusted", world.missing}};
}

Json jsonOf(const FitFigures& f) {
  return {
      {"correspondences", f.correspondences},
      {"left_out", f.notFound},
      {"measured",
       {{"before_m", f.rawBefore}, {"after_m", f.rawAfter}, {"under_truth_m", f.rawTrue}}},
      {"in_blocks",
       {{"before_m", f.blockBefore}, {"after_m", f.blockAfter}, {"under_truth_m", f.blockTrue}}},
      {"noise_floor_m", f.floor},
      {"ratio_to_floor", f.rawAfter / f.floor}};
}

Json jsonOf(const std::vector<GlobalFigure>& figures) {
  Json list = Json::array();
  for (const auto& figure : figures) {
    list.push_back({{"name", figure.name},
                    {"unit", figure.unit},
                    {"true", figure.real},
                    {"nominal", figure.nominal},
                    {"estimated", figure.estimated}});
  }
  return list;
}

}  // namespace
}  // namespace Velorn::Flights::Comparison

namespace Velorn::Flights {

std::string textOf(const ComparisonReport& report) {
  using namespace Comparison;
  return worldText(report.world) + "\n" + fitText(report) + "\n" + globalsText(report);
}

std::string documentOf(const ComparisonReport& report) {
  using namespace Comparison;
  Json json{{"format", "velorn comparison"},
            {"version", 1},
            {"world", jsonOf(report.world)},
            {"pairs", jsonOf(report.pairs)},
            {"ground_truth", jsonOf(report.groundTruth)},
            {"globals", jsonOf(report.globals)},
            {"sums", jsonOf(report.sums)},
            {"unknown_strips", report.unknown}};
  json["parameters"] = report.files ? Json(report.files->parameters.string()) : Json();
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace Velorn::Flights
