// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// What a container file holds: slices by time, in them grids by name, in them charts by name, in
// them fields.
#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/Visibility.h"
#include "platform/strandel/Field.h"
#include "platform/strandel/Node.h"

namespace Strandel {

/// Names that the platform itself knows.
inline constexpr const char* worldChartName = "StandardCartesianChart3D";
inline constexpr const char* scannerChartName = "ScannerCoordinateSystem";
inline constexpr const char* waveformsName = "Waveforms";

/// The fields of all points of a grid in one coordinate system.
class VELORN_PLATFORM_EXPORT Chart : public Node {
 public:
  using Node::Node;

  FieldPtr field(const std::string& name) const;  ///< empty when there is none

  /// The field of that name and type; made anew when there is none of that name, or one of another
  /// type.
  FieldPtr makeField(const std::string& name, ValueType type);

  /// Takes part in a field of another chart: it stays one field with one set of data, in memory and
  /// in the file.
  void shareField(const FieldPtr& field);
  void removeField(const std::string& name) { fields_.erase(name); }

  const std::map<std::string, FieldPtr>& fields() const { return fields_; }

 private:
  std::map<std::string, FieldPtr> fields_;
};
using ChartPtr = std::shared_ptr<Chart>;

/// One set of points in one or more coordinate systems. All fields of a fragment have one value per
/// point.
class VELORN_PLATFORM_EXPORT Grid : public Node {
 public:
  using Node::Node;

  ChartPtr chart(const std::string& name) const;  ///< empty when there is none
  ChartPtr makeChart(const std::string& name);    ///< the chart of that name, made if needed
  void removeChart(const std::string& name) { charts_.erase(name); }
  const std::map<std::string, ChartPtr>& charts() const { return charts_; }

  /// The Cartesian representation: the chart "StandardCartesianChart3D", empty when there is none.
  ChartPtr cartesian() const { return chart(worldChartName); }

  /// The group "Waveforms", which holds attributes only; empty when there is none.
  const std::shared_ptr<Node>& waveforms() const { return waveforms_; }
  const std::shared_ptr<Node>& makeWaveforms();

  /// Which two fields of which fragment differ in their number of values; empty when none do.
  std::string unequalLengths() const;

 private:
  std::map<std::string, ChartPtr> charts_;
  std::shared_ptr<Node> waveforms_;
};
using GridPtr = std::shared_ptr<Grid>;

/// The grids of one instant.
class VELORN_PLATFORM_EXPORT Slice : public Node {
 public:
  explicit Slice(double time) : Node(""), time_(time) {}

  double time() const { return time_; }
  std::size_t numberOfGrids() const { return grids_.size(); }
  GridPtr uniqueGrid() const;                   ///< empty unless there is exactly one
  GridPtr grid(const std::string& name) const;  ///< empty when there is none
  GridPtr makeGrid(const std::string& name);    ///< the grid of that name, made if needed
  void removeGrid(const std::string& name) { grids_.erase(name); }
  const std::map<std::string, GridPtr>& grids() const { return grids_; }

 private:
  double time_;
  std::map<std::string, GridPtr> grids_;
};
using SlicePtr = std::shared_ptr<Slice>;

/// The content of one container file. A copy shares the slices.
class VELORN_PLATFORM_EXPORT Bundle : public Node {
 public:
  Bundle() : Node("") {}

  SlicePtr slice(double time) const;  ///< empty when there is none
  SlicePtr makeSlice(double time);    ///< the slice of that time, made if needed; empty for a time
                                      ///< that is not finite
  std::vector<SlicePtr> slices() const;  ///< by ascending time
  std::vector<GridPtr> grids() const;    ///< of all slices, by time and name
  bool empty() const { return slices_.empty(); }

 private:
  std::map<double, SlicePtr> slices_;
};
using BundlePtr = std::shared_ptr<Bundle>;

}  // namespace Strandel
