// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "flight/formats/Sbet.h"

/// 101 records over the middle of zone 32, above the points of lasOverZone32.
/// @param begin  [s of week]
inline std::vector<Velorn::Flights::SbetRecord> tenSeconds(double begin) {
  std::vector<Velorn::Flights::SbetRecord> records;
  for (int k = 0; k <= 100; ++k) {
    records.push_back({begin + 0.1 * k, 0.8412 + 1e-6 * k, 0.15708, 800.0, 0.01, -0.02, 6.28});
  }
  return records;
}
