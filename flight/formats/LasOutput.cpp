// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/LasOutput.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <fmt/format.h>

#include "flight/formats/LasCrs.h"
#include "flight/formats/LasHeader.h"
#include "flight/formats/LasOrigin.h"
#include "flight/formats/LittleEndian.h"
#include <velorn/flight/Error.h>

namespace Velorn::Flights {
namespace {

constexpr double scale = 1e-4;           // [m]
constexpr std::size_t format = 6;        // of the points
constexpr std::size_t descriptor = 192;  // bytes that describe an extra attribute

template <typename T>
void append(std::string& bytes, std::type_identity_t<T> number) {
  bytes.resize(bytes.size() + sizeof(T));
  putNumber<T>(bytes.data() + bytes.size() - sizeof(T), number);
}

template <typename T>
void appendNearest(std::string& bytes, double value) {
  using Limits = std::numeric_limits<T>;
  const double low = Limits::lowest(), high = Limits::max();
  append<T>(bytes,
            std::isnan(value) ? T{} : static_cast<T>(std::clamp(std::round(value), low, high)));
}

void append(std::string& bytes, LasNumber type, double value) {
  switch (type) {
    case LasNumber::uint8:
      return appendNearest<std::uint8_t>(bytes, value);
    case LasNumber::uint16:
      return appendNearest<std::uint16_t>(bytes, value);
    case LasNumber::int32:
      return appendNearest<std::int32_t>(bytes, value);
    case LasNumber::float32:
      return append<float>(bytes, static_cast<float>(value));
    case LasNumber::float64:
      return append<double>(bytes, value);
  }
}

std::size_t bytesOf(LasNumber type) {
  std::string bytes;
  append(bytes, type, 0.0);
  return bytes.size();
}

void appendVlr(std::string& records, std::string_view userId, unsigned recordId,
               const std::string& content) {
  std::string head(recordHead, '\0');
  putText(head.data() + 2, 16, userId);
  putNumber<std::uint16_t>(head.data() + 18, static_cast<std::uint16_t>(recordId));
  putNumber<std::uint16_t>(head.data() + 20, static_cast<std::uint16_t>(content.size()));
  records += head + content;
}

std::string descriptorsOf(const std::vector<LasExtra>& extras) {
  std::string all;
  for (const LasExtra& extra : extras) {
    std::string one(descriptor, '\0');
    putNumber<std::uint8_t>(one.data() + 2, static_cast<std::uint8_t>(extra.type));
    putText(one.data() + 4, 32, extra.name);
    putText(one.data() + 160, 32, extra.description);
    all += one;
  }
  return all;
}

std::string recordsFor(const std::filesystem::path& target, unsigned epsg,
                       const std::vector<LasExtra>& extras) {
  std::string records;
  try {
    appendVlr(records, "LASF_Projection", 2112, wktOf(epsg) + '\0');
  } catch (const std::invalid_argument& fault) {
    throw Error(fmt::format("{}: {}", target.string(), fault.what()));
  }
  appendVlr(records, "LASF_Spec", 4, descriptorsOf(extras));
  return records;
}

}  // namespace

LasOutput::LasOutput(const std::filesystem::path& target, unsigned epsg,
                     std::vector<LasExtra> extras)
    : file_(target),
      extras_(std::move(extras)),
      records_(recordsFor(target, epsg, extras_)),
      block_(header() + records_) {}

std::int32_t LasOutput::onGrid(double coordinate, std::size_t axis) {
  constexpr double unit = 1000.0;  // [m]
  auto& grid = grids_[axis];
  if (!grid && std::isfinite(coordinate))
    grid = LasGrid{scale, unit * std::round(coordinate / unit)};
  const auto number = grid ? grid->number(coordinate) : std::nullopt;
  if (number) return *number;
  throw Error(
      fmt::format("{}: point {}, counted from 0: its {} = {} does not fit into 32 bits at "
                  "the scale of {} m about {}",
                  file_.target().string(), count_, "xyz"[axis], coordinate, scale,
                  grid ? grid->offset : coordinate));
}

void LasOutput::add(const LasOutputPoint& point, std::span<const double> values) {
  constexpr std::uint8_t onlyReturn = 0x11;
  const std::array<double, 3> place{point.place.x, point.place.y, point.place.z};
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const std::int32_t number = onGrid(place[axis], axis);
    lowest_[axis] = count_ == 0 ? number : std::min(lowest_[axis], number);
    highest_[axis] = count_ == 0 ? number : std::max(highest_[axis], number);
    append<std::int32_t>(block_, number);
  }
  append<std::uint16_t>(block_, 0);  // intensity
  append<std::uint8_t>(block_, onlyReturn);
  append<std::uint8_t>(block_, 0);  // flags
  append<std::uint8_t>(block_, point.classification);
  append<std::uint8_t>(block_, 0);   // user data
  append<std::uint16_t>(block_, 0);  // scan angle
  append<std::uint16_t>(block_, point.source);
  append<double>(block_, point.time);
  for (std::size_t k = 0; k < extras_.size(); ++k) append(block_, extras_[k].type, values[k]);
  ++count_;
  if (block_.size() >= outputBlockBytes) writeBlock();
}

void LasOutput::writeBlock() {
  file_.write(block_);
  block_.clear();
}

std::string LasOutput::header() const {
  constexpr std::uint16_t standardTimeAndWkt = 0x11;
  std::string head(longestLasHeader, '\0');
  char* const bytes = head.data();
  std::size_t recordLength = leastRecordLength(format);
  for (const LasExtra& extra : extras_) recordLength += bytesOf(extra.type);
  putText(bytes, 4, "LASF");
  putNumber<std::uint16_t>(bytes + 6, standardTimeAndWkt);
  putNumber<std::uint8_t>(bytes + 24, 1);  // version 1.4
  putNumber<std::uint8_t>(bytes + 25, 4);
  putOrigin(bytes, "EXTRACTION");
  putNumber<std::uint16_t>(bytes + 94, longestLasHeader);
  putNumber<std::uint32_t>(bytes + 96,
                           static_cast<std::uint32_t>(longestLasHeader + records_.size()));
  putNumber<std::uint32_t>(bytes + 100, 2);  // records
  putNumber<std::uint8_t>(bytes + 104, format);
  putNumber<std::uint16_t>(bytes + 105, static_cast<std::uint16_t>(recordLength));
  for (std::size_t axis = 0; axis < 3; ++axis) {
    const LasGrid grid = grids_[axis].value_or(LasGrid{scale, 0.0});
    putNumber<double>(bytes + LasPlaces::scale + 8 * axis, grid.scale);
    putNumber<double>(bytes + LasPlaces::offset + 8 * axis, grid.offset);
    putNumber<double>(bytes + LasPlaces::bounds + 16 * axis, grid.coordinate(highest_[axis]));
    putNumber<double>(bytes + LasPlaces::bounds + 16 * axis + 8, grid.coordinate(lowest_[axis]));
  }
  putNumber<std::uint64_t>(bytes + LasPlaces::count, count_);
  putNumber<std::uint64_t>(bytes + LasPlaces::countByReturn, count_);
  return head;
}

void LasOutput::finish() {
  writeBlock();
  file_.overwriteBegin(header());
  file_.finish();
}

}  // namespace Velorn::Flights
