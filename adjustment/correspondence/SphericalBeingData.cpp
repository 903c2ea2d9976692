// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <iterator>

#include <fmt/format.h>

#include "adjustment/correspondence/SideColumns.h"
#include <velorn/CorrespondenceBlock.h>

namespace Velorn {
namespace {

constexpr std::size_t ruleLength = 104;

template <typename Triple>
std::string textOf(const Triple& t) {
  return fmt::format("({:.3f}, {:.3f}, {:.3f})\t", t.x, t.y, t.z);
}

}  // namespace

SphericalBeingData::SphericalBeingData() {
  forEachColumn(*this, []<typename T>(const char*, Column<T>& column) {
    column = std::make_shared<std::vector<T>>();
  });
}

SphericalBeingData::SphericalBeingData(Strandel::GridPtr gridOfSide, bool isGroundTruth,
                                       std::uint32_t week)
    : SphericalBeingData() {
  groundTruth = isGroundTruth;
  grid = std::move(gridOfSide);
  if (grid) chart = grid->makeChart(Strandel::worldChartName);
  weekNumber = week;
}

void SphericalBeingData::add(const SphericalBeing& being) {
  world->push_back(being.worldPosition);
  scanner->push_back(being.scannerPosition);
  times->push_back(being.gpsTime);
  normals->push_back(being.normal);
  directionDeltas->push_back(being.directionDelta);
  classes->push_back(being.classification);
}

std::size_t SphericalBeingData::completeEntries() const {
  std::size_t shortest = size();
  forEachColumn(*this, [&](const char*, const auto& column) {
    shortest = std::min(shortest, column->size());
  });
  return shortest;
}

SphericalBeing SphericalBeingData::operator[](std::size_t k) const {
  return {(*world)[k],   (*scanner)[k],         (*times)[k],
          (*normals)[k], (*directionDeltas)[k], (*classes)[k]};
}

std::string SphericalBeingData::toText() const {
  std::string text =
      "Index\tGPSTime\t\tWorld_XYZ\t\tScanner_XYZ\t\tNormalVector\t\tDirectionDelta"
      "\tClassification\n";
  text += std::string(ruleLength, '-') + '\n';
  for (std::size_t k = 0, entries = completeEntries(); k < entries; ++k) {
    const auto being = (*this)[k];
    fmt::format_to(std::back_inserter(text), "{}\t{:.3f}\t{}{}{}{}{}, {} \n", k, being.gpsTime,
                   textOf(being.worldPosition), textOf(being.scannerPosition), textOf(being.normal),
                   textOf(being.directionDelta), int{being.classification}, int{groundTruth});
  }
  return text;
}

}  // namespace Velorn
