// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#include "flight/formats/PoseOrder.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace Velorn::Flights {
namespace {

void note(Findings& findings, double time) {
  if (findings.count++ == 0) findings.firstTime = time;
}

Findings outOfOrderAmong(const std::vector<SbetRecord>& records) {
  Findings found;
  double latest = -std::numeric_limits<double>::infinity();
  for (const auto& record : records) {
    if (record.time < latest) note(found, record.time);
    latest = std::max(latest, record.time);
  }
  return found;
}

bool samePose(const SbetRecord& a, const SbetRecord& b) {
  const auto pose = [](const SbetRecord& r) {
    return std::tie(r.latitude, r.longitude, r.height, r.roll, r.pitch, r.heading);
  };
  return pose(a) == pose(b);
}

/// Keeps the first of each time.
void dropRepeated(std::vector<SbetRecord>& sorted, OrderReport& report) {
  std::size_t kept = 0;
  for (const auto& record : sorted) {
    if (kept == 0 || sorted[kept - 1].time != record.time) {
      sorted[kept++] = record;
      continue;
    }
    note(report.dropped, record.time);
    if (!samePose(sorted[kept - 1], record)) note(report.otherPose, record.time);
  }
  sorted.resize(kept);
}

}  // namespace

OrderedPoses inTimeOrder(std::vector<SbetRecord> records) {
  const auto noTime = [](const SbetRecord& record) { return std::isnan(record.time); };
  if (std::any_of(records.begin(), records.end(), noTime)) {
    throw std::invalid_argument("inTimeOrder: a time is NaN");
  }
  OrderedPoses ordered;
  ordered.report.outOfOrder = outOfOrderAmong(records);
  if (ordered.report.outOfOrder.count > 0) {
    std::stable_sort(records.begin(), records.end(),
                     [](const auto& a, const auto& b) { return a.time < b.time; });
  }
  dropRepeated(records, ordered.report);
  ordered.records = std::move(records);
  return ordered;
}

std::vector<TimeGap> gapsLongerThan(double limit, const std::vector<SbetRecord>& records) {
  if (!(limit >= 0.0)) {
    throw std::invalid_argument("gapsLongerThan: the limit has to be zero or longer");
  }
  std::vector<TimeGap> gaps;
  for (std::size_t i = 1; i < records.size(); ++i) {
    const TimeGap step{records[i - 1].time, records[i].time};
    if (step.to - step.from > limit) gaps.push_back(step);
  }
  return gaps;
}

}  // namespace Velorn::Flights
