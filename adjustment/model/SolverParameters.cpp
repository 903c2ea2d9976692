// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

#include <fmt/format.h>

#include "adjustment/model/Layout.h"
#include "platform/geomra/Degree.h"
#include "platform/morvane/Console.h"
#include <velorn/SolverParameters.h>

namespace Velorn {
namespace {

// Distance of the global entries from the end of the vector.
constexpr std::size_t offsets = 12, scales = 9, misalignments = 6, leverArms = 3;

/// Checked by the caller's at(): an index before the beginning of the vector is beyond its end.
std::size_t fromEnd(const std::vector<double>& values, std::size_t distance, unsigned component) {
  return values.size() - distance + component;
}

void requireEntries(const std::vector<double>& values, std::size_t needed, const char* operation) {
  if (values.size() >= needed) return;
  throw std::out_of_range(fmt::format("SolverParameters::{}: the vector has {} entries, {} needed",
                                      operation, values.size(), needed));
}

Section refused(const std::string& message) {
  Morvane::Console::writeLine("SolverParameters::getNewSection:: " + message);
  return {};
}

}  // namespace

// NOLINTBEGIN(modernize-pass-by-value): the caller keeps both, a copy is what is wanted.
SolverParameters::SolverParameters(const std::vector<std::filesystem::path>& strips,
                                   const InputParameter& parameter)
    : stripFiles(strips), inputParameter(parameter) {}
// NOLINTEND(modernize-pass-by-value)

std::string SolverParameters::readSectionsAndParameter(
    const std::string& sectionFileName, const std::string& parameterFileName,
    const Geomra::PhysicalSpace::point& leverArm,
    const Geomra::PhysicalSpace::point& misalignment) {
  if (sectionFileName.empty() && parameterFileName.empty()) {
    return setEmptySections(leverArm, misalignment);
  }
  Morvane::Console::writeLine(" STOP HERE NEED TO IMPLEMENT ");
  std::exit(1);
}

Section SolverParameters::getSectionInStrip(unsigned int stripIndex, double t) const {
  if (stripIndex >= newsections.size()) {
    return refused(
        fmt::format("StripID {} >= size of newsections:{}", stripIndex, newsections.size()));
  }
  const auto found = findSection(stripIndex, t);
  if (!found) {
    return refused(fmt::format("For StripID {} and time t {} no section was found", stripIndex, t));
  }
  return found->section;
}

std::optional<SectionSpan> SolverParameters::findSection(unsigned int stripIndex, double t) const {
  if (stripIndex >= newsections.size()) return {};
  const auto& sections = newsections[stripIndex].sections;
  const auto next = sections.upper_bound(t);
  if (next == sections.begin() || std::isnan(t)) return {};  // NaN is before nothing
  constexpr double never = std::numeric_limits<double>::infinity();
  return SectionSpan{std::prev(next)->second, next == sections.end() ? never : next->first};
}

double SolverParameters::getTrajectoryPositionCorrection(unsigned int section,
                                                         unsigned int component) const {
  return parameters.at(localParameters * section + component);
}

double SolverParameters::getTrajectoryAngleCorrection(unsigned int section,
                                                      unsigned int component) const {
  return parameters.at(localParameters * section + localParameters / 2 + component);
}

double SolverParameters::getRangeAngleOffset(unsigned int component) const {
  return parameters.at(fromEnd(parameters, offsets, component));
}

double SolverParameters::getRangeAngleScale(unsigned int component) const {
  return parameters.at(fromEnd(parameters, scales, component));
}

double SolverParameters::getMisalignment(unsigned int component) const {
  if (parameters.size() < misalignments) return 0.0;
  return parameters.at(fromEnd(parameters, misalignments, component));
}

double SolverParameters::getLeverArm(unsigned int component) const {
  if (parameters.size() < misalignments) return 0.0;
  return parameters.at(fromEnd(parameters, leverArms, component));
}

void SolverParameters::setLocalParmetersToZero(unsigned int& section) {
  const std::size_t first = localParameters * section;
  requireEntries(parameters, first + localParameters, "setLocalParmetersToZero");
  std::fill_n(parameters.begin() + static_cast<std::ptrdiff_t>(first), localParameters, 0.0);
}

void SolverParameters::setLeverArm(double x, double y, double z) {
  requireEntries(parameters, leverArms, "setLeverArm");
  const auto first = parameters.end() - leverArms;
  first[0] = x;
  first[1] = y;
  first[2] = z;
}

void SolverParameters::setMisalignment(double x, double y, double z) {
  requireEntries(parameters, misalignments, "setMisalignment");
  const auto first = parameters.end() - misalignments;
  first[0] = x * Geomra::degree;
  first[1] = y * Geomra::degree;
  first[2] = z * Geomra::degree;
}

std::string SolverParameters::setLeverarmAndMisalignment(
    const Geomra::PhysicalSpace::point& leverArm,
    const Geomra::PhysicalSpace::point& misalignment) {
  const auto notFinite = [](const char* what, const Geomra::PhysicalSpace::point& p) {
    return fmt::format(
        "SolverParameters::setLeverarmAndMisalignment: {} is not finite ({}, {}, {})", what, p.x,
        p.y, p.z);
  };
  if (!isFinite(leverArm)) return notFinite("lever arm", leverArm);
  if (!isFinite(misalignment)) return notFinite("misalignment", misalignment);
  setLeverArm(leverArm.x, leverArm.y, leverArm.z);
  setMisalignment(misalignment.x, misalignment.y, misalignment.z);
  return {};
}

}  // namespace Velorn
