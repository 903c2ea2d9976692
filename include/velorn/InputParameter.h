// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The configuration of one run: fill the members, check once, hand it to everything else.
//
//     Velorn::InputParameter parameter;
//     parameter.TypeModel = "SPLINE";
//     if (const std::string fault = parameter.check(); !fault.empty()) return fault;
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "platform/kestrum/LoaderProgress.h"
#include "platform/kestrum/Ownership.h"
#include "platform/plome/FlagList.h"
#include "platform/plome/StringList.h"
#include "platform/strandel/MyStorage.h"
#include <velorn/Visibility.h>

namespace Velorn {

/// Settings of one strip adjustment. Lists "per class" have five entries in the order of
/// TerrainType: ground truth, roof, slope, bed points, flat. A copy shares the strip list and the
/// storage with its original and is otherwise independent of it.
class VELORN_EXPORT InputParameter {
 public:
  InputParameter();

  /// Validates the members and derives CellSize from MinCellSize and CellSizeScaler.
  /// @return empty, or "InputParameter::check: <the first rule broken>". Never throws for a bad
  ///         value. An empty RootPath is found last: CellSize is filled by then.
  std::string check();

  /// All settings as a text for people, one per line; doubles in the shortest form that reads back
  /// to the same value. The cell sizes are missing in it until check has passed.
  std::string speak() const;

  /// Stores a text exactly as it is, for instance that of speak.
  /// @param echo    writes the text to the console too
  /// @param append  adds to an existing file instead of replacing its content
  /// @throws std::ios_base::failure "InputParameter::write: Failed to open the file:<path>..." when
  ///         the file cannot be opened. An opened file that does not take the text (a full disk) is
  ///         told on the console; a failure while closing is not reported.
  void write(const std::filesystem::path& path, const std::string& text, const bool& echo,
             const bool& append) const;

  /// Side length of the raster cells of a class [m].
  /// @throws std::out_of_range, naming the getter, before check has passed
  /// @{
  double getGroundTruthSize() const;
  double getRoof() const;
  double getSlope() const;
  double getBedPoints() const;
  double getFlat() const;
  /// @}

  std::filesystem::path getPrameterPath() const { return ParameterPath; }
  std::filesystem::path getStatusPath() const { return StatusPath; }
  std::filesystem::path getRasterPath() const { return RasterPath; }
  std::filesystem::path getCorrespondencePath() const { return CorrespondencePath; }
  std::filesystem::path getStatisticPath() const { return StatisticPath; }

  /// Number of entries of CellSizeScaler.
  unsigned getNumberOfClasses() const { return static_cast<unsigned>(CellSizeScaler.size()); }

  /// Not in use.
  std::uint64_t Reserved = 0;
  /// Smallest raster cell [m], at least 0.01; the cells of a class are its scaler times as large.
  double MinCellSize = 0.1;
  /// Cell size in units of MinCellSize, per class.
  std::vector<double> CellSizeScaler{1, 5, 10, 50, 150};
  /// Weight of a correspondence, per class.
  std::vector<double> CellSizeWeights{1, 1, 1, 1, 1};
  /// Amplitude limit, per class; -100 or lower: none.
  std::vector<double> Amplitude{-100, -100, -100, -100, -100};
  /// Iteration limit of the solver.
  int NumberOfIterations = 30;
  /// Ground-truth file.
  std::string GroundTruth = "empty";
  /// Trajectory files, separated by commas.
  std::string Trajectories = "empty";
  /// Names of the strip files.
  std::shared_ptr<Plome::StringList> StripFiles;
  /// Told how far a run is; may be empty, and is not kept alive.
  Kestrum::WeakPtr<Kestrum::LoaderProgress, Kestrum::InterfaceBase> progress;
  /// Root folder of all outputs.
  std::filesystem::path RootPath = "rigorous";
  /// Model of the trajectory correction, a name of Sec_Type.
  std::string TypeModel = "LINEAR";
  /// Default length of a section for bias, linear and spline [s].
  std::vector<double> DefaultInterval{86400, 86400, 86400};
  /// Strips that get linear sections whatever TypeModel says: strip id to section length [s].
  std::map<int, double> OverwriteToLinear;
  /// Strips that get spline sections whatever TypeModel says: strip id to section length [s].
  std::map<int, double> OverwriteToSpline;
  /// Grid inside the container files that points are read from.
  std::string GridName;
  /// Container files are opened through it.
  std::shared_ptr<Strandel::MyStorage> Storage;
  /// Interface of the storage that the constructor made. It shares its ownership, so it stays valid
  /// when Storage is replaced, and then still means the old one.
  std::shared_ptr<Strandel::StorageInterface> StorageInterface;
  /// Expression that selects points; may hold the word Amplitude unless the member of that name
  /// sets a limit.
  std::string SelectionStr;
  /// Search radius of the matching [m].
  double SearchRadius = 3;
  /// Largest angle between the normals of a correspondence [degree].
  double ThresholdMaxAngle = 5;
  /// Gives every second strip spline sections.
  bool SplitBackStrips = false;
  /// End of the names of a run's files: "_", date and time of the construction, ".txt".
  std::string FileSuffix;
  /// Last argument of the trajectory interpolation.
  bool InterpolationFlag = true;
  /// Ids of the strips whose sections the solver holds constant.
  std::set<int> LockedStrips;
  /// Steps of the processing chain to run.
  Plome::FlagList Options;
  /// Side length of the raster cells, per class [m]; filled by check.
  std::vector<double> CellSize;
  /// Output folders below RootPath.
  std::filesystem::path ParameterPath = "00_parameter";
  std::filesystem::path StatusPath = "01_status";
  std::filesystem::path RasterPath = "02_raster";
  std::filesystem::path CorrespondencePath = "03_correspondences";
  std::filesystem::path StatisticPath = "04_statistic";
};

}  // namespace Velorn
