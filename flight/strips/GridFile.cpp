// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/strips/GridFile.h"

#include <limits>

#include <fmt/format.h>

namespace Velorn::Flights {
namespace {

std::string listed(const auto& named) {
  std::string names;
  for (const auto& [name, value] : named) names += (names.empty() ? "" : ", ") + name;
  return names.empty() ? "nothing" : names;
}

}  // namespace

std::shared_ptr<Strandel::MyStorage> storageOf(const Velorn::InputParameter& configuration) {
  if (configuration.Storage) return configuration.Storage;
  return std::make_shared<Strandel::MyStorage>(0, 0, 0, 1);
}

void saveBundle(Strandel::Bundle& bundle, const std::filesystem::path& path,
                const Strandel::MyStorage& storage) {
  orFail(storage.save(bundle, path, "wd"), Error::NoSpace);
}

GridFile::GridFile(std::filesystem::path path, std::shared_ptr<Strandel::MyStorage> storage)
    : path_(std::move(path)), storage_(std::move(storage)) {
  orFail(storage_->load(path_, bundle_));
}

GridFile::GridFile(std::filesystem::path path) : GridFile(std::move(path), storageOf({})) {
  const auto grids = bundle_.grids();
  if (grids.size() != 1) refuse("", fmt::format("holds {} grids, one is needed", grids.size()));
  grid_ = grids.front();
  findPoints(countedByPlaces);
}

GridFile::GridFile(std::filesystem::path path, const Velorn::InputParameter& configuration,
                   Bare bare, const CountedField& counted)
    : GridFile(std::move(path), storageOf(configuration)) {
  const auto slices = bundle_.slices();
  if (slices.empty() || slices.front()->numberOfGrids() == 0) {
    if (bare == Bare::fault) refuse("", "holds no grid");
    grid_ = std::make_shared<Strandel::Grid>("");
    return;
  }
  grid_ = slices.front()->uniqueGrid();
  if (!grid_) grid_ = slices.front()->grid(configuration.GridName);
  if (!grid_) {
    refuse("", fmt::format("GridName is \"{}\"; the file holds the grids {}",
                           configuration.GridName, listed(slices.front()->grids())));
  }
  if (bare == Bare::fault || !grid_->charts().empty()) findPoints(counted);
}

void GridFile::findPoints(const CountedField& counted) {
  if (const auto unequal = grid_->unequalLengths(); !unequal.empty()) refuse("", unequal);
  const auto field = worldField(counted.name);
  if (!field || field->valueType() != counted.type) {
    refuse(counted.name, "no points of that name");
  }
  for (const auto fragment : field->fragments()) {
    const std::size_t count = field->size(fragment);
    if (count > 0) pieces_.push_back({fragment, size(), count});
  }
  if (size() > std::numeric_limits<std::uint32_t>::max()) refuse("", "has more than 2^32 points");
}

std::size_t GridFile::size() const {
  return pieces_.empty() ? 0 : pieces_.back().first + pieces_.back().count;
}

std::uint32_t GridFile::week() const {
  const auto week = grid_->attributes().unsigned32("WeekNumber");
  if (week) return *week;
  refuse("", "grid " + grid_->name() + ": the attribute WeekNumber, the GPS week, is missing");
}

Strandel::FieldPtr GridFile::worldField(const std::string& name) const {
  const auto chart = grid_->cartesian();
  return chart ? chart->field(name) : nullptr;
}

std::string GridFile::nameOf(const char* chart, const std::string& name) const {
  return fmt::format("{}: {}/{}", path_.string(), chart, name);
}

void GridFile::refuse(const std::string& object, const std::string& fault) const {
  const auto name = object.empty() ? path_.string() : nameOf(Strandel::worldChartName, object);
  throw Error(name + ": " + fault);
}

Strandel::FieldPtr GridFile::checkedField(const char* chart, const std::string& name,
                                          Strandel::ValueType type,
                                          const std::string& advice) const {
  const auto refused = [&](const std::string& fault) {
    return Error(nameOf(chart, name) + ": " + fault);
  };
  const std::string needed = advice.empty() ? "" : "; " + advice;
  const auto holder = grid_->chart(chart);
  if (!holder) throw refused("there is no such chart" + needed);
  auto field = holder->field(name);
  if (!field) throw refused("missing; the chart holds " + listed(holder->fields()) + needed);
  if (field->valueType() != type) {
    throw refused(
        fmt::format("holds {}; {} is needed", infoOf(field->valueType()).name, infoOf(type).name));
  }
  for (const Piece& piece : pieces_) {
    const std::size_t count = field->size(piece.fragment);
    if (count == piece.count) continue;
    throw refused(fmt::format("{} values in fragment {}, which has {} points", count,
                              piece.fragment.number, piece.count));
  }
  return field;
}

}  // namespace Velorn::Flights
