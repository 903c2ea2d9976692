// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Attributes in a file.
#pragma once

#include <string>
#include <vector>

#include "platform/strandel/Attributes.h"
#include "platform/strandel/hdf5/Library.h"

namespace Strandel::Hdf5 {

/// The attributes of one object, and the names of those that this platform cannot represent (an
/// array, an enumeration): they are left alone, and kept when the object is saved.
struct AttributesRead {
  Attributes attributes;
  std::vector<std::string> foreign;
};

AttributesRead readAttributes(hid_t object);
void writeAttribute(hid_t object, const std::string& name, const Attribute& value);
void writeAttributes(hid_t object, const Attributes& attributes);

/// Copies one attribute of any type as it is.
void copyAttribute(hid_t from, hid_t to, const std::string& name);

}  // namespace Strandel::Hdf5
