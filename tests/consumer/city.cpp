// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A host of its own: from LAS files, a trajectory and control to adjusted LAS files, and the fit.
//
//     city FLIGHT OUTPUT
#include <filesystem>
#include <iostream>
#include <string>

#include "platform/morvane/Console.h"
#include <velorn/flight/Error.h>
#include <velorn/flight/Export.h>
#include <velorn/flight/Flight.h>
#include <velorn/flight/Import.h>

namespace flights = Velorn::Flights;

int main(int count, char** arguments) try {
  if (count != 3) return 2;
  const std::filesystem::path flight = arguments[1], output = arguments[2];
  std::size_t lines = 0;  // of the library below, on the one console of the process
  const Morvane::ConsoleRedirection redirection([&](std::string_view) { ++lines; });
  flights::Watch watch;
  watch.message = [](const std::string& line) { std::clog << line << '\n'; };

  flights::ImportSettings files;
  for (int strip = 1; strip <= 6; ++strip) {
    files.strips.push_back(flight / ("strip_" + std::to_string(strip) + ".las"));
  }
  files.trajectory.files = {flight / "trajectory.sbet"};
  files.control = flight / "control.csv";
  files.leverArm = {0.12, -0.08, 0.45};
  files.output = output;
  const auto imported = flights::importFlight(files, watch);

  flights::FlightSettings settings;
  for (const auto& strip : imported.strips) settings.strips.push_back(strip.file.string());
  for (const auto& file : imported.trajectories) settings.trajectories.push_back(file.string());
  settings.groundTruth = imported.groundTruth.string();
  settings.configuration().RootPath = output / "run";
  settings.configuration().TypeModel = "BIAS";
  const auto run = flights::Flight(settings, watch).run();

  flights::ExportSettings wanted;
  wanted.root = output / "run";
  wanted.output = output / "delivery";
  const auto exported = flights::exportFlight(wanted, watch);

  const auto& fit = *run.adjustment;
  std::cout << "strip pairs fit to " << 100.0 * fit.after.pairs.nmad << " cm, before "
            << 100.0 * fit.before.pairs.nmad << " cm; " << exported.files.size() << " files\n";
  return fit.after.pairs.nmad < 0.014 && exported.files.size() == 10 && lines > 0 ? 0 : 1;
} catch (const flights::Error& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
