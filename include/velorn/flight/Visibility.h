// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Marks what the library of flights offers; everything else in it is hidden.
#pragma once

#define VELORN_FLIGHT_EXPORT __attribute__((visibility("default")))
