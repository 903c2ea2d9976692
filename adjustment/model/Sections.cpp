// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// How the strips of SolverParameters get their sections.
#include <algorithm>

#include "adjustment/model/GpsRange.h"
#include "adjustment/model/Layout.h"
#include "adjustment/model/StripDivision.h"
#include <velorn/SolverParameters.h>

namespace Velorn {
namespace {

constexpr const char* noStrips = "Section::setSections: stripFiles.size() == 0 !";

void reportProgress(const InputParameter& parameter, std::size_t strip, std::size_t strips) {
  if (const auto progress = parameter.progress.lock()) {
    progress->report("setSection #", strip, strips);
  }
}

/// Sections at `starts`, over those that begin at the same times.
void addSections(const std::vector<double>& starts, std::uint32_t& number, StripSections& strip) {
  for (const double t : starts) {
    strip.sections[t] = {strip.type, number++, t, strip.stripIndex, false, 0};
  }
  endLinear(strip.sections);
}

}  // namespace

std::string SolverParameters::setSections(const std::string& secType,
                                          const std::vector<double>& /*intervals*/,
                                          const Geomra::PhysicalSpace::point& leverArm,
                                          const Geomra::PhysicalSpace::point& misalignment,
                                          const std::string& sectionFileName,
                                          const std::map<int, double>& toLinear,
                                          const std::map<int, double>& toSpline) {
  if (stripFiles.empty()) return noStrips;
  newsections.resize(stripFiles.size());
  for (std::size_t i = 0; i < stripFiles.size(); ++i) {
    reportProgress(inputParameter, i, stripFiles.size());
    if (auto fault = divideStrip(i, secType, toLinear, toSpline); !fault.empty()) return fault;
  }
  resizeParameters();
  saveSectionFile(sectionFileName);
  return setLeverarmAndMisalignment(leverArm, misalignment);
}

std::string SolverParameters::divideStrip(std::size_t stripIndex, const std::string& secType,
                                          const std::map<int, double>& toLinear,
                                          const std::map<int, double>& toSpline) {
  const auto& path = stripFiles[stripIndex];
  GpsRange range;
  if (auto fault = getGPSRange(path, inputParameter, range); !fault.empty()) return fault;
  StripSections& strip = newsections[stripIndex];
  strip.minTime = range.first;
  strip.maxTime = range.last;

  if (auto fault = faultOfModel(secType, inputParameter); !fault.empty()) return fault;
  const auto model =
      modelOfStrip(stripIndex, stringToSecType(secType), inputParameter, toLinear, toSpline);
  strip.stripIndex = static_cast<std::uint32_t>(stripIndex);
  strip.intervalTime = model.interval;
  strip.type = model.type;
  if (!(model.interval > 0.0)) {  // NaN too
    return "Section::setSections: defaultIntervalTime <= 0.0!";
  }

  std::vector<double> starts;
  const std::size_t left = mostSections - std::min<std::size_t>(mostSections, numberOfSections);
  if (auto fault = divide(range.first, range.last, model.interval, left, starts); !fault.empty()) {
    return fault + ": " + path.string();
  }
  addSections(starts, numberOfSections, strip);
  return {};
}

std::string SolverParameters::setEmptySections(const Geomra::PhysicalSpace::point& leverArm,
                                               const Geomra::PhysicalSpace::point& misalignment) {
  if (stripFiles.empty()) return noStrips;
  newsections.resize(stripFiles.size());
  for (std::uint32_t i = 0; i < stripFiles.size(); ++i) {
    newsections[i].sections[0.0] = {Sec_Type::LINEAR, i, 0.0, i, false, 0};
    ++numberOfSections;
  }
  resizeParameters();
  return setLeverarmAndMisalignment(leverArm, misalignment);
}

void SolverParameters::resizeParameters() {
  parameters.resize(numberOfParameters(numberOfSections), 0.0);
}

}  // namespace Velorn
