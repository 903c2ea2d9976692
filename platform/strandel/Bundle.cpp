// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/strandel/Bundle.h"

#include <cmath>

#include <fmt/format.h>

namespace Strandel {
namespace {

template <typename Key, typename T>
std::shared_ptr<T> found(const std::map<Key, std::shared_ptr<T>>& among, const Key& key) {
  const auto place = among.find(key);
  return place == among.end() ? nullptr : place->second;
}

template <typename Key, typename T>
std::shared_ptr<T> foundOrMade(std::map<Key, std::shared_ptr<T>>& among, const Key& key) {
  auto& place = among[key];
  if (!place) place = std::make_shared<T>(key);
  return place;
}

}  // namespace

FieldPtr Chart::field(const std::string& name) const {
  return found(fields_, name);
}

FieldPtr Chart::makeField(const std::string& name, ValueType type) {
  auto& place = fields_[name];
  if (!place || place->valueType() != type) place = std::make_shared<Field>(name, type);
  return place;
}

void Chart::shareField(const FieldPtr& field) {
  if (field) fields_[field->name()] = field;
}

ChartPtr Grid::chart(const std::string& name) const {
  return found(charts_, name);
}
ChartPtr Grid::makeChart(const std::string& name) {
  return foundOrMade(charts_, name);
}

const std::shared_ptr<Node>& Grid::makeWaveforms() {
  if (!waveforms_) waveforms_ = std::make_shared<Node>(waveformsName);
  return waveforms_;
}

std::string Grid::unequalLengths() const {
  struct First {
    std::string column;
    std::size_t values;
  };
  std::map<FragmentId, First> firsts;
  for (const auto& [chartName, chart] : charts_) {
    for (const auto& [fieldName, field] : chart->fields()) {
      for (const auto fragment : field->fragments()) {
        if (!field->hasChunk(fragment)) continue;
        const auto column = fmt::format("{}/{}", chartName, fieldName);
        const auto& first =
            firsts.try_emplace(fragment, First{column, field->size(fragment)}).first->second;
        if (first.values == field->size(fragment)) continue;
        return fmt::format("fragment {}: {} holds {} values, {} {}", fragment.number, first.column,
                           first.values, column, field->size(fragment));
      }
    }
  }
  return {};
}

GridPtr Slice::uniqueGrid() const {
  return grids_.size() == 1 ? grids_.begin()->second : nullptr;
}
GridPtr Slice::grid(const std::string& name) const {
  return found(grids_, name);
}
GridPtr Slice::makeGrid(const std::string& name) {
  return foundOrMade(grids_, name);
}

SlicePtr Bundle::slice(double time) const {
  return std::isfinite(time) ? found(slices_, time) : nullptr;  // NaN has no place in an order
}
SlicePtr Bundle::makeSlice(double time) {
  return std::isfinite(time) ? foundOrMade(slices_, time) : nullptr;
}

std::vector<SlicePtr> Bundle::slices() const {
  std::vector<SlicePtr> all;
  for (const auto& [time, slice] : slices_) all.push_back(slice);
  return all;
}

std::vector<GridPtr> Bundle::grids() const {
  std::vector<GridPtr> all;
  for (const auto& [time, slice] : slices_) {
    for (const auto& [name, grid] : slice->grids()) all.push_back(grid);
  }
  return all;
}

}  // namespace Strandel
