// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Which sections a strip gets: pure rules, without a file.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include <velorn/InputParameter.h>
#include <velorn/Section.h>

namespace Velorn {

/// Model and longest section [s] of one strip.
struct DivisionModel {
  Sec_Type type;
  double interval;
};

/// @param word       a name of a model, checked to be one
/// @param parameter  its DefaultInterval has three entries; see faultOfModel
/// @param toLinear, toSpline  strips with a model and interval of their own; the second wins
/// @return a HYBRID word stays HYBRID, whatever else says; only the interval changes
DivisionModel modelOfStrip(std::size_t stripIndex, Sec_Type word, const InputParameter& parameter,
                           const std::map<int, double>& toLinear,
                           const std::map<int, double>& toSpline);

/// @return empty, or why no model can be taken from the word and the default intervals
std::string faultOfModel(const std::string& word, const InputParameter& parameter);

/// Starts of the ceil((last - first) / interval) equal sections of a strip, accumulated.
/// @param first, last  range of the strip [s]: finite, first < last
/// @param interval     longest section [s], above 0
/// @param most         sections that may still be made
/// @param starts       receives them, strictly ascending
/// @return empty, or why the strip cannot be divided; `starts` is then as before
std::string divide(double first, double last, double interval, std::size_t most,
                   std::vector<double>& starts);

/// Makes the first and the last section LINEAR where they are SPLINE.
void endLinear(std::map<double, Section>& sections);

}  // namespace Velorn
