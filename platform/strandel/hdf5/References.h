// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// References from one place of a file to another: addresses, which mean nothing in a copy.
#pragma once

#include <string>

#include "platform/strandel/hdf5/Library.h"

namespace Strandel::Hdf5 {

/// @throws Fault when the attribute holds references
void refuseReferences(hid_t object, const std::string& attribute);

/// @throws Fault when `name` in `group`, or anything below it, holds references in its values or
/// attributes
void refuseReferencesBelow(hid_t group, const std::string& name);

}  // namespace Strandel::Hdf5
