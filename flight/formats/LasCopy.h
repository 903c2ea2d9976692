// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Writes points of a LAS file again, with other coordinates.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>

#include "platform/geomra/PhysicalSpace.h"

namespace Velorn::Flights {

/// Writes a LAS file of the same version and point format with some points of `source`. All
/// attributes, extra bytes and the order are kept, and so are the records before and behind the
/// points, byte for byte, with the coordinate system and the project's id. The coordinates have the
/// same scale, and the same offset unless they leave the range of 32 bits with it. Counts and
/// bounds are those of what is written, the creation date is today's (UTC) and the creators are
/// "MODIFICATION" and this program. Offsets into waveforms stay as they are: those within the file
/// are copied, those in a .wdp file beside it are not.
/// @param target   beside which it is written first; as before until all of it is on the disk
/// @param numbers  of the points in `source`, counted from 0, ascending
/// @param places   their new coordinates [m], one for each number
/// @throws Error that names the file; with status Error::NoSpace when it is about writing `target`.
///         Refused are files that LasFile refuses, numbers that do not ascend or are not in the
///         file, coordinates that are not finite or do not fit into 32 bits whatever the offset,
///         and the source as target, since its coordinates would be lost.
void copyLas(const std::filesystem::path& source, const std::filesystem::path& target,
             std::span<const std::uint64_t> numbers,
             std::span<const Geomra::PhysicalSpace::point> places);

}  // namespace Velorn::Flights
