// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

#include "host/run/StepRecord.h"

/// summary.json as tables for people.
std::string summaryText(const Json& summary);
