// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A flight, from its containers to adjusted strips.
//
//     Velorn::Flights::Flight flight(settings, watch);
//     const Velorn::Flights::RunReport& run = flight.run();
//     std::cout << textOf(run);
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <velorn/flight/Reports.h>
#include <velorn/flight/Settings.h>
#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

/// Results lie in the root folder of the configuration, which also remembers what was done: a step
/// whose inputs, settings and outputs are unchanged is not done again. What a step leaves is there
/// for the next one, also of another object. Whatever fails or is cancelled leaves the root marked
/// as such, and exports refuse it. Messages of the library below go to Morvane::Console.
class VELORN_FLIGHT_EXPORT Flight {
 public:
  /// Completes the settings, reads the trajectory and what the strips say of themselves, and
  /// refuses what does not belong together.
  /// @throws Error that names the file or the setting
  explicit Flight(FlightSettings settings, Watch watch = {});
  ~Flight();
  Flight(Flight&& other) noexcept;
  Flight& operator=(Flight&& other) noexcept;

  const FlightSettings& settings() const;
  const std::vector<StripFacts>& strips() const;

  /// The steps that the settings name; all by default: rasterize, rounds of match and adjust,
  /// georeference. Then summary.json and summary.txt in the root folder.
  /// @throws Error; what was found until then is in report(), and in the summary
  const RunReport& run();

  /// Normals, terrain classes and rasters of all strips, and of the ground truth.
  const RasterizingReport& rasterize();
  /// Correspondences of the strips as delivered.
  const MatchReport& match();
  /// From the correspondences that are there to a model.
  const AdjustmentReport& adjust();
  /// Every strip by the model that this object has adjusted, by adjust() or run().
  /// @throws Error of BadSettings when there is none
  const GeoreferencingReport& georeference();

  /// Of the last operation, also of one that failed.
  const RunReport& report() const;

 private:
  class Chain;
  std::unique_ptr<Chain> chain_;
};

}  // namespace Velorn::Flights
