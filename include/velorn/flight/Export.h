// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From the result of an adjustment to files of the field.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include <velorn/flight/Reports.h>
#include <velorn/flight/Visibility.h>
#include <velorn/flight/Watch.h>

namespace Velorn::Flights {

/// What is to be written; nothing said: all that the inputs allow.
struct Wishes {
  bool strips = false, mounting = false, trajectory = false;
};

struct ExportSettings {
  std::filesystem::path root;  ///< of a run: what is not given below is its; may be empty
  std::vector<std::filesystem::path> strips;        ///< containers of adjusted points
  std::optional<ModelFiles> model;                  ///< of the adjustment
  std::vector<std::filesystem::path> trajectories;  ///< containers that it used
  std::filesystem::path sourceFolder;  ///< where LAS files lie that are not where they were
  std::filesystem::path output;        ///< folder
  std::optional<Wishes> wishes;
  bool overwrite = false;  ///< files of an earlier export are replaced
};

struct ExportedFile {
  std::filesystem::path file;
  std::string content;  ///< a few words
};

struct ExportReport {
  std::vector<ExportedFile> files;
};

/// Looks through all inputs before it writes anything; files are written one by one, whole. Of a
/// run only what finished is exported.
/// @throws Error that names the file, or the state of the run, and says what to do; BadSettings
///         when what is wished needs an input that is not given
VELORN_FLIGHT_EXPORT ExportReport exportFlight(const ExportSettings& settings, const Watch& watch);

}  // namespace Velorn::Flights
