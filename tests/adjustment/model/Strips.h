// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Flights of small strips for the tests of the parameter model.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "platform/strandel/Bundle.h"
#include "platform/strandel/MyStorage.h"
#include "tests/support/ConsoleLines.h"
#include "tests/support/TemporaryFolder.h"
#include <velorn/SolverParameters.h>

/// A folder for strips, a configuration with its root there, and what the console is told.
class Flight : public testing::Test {
 protected:
  Flight() {
    configuration.RootPath = folder.path();
    configuration.Storage = std::make_shared<Strandel::MyStorage>(0, 0, 1, 1);
    std::filesystem::create_directory(folder / "00_parameter");
  }

  std::filesystem::path save(const std::string& name, Strandel::Bundle& bundle) const {
    auto path = folder / name;
    const auto fault = configuration.Storage->save(bundle, path, "wd");
    if (!fault.empty()) throw std::runtime_error(fault);
    return path;
  }

  /// A strip with these GPS times; the position of each point is (time, 2, 3).
  static Strandel::Bundle bundleOf(const std::vector<double>& times) {
    Strandel::Bundle bundle;
    const auto chart =
        bundle.makeSlice(0)->makeGrid("strip")->makeChart(Strandel::scannerChartName);
    std::vector<Geomra::PhysicalSpace::point> points;
    points.reserve(times.size());
    for (const double time : times) points.push_back({time, 2, 3});
    chart->makeField("GPSTime", Strandel::ValueType::Double)->setValues<double>({0}, times);
    chart->makeField("Positions", Strandel::ValueType::Point)
        ->setValues<Geomra::PhysicalSpace::point>({0}, std::move(points));
    return bundle;
  }

  void addStrip(const std::string& name, const std::vector<double>& times) {
    auto bundle = bundleOf(times);
    strips.push_back(save(name, bundle));
  }

  Velorn::SolverParameters model() const { return {strips, configuration}; }

  /// Divides with the overrides of the configuration; the section file is "Sections.txt".
  std::string divide(Velorn::SolverParameters& parameters, const std::string& secType) const {
    return parameters.setSections(secType, {}, leverArm, misalignment, ".txt",
                                  configuration.OverwriteToLinear, configuration.OverwriteToSpline);
  }

  std::string sectionFile() const { return contentOf(folder / "00_parameter/Sections.txt"); }

  TemporaryFolder folder;
  Velorn::InputParameter configuration;
  std::vector<std::filesystem::path> strips;
  Geomra::PhysicalSpace::point leverArm{0.12, -0.08, 0.45}, misalignment{0.3, -0.1, 90.0};
  ConsoleLines console;
};
