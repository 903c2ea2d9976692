// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Where everything of a run lies: the only place that knows the layout of its root folder.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "flight/records/StepRecord.h"
#include <velorn/InputParameter.h>
#include <velorn/flight/Reports.h>

namespace Velorn::Flights {

class RunFolder {
 public:
  /// @param names  whose folder names count
  explicit RunFolder(std::filesystem::path root,
                     const Velorn::InputParameter& names = Velorn::InputParameter());

  const std::filesystem::path& root() const { return root_; }
  /// What rasterizing finds, with its records; runs whose strips and settings of it agree share it.
  const std::filesystem::path& surfaces() const { return surfaces_; }
  void shareSurfaces(std::filesystem::path folder) { surfaces_ = std::move(folder); }
  std::filesystem::path rasters() const { return surfaces_ / rasters_; }
  /// Of a round from coarse to fine; the folder of the rasters is the users' to look into.
  std::filesystem::path rastersOfRound() const;
  /// Of a strip or the ground truth.
  std::filesystem::path rasterOf(const std::filesystem::path& file) const;
  std::filesystem::path planarPointsOf(const std::filesystem::path& strip) const;
  std::filesystem::path blocks() const { return root_ / blocks_; }
  std::filesystem::path parameters() const { return root_ / parameters_; }
  std::filesystem::path status() const { return root_ / status_; }
  std::filesystem::path statistics() const { return root_ / statistics_; }
  std::filesystem::path adjusted() const { return root_ / "05_adjusted"; }
  std::filesystem::path summaryJson() const { return root_ / "summary.json"; }
  std::filesystem::path summaryText() const { return root_ / "summary.txt"; }
  /// Stands for a ground truth where none was given.
  std::filesystem::path emptyGroundTruth() const { return parameters() / "no_ground_truth.kx"; }

  StepRecord record(const std::string& step) const { return {status() / "steps", step}; }
  StepRecord rasterRecordOf(const std::filesystem::path& file) const;
  /// The files of a model.
  /// @param suffix  end of their names
  ModelFiles modelOf(const std::string& suffix) const;
  /// The model as seen from the root, so that the folder can go elsewhere, and back.
  /// @{
  ModelFiles fromRoot(const ModelFiles& model) const;
  ModelFiles inRoot(const ModelFiles& model) const;
  /// @}

  /// Files of correspondences, in the order of their names.
  std::vector<std::filesystem::path> blockFiles() const;

  /// Makes all folders but that of the adjusted strips and those of the surfaces, which lie where
  /// the settings of the rasterizing say.
  /// @throws Error of NoSpace
  /// @{
  void make() const;
  void makeSurfaces() const;
  /// @}

  /// Writes both summaries.
  /// @throws Error of NoSpace
  void writeSummary(const RunReport& report, const std::string& text) const;
  /// @throws Error, naming the file, when there is none, or it is not one of this version
  RunReport readSummary() const;

 private:
  std::filesystem::path root_, surfaces_, rasters_, blocks_, parameters_, status_, statistics_;
};

}  // namespace Velorn::Flights
