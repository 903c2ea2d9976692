// SPDX-FileCopyrightText: 2026 The Velorn developers
// SPDX-License-Identifier: Apache-2.0
//
// Writes the values of one fragment as a dataset.
#pragma once

#include <string>

#include "platform/strandel/ColumnSource.h"
#include "platform/strandel/RangeOfRows.h"
#include "platform/strandel/hdf5/Driver.h"

namespace Strandel::Hdf5 {

/// How new values are stored.
struct ColumnStyle {
  bool compressed = false;  ///< shuffle and deflate
  bool checksums = true;    ///< fletcher32, per chunk
};

/// Writes `column` (null: an absent chunk) as `name` in `group` and grows `range` by its values.
/// @throws Fault without the object's name; also as soon as `state` tells that the file cannot be
/// written
void writeColumn(hid_t group, const std::string& name, ValueType type, const ColumnSource* column,
                 const ColumnStyle& style, const WriteState& state, RangeOfRows& range);

}  // namespace Strandel::Hdf5
