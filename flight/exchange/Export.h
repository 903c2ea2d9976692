// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// From the result of an adjustment to files of the field.
//
//     completeFromRoot(options, root, adjusted);   // of a run
//     const ExportReport report = exportFlight(options, progress, [](const std::string& line) { ...
//     });
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "flight/records/ModelFiles.h"
#include "platform/kestrum/LoaderProgress.h"

namespace Velorn::Flights {

/// What is to be written; nothing said: all that the inputs allow.
struct Wishes {
  bool strips = false, mounting = false, trajectory = false;
};

struct ExportOptions {
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

/// Fills in what is not given from the root folder of a run.
/// @param adjusted  folder of its adjusted strips
/// @throws Error that names what the run lacks
void completeFromRoot(ExportOptions& options, const std::filesystem::path& root,
                      const std::filesystem::path& adjusted);

/// Looks through all inputs before it writes anything; files are written one by one, whole.
/// @param tell  receives what the user should know
/// @throws Error that names the file and says what to do; with the status Error::BadSettings when
/// what is
///         wished needs an input that is not given
ExportReport exportFlight(const ExportOptions& options, Kestrum::LoaderProgress& progress,
                          const std::function<void(const std::string&)>& tell);

}  // namespace Velorn::Flights
