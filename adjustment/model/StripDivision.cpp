// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "adjustment/model/StripDivision.h"

#include <cmath>

#include <fmt/format.h>

namespace Velorn {
namespace {

constexpr std::size_t linearEntry = 1, splineEntry = 2, intervalEntries = 3;

void linearEnd(Section& section) {
  if (section.type == Sec_Type::SPLINE) section.type = Sec_Type::LINEAR;
}

}  // namespace

DivisionModel modelOfStrip(std::size_t stripIndex, Sec_Type word, const InputParameter& parameter,
                           const std::map<int, double>& toLinear,
                           const std::map<int, double>& toSpline) {
  const bool hybrid = word == Sec_Type::HYBRID;
  DivisionModel model{
      word, parameter.DefaultInterval.at(hybrid ? linearEntry : static_cast<std::size_t>(word))};
  if (parameter.SplitBackStrips && stripIndex % 2 == 1) {
    model = {Sec_Type::SPLINE, parameter.DefaultInterval.at(splineEntry)};
  }
  const int key = static_cast<int>(stripIndex);
  if (const auto found = toLinear.find(key); found != toLinear.end()) {
    model = {Sec_Type::LINEAR, found->second};
  }
  if (const auto found = toSpline.find(key); found != toSpline.end()) {
    model = {Sec_Type::SPLINE, found->second};
  }
  if (hybrid) model.type = Sec_Type::HYBRID;
  return model;
}

std::string faultOfModel(const std::string& word, const InputParameter& parameter) {
  if (stringToSecType(word) == Sec_Type::UNKNOWN) {
    return fmt::format("Section::setSections: secType is none of BIAS, LINEAR, SPLINE, HYBRID: {}",
                       word);
  }
  if (parameter.DefaultInterval.size() < intervalEntries) {
    return fmt::format("Section::setSections: Size of DefaultInterval is not 3 ({})",
                       parameter.DefaultInterval.size());
  }
  return {};
}

std::string divide(double first, double last, double interval, std::size_t most,
                   std::vector<double>& starts) {
  if (!std::isfinite(interval)) {
    return fmt::format("Section::setSections: defaultIntervalTime is not finite ({})", interval);
  }
  const double count = std::ceil((last - first) / interval);
  if (!(count <= static_cast<double>(most))) {
    return fmt::format(
        "Section::setSections: defaultIntervalTime too small ({}): {} more sections, {} are "
        "possible",
        interval, count, most);
  }
  const double step = (last - first) / count;
  std::vector<double> made{first};
  made.reserve(static_cast<std::size_t>(count));
  while (made.size() < static_cast<std::size_t>(count)) {
    const double next = made.back() + step;
    if (!(next > made.back())) {
      return fmt::format(
          "Section::setSections: defaultIntervalTime too small ({}): no time lies between {} and "
          "the next section",
          interval, made.back());
    }
    made.push_back(next);
  }
  starts.swap(made);
  return {};
}

void endLinear(std::map<double, Section>& sections) {
  if (sections.empty()) return;
  linearEnd(sections.begin()->second);
  linearEnd(sections.rbegin()->second);
}

}  // namespace Velorn
