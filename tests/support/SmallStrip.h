// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// A small flight strip for tests, with everything that a container file may hold.
#pragma once

#include <cstddef>
#include <string>

#include "platform/strandel/Bundle.h"

/// A strip of two fragments with `points` and `points` / 2 points: one grid "strip" with the
/// attribute WeekNumber, world and scanner chart that share GPSTime, fields of every value type,
/// and the group Waveforms. Random, but always the same for the same `seed`.
Strandel::Bundle smallStrip(std::size_t points = 100, unsigned seed = 1);

/// Everything that a bundle holds as one text, the data read and written in hexadecimal; where data
/// cannot be read the message stands instead, and `fault` receives the first one.
std::string contentOf(const Strandel::Bundle& bundle, std::string& fault);

/// The same of a bundle that must be readable; the test fails when it is not.
std::string intactContentOf(const Strandel::Bundle& bundle);
