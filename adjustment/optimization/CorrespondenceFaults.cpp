// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/optimization/CorrespondenceFaults.h"

#include <cmath>

#include <fmt/format.h>

#include "adjustment/correspondence/ClassCode.h"

namespace Velorn {
namespace {

template <typename Triple>
bool isZero(const Triple& v) {
  return v.x == 0.0 && v.y == 0.0 && v.z == 0.0;
}

template <typename Triple>
std::string shown(const Triple& v) {
  return fmt::format("({}, {}, {})", v.x, v.y, v.z);
}

std::string faultOfMeasurement(const SphericalBeing& being) {
  if (!isFinite(being.worldPosition)) return "world position " + shown(being.worldPosition);
  if (!std::isfinite(being.gpsTime)) return fmt::format("GPS time {}", being.gpsTime);
  const auto& s = being.scannerPosition;
  return isFinite(s) && !isZero(s) ? "" : "scanner position " + shown(s);
}

std::string faultOfFirst(const SphericalBeing& first, unsigned int strip,
                         const SolverParameters& parameters, unsigned int classes) {
  if (auto fault = faultOfMeasurement(first); !fault.empty()) return fault;
  if (!isFinite(first.normal)) return "normal " + shown(first.normal);
  if (classIndex(first.classification) >= classes) {
    return fmt::format("class {}, not one of {} to {}", first.classification, firstClassCode,
                       firstClassCode + classes - 1);
  }
  if (parameters.findSection(strip, first.gpsTime)) return {};
  return fmt::format("GPS time {}, in no section of strip {}", first.gpsTime, strip);
}

std::string faultOfSecond(const SphericalBeing& second, bool isGroundTruth) {
  if (!isGroundTruth) return faultOfMeasurement(second);
  return isFinite(second.worldPosition) ? "" : "world position " + shown(second.worldPosition);
}

/// The solver ends the process over a residual that takes an unknown twice.
std::string faultOfSections(const CorrespondenceFile& file, const SphericalBeing& first,
                            const SphericalBeing& second, const SolverParameters& parameters) {
  const auto i = parameters.findSection(file.firstStrip, first.gpsTime);
  const auto j = parameters.findSection(file.secondStrip, second.gpsTime);
  if (!i || !j || i->section.sectionID != j->section.sectionID) return {};
  return fmt::format("GPS time {}, in section {}, as the first one", second.gpsTime,
                     j->section.sectionID);
}

}  // namespace

std::string faultOfBlock(const CorrespondenceFile& file, const CorrespondenceBlock& block,
                         const SolverParameters& parameters) {
  const std::size_t strips = parameters.getStripSections().size();
  const auto refused = [&](const std::string& fault) {
    return fmt::format("CeresOptimization::check: {}: {}", file.path.string(), fault);
  };
  const auto missing = [&](unsigned int strip) {
    return refused(fmt::format("strip {} is not one of the {} strips", strip, strips));
  };
  if (file.firstStrip >= strips) return missing(file.firstStrip);
  if (!block.isGroundTruth() && file.secondStrip >= strips) return missing(file.secondStrip);
  const std::size_t i = block.sideI().size(), j = block.sideJ().size();
  return i == j ? "" : refused(fmt::format("its sides have {} and {} points", i, j));
}

std::string faultOfCorrespondence(const CorrespondenceFile& file, const CorrespondenceBlock& block,
                                  std::uint32_t index, const SolverParameters& parameters,
                                  unsigned int classes) {
  const auto [first, second] = block.get(index);
  const auto refused = [&](const char* which, const std::string& fault) {
    return fmt::format("CeresOptimization::check: {}: correspondence {}: {} point with {}",
                       file.path.string(), index, which, fault);
  };
  if (auto fault = faultOfFirst(first, file.firstStrip, parameters, classes); !fault.empty()) {
    return refused("first", fault);
  }
  if (auto fault = faultOfSecond(second, block.isGroundTruth()); !fault.empty()) {
    return refused("second", fault);
  }
  if (block.isGroundTruth()) return {};
  const auto fault = faultOfSections(file, first, second, parameters);
  return fault.empty() ? fault : refused("second", fault);
}

bool isWithoutNormal(const SphericalBeing& first) {
  return isZero(first.normal);
}

}  // namespace Velorn
