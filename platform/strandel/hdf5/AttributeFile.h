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
void copyAttributes(hid_t from, hid_t to);

/// Creation properties that every object of a file has: no times, so that equal content gives equal
/// files, and all attributes in the object's header, which has a checksum (a large number of them
/// would go to a heap whose large entries have none).
void setCommonProperties(hid_t creation);

}  // namespace Strandel::Hdf5
