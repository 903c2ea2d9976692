// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "platform/orvek/Statistic.h"

#include <cmath>
#include <span>

#include "platform/orvek/StatisticFiles.h"
#include "platform/plome/ReplacedFile.h"

namespace OrvekStatistic {

Statistic::Statistic(double lower, double upper, double binWidth)
    : empty_(emptyBins(lower, upper, binWidth)), bins_(empty_) {}

void Statistic::addValue(float value) {
  upToDate_ = false;
  if (std::isnan(value)) {
    ++notNumbers_;
  } else if (std::isinf(value)) {
    ++infinite_;
  } else {
    values_.push_back(value);
  }
}

void Statistic::compute() {
  if (upToDate_) return;
  const std::span<float> values(values_);
  bins_ = empty_;
  for (const float value : values) countInto(bins_, value);
  summary_.moments = moments(values);
  summary_.median = quantileInPlace(values, 0.5);
  summary_.nmad = nmadInPlace(values);
  for (std::size_t i = 0; i < Summary::probabilities.size(); ++i) {
    summary_.quantiles[i] = quantileInPlace(values, Summary::probabilities[i]);
  }
  summary_.notNumbers = notNumbers_;
  summary_.infinite = infinite_;
  upToDate_ = true;
}

double Statistic::quantile(double p) {
  return quantileInPlace(std::span<float>(values_), p);
}

std::string Statistic::write(const std::filesystem::path& summaryFile,
                             const std::filesystem::path& histogramFile) {
  compute();
  std::string fault = Plome::replaceFile(summaryFile, summaryText(summary_));
  if (fault.empty()) fault = Plome::replaceFile(histogramFile, histogramText(bins_));
  return fault.empty() ? fault : "Statistic::write: " + fault;
}

}  // namespace OrvekStatistic
