// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// The HDF5 types of the values of fields.
#pragma once

#include <string>

#include "platform/strandel/ValueType.h"
#include "platform/strandel/hdf5/Library.h"

namespace Strandel::Hdf5 {

/// Type of one component in memory and in the file: little-endian, which is what this machine has.
hid_t componentType(ValueType type);

/// True for a type of the same kind, size and sign, whatever its byte order.
bool holdsComponents(hid_t type, ValueType wanted);

/// "64-bit float", "unsigned 8-bit integer", "text" and the like, for messages.
std::string describe(hid_t type);

}  // namespace Strandel::Hdf5
